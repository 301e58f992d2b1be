# shellcheck shell=bash
# bash completion for morvanectl, which says itself what may follow. Evaluates nothing of that.

# Sets `word` to a text without its quotes, and `quote` to the one that is still open.
_morvanectl_unquote() {
    local text=$1 c
    word='' quote=''
    while [ -n "$text" ]; do
        c=${text:0:1} text=${text:1}
        if [ "$c" = "$quote" ]; then
            quote=''
        elif [[ -z $quote && $c == [\'\"] ]]; then
            quote=$c
        elif [[ $c == \\ && (-z $quote || $quote == \" && $text == [\"\\\$\`]*) ]]; then
            word+=${text:0:1} text=${text:1}
        else
            word+=$c
        fi
    done
}

_morvanectl() {
    local line=${COMP_LINE:0:COMP_POINT} typed='' i rest word quote output candidate
    local -a words=() candidates=()
    # Of what bash has split, at "=" and ":" too, it is one word that has no blank inside.
    for ((i = 0; i <= COMP_CWORD; i++)); do
        rest=${line#"${line%%[![:blank:]]*}"}
        if [[ $i -gt 0 && $rest != "$line" ]]; then
            _morvanectl_unquote "$typed"
            words+=("$word") typed=''
        fi
        [ "$i" -lt "$COMP_CWORD" ] && line=${rest#"${COMP_WORDS[i]}"} || line=''
        typed+=${rest%"$line"}
    done
    _morvanectl_unquote "$typed"
    output=$(morvanectl complete -- "${words[@]:1}" "$word" 2>/dev/null)
    case $? in
    0) ;;
    1) compopt -o default && return ;; # the name of a file
    *) return ;;
    esac

    # What precedes the part that bash replaces stays as it is.
    _morvanectl_unquote "${typed%"$2"}"
    mapfile -t candidates <<<"$output"
    for candidate in "${candidates[@]}"; do
        [[ $candidate == "$word"?* ]] || continue
        candidate=${candidate:${#word}}
        case $quote in
        '') printf -v candidate %q "$candidate" ;;
        \') [[ $candidate != *\'* ]] || continue ;;
        \") [[ $candidate != *[\"\\\$\`!]* ]] || continue ;;
        esac
        COMPREPLY+=("$candidate")
    done
}

complete -F _morvanectl morvanectl
