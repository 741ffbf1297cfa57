#!/bin/sh
# The headers' names, the version script's and the library's exported symbols are one and the same list, and each
# header's names have one version: KRO_0 the first header's, KRO_1 the second one's, and so on.
# usage: check-exports.sh CC MAP LIBRARY INCLUDE-FOLDER HEADER...
set -eu
cc=$1 map=$2 library=$3 include=$4
shift 4
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export LC_ALL=C

# Names that a header declares, with those that it includes.
declared() {
    "$cc" -E -P -I"$include" "$1" | tr '\n' ' ' | tr ';' '\n' |
        sed -n 's/.*visibility[^)]*))) *//p' | sed 's/ *(.*//; s/.*[ *]//'
}

node=0
: >"$work/headers"
: >"$work/map"
for header in "$@"; do
    declared "$header" | while read -r name; do
        grep -q " $name\$" "$work/headers" || echo "KRO_$node $name"
    done >"$work/new"
    cat "$work/new" >>"$work/headers"
    sed 's/#.*//' "$map" | awk -v node=KRO_$node '/{/ { inside = $1 == node } /}/ { inside = 0 }
        inside && sub(/;$/, "") && $1 != "*" { print node, $1 }' >>"$work/map"
    node=$((node + 1))
done
nm -D --defined-only --with-symbol-versions "$library" |
    awk '$2 != "A" { split($3, part, /@+/); print part[2], part[1] }' >"$work/library"

count=$(grep -c '^KRO_0 ' "$work/headers" || true)
[ "$count" -gt 100 ] || { echo "only $count names found in $1"; exit 1; }
status=0
for list in headers map library; do
    sort "$work/$list" >"$work/$list.sorted"
done
for list in map library; do
    if ! diff -u "$work/headers.sorted" "$work/$list.sorted"; then
        echo "the headers' names and the $list's differ"
        status=1
    fi
done
[ $status -eq 0 ] && echo "$(wc -l <"$work/headers") exported names of $# headers"
exit $status
