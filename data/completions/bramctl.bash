# Completion of bramctl for bash. What fits is bramctl's own knowledge.

_bramctl() {
    local line word
    COMPREPLY=()
    while IFS= read -r line; do
        if [[ $line == :files ]]; then
            compopt -o default
        else
            printf -v word %q "${line%%$'\t'*}"
            COMPREPLY+=("$word")
        fi
    done < <(bramctl --complete "${COMP_WORDS[@]:1:COMP_CWORD}" 2>/dev/null)
}

complete -F _bramctl bramctl
