# Completion of `delvane review`, `delvane export` and `delvane list` in bash.

# The snapshots of the results folder that the line names, else of the default one.
_delvane_snapshots() {
    local i results=()
    for ((i = 1; i < COMP_CWORD - 1; i++)); do
        [[ ${COMP_WORDS[i]} != --results ]] || results=(--results "${COMP_WORDS[i + 1]}")
    done
    "${COMP_WORDS[0]}" list "${results[@]}" 2> /dev/null | tail -n +2 | sed 's/  .*//'
}

_delvane() {
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} options IFS=$'\n'
    COMPREPLY=()
    if [ "$COMP_CWORD" -eq 1 ]; then
        mapfile -t COMPREPLY < <(compgen -W $'review\nexport\nlist\n--help\n--version' -- "$word")
        return
    fi
    case ${COMP_WORDS[1]} in
        review) options=$'--write\n--output\n--results\n--accept\n--draft\n--control\n--installed\n--fail-on\n--limit\n--quiet\n--help' ;;
        export | list) options=$'--results\n--help' ;;
        *) return ;;
    esac
    case $before in
        --write) mapfile -t COMPREPLY < <(compgen -W $'html\njsonl\nsarif\njunit\nmarkdown\nreg\nnone' -- "$word") ;;
        --fail-on) mapfile -t COMPREPLY < <(compgen -W $'error\nwarning\ninfo\nchange\nnone' -- "$word") ;;
        --output | --results) mapfile -t COMPREPLY < <(compgen -d -- "$word") ;;
        --accept | --draft) mapfile -t COMPREPLY < <(compgen -f -- "$word") ;;
        --limit) ;;
        *)
            if [[ $word == -* ]]; then
                mapfile -t COMPREPLY < <(compgen -W "$options" -- "$word")
            elif [ "${COMP_WORDS[1]}" != list ]; then
                mapfile -t COMPREPLY < <(compgen -f -X '!*.dvs' -- "$word"; compgen -W "$(_delvane_snapshots)" -- "$word")
            fi
            ;;
    esac
}
complete -o filenames -F _delvane delvane
