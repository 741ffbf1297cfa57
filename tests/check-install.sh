#!/bin/sh
# What a build installs serves foreign projects, through CMake and through pkg-config, in C and in C++.
# usage: check-install.sh BUILD CONSUMER LANGUAGES C-COMPILER C++-COMPILER FLAGS
set -eu
build=$1
shift
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix
cmake --install "$build" --prefix "$prefix" >"$work/log" 2>&1 || { cat "$work/log"; exit 1; }

# Another folder in PATH must not stand in for what was not installed.
if [ -x "$prefix/bin/kro" ]; then
    PATH=/usr/bin:/bin "$prefix/bin/kro" formats >/dev/null
    echo "the installed command finds its library"
    if [ -x "$build/bench/kro-bench" ]; then
        PATH=/usr/bin:/bin "$prefix/bin/kro" bench --list >/dev/null
        echo "the installed command finds kro-bench"
    fi
fi
"$(dirname "$0")/check-prefix.sh" "$prefix" "$@"
