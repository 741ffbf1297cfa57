#!/bin/sh
# The example's folder alone, copied somewhere else, builds against an installed kro and shows a frame, without Aravis.
# usage: check-copied.sh BUILD EXAMPLE C-COMPILER C++-COMPILER
set -eu
build=$1 example=$2 cc=$3 cxx=$4
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
quietly() { "$@" >"$work/log" 2>&1 || { cat "$work/log"; exit 1; }; }

quietly cmake --install "$build" --prefix "$work/prefix"
cp -R "$example" "$work/copied"
rm -r "$work/copied/tests"
quietly cmake -S "$work/copied" -B "$work/build" -DCMAKE_PREFIX_PATH="$work/prefix" -DKRO_CAMERA_ARAVIS=OFF \
    -DCMAKE_C_COMPILER="$cc" -DCMAKE_CXX_COMPILER="$cxx" -DCMAKE_BUILD_TYPE=Debug
quietly cmake --build "$work/build"
quietly cmake --install "$work/build" --prefix "$work/prefix"

head -c 3072 /dev/zero | tr '\0' '\200' >"$work/grey_64x48_BayerRG8.raw"
cd "$work"
SDL_VIDEODRIVER=dummy LD_LIBRARY_PATH=$(dirname "$(find "$work/prefix" -name libkro.so)") \
    "$work/prefix/bin/kro-camera" --replay grey_64x48_BayerRG8.raw -n 1 --record png
set -- *.png
[ -s "$1" ] || { echo "no picture"; exit 1; }
echo "a copy of the example serves an installed kro"
