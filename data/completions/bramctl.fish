# Completion of bramctl for fish. What fits is bramctl's own knowledge.

function __bramctl_complete
    set -l words (commandline -opc) (commandline -ct)
    for line in (bramctl --complete $words[2..-1] 2>/dev/null)
        if test "$line" = ":files"
            set -l token (commandline -ct)
            set -l option (string match --regex -- '^--[^=]*=' $token)
            string replace --regex -- '^' "$option" (
                __fish_complete_path (string replace -- "$option" '' $token))
        else
            printf '%s\n' $line
        end
    end
end

complete -c bramctl -f -a '(__bramctl_complete)'
