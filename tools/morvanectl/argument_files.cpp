#include "argument_files.h"

#include "paramdef/system_arguments.h"
#include "text/cursor.h"

#include <algorithm>
#include <set>

namespace morvane::ctl {

namespace {

/// Reads the value of one assignment of an environment file.
class ValueReader {
public:
    /// @param text from behind the "=" to the end of the file; what is read is taken away.
    explicit ValueReader(std::string_view& text) : text_(text) {}

    std::string read() {
        skipBlanks();
        // Quotes count only at the beginning of the value, and again behind a quoted part.
        while (sees('\'') || sees('"')) {
            readQuoted();
            skipBlanks();
        }
        readUnquoted();
        return std::move(value_);
    }

private:
    bool sees(char c) const { return text_.starts_with(c); }

    char take() {
        const char c = text_.front();
        text_.remove_prefix(1);
        return c;
    }

    void skipBlanks() {
        text_.remove_prefix(std::min(text_.find_first_not_of(" \t\r"), text_.size()));
    }

    // In single quotes every character stands for itself; in double quotes a backslash is one
    // unless it precedes a character that it protects.
    void readQuoted() {
        const char quote = take();
        while (!text_.empty()) {
            const char c = take();
            if (c == quote)
                return;
            if (c == '\\' && quote == '"' && !text_.empty())
                readEscapeInQuotes();
            else
                value_ += c;
        }
    }

    void readEscapeInQuotes() {
        constexpr std::string_view escaped = "\"\\`$";
        const char c = take();
        if (c == '\n')
            return;
        if (escaped.find(c) == std::string_view::npos)
            value_ += '\\';
        value_ += c;
    }

    // To the end of the line, without the blanks there. A backslash protects the next character.
    void readUnquoted() {
        auto size = value_.size();
        while (!text_.empty()) {
            const char c = take();
            if (c == '\n')
                break;
            if (c == '\\') {
                if (text_.empty())
                    break;
                const char next = take();
                if (next == '\n')
                    continue;
                value_ += next;
                size = value_.size();
            } else {
                value_ += c;
                if (!isSpace(c))
                    size = value_.size();
            }
        }
        value_.resize(size);
    }

    std::string_view& text_;
    std::string value_;
};

std::string_view takeLine(std::string_view& text) {
    const auto line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(line.size() + 1, text.size()));
    return line;
}

/// The words of a value, one after the other.
class WordReader {
public:
    explicit WordReader(std::string_view text) : text_(text) {}

    std::optional<std::string> next() {
        while (!text_.empty() && isSpace(text_.front()))
            text_.remove_prefix(1);
        if (text_.empty())
            return std::nullopt;
        std::string word;
        char quote = '\0';
        while (!text_.empty() && (quote != '\0' || !isSpace(text_.front())))
            readCharacter(quote, word);
        return word;
    }

private:
    void readCharacter(char& quote, std::string& word) {
        const char c = text_.front();
        text_.remove_prefix(1);
        if (c == quote) {
            quote = '\0';
        } else if (quote == '\0' && (c == '\'' || c == '"')) {
            quote = c;
        } else if (c != '\\') {
            word += c;
        } else if (!text_.empty()) {
            word += text_.front();
            text_.remove_prefix(1);
        }
    }

    std::string_view text_;
};

/// Parses the lines of a list of variants.
class VariantsParser {
public:
    explicit VariantsParser(std::vector<NamedVariant>& variants) : variants_(variants) {}

    std::optional<VariantsProblem> parseLine(SourceLine source) {
        Cursor line(source);
        if (!line.skipSpace() || line.sees('#'))
            return std::nullopt;
        line.markToken();
        const std::string name(line.word(":"));
        const auto problem = [&](const std::string& text) {
            return VariantsProblem{source.number, line.tokenColumn(), text};
        };
        if (name.empty() || !line.accept(':'))
            return problem("a line is \"NAME: argument argument ...\"");
        if (!names_.insert(name).second)
            return problem("there is a variant " + name + " already");
        auto arguments = commandLineWords(line.rest());
        for (const auto& argument : arguments) {
            SystemArguments unused;
            if (!addSystemArgument(unused, argument))
                return problem(argument + " is no argument, which is NAME=VALUE");
        }
        if (const auto conflict = conflictOf(arguments))
            return problem(conflict->first + " and " + conflict->second +
                           " give one name two values");
        variants_.push_back({name, source.number, std::move(arguments)});
        return std::nullopt;
    }

private:
    std::vector<NamedVariant>& variants_;
    std::set<std::string> names_;
};

} // namespace

std::optional<VariantsProblem> parseVariants(std::string_view text,
                                             std::vector<NamedVariant>& variants) {
    VariantsParser parser(variants);
    for (std::uint32_t number = 1; !text.empty(); ++number) {
        if (auto problem = parser.parseLine({takeLine(text), number}))
            return problem;
    }
    return std::nullopt;
}

std::optional<ArgumentConflict> conflictOf(const std::vector<std::string>& arguments) {
    SystemArguments seen;
    for (const auto& argument : arguments) {
        SystemArguments alone;
        addSystemArgument(alone, argument);
        for (const auto& [name, value] : alone) {
            const auto first = seen.try_emplace(name, value).first;
            if (first->second != value)
                return ArgumentConflict{name + "=" + first->second, argument};
        }
    }
    return std::nullopt;
}

std::vector<std::string> commandLineWords(std::string_view value) {
    std::vector<std::string> words;
    WordReader reader(value);
    while (auto word = reader.next())
        words.push_back(*std::move(word));
    return words;
}

std::optional<std::string> environmentValue(std::string_view text, std::string_view name) {
    std::optional<std::string> value;
    while (!text.empty()) {
        const auto line = text.substr(0, text.find('\n'));
        const auto equals = line.find('=');
        const auto variable = trimSpace(line.substr(0, equals));
        if (equals == std::string_view::npos || variable.starts_with('#') ||
            variable.starts_with(';')) {
            takeLine(text);
            continue;
        }
        text.remove_prefix(equals + 1);
        auto read = ValueReader(text).read();
        if (variable == name)
            value = std::move(read);
    }
    return value;
}

} // namespace morvane::ctl
