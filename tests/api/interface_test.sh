#!/usr/bin/env bash
# The block as a C89 compiler lays it out is the one that is pinned.
#   interface_test.sh [EMULATOR [OPTION...]] PROGRAM
set -eu
diff <(grep -v '^export' "$(dirname "$0")/interface.txt") <("$@")
