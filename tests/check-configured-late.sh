#!/bin/sh
# A build folder that was set up before there was a compiler is refused, as it would optimise nothing; --fresh mends it.
# usage: check-configured-late.sh SOURCE C-COMPILER C++-COMPILER
set -eu
source=$1 cc=$2 cxx=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
setup() {
    cmake -S "$source" -B "$work/build" -DCMAKE_BUILD_TYPE=Release -DCMAKE_C_COMPILER="$cc" -DCMAKE_CXX_COMPILER="$1" \
        -DBUILD_TESTING=OFF -DKRO_BUILD_CLI=OFF -DKRO_BUILD_BENCH=OFF ${2:+"$2"} >"$work/log" 2>&1
}
! setup "$work/no-compiler" || { echo "configured without a compiler"; exit 1; }
! setup "$cxx" || { echo "configured with the flags of a run without a compiler"; exit 1; }
grep -q 'add --fresh' "$work/log" || { cat "$work/log"; exit 1; }
setup "$cxx" --fresh || { cat "$work/log"; exit 1; }
grep -q '^CMAKE_CXX_FLAGS_RELEASE:STRING=.*-O' "$work/build/CMakeCache.txt" || { echo "nothing is optimised"; exit 1; }
