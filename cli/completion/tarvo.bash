# Completion of tarvo for bash. It belongs into share/bash-completion/completions, with the name tarvo; or source it.

_tarvo() {
    local IFS=$'\n' line word
    COMPREPLY=()
    while read -r line; do
        if [ "$line" = :files ]; then
            compopt -o filenames
            COMPREPLY+=($(compgen -f -- "$2"))
        else
            word=${line%%$'\t'*}
            case ${COMP_WORDS[COMP_CWORD]} in
                [\'\"]*) ;;
                *) printf -v word %q "$word" ;;
            esac
            COMPREPLY+=("$word")
        fi
    done < <("$1" complete -- "${COMP_WORDS[@]:1:COMP_CWORD-1}" "$2" 2>/dev/null)
}
complete -F _tarvo tarvo
