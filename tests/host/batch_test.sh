#!/bin/bash
# Runs the program over folders: what is listed, what is written, what is left alone, and what a killed run leaves.
# Usage: batch_test.sh KELVO. Needs vips (libvips-tools), exiftool and python3.
source "$(dirname "$0")/cli_support.sh"

# A small tree: soft pictures, a sharp one, a broken one, an empty one, and what is no picture.
make_tree() {
  mkdir -p in/sub/.hidden
  vips gaussnoise noise.v 200 150 --mean 128 --sigma 120 --seed 7
  vips cast noise.v in/sharp.png uchar
  "$kelvo" blur in/sharp.png -o in/soft.png --width 4 -q
  vips jpegsave in/soft.png in/sub/soft.jpg --Q 88
  vips tiffsave in/soft.png in/sub/soft.tif
  cp in/soft.png in/sub/.hidden/hidden.png
  head -c 3000 in/sub/soft.jpg >in/cut.jpg
  : >in/empty.png
  echo "no picture" >in/notes.txt
}

files() { (cd "$1" && find . -type f | sort | tr '\n' ' '); }

test_folders() {
  run 1 restore -r in --output-dir done --width 4
  says 'cannot read "in/empty.png": the file is empty'
  says '"in/cut.jpg"'
  says "6 pictures: 4 written, 2 failed"
  told "restored with width 4 into done/sub/soft.tif"
  holds "the tree: $(files done)" [ "$(files done)" = "./sharp.png ./soft.png ./sub/soft.jpg ./sub/soft.tif " ]
  run 1 restore -r in --output-dir done --width 4
  says "the file exists already; use --force to replace it"
  says "6 pictures: 6 failed"
  rm in/cut.jpg in/empty.png
  run 0 restore -r in --output-dir done --width 4 --skip-existing
  says "4 pictures: 4 skipped"
  # Results are no inputs, be they in their own folder or beside the pictures.
  run 0 restore -r in --output-dir in/out --width 4 --quiet
  run 0 restore -r in --output-dir in/out --width 4 --skip-existing
  says "4 pictures: 4 skipped"
  rm -r in/out
  run 0 restore -r in --width 4 --quiet
  run 0 restore -r in --width 4 --skip-existing
  says "4 pictures: 4 skipped"
  find in -name '*-restored.*' -delete
  run 0 restore in --output-dir auto
  told "in/sharp.png: no blur"
  says "2 pictures: 1 written, 1 sharp"
  run 2 restore in/soft.png in/sub -o one.png
  says "--output names one file"
  run 2 restore in in/sub/soft.png --output-dir both
  says 'would both be written to "both/soft.png"'
  holds "a refused run made a folder" [ ! -e both ]
  run 2 restore in --output-dir a --force --skip-existing
  says "excludes"
}

test_shards_and_plans() {
  local shard
  for shard in 1/3 2/3 3/3; do run 0 restore -r in --output-dir shards --width 4 --quiet --shard $shard; done
  holds "shards: $(files shards)" diff -r done shards
  for shard in 0/3 4/3 1/0 3 x/2 1/2x; do
    run 2 restore in --shard $shard
    says "\"$shard\" is not I/N"
  done
  run 0 restore -r in --output-dir planned --dry-run
  told "in/soft.png: would be restored with the width found into planned/soft.png"
  holds "a dry run wrote" [ ! -e planned ]
  run 1 restore in/soft.png none.png --output-dir records --json --width auto+1
  holds "records: $(cat out)" python3 - <<'PYTHON'
import json
good, bad = map(json.loads, open("out"))
assert good["outcome"] == "written" and good["output"] == "records/soft.png" and good["columns"] == 200
assert good["settings"]["width"] == good["detection"]["width"] + 1 and good["seconds"] > 0
assert bad["outcome"] == "failed" and "No such file" in bad["error"] and "detection" not in bad
PYTHON
}

# Killed again and again, a run with --skip-existing ends with the bytes of one that was not.
test_killed() {
  local i
  for i in 1 2 3 4 5 6; do cp in/soft.png "in/$i.png"; done
  run 0 restore in --output-dir whole --width 9 --accuracy 1 --quiet
  for i in 1 2 3 4 5 6 7 8; do
    timeout -s KILL "0.$((RANDOM % 5 + 1))" "$kelvo" restore in --output-dir broken --width 9 --accuracy 1 --skip-existing -q
  done 2>/dev/null
  run 0 restore in --output-dir broken --width 9 --accuracy 1 --skip-existing
  holds "a killed run differs" diff -r whole broken
  # An interrupted one says what is left; a slow build has to be given time to start.
  for i in 0.3 0.9 2.7; do
    rm -r broken && mkdir broken
    timeout -s INT "$i" "$kelvo" restore in --output-dir broken --width 20 --accuracy 2 >out 2>err
    ! grep -q "not begun" out err || break
  done
  says "not begun"
  holds "something half written" [ -z "$(find broken -name '.kelvo-*')" ]
  rm in/[1-6].png
}

test_presets() {
  export XDG_CONFIG_HOME=$work/config
  run 0 restore --save-preset soft --width auto+1 --noise 1 --enlarge
  run 1 restore --save-preset soft --width 3
  says "use --force"
  run 0 restore --preset soft in/soft.png -o preset.png --enlarge=false --noise 2
  has preset.png width 200
  run 0 restore --like preset.png in/soft.png -o like.png
  holds "--like gives another file" cmp preset.png like.png
  run 1 restore --preset hard in/soft.png
  says "known are soft"
  run 1 restore --like in/sharp.png in/soft.png
  says 'there are no settings in "in/sharp.png"'
  run 2 blur --preset soft in/soft.png
  says 'those of "restore"'
  local text
  for text in '{' '[1]' '{"width": [1]}'; do
    echo "$text" >config/kelvo/presets/bad.json
    run 1 restore --preset bad in/soft.png
    says 'cannot use the preset'
  done
  echo '{"width": 4, "sharper": 1}' >config/kelvo/presets/bad.json
  run 2 restore --preset bad in/soft.png
  says "--sharper"
}

test_regions() {
  run 0 restore in/soft.png -o whole.png --width 4
  run 0 restore in/soft.png -o large.png --width 4 --enlarge
  vips crop whole.png want1.png 37 22 101 90
  vips crop large.png want2.png 128 200 60 40
  run 0 restore in/soft.png -o part.png --width 4 --region 37,22,101,90
  same_pixels part.png want1.png
  run 0 restore in/soft.png -o part2.png --width 4 --region 64,100,30,20 --enlarge
  same_pixels part2.png want2.png
  run 1 restore in/soft.png -o outside.png --width 4 --region 150,0,51,10
  says "is not inside its 200 x 150 pixels"
  local region
  for region in 1,2,3 1,2,3,0 1,2,3,4,5 -1,2,3,4 a,b,c,d; do
    run 2 restore in/soft.png "--region=$region"
    says "is not four whole numbers"
  done
}

told_by() { exiftool -q -a -G1 -s -"$2" "$1" | grep -vE 'Thumbnail|YCbCr|XMPToolkit|kelvo' | sort; }

# EXIF, GPS, IPTC, XMP and comment as exiftool tells them, from each format into each.
test_metadata() {
  vips crop in/soft.png rgb1.v 0 0 64 48 && vips bandjoin "rgb1.v rgb1.v rgb1.v" rgb.v
  vips copy rgb.v rgb.png --interpretation srgb
  vips jpegsave rgb.png rich.jpg --Q 83 --subsample-mode off
  exiftool -q -overwrite_original -Make=Obscura -ExposureTime=1/250 -ISO=400 -GPSLatitude=47.5 -GPSLatitudeRef=N \
    -IFD0:Rating=3 -Orientation#=6 -XResolution=300 -YResolution=300 -UserComment=hello -Comment=remark \
    -IPTC:Headline=Head -IPTC:Keywords=one -IPTC:Keywords=two -XMP-dc:Title=Title rich.jpg
  local suffix what
  for suffix in tif webp png; do
    run 0 restore rich.jpg -o rich.$suffix --width 2 --quiet
    for what in ExifIFD:all GPS:all IFD0:Make IFD0:Rating IFD0:Orientation IFD0:XResolution IPTC:all XMP-dc:all; do
      [ $suffix$what = webpIPTC:all ] && continue
      holds "$what in $suffix: $(told_by rich.$suffix $what)" \
        [ "$(told_by rich.jpg $what | sed '/ExifVersion/d')" = "$(told_by rich.$suffix $what | sed '/ExifVersion/d')" ]
    done
    run 0 restore rich.$suffix -o back.jpg --width 2 --quiet --force
    holds "Make back from $suffix" [ "$(exiftool -s3 -Make -Rating back.jpg | tr '\n' ' ')" = "Obscura 3 " ]
  done
  run 0 restore rich.jpg -o same.jpg --width 2 --quiet
  holds "JPEG to JPEG" diff <(told_by rich.jpg all:all | grep -v System) <(told_by same.jpg all:all | grep -v System)
  holds "JPEG is stored otherwise" cmp <(vips copy rich.jpg x.v && vips jpegsave x.v y.jpg --Q 83 --subsample-mode off --strip &&
    head -c 200 y.jpg | tail -c 130) <(exiftool -q -all= -o - same.jpg | head -c 200 | tail -c 130)
  vips tiffsave rich.tif big.tif --bigtiff --tile --tile-width 32 --tile-height 16 --compression deflate 2>/dev/null
  run 0 restore big.tif -o big-out.tif --width 2 --quiet
  for what in TileWidth TileLength Compression; do
    holds "$what of a BigTIFF" [ "$(exiftool -s3 -$what big.tif)" = "$(exiftool -s3 -$what big-out.tif)" ]
  done
  holds "no BigTIFF" [ "$(head -c 3 big-out.tif)" = "II+" ]
}

make_tree
test_folders
test_shards_and_plans
test_killed
test_presets
test_regions
test_metadata
finish
