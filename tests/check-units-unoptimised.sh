#!/bin/sh
# The same of units compiled without optimisation, where nothing disappears by being inlined. Attributes force no inlining
# either: every function shows, and compiling takes a tenth of the time.
# usage: check-units-unoptimised.sh SOURCE_FOLDER SETS_DEF COMPILER [COMPILER FLAGS...]
set -eu
here=$(cd "$(dirname "$0")" && pwd)
source=$1 list=$2
shift 2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir "$work/isa"
sed -n 's/^KRO_SET(\([a-z0-9]*\),.*"\([^"]*\)")$/\1 \2/p' "$list" >"$work/sets"
while read -r set flags; do
    # shellcheck disable=SC2086 # several flags
    "$@" -std=c++17 -O0 -Dalways_inline=unused -fvisibility=hidden -fno-exceptions -fno-rtti $flags \
        -I "$source" -I "$source/../include" -c "$source/isa/$set.cpp" -o "$work/isa/$set.o"
done <"$work/sets"
"$here/check-units.sh" "$list" "$work"/isa/*.o
