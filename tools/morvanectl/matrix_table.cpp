#include "matrix_table.h"

#include "condition_text.h"
#include "output.h"
#include "terminal.h"

#include <algorithm>
#include <iostream>
#include <numeric>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace morvane::ctl {

namespace {

using Line = std::vector<std::string>;

/// Variants, by their numbers, whose cells in a row are the same.
struct VariantGroup {
    std::vector<std::size_t> variants;
    Line cells;
};

/// The cells of a matrix, as text. The first line has the names of the columns.
struct Table {
    std::size_t fixedColumns = 0; ///< those before the presets
    std::vector<Line> lines;
    std::vector<std::string> notes; ///< what stands for their numbers, from 1, in brackets
};

std::string mark(bool differs) {
    return differs ? "*" : "";
}

std::string cellOf(const CoveredKeys& covered, std::size_t keys, bool differs) {
    const std::string_view extent = extentOf(covered, keys);
    std::string cell = "-";
    if (extent != "none")
        cell = (extent == "all" ? "+" : "~") + std::to_string(covered.own);
    if (extent == "some")
        cell += "/" + std::to_string(keys);
    if (covered.unknown > 0)
        cell += "!" + std::to_string(covered.unknown);
    return cell + mark(differs);
}

Line cellsOf(const CoverageMatrix& matrix, std::size_t parameter, std::size_t variant) {
    const auto& row = matrix.parameters[parameter];
    const auto& keys = row.keys[variant];
    Line cells{(keys ? std::to_string(*keys) : "-") + mark(row.differs)};
    for (const auto& [name, preset] : matrix.presets)
        cells.push_back(cellOf(preset.covered(parameter, variant), keys.value_or(0),
                               preset.differs(parameter)));
    return cells;
}

std::vector<VariantGroup> groupsOf(const CoverageMatrix& matrix, std::size_t parameter) {
    std::vector<VariantGroup> groups;
    for (std::size_t variant = 0; variant < matrix.variants.size(); ++variant) {
        auto cells = cellsOf(matrix, parameter, variant);
        auto group = std::find_if(groups.begin(), groups.end(),
                                  [&](const VariantGroup& other) { return other.cells == cells; });
        if (group == groups.end())
            group = groups.insert(group, {{}, std::move(cells)});
        group->variants.push_back(variant);
    }
    return groups;
}

// What stands in the column of a terminal for names that would make it too wide.
std::string shortened(std::string names, std::vector<std::string>& notes) {
    constexpr std::size_t most = 24;
    if (names.size() <= most)
        return names;
    const auto known = std::find(notes.begin(), notes.end(), names);
    const auto number = known - notes.begin() + 1;
    if (known == notes.end())
        notes.push_back(std::move(names));
    return "[" + std::to_string(number) + "]";
}

Table tableOf(const CoverageMatrix& matrix, std::span<const std::size_t> parameters,
              bool isForTerminal) {
    const bool hasVariants = matrix.variants.size() > 1;
    Table table{hasVariants ? std::size_t{4} : std::size_t{3}, {{"parameter", "access"}}, {}};
    auto& header = table.lines.front();
    if (hasVariants)
        header.emplace_back("variants");
    header.emplace_back("keys");
    for (const auto& [name, preset] : matrix.presets)
        header.push_back(name);
    for (const auto parameter : parameters) {
        const auto& definition = *matrix.parameters[parameter].definition;
        for (auto& [variants, cells] : groupsOf(matrix, parameter)) {
            Line line{std::string(definition.name), keywordOf(definition.access)};
            if (hasVariants) {
                auto names = variants.size() == matrix.variants.size()
                                 ? "all"
                                 : namesOf(variants, matrix.variants);
                line.push_back(isForTerminal ? shortened(std::move(names), table.notes) : names);
            }
            line.insert(line.end(), cells.begin(), cells.end());
            table.lines.push_back(std::move(line));
        }
    }
    return table;
}

// In columns of a terminal, for texts in UTF-8 whose characters take one each.
std::size_t widthOf(std::string_view text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) {
        return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; // which would continue another
    }));
}

std::string inItsColour(const std::string& cell) {
    if (cell.find('!') != std::string::npos)
        return coloured(cell, Colour::red, std::cout);
    if (cell.starts_with('+'))
        return coloured(cell, Colour::green, std::cout);
    return cell.starts_with('~') ? coloured(cell, Colour::yellow, std::cout) : cell;
}

/// Lays a table out on a terminal.
class TerminalTable {
public:
    /// @param table borrowed for the object's life.
    TerminalTable(const Table& table, TerminalSize size)
        : table_(table),
          size_(size),
          widths_(table.lines.front().size()) {
        for (const auto& line : table.lines) {
            for (std::size_t column = 0; column < line.size(); ++column)
                widths_[column] = std::max(widths_[column], widthOf(line[column]));
        }
    }

    void write() const {
        auto first = table_.fixedColumns;
        do {
            const auto end = endOfBlock(first);
            writeBlock(first, end);
            std::cout << '\n';
            first = end;
        } while (first < widths_.size());
    }

private:
    static constexpr std::size_t gap = 2;

    // A block has at least one preset, however narrow the terminal is.
    std::size_t endOfBlock(std::size_t first) const {
        auto width = gap * (table_.fixedColumns - 1) +
                     std::accumulate(widths_.begin(), widths_.begin() + fixed(), std::size_t{0});
        auto end = first;
        while (end < widths_.size() &&
               (end == first || width + gap + widths_[end] <= size_.columns))
            width += gap + widths_[end++];
        return end;
    }

    // The names of the columns come again with every screen of lines.
    void writeBlock(std::size_t first, std::size_t end) const {
        const std::size_t screen = std::max<std::size_t>(size_.rows, 3) - 2;
        for (std::size_t i = 1; i < table_.lines.size(); ++i) {
            if ((i - 1) % screen == 0)
                writeLine(table_.lines.front(), first, end, /*isHeader=*/true);
            writeLine(table_.lines[i], first, end, /*isHeader=*/false);
        }
    }

    void writeLine(const Line& line, std::size_t first, std::size_t end, bool isHeader) const {
        std::string blanks;
        const auto writeCell = [&](std::size_t column, const std::string& text) {
            std::cout << blanks << text;
            blanks.assign(widths_[column] + gap - widthOf(line[column]), ' ');
        };
        for (std::size_t column = 0; column < table_.fixedColumns; ++column)
            writeCell(column, line[column]);
        for (auto column = first; column < end; ++column)
            writeCell(column, isHeader ? line[column] : inItsColour(line[column]));
        std::cout << '\n';
    }

    std::ptrdiff_t fixed() const { return static_cast<std::ptrdiff_t>(table_.fixedColumns); }

    const Table& table_;
    TerminalSize size_;
    std::vector<std::size_t> widths_;
};

void writeLegend(const std::vector<std::string>& notes, bool hasVariants) {
    std::cout << inItsColour("+4") << "    all 4 keys\n"
              << inItsColour("~2/4") << "  2 of 4 keys\n"
              << "-     none\n"
              << inItsColour("!1") << "    1 key with an index value that does not exist\n";
    if (hasVariants)
        std::cout << "*     not the same on all variants\n";
    for (std::size_t i = 0; i < notes.size(); ++i)
        std::cout << "[" << i + 1 << "]   " << notes[i] << '\n';
}

} // namespace

void writeTable(const CoverageMatrix& matrix, std::span<const std::size_t> parameters) {
    if (parameters.empty())
        return;
    const auto size = terminalSize();
    const auto table = tableOf(matrix, parameters, size.has_value());
    if (!size) {
        for (const auto& line : table.lines)
            std::cout << joined(line, "\t") << '\n';
        return;
    }
    TerminalTable(table, *size).write();
    writeLegend(table.notes, matrix.variants.size() > 1);
}

} // namespace morvane::ctl
