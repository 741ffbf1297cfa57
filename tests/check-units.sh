#!/bin/sh
# The object of each instruction set defines one global symbol, its table, and no weak one: an inline function compiled
# with wide instructions that the linker keeps for everybody would crash on other machines.
# usage: check-units.sh OBJECT...
set -eu
status=0
checked=0
for object in "$@"; do
    case $object in
        */isa/scalar.* | */isa/ssse3.* | */isa/avx2.* | */isa/avx512bw.* | */isa/avx512vbmi.*) ;;
        *) continue ;;
    esac
    checked=$((checked + 1))
    # The program counter's thunks of 32-bit code are two plain instructions, the same for every processor.
    symbols=$(nm --defined-only --extern-only "$object" | awk '$3 !~ /^__x86\.get_pc_thunk\./ { print $2, $3 }')
    count=$(printf '%s\n' "$symbols" | grep -c .)
    weak=$(printf '%s\n' "$symbols" | grep -Ec '^[VvWwu] ' || true)
    if [ "$count" -ne 1 ] || [ "$weak" -ne 0 ]; then
        printf '%s defines:\n%s\n' "$object" "$symbols"
        status=1
    fi
done
[ "$checked" -eq 5 ] || { echo "found $checked units, expected 5"; exit 1; }
exit $status
