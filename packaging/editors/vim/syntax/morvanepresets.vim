" Vim syntax file
" Language: preset definition files of the preset daemon morvane

if exists('b:current_syntax')
    finish
endif

" A preset: NAME preset { LISTS }. Of two matches at one place, Vim takes the later one here.
syntax match morvanepresetsName /[^[:space:]{}]\+/
            \ nextgroup=morvanepresetsWrongWord,morvanepresetsPreset skipwhite
syntax match morvanepresetsWrongWord /[^[:space:]{}]\+/ contained
            \ nextgroup=morvanepresetsLists skipwhite skipempty
syntax match morvanepresetsPreset /preset\ze\%(\_s\|{\)/ contained
            \ nextgroup=morvanepresetsLists skipwhite skipempty
syntax region morvanepresetsLists matchgroup=morvanepresetsBrace start=/{/ end=/}/ contained fold
            \ contains=morvanepresetsError,morvanepresetsKind,morvanepresetsItems,morvanepresetsComment

" Its lists: include ro or exclude rw, and what they name.
syntax match morvanepresetsError /[^[:space:]{}]\+/ contained
syntax match morvanepresetsKind /include\_s\+ro\ze\%(\_s\|{\)\|exclude\_s\+rw\ze\%(\_s\|{\)/ contained
            \ nextgroup=morvanepresetsItems skipwhite skipempty
syntax region morvanepresetsItems matchgroup=morvanepresetsBrace start=/{/ end=/}/ contained
            \ contains=morvanepresetsItems,morvanepresetsSpecial,morvanepresetsIndex,morvanepresetsComment
syntax match morvanepresetsSpecial /\<all\ze\_s*}/ contained
syntax match morvanepresetsIndex /\<index\ze\_s*{/ contained
            \ nextgroup=morvanepresetsSelectors skipwhite skipempty
syntax region morvanepresetsSelectors matchgroup=morvanepresetsBrace start=/{/ end=/}/ contained
            \ contains=morvanepresetsSelectorWord,morvanepresetsValues,morvanepresetsComment
syntax match morvanepresetsSelectorWord /\<none\ze\_s*}\|\<not\ze\_s/ contained
syntax region morvanepresetsValues matchgroup=morvanepresetsBrace start=/{/ end=/}/ contained
            \ contains=morvanepresetsNumber,morvanepresetsSpan,morvanepresetsComment
syntax match morvanepresetsNumber /\<\d\+\>/ contained
syntax match morvanepresetsSpan /\.\./ contained

" A translate section: the removed parameters, and mappings to those of today.
syntax match morvanepresetsTranslate /\<translate\ze\_s*{/
            \ nextgroup=morvanepresetsSection skipwhite skipempty
syntax region morvanepresetsSection matchgroup=morvanepresetsBrace start=/{/ end=/}/ contained fold
            \ contains=morvanepresetsMapped,morvanepresetsRemoved,morvanepresetsComment
syntax match morvanepresetsMapped /[^[:space:]{}]\+/ contained
            \ nextgroup=morvanepresetsMappings skipwhite skipempty
syntax match morvanepresetsRemoved /\<removed\ze\_s*{/ contained
            \ nextgroup=morvanepresetsOld skipwhite skipempty
syntax region morvanepresetsMappings matchgroup=morvanepresetsBrace start=/{/ end=/}/ contained
            \ contains=morvanepresetsMapping,morvanepresetsComment
syntax match morvanepresetsMapping /\<from\ze\_s*{/ contained
            \ nextgroup=morvanepresetsOld skipwhite skipempty
syntax match morvanepresetsMapping /\<index\ze\_s\+\d/ contained
            \ nextgroup=morvanepresetsCount skipwhite skipempty
syntax match morvanepresetsCount /\d\+/ contained
            \ nextgroup=morvanepresetsOld skipwhite skipempty
syntax region morvanepresetsOld matchgroup=morvanepresetsBrace start=/{/ end=/}/ contained
            \ contains=morvanepresetsOld,morvanepresetsEquals,morvanepresetsOldIndex,morvanepresetsText,morvanepresetsComment
syntax match morvanepresetsEquals /=/ contained
syntax match morvanepresetsOldIndex /\<idx::\d\+/ contained
syntax region morvanepresetsText start=/"/ end=/"/ contained contains=morvanepresetsComment

" A comment is a whole line. A "#" elsewhere begins none.
syntax match morvanepresetsComment /^\s*#.*/

syntax sync fromstart

highlight default link morvanepresetsName Identifier
highlight default link morvanepresetsMapped Identifier
highlight default link morvanepresetsPreset Statement
highlight default link morvanepresetsTranslate Statement
highlight default link morvanepresetsKind Statement
highlight default link morvanepresetsIndex Type
highlight default link morvanepresetsRemoved Type
highlight default link morvanepresetsMapping Type
highlight default link morvanepresetsSpecial Special
highlight default link morvanepresetsSelectorWord Special
highlight default link morvanepresetsOldIndex Special
highlight default link morvanepresetsBrace Delimiter
highlight default link morvanepresetsSpan Operator
highlight default link morvanepresetsEquals Operator
highlight default link morvanepresetsNumber Number
highlight default link morvanepresetsCount Number
highlight default link morvanepresetsText String
highlight default link morvanepresetsComment Comment
highlight default link morvanepresetsWrongWord Error
highlight default link morvanepresetsError Error

let b:current_syntax = 'morvanepresets'
