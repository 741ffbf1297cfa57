# bash completion of kro and kro-bench. The programs know their words themselves: `kro complete -- WORD... LAST`.

_kro() {
    local line word last words=() joined=
    # bash divides --wb=gray into three words.
    for word in "${COMP_WORDS[@]:1:COMP_CWORD}"; do
        if [[ ${#words[@]} -gt 0 && ($joined || $word == =*) ]]; then
            words[-1]+=$word
        else
            words+=("$word")
        fi
        [[ $word == = ]] && joined=1 || joined=
    done
    last=${words[-1]}
    COMPREPLY=()
    while IFS= read -r line; do
        if [[ $line == :files ]]; then
            compopt -o default
            return
        fi
        word=${line%%$'\t'*}
        [[ $COMP_WORDBREAKS == *=* && $last == *=* ]] && word=${word#*=}
        COMPREPLY+=("$word")
    done < <("${1/#\~/$HOME}" complete -- "${words[@]}" 2>/dev/null)
}

complete -F _kro kro kro-bench
