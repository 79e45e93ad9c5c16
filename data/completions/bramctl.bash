# Completion of bramctl for bash. What fits is bramctl's own knowledge.

_bramctl() {
    local line word prefix
    local -a words=()
    COMPREPLY=()
    # bash has "--to=x" as three words, and each as it was typed, with its backslashes.
    for word in "${COMP_WORDS[@]:1:COMP_CWORD}"; do
        word=${word//\\/}
        if (( ${#words[@]} )) && [[ ${words[-1]} == --* ]] &&
            [[ $word == = || ${words[-1]} == *= ]]; then
            words[-1]+=$word
        else
            words+=("$word")
        fi
    done
    [[ ${words[-1]} == --*=* ]] && prefix=${words[-1]%%=*}=
    while IFS= read -r line; do
        if [[ $line == :files ]]; then
            compopt -o default
        else
            line=${line%%$'\t'*}
            printf -v word %q "${line#"$prefix"}"
            COMPREPLY+=("$word")
        fi
    done < <(bramctl --complete "${words[@]}" 2>/dev/null)
}

complete -F _bramctl bramctl
