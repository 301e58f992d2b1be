" Vim syntax file
" Language: parameter definition files of the preset daemon morvane

if exists('b:current_syntax')
    finish
endif

" A block: NAME ACCESS { ATTRIBUTES }. Of two matches at one place, Vim takes the later one here.
syntax match morvaneparametersName /[^[:space:](){}[\]]\+/
            \ nextgroup=morvaneparametersWrongAccess,morvaneparametersAccess skipwhite skipempty
syntax match morvaneparametersWrongAccess /[^[:space:]{]\+/ contained
            \ nextgroup=morvaneparametersBlock skipwhite skipempty
syntax match morvaneparametersAccess /\%(rw\|ro\|rostrict\|wo\|index\)\ze\%(\_s\|{\)/ contained
            \ nextgroup=morvaneparametersBlock skipwhite skipempty
syntax region morvaneparametersBlock matchgroup=morvaneparametersBrace start=/{/ end=/}/ contained fold
            \ contains=morvaneparametersError,morvaneparametersAttribute,morvaneparametersExpression,morvaneparametersValues,morvaneparametersComment

" Its attributes: a keyword, a condition in parentheses, values in braces.
syntax match morvaneparametersError /[^[:space:](){}]\+/ contained
syntax match morvaneparametersAttribute contained
            \ /\%(index\|rangeValid\|rangeDoc\|ctrlValid\|ctrlRO\|default\|valueChange\)\ze\%(\_s\|[({]\)/
syntax region morvaneparametersExpression matchgroup=morvaneparametersParenthesis start=/(/ end=/)/
            \ contained contains=morvaneparametersExpression,morvaneparametersOperator,morvaneparametersText,morvaneparametersNumber,morvaneparametersComment
syntax region morvaneparametersValues matchgroup=morvaneparametersBrace start=/{/ end=/}/ contained
            \ contains=morvaneparametersSpan,morvaneparametersExpression,morvaneparametersText,morvaneparametersNumber,morvaneparametersComment

syntax match morvaneparametersOperator /[-+*\/%&|^<>=!$]\+/ contained
syntax match morvaneparametersSpan /\.\.\|->/ contained
syntax match morvaneparametersNumber /\%(-\ze\)\?\<\%(0x\x\+\|\d\+\)\>/ contained
syntax region morvaneparametersText start=/"/ end=/"/ contained contains=morvaneparametersComment

" A comment is a whole line, even in the middle of a text. A "#" elsewhere begins none.
syntax match morvaneparametersComment /^\s*#.*/

" Where a text ends depends on all the quotes before it.
syntax sync fromstart

highlight default link morvaneparametersName Identifier
highlight default link morvaneparametersAccess StorageClass
highlight default link morvaneparametersAttribute Statement
highlight default link morvaneparametersBrace Delimiter
highlight default link morvaneparametersParenthesis Delimiter
highlight default link morvaneparametersOperator Operator
highlight default link morvaneparametersSpan Operator
highlight default link morvaneparametersNumber Number
highlight default link morvaneparametersText String
highlight default link morvaneparametersComment Comment
highlight default link morvaneparametersWrongAccess Error
highlight default link morvaneparametersError Error

let b:current_syntax = 'morvaneparameters'
