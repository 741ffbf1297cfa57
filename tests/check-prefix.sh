#!/bin/sh
# An installation serves foreign projects, through CMake and through pkg-config, in C and in C++, with the library in each
# form that is there.
# usage: check-prefix.sh PREFIX CONSUMER LANGUAGES C-COMPILER C++-COMPILER FLAGS
set -eu
prefix=$1 consumer=$2 languages=$3 cc=$4 cxx=$5 flags=$6
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
quietly() { "$@" >"$work/log" 2>&1 || { cat "$work/log"; exit 1; }; }

pc=$(find "$prefix" -name kro.pc)
[ -n "$pc" ] || { echo "no kro.pc installed"; exit 1; }
libraries=$(find "$prefix" -name libkro.so -o -name libkro.a)
case $libraries in
    *libkro.so*libkro.a* | *libkro.a*libkro.so*) forms="shared static" targets="kro::kro kro::kro_static" ;;
    *libkro.so*) forms=shared targets=kro::kro ;;
    *libkro.a*) forms=static targets=kro::kro ;;
    *) echo "no library installed"; exit 1 ;;
esac

# FORM CLIENT: runs a client, which must have taken in the library's form.
run() {
    needed=$(readelf -d "$2" | grep -c 'NEEDED.*libkro' || true)
    case $1$needed in
        shared1 | static0) ;;
        *) echo "$2 ($1) needs $needed shared libkro"; exit 1 ;;
    esac
    "$2"
}

# A project in C alone, too: what libkro.a needs must not depend on a C++ compiler being around.
for set in C "$languages"; do
    form=${forms%% *}
    for target in $targets; do
        quietly cmake -S "$consumer" -B "$work/build" -DCMAKE_PREFIX_PATH="$prefix" -DCLIENT_TARGET="$target" \
            -DCLIENT_LANGUAGES="$(echo "$set" | tr ' ' ';')" \
            -DCMAKE_C_COMPILER="$cc" -DCMAKE_C_FLAGS="$flags" -DCMAKE_CXX_COMPILER="$cxx" -DCMAKE_CXX_FLAGS="$flags"
        quietly cmake --build "$work/build"
        for client in "$work"/build/client-*; do
            run "$form" "$client"
        done
        rm -r "$work/build"
        echo "find_package serves a foreign project in $set ($form)"
        form=static
    done
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
for form in $forms; do
    # What --static lists serves a library of either form; the linker takes libkro.so where both are.
    case $forms,$form in
        *,shared) options="--shared --static" link=-Wl,-rpath,$libraries ;;
        static,static) options=--static link='' ;;
        *) options=--static link=-static ;;
    esac
    for option in $options; do
        for language in $languages; do
            case $language in
                C) compile="$cc $consumer/../header_client.c" ;;
                CXX) compile="$cxx -std=c++17 -pthread $consumer/client.cpp" ;;
            esac
            # shellcheck disable=SC2046,SC2086
            quietly $compile $flags $(pkg-config $option --cflags --libs kro) $link -o "$work/client"
            run "$form" "$work/client"
            echo "pkg-config $option serves a foreign project in $language ($form)"
        done
    done
done
