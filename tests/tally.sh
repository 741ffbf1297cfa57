#!/bin/sh
# Adds up what the test programs compared: one line for all of them, on standard output and in TALLY.total.
# usage: tally.sh clear|total TALLY
set -eu
if [ "$1" = clear ]; then
    rm -f "$2" "$2.total"
    exit 0
fi
[ -s "$2" ] || { echo "nothing was compared"; exit 1; }
awk '{
        bytes += $1; images += $2
        line = $0; sub(/^[0-9]+ [0-9]+ /, "", line)
        n = split(line, names, ", ")
        for (i = 1; i <= n; i++) if (!(names[i] in seen)) { seen[names[i]] = 1; order[++count] = names[i] }
    }
    END {
        printf "compared %.0f bytes in %.0f images on ", bytes, images
        for (i = 1; i <= count; i++) printf "%s%s", (i > 1 ? ", " : ""), order[i]
        print ""
    }' "$2" | tee "$2.total"
