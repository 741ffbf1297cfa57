#!/bin/sh
# The installed package serves a foreign project, through CMake and through pkg-config.
# usage: check-install.sh BUILD CONSUMER C-COMPILER C-FLAGS
set -eu
build=$1 consumer=$2 cc=$3 flags=$4
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix

cmake --install "$build" --prefix "$prefix" >/dev/null
cmake -S "$consumer" -B "$work/build" -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_C_COMPILER="$cc" -DCMAKE_C_FLAGS="$flags" \
    >"$work/log" 2>&1 || { cat "$work/log"; exit 1; }
cmake --build "$work/build" >"$work/log" 2>&1 || { cat "$work/log"; exit 1; }
"$work/build/client"
echo "find_package serves a foreign project"

# Another folder in PATH must not stand in for what was not installed.
if [ -x "$prefix/bin/kro" ]; then
    PATH=/usr/bin:/bin "$prefix/bin/kro" formats >/dev/null
    echo "the installed command finds its library"
    if [ -x "$build/bench/kro-bench" ]; then
        PATH=/usr/bin:/bin "$prefix/bin/kro" bench --list >/dev/null
        echo "the installed command finds kro-bench"
    fi
fi

pc=$(find "$prefix" -name kro.pc)
[ -n "$pc" ] || { echo "no kro.pc installed"; exit 1; }
if ! command -v pkg-config >/dev/null; then
    echo "pkg-config is not installed: kro.pc not tried"
    exit 0
fi
PKG_CONFIG_PATH=$(dirname "$pc")
export PKG_CONFIG_PATH
libraries=$(pkg-config --variable=libdir kro)
# shellcheck disable=SC2046,SC2086
"$cc" $flags "$consumer/../header_client.c" $(pkg-config --cflags --libs kro) -Wl,-rpath,"$libraries" -o "$work/client"
"$work/client"
echo "pkg-config serves a foreign project"
