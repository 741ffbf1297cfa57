#!/bin/sh
# Every command has its page of the manual, each page can be set without a warning and names every option that the
# command takes.
# usage: check-manual.sh BUILD
set -eu
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cmake --install "$1" --prefix "$work/prefix" >/dev/null
pages=$work/prefix/share/man/man1
kro=$work/prefix/bin/kro

"$kro" complete -- '' | cut -f 1 >"$work/commands"
[ "$(wc -l <"$work/commands")" -ge 9 ] || { echo "kro names fewer commands than it has"; exit 1; }
count=0
while read -r command; do
    page=$pages/kro-$command.1
    case $command in
        help) page=$pages/kro.1 ;;
    esac
    [ -s "$page" ] || { echo "no page of the manual for $command"; exit 1; }
    warnings=$(LC_ALL=C.UTF-8 groff -man -Tutf8 -ww -Kutf8 "$page" 2>&1 >/dev/null)
    [ -z "$warnings" ] || { echo "$page: $warnings"; exit 1; }
    case $(lexgrog "$page") in
        *"kro"*" - "*) ;;
        *) echo "$page has no line for whatis"; exit 1 ;;
    esac
    sed 's/\\-/-/g; s/\\f[A-Z]//g' "$page" >"$work/text"
    for option in $("$kro" complete -- "$command" - | cut -f 1); do
        grep -q -e "^$option" -e "^-.*, $option" "$work/text" || { echo "$page lacks $option"; exit 1; }
        count=$((count + 1))
    done
done <"$work/commands"
[ "$count" -gt 60 ] || { echo "only $count options were looked for"; exit 1; }
echo "$count options stand in the manual"
