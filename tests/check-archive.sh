#!/bin/sh
# In a program that links libkro.a no name of the library's inside meets one of the program's: every global symbol is
# either a name of the interface, or hidden and in namespace kro (where kro.hpp keeps to kro::v0).
# usage: check-archive.sh MAP ARCHIVE
set -eu
map=$1 archive=$2
defined=$(readelf -sW "$archive" | awk '($5 == "GLOBAL" || $5 == "WEAK") && $7 != "UND" { print $6, $8 }')
[ -n "$defined" ] || { echo "no symbols found in $archive"; exit 1; }
status=0
for symbol in $(printf '%s\n' "$defined" | awk '$1 == "DEFAULT" { print $2 }'); do
    grep -q "^ *$symbol;" "$map" || { echo "not in the interface, yet not hidden: $symbol"; status=1; }
done
# The program counter's thunks of 32-bit code are the compiler's.
for symbol in $(printf '%s\n' "$defined" | awk '$1 != "DEFAULT" { print $2 }'); do
    case $symbol in
        _ZN3kro2v0* | _ZNK3kro2v0*) echo "a name of kro.hpp: $symbol"; status=1 ;;
        _ZN3kro* | _ZNK3kro* | __x86.get_pc_thunk.*) ;;
        *) echo "outside namespace kro: $symbol"; status=1 ;;
    esac
done
exit $status
