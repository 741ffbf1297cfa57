#!/bin/sh
# The object of each instruction set defines one global symbol, its table, and no weak one: an inline function compiled
# with wide instructions that the linker keeps for everybody would crash on other machines.
# usage: check-units.sh SETS_DEF OBJECT...
set -eu
sets=$(sed -n 's/^KRO_SET(\([a-z0-9]*\),.*/\1/p' "$1")
shift
[ -n "$sets" ] || { echo "no instruction set in the list"; exit 1; }
status=0
for set in $sets; do
    object=
    for candidate in "$@"; do
        case $candidate in
            */isa/"$set".*) object=$candidate ;;
        esac
    done
    [ -n "$object" ] || { echo "no object of the set $set"; exit 1; }
    # The program counter's thunks of 32-bit code are two plain instructions, the same for every processor.
    symbols=$(nm --defined-only --extern-only "$object" | awk '$3 !~ /^__x86\.get_pc_thunk\./ { print $2, $3 }')
    others=$(printf '%s\n' "$symbols" | grep -Ecvx "[DR] _ZN3kro[0-9]+${set}KernelsE" || true)
    if [ -z "$symbols" ] || [ "$others" -ne 0 ]; then
        printf '%s defines, where its table was expected alone:\n%s\n' "$object" "$symbols"
        status=1
    fi
done
exit $status
