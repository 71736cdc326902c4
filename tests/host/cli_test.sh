#!/bin/bash
# Runs the program the way a user does and checks files, messages and exit statuses.
# Usage: cli_test.sh KELVO. Needs vips and vipsheader (libvips-tools) and python3.
source "$(dirname "$0")/cli_support.sh"

test_good_runs() {
  run 0 blur rgb.png -o soft.png --width 5
  silent "a plain run"
  differ rgb.png soft.png
  run 0 restore soft.png -o sharp.png --width 5 --accuracy 1 --noise -1 --jpeg 10
  differ soft.png sharp.png
  run 0 restore soft.png -o classic.png --width 5 --classic
  run 0 restore soft.png -o raw.png --width 5 --raw --threads 1
  run 0 restore soft.png -o same.png --width 0
  same_pixels soft.png same.png
  run 0 restore rgba.png -o alpha.png --width 3
  vips extract_band rgba.png before.v 3 && vips extract_band alpha.png after.v 3
  same_pixels before.v after.v
  run 0 restore deep.png -o deep-out.png --width 3
  has deep-out.png interpretation "$(field interpretation deep.png)"
  run 0 restore deep.tif -o deep-out.tif --width 3
  same_pixels deep-out.png deep-out.tif
  # libvips maps its own format into memory in strips, wider than what is asked for.
  vips crop big.png wide.v 0 0 700 300 && vips copy wide.v wide.png --interpretation srgb
  run 0 restore wide.v -o mapped-out.png --width 3 --noise 0
  run 0 restore wide.png -o wide-out.png --width 3 --noise 0
  same_pixels mapped-out.png wide-out.png
}

# Directions tell lines apart, half a turn makes none, and the blur comes off.
test_direction() {
  run 0 blur rgb.png -o line30.png --width 6 --direction 30
  silent "a motion blur"
  run 0 blur rgb.png -o line210.png --width 6 -d 210
  same_pixels line30.png line210.png
  run 0 blur rgb.png -o line120.png --width 6 --direction 120
  differ line30.png line120.png
  run 0 blur rgb.png -o line0.png --width 0 --direction 120
  same_pixels rgb.png line0.png
  # A bright dot becomes a line of seven pixels, five along the diagonal, to the upper right at 45 degrees.
  vips black dot.v 31 31
  vips draw_rect dot.v 255 15 15 1 1
  run 0 blur dot.v -o dot45.v --width 6 --direction 45
  local pixel
  for pixel in "17 13 104" "13 17 104" "13 13 0" "18 12 0" "15 13 0"; do
    checks=$((checks + 1))
    [ "$(vips getpoint dot45.v ${pixel% *} | tr -d ' ')" = "${pixel##* }" ] || fail "dot at 45 degrees: $pixel"
  done
  run 0 restore line30.png -o line30-out.png --width 6 --direction 30 --accuracy 1
  checks=$((checks + 1))
  local before after
  before=$(mean_difference rgb.png line30.png) after=$(mean_difference rgb.png line30-out.png)
  awk "BEGIN {exit !($after < 0.75 * $before)}" || fail "the motion did not come off: $before before, $after after"
}

test_members() {
  run 0 members --width 7 --direction 30
  silent "members"
  checks=$((checks + 1))
  grep -q '^bare line: 13 cells' out && grep -q '^operator of pass 2: unit' out || fail "members in text: $(cat out)"
  run 0 members --width 20 --direction 225 --json
  checks=$((checks + 1))
  python3 -c 'import json; m = json.load(open("out")); exit(m["angle"] != 45 or m["model_line"]["total"] != 298)' ||
    fail "members in JSON: $(cat out)"
  run 0 members --width 7
  checks=$((checks + 1))
  grep -q '^round blur of width 7' out || fail "a round member: $(cat out)"
  local width
  for width in 0 21 x; do
    run 2 members --width $width --direction 30
    says "\"$width\" is not a whole number in 1..20"
  done
  run 2 members --width 7 --direction 0
  says '"0" is not a whole number in 1..359'
  run 2 members --direction 30
  says "--width is required"
}

test_metadata() {
  local suffix name
  for suffix in jpg png webp tif; do
    run 0 restore photo.jpg -o "photo-out.$suffix" --width 3
    has "photo-out.$suffix" orientation 6
    has "photo-out.$suffix" width 150
    has "photo-out.$suffix" icc-profile-data "$(field icc-profile-data photo.jpg)"
    silent "photo to $suffix"
    [ $suffix = tif ] || has "photo-out.$suffix" exif-ifd0-Make "$(field exif-ifd0-Make photo.jpg)"
  done
  for name in icc-profile-data xmp-data exif-ifd0-Make; do
    [ -n "$(field $name photo.jpg)" ] || fail "the test photo lacks $name"
  done
}

# What libvips reads with a module of its own, which is loaded only for such files.
test_rare_formats() {
  vips copy rgb.png rare.jxl 2>err || {
    echo "this libvips writes no JPEG XL, so rare formats are not tested"
    return
  }
  cp rare.jxl named.jpg
  run 0 blur rare.jxl -o rare-out.png --width 3
  run 0 blur named.jpg -o named-out.png --width 3
  same_pixels rare-out.png named-out.png
  run 0 blur rgb.png -o rgb-out.jxl --width 3
  has rgb-out.jxl vips-loader jxlload
  run 0 blur rgb.png --format jxl --output-dir rare-out --width 3
  has rare-out/rgb.jxl vips-loader jxlload
  LD_DEBUG=files LD_DEBUG_OUTPUT=loaded-rare run 0 blur rgb.png -o rgb-out.jxl --width 3 --force
  holds "modules are loaded for a rare format" grep -q vips-modules loaded-rare.*
  cp photo.jpg large.jpg && truncate -s 65M large.jpg
  LD_DEBUG=files LD_DEBUG_OUTPUT=loaded-large run 0 blur large.jpg -o large-out.jpg --width 3
  holds "modules are loaded for a large file, which may be a slide" grep -q vips-modules loaded-large.*
  LD_DEBUG=files LD_DEBUG_OUTPUT=loaded-plain run 0 blur photo.jpg rgb.png deep.tif --output-dir plain-out --width 3
  holds "the loader told what it loads" grep -q libvips loaded-plain.*
  checks=$((checks + 1))
  ! grep -q vips-modules loaded-plain.* || fail "modules were loaded for plain formats"
}

test_colour() {
  run 0 restore cmyk.tif -o cmyk-out.png --width 3
  says "note: cmyk.tif: converted from cmyk to sRGB"
  has cmyk-out.png bands 3
  checks=$((checks + 1))
  [ "$(field icc-profile-data cmyk-out.png)" != "$(field icc-profile-data cmyk.tif)" ] || fail "the CMYK profile stayed"
  run 0 restore lab.tif -o lab-out.png --width 3 --quiet
  silent "--quiet"
  run 0 restore deep.png -o deep.jpg --width 3
  says "8 bits per sample"
  run 0 restore rgba.png -o rgba.jpg --width 3
  says "no transparency"
  vips cast rgb.png complex.v complex
  run 1 restore complex.v -o complex.png --width 3
  says "its samples are complex"
}

# begins FILE FIELD TEXT: like has, for fields that go on.
begins() {
  checks=$((checks + 1))
  [[ "$(field "$2" "$1")" = "$3"* ]] || fail "$1: $2 is \"$(field "$2" "$1")\", not \"$3\""
}

test_enlarge() {
  run 0 enlarge rgb.png -o large.png
  silent "enlarging"
  has large.png width 300
  has large.png height 280
  run 0 enlarge deep.png -o deep-large.png --threads 1
  has deep-large.png interpretation "$(field interpretation deep.png)"
  run 0 enlarge cmyk.tif -o cmyk-large.png
  says "note: cmyk.tif: converted from cmyk to sRGB"
  local suffix
  for suffix in jpg png webp tif; do
    run 0 enlarge photo.jpg -o "photo-large.$suffix"
    has "photo-large.$suffix" orientation 6
    has "photo-large.$suffix" icc-profile-data "$(field icc-profile-data photo.jpg)"
    [ $suffix = webp ] || begins "photo-large.$suffix" xres 5.6692  # pixels per mm: twice 72 per inch
    [ $suffix = tif ] && continue
    begins "photo-large.$suffix" exif-ifd0-XResolution 144000/1000
    begins "photo-large.$suffix" exif-ifd2-PixelXDimension 300
    begins "photo-large.$suffix" exif-ifd2-PixelYDimension 280
  done
  vips join rgb.png rgb.png pages.v vertical
  vips tiffsave pages.v pages.tif --page-height 140
  run 0 enlarge pages.tif -o page-large.tif
  says "only the first of 2 pages"
  has page-large.tif height 280
  has page-large.tif n-pages 1
  run 2 enlarge rgb.png -o a.png --width 3
  says "--width"
}

test_restore_and_enlarge() {
  run 0 restore soft.png -o restored.png --width 3
  run 0 enlarge restored.png -o one-by-one.png
  run 0 restore soft.png -o at-once.png --width 3 --enlarge
  same_pixels one-by-one.png at-once.png
  run 0 restore rgb.png -o only-larger.png --width 0 --enlarge
  same_pixels only-larger.png large.png
}

test_usage() {
  run 0 --version
  checks=$((checks + 1))
  grep -q '^kelvo [0-9.]* (library [0-9]*)$' out || fail "--version"
  local command
  for command in "" restore blur detect enlarge sheet compare demo members; do
    run 0 $command --help
    checks=$((checks + 1))
    grep -q "kelvo ${command:-restore} .*" out && grep -q "^Examples:" out || fail "$command --help has no examples"
  done
  run 2
  says "subcommand"
  run 2 sharpen rgb.png
  says '"sharpen"; there are restore, blur, enlarge, detect, sheet, compare, demo'
  run 2 blur rgb.png -o a.png
  says "--width is required"
  run 2 detect
  says "input is required"
  run 2 restore rgb.png -o a.png --width 3 --sharper
  says "--sharper"
  run 2 blur rgb.png -o a.png --width 21
  says '"21" is not a whole number in 0..20'
  run 2 restore rgb.png -o a.png --width 3.5
  says '"3.5" is not a whole number in 0..20 and not "auto", "auto*FACTOR" or "auto+NUMBER"'
  run 2 restore rgb.png -o a.png --jpeg some
  says '"some" is not a whole number in 0..80 and not "auto"'
  run 2 restore rgb.png -o a.png --width 3 --noise 4
  says '"4" is not a whole number in -1..3'
  run 2 restore rgb.png -o a.png --width 3 --accuracy -3
  says "-2..2"
  run 2 restore rgb.png -o a.png --width 3 --jpeg 81
  says "0..80"
  local direction
  for direction in 0 360 -5 30.5 north; do
    for command in restore blur; do
      run 2 $command rgb.png -o a.png --width 3 --direction $direction
      says "\"$direction\" is not a whole number in 1..359"
    done
  done
  run 2 restore rgb.png -o a.png --direction 30
  says "--direction needs --width"
  run 2 restore rgb.png -o a.png --width 3 --threads 0
  says "1..1024"
  checks=$((checks + 1))
  [ ! -e a.png ] || fail "wrong usage wrote a file"
}

test_files() {
  run 1 restore none.png -o a.png --width 3
  says 'cannot read "none.png": No such file'
  run 2 restore . -o a.png --width 3
  says "is a folder; use --output-dir"
  : >empty.png
  run 1 restore empty.png -o a.png --width 3
  says "empty"
  echo "no picture at all" >text.png
  run 1 restore text.png -o a.png --width 3
  says 'cannot read "text.png": not a picture in a known format'
  run 1 restore rgb.png -o a.xyz --width 3
  says 'its suffix ".xyz"'
  run 1 restore rgb.png -o a --width 3
  says 'its suffix ""'
  run 1 restore rgb.png -o "a.png[compression=9]" --width 3
  says 'its suffix ".png[compression=9]"'
  run 1 restore rgb.png -o missing/a.png --width 3
  says 'there is no directory "missing"'
  mkdir -p folder.png
  run 1 restore rgb.png -o folder.png --width 3 --force
  says "is a directory"
  local name
  for name in gray.png photo.jpg deep.tif photo-out.webp; do
    head -c $(($(stat -c %s "$name") * 2 / 3)) "$name" >"cut-$name"
    run 1 restore "cut-$name" -o a.png --width 3
    says "\"cut-$name\""
  done
  checks=$((checks + 1))
  [ ! -e a.png ] || fail "a failed run wrote a file"
}

test_names() {
  mkdir -p "odd [folder]"
  local name
  for name in "with space.png" "in[brackets].png" "end.png[Q=5]" 'quo"te[.png' "colon:b.png" "ümlaut.png"; do
    cp rgb.png "odd [folder]/$name"
    run 0 restore "odd [folder]/$name" -o "odd [folder]/out $name.png" --width 1
    checks=$((checks + 1))
    [ -s "odd [folder]/out $name.png" ] || fail "no output for $name"
  done
  cp rgb.png ./-dash.png
  run 0 restore --output=-long.png --width 1 -- -dash.png
  run 0 restore --width 1 -o -short.png -- -dash.png
  same_pixels ./-long.png ./-short.png
}

test_force() {
  cp soft.png target.png
  run 1 restore rgb.png -o target.png --width 3
  says "use --force"
  cmp -s soft.png target.png || fail "a refused run changed the target"
  chmod 640 target.png
  run 0 restore rgb.png -o target.png --width 3 --force
  differ soft.png target.png
  checks=$((checks + 1))
  [ "$(stat -c %a target.png)" = 640 ] || fail "permissions changed"
  cp rgb.png place.png
  run 1 restore place.png -o place.png --width 3
  run 0 restore place.png -o place.png --width 3 --force
  same_pixels place.png target.png
  vips tiffsave rgb.png place.tif --tile
  run 0 restore place.tif -o place.tif --width 3 --force
  same_pixels place.tif target.png
  ln -s place.png link.png
  run 0 restore rgb.png -o link.png --width 5 --force
  checks=$((checks + 1))
  [ -L link.png ] || fail "a symbolic link was replaced"
  differ place.png target.png
  cp place.png kept.png
  run 1 restore cut-gray.png -o kept.png --width 3 --force
  cmp -s place.png kept.png || fail "a failed run changed the target"
}

# Every level that this machine has gives the same file; another name is refused with a list of them.
test_levels() {
  export KELVO_CPU=none
  run 1 restore soft.png -o none.png --width 5
  says "KELVO_CPU=none: this machine has no such level; use one of plain, "
  holds "a refused level wrote a file" [ ! -e none.png ]
  local level levels
  levels=$(sed -n 's/.*use one of \(.*\), or leave it unset.*/\1/p' err | tr -d ,)
  for level in "" $levels; do
    KELVO_CPU=$level
    run 0 restore soft.png -o "level-$level.png" --width 5 --colour auto
    silent "level $level"
    holds "level $level gives another file" cmp level-.png "level-$level.png"
  done
  unset KELVO_CPU
}

# --colour auto is luma from JPEG strength 10 on.
test_colour_choice() {
  vips rot rgb.png turned.v d180 && vips bandjoin "gray.png turned.v" mixed.v && vips extract_band mixed.v three.v 0 --n 3
  vips copy three.v tinted.png --interpretation srgb
  local strength choice
  for strength in 9 10; do
    for choice in auto luma channels; do
      run 0 restore tinted.png -o $choice.png --width 4 --colour $choice --jpeg $strength --force
    done
    differ luma.png channels.png
    if [ $strength = 9 ]; then same_pixels auto.png channels.png; else same_pixels auto.png luma.png; fi
  done
}

# Sends signal $1 to process $2 once its temporary file is there, and waits for its end.
stop_once_begun() {
  for _ in $(seq 100); do
    [ -n "$(find . -name '.kelvo-*')" ] && break
    sleep 0.05
  done
  sleep 0.1
  kill -s "$1" "$2"
  wait "$2"
}

# Stops a long run with signal $1.
test_signal() {
  local signal=$1 status
  checks=$((checks + 1))
  cp soft.png kept.png
  env --default-signal="$signal" "$kelvo" restore big.png -o kept.png --width 7 --accuracy 2 --force 2>err &
  stop_once_begun "$signal" $!
  status=$?
  [ $status = $((128 + $(kill -l "$signal"))) ] || fail "SIG$signal ended with $status"
  [ -z "$(find . -name '.kelvo-*')" ] || fail "SIG$signal left a temporary file"
  cmp -s soft.png kept.png || fail "SIG$signal changed the target"
}

# Measuring the noise of 400 megapixels takes long enough to be stopped in it, and ends before it is done.
test_signal_while_measuring() {
  checks=$((checks + 1))
  vips black vast.v 1 1
  python3 - <<'PYTHON'
header = bytearray(open("vast.v", "rb").read()[:64])
header[4:12] = (20000).to_bytes(4, "little") * 2  # columns and rows; the pixels are a hole
with open("vast.v", "wb") as file:
    file.write(header)
    file.truncate(64 + 20000 * 20000)
PYTHON
  env --default-signal=INT "$kelvo" restore vast.v -o vast.png --width 3 --jpeg 0 --threads 1 --json >out 2>err &
  stop_once_begun INT $!
  told '"outcome":"interrupted"'
  told '"error":"interrupted"'
  rm vast.v
}

test_full_disc() {
  local suffix
  cp soft.png keep-limit.png
  for suffix in png jpg tif webp; do  # a limit on file size needs no privileges
    checks=$((checks + 1))
    (
      trap '' XFSZ
      ulimit -f 4
      exec "$kelvo" restore rgb.png -o "limit.$suffix" --width 3 --quiet
    ) 2>err && fail "no error beyond the limit on file size, $suffix"
    says "cannot write \"limit.$suffix\""
    [ -z "$(find . -name '.kelvo-*' -o -name 'limit.*')" ] || fail "a file remained beyond the limit, $suffix"
  done
  mkdir disc
  if ! mount -t tmpfs -o size=8k none disc 2>/dev/null; then
    echo "SKIPPED: full disk (this user may not mount a tmpfs)"
    return
  fi
  for suffix in png jpg tif webp; do
    run 1 restore rgb.png -o "disc/full.$suffix" --width 3
    says "disc/full.$suffix"
    [ -z "$(ls -A disc)" ] || fail "something remained on the full disk, $suffix"
  done
  umount disc
}

# Squares, sharp and defocused, and the latter as a JPEG cut so that its grid lies at 5,3.
make_subjects() {
  vips black dark.v 27 27 && vips linear dark.v light.v 0 200 && vips linear dark.v grey.v 0 40
  vips join light.v grey.v pair.v horizontal && vips join grey.v light.v turned.v horizontal
  vips join pair.v turned.v board.v vertical && vips replicate board.v many.v 6 5
  vips cast many.v squares.png uchar
  "$kelvo" blur squares.png -o round.png --width 4 || exit 1
  vips jpegsave round.png round.jpg --Q 40
  vips extract_area round.jpg cut.png 3 5 280 230
}

test_detect() {
  make_subjects
  mkdir -p album && cp round.jpg album/2.jpg && cp squares.png album/1.png && echo "no picture" >album/notes.txt
  run 0 detect squares.png round.png cut.png album
  silent "detect"
  checks=$((checks + 1))
  awk 'NR == 1 {next} {w[$1] = $5; n++} END {
    exit !(n == 5 && w["squares.png"] == 0 && w["album/1.png"] == 0 && w["round.png"] >= 3 && w["round.png"] <= 5)}' out ||
    fail "detect: $(cat out)"
  checks=$((checks + 1))
  [ "$(awk '$1 == "cut.png" || $1 == "album/2.jpg" {print $NF}' out)" = "5,3
0,0" ] || fail "grids: $(cat out)"
  run 1 detect --json squares.png none.png album cut-gray.png
  says 'cannot read "none.png": No such file'
  says '"cut-gray.png"'
  checks=$((checks + 1))
  python3 - <<'PYTHON' || fail "JSON: $(cat out)"
import json
list_ = json.load(open("out"))
assert [entry["file"] for entry in list_] == ["squares.png", "none.png", "album/1.png", "album/2.jpg", "cut-gray.png"]
assert [("error" in entry) for entry in list_] == [False, True, False, False, True]
jpeg = list_[3]
assert jpeg["columns"] == 324 and jpeg["rows"] == 270 and jpeg["jpeg"]["strength"] >= 20
assert jpeg["jpeg"]["column_phase"] == jpeg["jpeg"]["row_phase"] == 0
assert len(jpeg["votes"]) == len(jpeg["smoothed_votes"]) == 21 and sum(jpeg["votes"]) > 0
PYTHON
  mkdir -p bare
  run 1 detect bare
  says 'no picture in the folder "bare"'
  run 0 detect --threads 1 cut.png && cp out one
  run 0 detect --threads 3 cut.png
  cmp -s one out || fail "threads change what is detected"
}

test_auto() {
  mkdir -p "auto" && cp round.png auto/soft.png && cp squares.png auto/sharp.png && cp cut.png auto/cut.png
  run 0 restore auto/soft.png
  silent "restoring without options"
  told "auto/soft.png: blur of width "
  told "into auto/soft-restored.png"
  local width
  width=$(sed -n 's/.*restored with width \([0-9]*\).*/\1/p' out)
  run 0 restore auto/soft.png -o auto/given.png --width "$width" --jpeg 0 --quiet
  same_pixels auto/soft-restored.png auto/given.png
  [ ! -s out ] || fail "--quiet printed: $(cat out)"
  run 1 restore auto/soft.png
  says "use --force"
  # The grid of a cut JPEG goes to the library: another phase gives another picture.
  run 0 restore auto/cut.png --width "$width"
  told "grid at 5,3"
  told "at 5,3, into auto/cut-restored.png"
  vips extract_area auto/cut.png auto/moved.png 1 0 279 230
  run 0 restore auto/cut.png -o auto/given.png --width "$width" --jpeg 60 --force
  told "JPEG strength 60 at 5,3"
  run 0 restore auto/moved.png --width "$width" --jpeg auto
  told "at 4,3"
  # Sharp: nothing is written unless asked.
  run 0 restore auto/sharp.png --width auto
  told "no blur"
  told "nothing written"
  checks=$((checks + 1))
  [ ! -e auto/sharp-restored.png ] || fail "a sharp picture was copied"
  run 0 restore auto/sharp.png -o auto/copy.png
  told "written as it is"
  same_pixels auto/sharp.png auto/copy.png
  run 0 restore auto/sharp.png --width 0
  same_pixels auto/sharp.png auto/sharp-restored.png
  vips black auto/black.png 200 150
  run 0 restore auto/black.png
  told "no edges"
}

test_demo() {
  run 0 demo "new/demo folder" --width 3 --quiet
  local name
  for name in sharp blurred restored side-by-side; do
    checks=$((checks + 1))
    [ -s "new/demo folder/$name.png" ] || fail "the demo wrote no $name.png"
  done
  checks=$((checks + 1))
  awk '$1 == "blurred" {before = $2} $1 == "restored" {after = $2} END {exit !(after > before + 1)}' out ||
    fail "the demo did not get better: $(cat out)"
  run 1 demo "new/demo folder"
  says "use --force"
  run 0 demo "new/demo folder" --force --quiet
}

bash "$make_pictures" || exit 1
test_good_runs
test_direction
test_members
test_metadata
test_rare_formats
test_colour
test_enlarge
test_restore_and_enlarge
test_usage
test_files
test_names
test_force
test_levels
test_colour_choice
for signal in INT TERM; do test_signal $signal; done
test_signal_while_measuring
test_full_disc
test_detect
test_auto
test_demo
finish
