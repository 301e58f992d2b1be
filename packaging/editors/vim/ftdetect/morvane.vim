" Finds the files of the preset daemon morvane. Others have files named *.def and *.preset, too, so the
" text decides: the first line of a definition file that is no comment begins a block.

function! s:FirstLine() abort
    for line in getline(1, 500)
        if line !~# '^\s*\%(#\|$\)'
            return line
        endif
    endfor
    return ''
endfunction

function! s:DetectDefinitions() abort
    let line = s:FirstLine()
    let name = line ==# '' || expand('<afile>:p:h:t') ==# 'morvane' ? expand('<afile>:t') : ''
    if line =~# '^\s*[^[:space:](){}[\]]\+\s\+\%(rw\|ro\|rostrict\|wo\|index\)\s*\%({\|$\)'
                \ || name ==# 'parameters.def'
        set filetype=morvaneparameters
    elseif line =~# '^\s*\%([^[:space:]{]\+\s\+preset\|translate\)\s*\%({\|$\)'
                \ || name ==# 'presets.def'
        set filetype=morvanepresets
    endif
endfunction

function! s:DetectData() abort
    let lines = getline(1, 50)
    if match(lines, '^\h\w*\%(\[[^][=]\+\]\)*=') >= 0 && match(lines, '^\[') < 0
        setfiletype morvanedata
    endif
endfunction

autocmd BufNewFile,BufRead *.def call s:DetectDefinitions()
autocmd BufRead *.preset call s:DetectData()
