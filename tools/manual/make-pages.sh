#!/bin/sh
# The manual in section 1, from what the programs say of themselves: their commands, help texts and options.
# usage: make-pages.sh VERSION FOLDER KRO [KRO-BENCH]
set -eu
version=$1 folder=$2 kro=$3 bench=${4:-}
rm -rf "$folder"
mkdir -p "$folder"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Option names and placeholders as help2man, and readers of manuals, are used to them.
cat >"$work/as-manuals-do" <<'END'
1{/^Usage/!d}
s/^  \(-[A-Za-z]\),--/  \1, --/
s/,--/, --/g
s/^Positionals:/Arguments:/
s/^Example:/Examples:/
s/ TEXT \.\.\. REQUIRED/.../
s/ TEXT REQUIRED/     /
s/ REQUIRED /   /
s/:INT in \[\([0-9]*\) - \([0-9]*\)\]/ \1-\2/
END

# Lines of examples stay lines; the usage of a subcommand has two words for its name.
cat >"$work/finish" <<'END'
/^\.TH / { sub(/^\.TH [^ ]* /, ".TH " toupper(name) " ") }
section == ".SH NAME" { sub(/^kro [a-z]+ \\- /, name " \\- ") }
/^\.S[HS] / { section = $0 }
verbatim && /^\./ { print ".fi"; verbatim = 0 }
{ print }
section == ".SH EXAMPLES" && $0 == ".IP" { print ".nf"; verbatim = 1 }
END

# NAME SUMMARY COMMAND...: help2man asks a program of the page's name.
page() {
    name=$1 summary=$2
    shift 2
    printf '#!/bin/sh\n%s --help | sed -f "%s"\n' "$*" "$work/as-manuals-do" >"$work/$name"
    chmod +x "$work/$name"
    help2man --no-info --section=1 --version-string="$version" --source="kro $version" --manual="kro" \
        --name="$summary" --include="$work/see-also" "$work/$name" >"$work/$name.1"
    awk -v name="$name" -f "$work/finish" "$work/$name.1" >"$folder/$name.1"
}

tab=$(printf '\t')
"$kro" complete -- '' | grep -v -e "^help$tab" -e "^bench$tab" >"$work/commands"
{
    echo '[see also]'
    echo '.BR kro (1),'
    sed "s/^\([a-z]*\)$tab.*/.BR kro-\1 (1),/" "$work/commands"
    echo '.BR kro-bench (1)'
} >"$work/see-also"
page kro "raw camera frames to pictures" "$kro"
while IFS=$tab read -r command meaning; do
    page "kro-$command" "$meaning" "$kro $command"
done <"$work/commands"
[ -z "$bench" ] || page kro-bench "measure the speed of libkro" "$bench"
