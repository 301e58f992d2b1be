#include "warnings.h"

#include <utility>

namespace morvane::ctl {

void WarningList::add(SourceText::Place place, std::string_view code, std::string text) {
    warnings_.push_back({file_, place, std::string(code), std::move(text), false});
}

void WarningList::add(std::string_view word, std::string_view code, std::string text) {
    add(placeOf(word), code, std::move(text));
}

void WarningList::addAbsence(SourceText::Place place, std::string_view code, std::string text) {
    warnings_.push_back({file_, place, std::string(code), std::move(text), true});
}

void WarningList::addAbsence(std::string_view word, std::string_view code, std::string text) {
    addAbsence(placeOf(word), code, std::move(text));
}

SourceText::Place WarningList::placeOf(std::string_view word) const {
    return text_.placeOf(word).value_or(SourceText::Place{});
}

} // namespace morvane::ctl
