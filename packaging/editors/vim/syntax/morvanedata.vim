" Vim syntax file
" Language: preset data files of the preset daemon morvane

if exists('b:current_syntax')
    finish
endif

" A line without a name, a "=" or a value is no entry and is skipped, as a comment would be.
syntax match morvanedataSkipped /^.*$/
syntax match morvanedataName /^[^=[]\+\ze[^=]*=[^\t\r]/ nextgroup=morvanedataIndex,morvanedataEquals
syntax match morvanedataIndex /\[[^=]*/ contained nextgroup=morvanedataEquals
syntax match morvanedataEquals /=/ contained nextgroup=morvanedataValue
syntax match morvanedataValue /.*/ contained

highlight default link morvanedataSkipped Comment
highlight default link morvanedataName Identifier
highlight default link morvanedataIndex Number
highlight default link morvanedataEquals Operator
highlight default link morvanedataValue String

let b:current_syntax = 'morvanedata'
