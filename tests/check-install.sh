#!/bin/sh
# What a build installs serves foreign projects, through CMake and through pkg-config, in C and in C++.
# usage: check-install.sh BUILD CONSUMER LANGUAGES C-COMPILER C++-COMPILER FLAGS
set -eu
build=$1 consumer=$2 languages=$3 cc=$4 cxx=$5 flags=$6
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix
quietly() { "$@" >"$work/log" 2>&1 || { cat "$work/log"; exit 1; }; }

quietly cmake --install "$build" --prefix "$prefix"

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
form=shared
[ -z "$(find "$prefix" -name libkro.a)" ] || form=static

# Runs a client, which must have taken in libkro.a where that is what there is.
run() {
    if [ $form = static ] && readelf -d "$1" | grep -q 'NEEDED.*libkro'; then
        echo "$1 needs a shared libkro"
        exit 1
    fi
    "$1"
}

# A project in C alone, too: what libkro.a needs must not depend on a C++ compiler being around.
for set in C "$languages"; do
    quietly cmake -S "$consumer" -B "$work/build" -DCMAKE_PREFIX_PATH="$prefix" \
        -DCLIENT_LANGUAGES="$(echo "$set" | tr ' ' ';')" \
        -DCMAKE_C_COMPILER="$cc" -DCMAKE_C_FLAGS="$flags" -DCMAKE_CXX_COMPILER="$cxx" -DCMAKE_CXX_FLAGS="$flags"
    quietly cmake --build "$work/build"
    for client in "$work"/build/client-*; do
        run "$client"
    done
    rm -r "$work/build"
    echo "find_package serves a foreign project in $set ($form)"
done

if ! command -v pkg-config >/dev/null; then
    echo "pkg-config is not installed: kro.pc not tried"
    exit 0
fi
PKG_CONFIG_PATH=$(dirname "$pc")
export PKG_CONFIG_PATH
libraries=$(pkg-config --variable=libdir kro)
case $(pkg-config --static --libs kro) in
    *-lkro*-lstdc++* | *-lkro*-lc++*) ;;
    *) echo "kro.pc lacks the C++ runtime, which programs in C need with libkro.a"; exit 1 ;;
esac
for option in --shared --static; do
    [ $form$option != static--shared ] || continue
    for language in $languages; do
        case $language in
            C) compile="$cc $consumer/../header_client.c" ;;
            CXX) compile="$cxx -std=c++17 -pthread $consumer/client.cpp" ;;
        esac
        # shellcheck disable=SC2046,SC2086
        quietly $compile $flags $(pkg-config $option --cflags --libs kro) -Wl,-rpath,"$libraries" -o "$work/client"
        run "$work/client"
        echo "pkg-config $option serves a foreign project in $language ($form)"
    done
done
