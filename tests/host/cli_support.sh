# What the tests of the program share; to be sourced with the program as $1. Makes a folder to work in and enters it.
set -u
kelvo=$(realpath "$1")
make_pictures=$(realpath "$(dirname "$0")/make_pictures.sh")
work=$(mktemp -d)
trap 'umount "$work/disc" 2>/dev/null; rm -rf "$work"' EXIT
cd "$work" || exit 1
failures=0 checks=0

fail() {
  failures=$((failures + 1))
  echo "FAILED: $*"
  sed 's/^/    stderr: /' err
}

# run STATUS ARGUMENT...: runs kelvo, expects the exit status; output is in the files out and err.
run() {
  local expected=$1 status left
  shift
  checks=$((checks + 1))
  "$kelvo" "$@" >out 2>err
  status=$?
  [ "$status" = "$expected" ] || fail "kelvo $* ended with $status, not $expected"
  left=$(find "$work" -name '.kelvo-*')
  [ -z "$left" ] || fail "kelvo $* left $left"
}

# says TEXT: the last run had this in its messages.
says() {
  checks=$((checks + 1))
  grep -qF -- "$1" err || fail "no message with: $1"
}

# told TEXT: the last run printed this.
told() {
  checks=$((checks + 1))
  grep -qF -- "$1" out || fail "not printed: $1 (but $(cat out))"
}

# holds WHAT COMMAND...: the command succeeds.
holds() {
  local what=$1
  shift
  checks=$((checks + 1))
  "$@" || fail "$what"
}

silent() {
  [ ! -s err ] || fail "unexpected message after: $*"
}

field() { vipsheader -f "$1" "$2" 2>/dev/null; }

# has FILE FIELD VALUE
has() {
  checks=$((checks + 1))
  [ "$(field "$2" "$1")" = "$3" ] || fail "$1: $2 is \"$(field "$2" "$1")\", not \"$3\""
}

largest_difference() {
  vips subtract "$1" "$2" difference.v && vips abs difference.v absolute.v && vips max absolute.v
}
mean_difference() {
  vips subtract "$1" "$2" difference.v && vips abs difference.v absolute.v && vips avg absolute.v
}
same_pixels() {
  checks=$((checks + 1))
  [ "$(largest_difference "$1" "$2")" = 0.000000 ] || fail "$1 and $2 differ"
}
differ() {
  checks=$((checks + 1))
  [ "$(largest_difference "$1" "$2")" != 0.000000 ] || fail "$1 and $2 are equal"
}

finish() {
  echo "$checks checks, $failures failures"
  [ "$failures" = 0 ]
}
