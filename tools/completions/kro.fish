# fish completion of kro and kro-bench. The programs know their words themselves: `kro complete -- WORD... LAST`.

function __kro_complete
    set -l words (commandline -opc)
    set -l last (commandline -ct)
    set -l lines ($words[1] complete -- $words[2..-1] $last 2>/dev/null)
    if test "$lines[1]" = :files
        __fish_complete_path (string replace -r '^-[^=]*=' '' -- $last)
    else
        printf '%s\n' $lines
    end
end

complete -c kro -f -a '(__kro_complete)'
complete -c kro-bench -f -a '(__kro_complete)'
