#!/usr/bin/env bash
# Installs a build into an empty prefix and uses it as a stranger would: by CMake package and by pkg-config.
#   package_test.sh BUILD_DIRECTORY
set -eu
here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cmake --install "$1" --prefix "$work/prefix" > "$work/install.log"

cmake -G Ninja -S "$here" -B "$work/build" -DCMAKE_PREFIX_PATH="$work/prefix" > "$work/configure.log"
cmake --build "$work/build" > "$work/build.log"
"$work/build/consumer"

pc=$(dirname "$(find "$work/prefix" -name kelvo.pc)")
flags=$(PKG_CONFIG_PATH=$pc pkg-config --define-variable=prefix="$work/prefix" --cflags --libs kelvo)
cc "$here/consumer.c" $flags -o "$work/consumer"
LD_LIBRARY_PATH=$(dirname "$pc") "$work/consumer"
