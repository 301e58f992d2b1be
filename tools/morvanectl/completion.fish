# fish completion for morvanectl, which says itself what may follow. Evaluates nothing of that.

# fish 4 would close a bracket that has no backslash with one that has one, and then not read the line.
function __morvanectl_is_open_bracket
    string match --quiet --regex '^([4-9]|\d\d)' -- $version
    and string replace --all --regex '\\\\.' '' -- (commandline -ct) |
        string match --quiet --regex '^[^\'"]*\['
end

function __morvanectl_candidates
    __morvanectl_is_open_bracket; and return
    set -l words (commandline -opc)
    set -l typed (commandline -ct | string unescape)
    set -l candidates (morvanectl complete -- $words[2..-1] "$typed" 2>/dev/null)
    switch $status
        case 0
            string join \n -- $candidates
        case 1 # the name of a file
            set -l option (string match -r -- '^--[^=]*=' "$typed")
            for path in (__fish_complete_path (string replace -- "$option" '' "$typed"))
                printf '%s\n' "$option$path"
            end
    end
end

complete -c morvanectl -f -a '(__morvanectl_candidates)'
