#include "text/cursor.h"

#include "text/source_text.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace morvane {

std::string_view trimSpace(std::string_view text) {
    while (!text.empty() && isSpace(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isSpace(text.back()))
        text.remove_suffix(1);
    return text;
}

bool Cursor::skipSpace() {
    while (!atEnd() && isSpace(line_.text[position_]))
        ++position_;
    return !atEnd();
}

bool Cursor::accept(std::string_view expected) {
    if (!sees(expected))
        return false;
    position_ += expected.size();
    return true;
}

bool Cursor::accept(char expected) {
    if (!sees(expected))
        return false;
    ++position_;
    return true;
}

std::string_view Cursor::peekWord(const CharacterSet& delimiters) const {
    const auto text = rest();
    const auto end = std::find_if(text.begin(), text.end(), [&delimiters](char c) {
        return isSpace(c) || delimiters.contains(c);
    });
    return text.substr(0, static_cast<std::size_t>(end - text.begin()));
}

std::string_view Cursor::word(const CharacterSet& delimiters) {
    const auto found = peekWord(delimiters);
    position_ += found.size();
    return found;
}

std::string_view Cursor::keep(std::string text) const {
    assert(line_.source != nullptr);
    return line_.source->keep(std::move(text));
}

void Cursor::advance(std::size_t count) {
    position_ = std::min(position_ + count, line_.text.size());
}

} // namespace morvane
