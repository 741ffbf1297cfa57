#!/bin/sh
# No writable data of the library's own, and no library needed beyond the C++ runtime.
# usage: check-library.sh LIBRARY
set -eu
library=$1
status=0

# Sections that stay writable when the loader is done: all with the flag but those that it makes read-only.
writable=$(readelf -SW "$library" | sed -n 's/^ *\[ *\([0-9]*\)\] \([^ ]*\) .* [A-Z]*W[A-Z]* .*/\1 \2/p' |
    sed -E '/ \.(init_array|fini_array|data\.rel\.ro|dynamic|got)(\..*)?$/d')
for section in $(echo "$writable" | sed 's/ .*//'); do
    # What the compiler's start files and its CPU record bring along.
    own=$(readelf -sW "$library" |
        awk -v section="$section" '$7 == section && ($4 == "OBJECT" || $4 == "TLS") { print $8 }' | sort -u |
        grep -Ev '^(completed\.[0-9]+|__dso_handle|__TMC_END__|__cpu_model|__cpu_features2|dtor_idx.*|object\.[0-9]+)$' ||
        true)
    if [ -n "$own" ]; then
        echo "writable data: $own"
        status=1
    fi
done

for needed in $(readelf -dW "$library" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p'); do
    case $needed in
        libstdc++.so.* | libm.so.* | libgcc_s.so.* | libc.so.* | ld-linux*) ;;
        *)
            echo "needs $needed"
            status=1
            ;;
    esac
done
exit $status
