#compdef morvanectl
# zsh completion for morvanectl, which says itself what may follow. Evaluates nothing of that.

local output
local -a candidates

output=$(morvanectl complete -- "${(@Q)words[2,CURRENT-1]}" "${(Q)PREFIX}" 2>/dev/null)
case $? in
0)
    candidates=(${(f)output})
    compadd -a candidates
    ;;
1) # the name of a file
    compset -P '--[^=]#='
    _files
    ;;
esac
