#!/bin/sh
# The header's names, the version script's and the library's exported symbols are one and the same list.
# usage: check-exports.sh CC HEADER MAP LIBRARY
set -eu
cc=$1 header=$2 map=$3 library=$4
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

"$cc" -E -P "$header" | tr '\n' ' ' | tr ';' '\n' | sed -n 's/.*visibility[^)]*))) *//p' |
    sed 's/ *(.*//; s/.*[ *]//' | LC_ALL=C sort >"$work/header"
sed 's/#.*//' "$map" | tr -d ' \t' | sed -n 's/^\([A-Za-z_][A-Za-z0-9_]*\);$/\1/p' | LC_ALL=C sort >"$work/map"
nm -D --defined-only "$library" | awk '$2 != "A" { sub(/@.*/, "", $3); print $3 }' | LC_ALL=C sort >"$work/library"

count=$(wc -l <"$work/header")
[ "$count" -gt 100 ] || { echo "only $count names found in $header"; exit 1; }
status=0
for list in map library; do
    if ! diff -u "$work/header" "$work/$list"; then
        echo "the header's names and the $list's differ"
        status=1
    fi
done
[ $status -eq 0 ] && echo "$count exported names"
exit $status
