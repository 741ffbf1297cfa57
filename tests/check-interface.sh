#!/bin/sh
# The library's binary interface is the recorded one. With KRO_RECORD_INTERFACE=1 it is recorded instead: after a
# deliberate change, which CHANGELOG.md names.
# usage: check-interface.sh ABIDW ABIDIFF LIBRARY RECORD HEADERS
set -eu
abidw=$1 abidiff=$2 library=$3 record=$4 headers=$5
if [ -n "${KRO_RECORD_INTERFACE:-}" ]; then
    "$abidw" --exported-interfaces-only --drop-private-types --no-corpus-path --no-comp-dir-path --no-show-locs --headers-dir "$headers" --out-file "$record" "$library"
    echo "recorded: $record"
    exit 0
fi
functions=$(grep -c '<function-decl ' "$record" || true)
[ "$functions" -ge 110 ] || { echo "$record: $functions functions, expected 110 at least"; exit 1; }
"$abidiff" --harmless --leaf-changes-only "$record" "$library" || {
    echo "the interface differs from $record: a program built against it may no longer work."
    exit 1
}
echo "$functions functions with their parameters and records are as recorded"
