# shellcheck shell=bash
# bash completion for morvanectl: subcommands and options from --help, presets and keys from the
# definition files, and files.

# The names in a section of a help text ("Options" or "Subcommands"), one per line.
_morvanectl_names() {
    sed -n "/^$1:/,/^\$/s/^  \([^ ]*\).*/\1/p" | tr ',' '\n'
}

_morvanectl() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
    local -a definitions=() positional=()
    local i word
    for ((i = 1; i < COMP_CWORD; i++)); do
        word=${COMP_WORDS[i]}
        case $word in
        -p | --parameters | -d | --presets | -s | --system | --variant | --variants)
            definitions+=("$word" "${COMP_WORDS[++i]}")
            ;;
        --address | --timeout | --live | --for | --output | --all-variants) ((++i)) ;;
        -*) ;;
        *) positional+=("$word") ;;
        esac
    done

    local words='' files=no
    case $previous in
    -p | --parameters | -d | --presets | --variants | --output) files=yes ;;
    -s | --system | --variant | --address | --timeout | --all-variants) return ;;
    --live | --for) words=$(morvanectl "${definitions[@]}" presets 2>/dev/null) ;;
    *)
        case $current in
        -*)
            words=$({
                morvanectl --help
                [ ${#positional[@]} -eq 0 ] || morvanectl "${positional[0]}" --help
            } 2>/dev/null | _morvanectl_names Options)
            ;;
        *)
            case ${#positional[@]},${positional[0]} in
            0,) words=$(morvanectl --help 2>/dev/null | _morvanectl_names Subcommands) ;;
            1,translate | 1,validate | 1,diff | 2,diff) files=yes ;;
            1,check | 1,presets | 1,status | 1,die | 1,monitor | *,get | *,set) ;;
            1,*) words=$(morvanectl "${definitions[@]}" presets 2>/dev/null) ;;
            2,load | 2,load-with-default | 2,store | 2,store-subpreset) files=yes ;;
            *,store-subpreset | 2,explain | *,in-preset)
                words=$(morvanectl "${definitions[@]}" keys "${positional[1]}" 2>/dev/null)
                ;;
            esac
            ;;
        esac
        ;;
    esac
    if [ $files = yes ]; then
        mapfile -t COMPREPLY < <(compgen -f -- "$current")
        compopt -o filenames 2>/dev/null
    else
        mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
    fi
}

complete -F _morvanectl morvanectl
