#!/bin/sh
# Adds up what the test programs compared: one line for all of them, on standard output and in TALLY.total, and one that
# names the tests that were skipped.
# usage: tally.sh clear|total TALLY
set -eu
if [ "$1" = clear ]; then
    rm -f "$2" "$2.total"
    exit 0
fi
grep -qs '^[0-9]' "$2" || { echo "nothing was compared"; exit 1; }
awk '$1 == "skipped" {
        name = $2; sub(/^[^.]*\//, "", name); sub(/\/.*/, "", name)
        if (!times[name]++) skipped[++kinds] = name
        next
    }
    {
        bytes += $1; images += $2
        line = $0; sub(/^[0-9]+ [0-9]+ /, "", line)
        n = split(line, names, ", ")
        for (i = 1; i <= n; i++) if (!(names[i] in seen)) { seen[names[i]] = 1; order[++count] = names[i] }
    }
    END {
        printf "compared %.0f bytes in %.0f images on ", bytes, images
        for (i = 1; i <= count; i++) printf "%s%s", (i > 1 ? ", " : ""), order[i]
        print ""
        for (i = 1; i <= kinds; i++) {
            name = skipped[i]
            printf "%s%s%s%s", (i > 1 ? ", " : "skipped: "), name, (times[name] > 1 ? " (" times[name] ")" : ""), (i < kinds ? "" : "\n")
        }
    }' "$2" | tee "$2.total"
