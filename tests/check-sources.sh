#!/bin/sh
# kro built as a part of a foreign project: by add_subdirectory and by FetchContent, shared and static. That project is
# a debug build that takes warnings for errors. What it installs of kro serves others as well.
# usage: check-sources.sh SOURCE CONSUMER LANGUAGES C-COMPILER C++-COMPILER FLAGS
set -eu
source=$1 consumer=$2 languages=$3 cc=$4 cxx=$5 flags=$6
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
quietly() { "$@" >"$work/log" 2>&1 || { cat "$work/log"; exit 1; }; }
configure() {
    quietly cmake -S "$consumer" -B "$work/build" -DCLIENT_KRO_SOURCE="$source" \
        -DCLIENT_LANGUAGES="$(echo "$languages" | tr ' ' ';')" \
        -DCMAKE_C_COMPILER="$cc" -DCMAKE_C_FLAGS="$flags" -DCMAKE_CXX_COMPILER="$cxx" -DCMAKE_CXX_FLAGS="$flags" \
        -DCMAKE_EXPORT_COMPILE_COMMANDS=ON -DCMAKE_COMPILE_WARNING_AS_ERROR=ON -DKRO_INSTALL=ON "$@"
    grep '"command".*/isa/' "$work/build/compile_commands.json" >"$work/commands"
}

configure -DCLIENT_KRO=subdirectory
if grep -v -e ' -O3 ' "$work/commands"; then
    echo "kernels are not optimized in a project without a build type"
    exit 1
fi
# The second way builds into the first one's folder: nothing but the link differs.
for way in subdirectory fetch; do
    for form in -UBUILD_SHARED_LIBS -DBUILD_SHARED_LIBS=OFF; do
        # Formulas not inlined by force compile in a tenth of the time, and three instruction sets stand for all.
        configure -DCLIENT_KRO=$way -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS="$flags -DKRO_FEWER_SETS" \
            -DCMAKE_CXX_FLAGS_DEBUG="-g -Dalways_inline=unused" $form
        if grep -e -Werror "$work/commands"; then
            echo "kro's own files are compiled with -Werror"
            exit 1
        fi
        quietly cmake --build "$work/build" --parallel 2
        for client in "$work"/build/client-*; do
            shared=$(readelf -d "$client" | grep -c 'NEEDED.*libkro' || true)
            case $form$shared in
                -UBUILD_SHARED_LIBS1 | -DBUILD_SHARED_LIBS=OFF0) ;;
                *) echo "$client: $shared shared kro with $form"; exit 1 ;;
            esac
            "$client"
        done
        echo "$way serves a foreign project ($form)"
    done
done
rm -f "$work"/build/kro/src/libkro.so*
"$(dirname "$0")/check-install.sh" "$work/build" "$consumer" "$languages" "$cc" "$cxx" "$flags"
