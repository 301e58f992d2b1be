// The keys of random presets on random devices, against the plain method: to list every combination
// and sort the keys. Index values are such that their brackets are mixed up with those of keys.

#include "support/preset_records.h"
#include "tables/preset_keys.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <tuple>
#include <vector>

namespace morvane {
namespace {

using Keys = std::set<std::string>;
using Kind = IndexValueSet::Kind;

// The plain method.

/// The values of each dimension; nothing for all the values of its index.
using Dimensions = std::vector<std::optional<IndexValues>>;

bool contains(const std::vector<std::string>& values, std::string_view value) {
    return std::find(values.begin(), values.end(), value) != values.end();
}

IndexValues written(const IndexValueSet& set) {
    IndexValues values;
    if (set.kind == Kind::name)
        values.assign(set.names.begin(), set.names.end());
    for (const auto number : set.kind == Kind::number ? set.numbers : std::vector<std::uint32_t>())
        appendNumbers(static_cast<std::int32_t>(number), static_cast<std::int32_t>(number), values);
    for (const auto& [low, high] : set.kind == Kind::range ? set.ranges : std::vector<ValueRange>())
        appendNumbers(low, high, values);
    return values;
}

IndexValues chosen(const IndexSelector& selector, const IndexTable& indices) {
    const auto index = indices.find(selector.indexName);
    auto all = index == indices.end() ? IndexValues() : index->second;
    if (selector.values.kind == Kind::none)
        return all;
    auto named = written(selector.values);
    if (!selector.isNot)
        return named;
    IndexValues others;
    for (const auto& value : all) {
        // A range takes away a number however it is written; here, that is 7 written as 07.
        const bool isSeven = selector.values.kind == Kind::range && value == "07";
        if (!contains(named, isSeven ? "7" : value))
            others.push_back(value);
    }
    return others;
}

/// What a clause selects of a parameter; nothing if it does not select it.
std::optional<Dimensions> apply(const IndexSpec& clause, const IndexNames& indexNames,
                                const IndexTable& indices) {
    if (clause.none && !indexNames.empty())
        return std::nullopt;
    Dimensions dimensions(indexNames.size());
    for (const auto& selector : clause.selectors) {
        const bool isAbsence = selector.isNot && selector.values.kind == Kind::none;
        if (contains(indexNames, selector.indexName) == isAbsence)
            return std::nullopt;
        for (std::size_t i = 0; i < indexNames.size(); ++i) {
            if (indexNames[i] == selector.indexName)
                dimensions[i] = chosen(selector, indices);
        }
    }
    const auto isEmpty = [](const auto& values) { return values && values->empty(); };
    return std::any_of(dimensions.begin(), dimensions.end(), isEmpty) ? std::nullopt
                                                                      : std::optional(dimensions);
}

std::vector<Dimensions> selectionsOf(const PresetList& list, std::string_view name,
                                     const IndexNames& indexNames, const IndexTable& indices) {
    auto clauses = list.indexSpecs;
    std::vector<Dimensions> selections;
    for (const auto& item : list.items) {
        if (item.name != name)
            continue;
        if (item.indexSpecs.empty())
            selections.emplace_back(indexNames.size());
        clauses.insert(clauses.end(), item.indexSpecs.begin(), item.indexSpecs.end());
    }
    for (const auto& clause : clauses) {
        if (const auto selection = apply(clause, indexNames, indices))
            selections.push_back(*selection);
    }
    return selections;
}

/// Adds the keys that begin with the name and the first `done` values.
void addKeys(const std::string& begin, std::size_t done, const Dimensions& dimensions,
             const IndexNames& indexNames, const IndexTable& indices, Keys& keys) {
    if (done == dimensions.size()) {
        keys.insert(begin);
        return;
    }
    const auto& all = indices.at(indexNames[done]);
    for (const auto& value : dimensions[done].value_or(all))
        addKeys(std::string(begin).append("[").append(value).append("]"), done + 1, dimensions,
                indexNames, indices, keys);
}

/// An index that does not exist leaves no key, whatever is named of it.
void addKeys(std::string_view name, const Dimensions& dimensions, const IndexNames& indexNames,
             const IndexTable& indices, Keys& keys) {
    if (std::all_of(indexNames.begin(), indexNames.end(),
                    [&](const std::string& index) { return indices.contains(index); }))
        addKeys(std::string(name), 0, dimensions, indexNames, indices, keys);
}

void addIncluded(const PresetDefinition& preset, std::string_view name,
                 const IndexNames& indexNames, const IndexTable& indices, Keys& keys) {
    for (const auto& list : preset.includeLists) {
        auto selections = selectionsOf(list, name, indexNames, indices);
        if (list.all)
            selections = {Dimensions(indexNames.size())};
        for (const auto& selection : selections)
            addKeys(name, selection, indexNames, indices, keys);
        if (list.all)
            return;
    }
}

void addNotExcluded(const PresetDefinition& preset, std::string_view name,
                    const IndexNames& indexNames, const IndexTable& indices, Keys& keys) {
    Dimensions left(indexNames.size());
    for (std::size_t i = 0; i < left.size(); ++i)
        left[i] = indices.contains(indexNames[i]) ? indices.at(indexNames[i]) : IndexValues();
    for (const auto& list : preset.excludeLists) {
        if (list.all)
            return;
        for (const auto& selection : selectionsOf(list, name, indexNames, indices)) {
            if (std::none_of(selection.begin(), selection.end(),
                             [](const auto& values) { return values.has_value(); }))
                return;
            for (std::size_t i = 0; i < left.size(); ++i) {
                if (selection[i])
                    std::erase_if(*left[i], [&](const auto& value) {
                        return contains(*selection[i], value);
                    });
            }
        }
    }
    addKeys(name, left, indexNames, indices, keys);
}

// Random devices and presets.

constexpr std::array indexNames{"i", "j", "k", "gone"};
constexpr std::array parameterNames{"p",  "p!", "p1", "p1A", "p1a",
                                    "pA", "p~", "q",  "q0",  "\xc3\xa4"};
constexpr std::array valueTexts{"",    "0",    "1",  "10",   "9",    "07",  "a",   "a]",
                                "a][", "a][b", "]",  "[",    "]]",   "a]b", "b][", "a^",
                                "a\\", "aZ",   "a[", "auto", "\xff", "-1",  "b",   "][1"};

class Generator {
public:
    explicit Generator(unsigned seed) : random_(seed) {}

    IndexTable indexTable() {
        IndexTable table;
        for (const auto* const name : indexNames) {
            if (name != std::string_view("gone"))
                repeat(5, [&] { table[name].emplace_back(oneOf(valueTexts)); });
        }
        return table;
    }

    /// The parameters go into one map or the other, or none.
    void addParameters(ParameterMap& readWrite, ParameterMap& readOnly) {
        for (const auto* const name : parameterNames) {
            IndexNames dimensions;
            repeat(3, [&] {
                dimensions.emplace_back(
                    oneOf(indexNames, chance(10) ? indexNames.size() : indexNames.size() - 1));
            });
            if (chance(90))
                (chance(50) ? readWrite : readOnly).append(name, dimensions);
        }
    }

    PresetDefinition preset() {
        PresetDefinition preset;
        repeat(2, [&] { preset.includeLists.push_back(list()); });
        repeat(2, [&] { preset.excludeLists.push_back(list()); });
        return preset;
    }

private:
    bool chance(unsigned percent) { return random_() % 100 < percent; }

    template <typename Do>
    void repeat(unsigned most, Do once) {
        for (auto count = random_() % (most + 1); count > 0; --count)
            once();
    }

    template <typename Texts>
    std::string_view oneOf(const Texts& texts, std::size_t count = std::tuple_size_v<Texts>) {
        return texts[random_() % count];
    }

    PresetList list() {
        PresetList list;
        list.all = chance(10);
        if (chance(40))
            list.indexSpecs.push_back(clause());
        repeat(3, [&] {
            PresetItem item{0, oneOf(parameterNames), {}};
            repeat(3, [&] { item.indexSpecs.push_back(clause()); });
            list.items.push_back(item);
        });
        return list;
    }

    IndexSpec clause() {
        IndexSpec clause;
        clause.none = chance(10);
        if (!clause.none)
            repeat(1, [&] { clause.selectors.push_back(selector()); });
        if (!clause.none)
            clause.selectors.push_back(selector());
        return clause;
    }

    IndexSelector selector() {
        IndexSelector selector{oneOf(indexNames), chance(30), {}};
        auto& values = selector.values;
        values.kind = static_cast<Kind>(random_() % 4);
        repeat(3, [&] { values.names.push_back(oneOf(valueTexts)); });
        repeat(3,
               [&] { values.numbers.push_back(static_cast<std::uint32_t>(random_() % 12) - 1); });
        repeat(2, [&] {
            const auto low = static_cast<std::int32_t>(random_() % 10) - 1;
            values.ranges.push_back({low, low + static_cast<std::int32_t>(random_() % 4)});
        });
        return selector;
    }

    std::minstd_rand random_;
};

Keys plainKeys(const IndexTable& indices, const ParameterMap& readWrite,
               const ParameterMap& readOnly, const PresetDefinition& preset) {
    Keys keys;
    for (std::size_t i = 0; i < readOnly.size(); ++i)
        addIncluded(preset, readOnly.name(i), readOnly.indexNames(i), indices, keys);
    for (std::size_t i = 0; i < readWrite.size(); ++i)
        addNotExcluded(preset, readWrite.name(i), readWrite.indexNames(i), indices, keys);
    return keys;
}

TEST(PresetKeys, AreThoseOfThePlainMethod) {
    for (unsigned seed = 1; seed <= 1000; ++seed) {
        SCOPED_TRACE(seed);
        Generator generator(seed);
        const auto indices = generator.indexTable();
        ParameterMap readWrite;
        ParameterMap readOnly;
        generator.addParameters(readWrite, readOnly);
        std::vector<PresetDefinition> presets;
        for (unsigned count = seed % 6; count > 0; --count)
            presets.push_back(generator.preset());
        const auto sets = PresetGenerate::keySets(indices, readWrite, readOnly, presets);
        ASSERT_EQ(sets.size(), presets.size());
        for (std::size_t i = 0; i < presets.size(); ++i) {
            const auto keys = plainKeys(indices, readWrite, readOnly, presets[i]);
            ASSERT_EQ(sets[i].strings(), std::vector<std::string>(keys.begin(), keys.end()));
            ASSERT_EQ(PresetGenerate::keySet(indices, readWrite, readOnly, presets[i]), sets[i]);
        }
    }
}

} // namespace
} // namespace morvane
