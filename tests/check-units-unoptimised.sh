#!/bin/sh
# The same of units compiled without optimisation, where nothing disappears by being inlined. Attributes force no inlining
# either: every function shows, and compiling takes a tenth of the time.
# usage: check-units-unoptimised.sh SOURCE_FOLDER COMPILER [COMPILER FLAGS...]
set -eu
here=$(cd "$(dirname "$0")" && pwd)
source=$1
shift
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir "$work/isa"
sed -n 's/^KRO_SET(\([a-z0-9]*\),.*"\([^"]*\)")$/\1 \2/p' "$source/table/sets.def" >"$work/sets"
while read -r set flags; do
    # shellcheck disable=SC2086 # several flags
    "$@" -std=c++17 -O0 -Dalways_inline=unused -fvisibility=hidden -fno-exceptions -fno-rtti $flags \
        -I "$source" -I "$source/../include" -c "$source/isa/$set.cpp" -o "$work/isa/$set.o"
done <"$work/sets"
"$here/check-units.sh" "$source/table/sets.def" "$work"/isa/*.o
