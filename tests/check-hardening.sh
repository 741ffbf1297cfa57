#!/bin/sh
# What the linker and the compiler were asked for stands in the files that they made: the command, which reads files from
# anywhere, is loaded at a random address with tables and stack that an overrun cannot turn against it; of both files
# functions begin where indirect jumps may land, and the library's large frames touch each page on their way (x86).
# usage: check-hardening.sh COMMAND LIBRARY PROCESSOR CONFIGURATION
set -eu
command=$1 library=$2 processor=$3 configuration=$4
status=0

# FILE WHAT PATTERN TEXT: does a line of the text match?
expect() {
    printf '%s\n' "$4" | grep -Eq "$3" || {
        echo "$1: $2 is missing"
        status=1
    }
}

dynamic=$(readelf -dW "$command")
segments=$(readelf -lW "$command")
imported=$(nm -D --undefined-only "$command")
expect "$command" "position independence" 'Type:[[:space:]]+DYN' "$(readelf -hW "$command")"
expect "$command" "position independence of a program (PIE)" 'FLAGS_1.*PIE' "$dynamic"
expect "$command" "binding at the start (-z now)" 'FLAGS_1.*NOW' "$dynamic"
expect "$command" "the read-only segment of relocations (-z relro)" 'GNU_RELRO' "$segments"
expect "$command" "a stack that is not executable" 'GNU_STACK.* RW +' "$segments"
expect "$command" "the stack protector" '__stack_chk_fail' "$imported"
if [ "$configuration" = Release ]; then
    expect "$command" "checked copies (_FORTIFY_SOURCE)" '__[a-z]+_chk(@|$)' "$imported"
fi
expect "$library" "the read-only segment of relocations (-z relro)" 'GNU_RELRO' "$(readelf -lW "$library")"
expect "$library" "binding at the start (-z now)" 'FLAGS_1.*NOW' "$(readelf -dW "$library")"
case $processor in
    x86_64 | AMD64 | i?86)
        # The mark of the whole file would need start files that have it too, and Debian's have not.
        expect "$command" "control-flow protection" 'endbr' "$(objdump -d --disassemble=main "$command")"
        expect "$library" "control-flow protection" 'endbr' "$(objdump -d --disassemble=kroConvertView "$library")"
        expect "$library" "steps of a page to large stack frames (-fstack-clash-protection)" "sub +.0x1000,%[re]sp" \
            "$(objdump -d --no-show-raw-insn "$library" | grep -F 0x1000,)"
        ;;
esac
exit $status
