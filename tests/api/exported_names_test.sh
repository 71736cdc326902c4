#!/usr/bin/env bash
# The shared library exports the named functions and nothing else, and carries its SONAME.
#   exported_names_test.sh LIBRARY
set -eu
library=$1
expected='KVDLL_DefocusTile
KVDLL_DetectBlurWidthForTile
KVDLL_DetectJPGCompressionForTile
KVDLL_FocusTile
KVDLL_GetHeapSize
KVDLL_GetVersionNumber
KVDLL_IncreaseResolution
kelvo_defocus_tile
kelvo_detect_blur_width_for_tile
kelvo_detect_jpg_compression_for_tile
kelvo_focus_tile
kelvo_focus_tile_with
kelvo_increase_resolution'
actual=$(nm -D --defined-only "$library" | awk '{print $3}' | LC_ALL=C sort)
diff <(printf '%s\n' "$expected") <(printf '%s\n' "$actual")
objdump -p "$library" | grep -q 'SONAME  *libkelvo\.so\.5$'
