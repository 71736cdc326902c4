#!/usr/bin/env bash
# The objects of an instruction set define nothing that the linker could hand to others: all that is visible outside an
# object is in the namespace of its level. A shared inline function, compiled here for a newer machine and not inlined,
# would be a weak symbol that may run on older ones.
#   level_symbols_test.sh LEVEL OBJECT...
set -euo pipefail
level=$1
shift
own="^_Z+N?K?5kelvo${#level}${level}[0-9]"  # more than one Z: what is local to a function, a lambda
thunk='^__x86\.get_pc_thunk\.'  # where 32-bit code stands in memory; no vectors
symbols=$(nm -g --defined-only "$@" | awk 'NF == 3 {print $3}')
grep -qE "$own" <<< "$symbols" || { echo "no symbol of $level in: $*"; exit 1; }
if others=$(grep -vE -e "$own" -e "$thunk" <<< "$symbols"); then
  printf 'compiled for %s, but visible to all:\n%s\n' "$level" "$others"
  exit 1
fi
