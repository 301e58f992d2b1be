#include "tables/preset_keys.h"

#include "presetdef/preset_definition.h"
#include "tables/coverage.h"
#include "tables/key_order.h"

#include <algorithm>
#include <list>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace morvane {

namespace {

/// The dimensions of parameters, which those of a group share.
class DimensionTable {
public:
    explicit DimensionTable(const IndexTable& indices) : indices_(indices) {}

    /// @return null if an index of the parameter does not exist on this device.
    const Dimensions* of(const MappedParameter& parameter) {
        const auto group = std::pair(parameter.map, parameter.map->group(parameter.place));
        auto known = dimensions_.find(group);
        if (known == dimensions_.end())
            known = dimensions_.emplace(group, dimensionsOf(parameter)).first;
        return known->second ? &*known->second : nullptr;
    }

private:
    std::optional<Dimensions> dimensionsOf(const MappedParameter& parameter) {
        Dimensions dimensions;
        for (const auto& indexName : parameter.map->indexNames(parameter.place)) {
            const auto index = indices_.find(indexName);
            if (index == indices_.end())
                return std::nullopt;
            dimensions.push_back(&sorted_.try_emplace(index->first, index->second).first->second);
        }
        return dimensions;
    }

    const IndexTable& indices_;
    std::map<std::string_view, SortedValues> sorted_;
    std::map<std::pair<const ParameterMap*, ParameterMap::Group>, std::optional<Dimensions>>
        dimensions_;
};

/// Makes key sets over one list of texts, parameter after parameter in the order of their keys.
class KeySetBuilder {
public:
    explicit KeySetBuilder(std::size_t count)
        : texts_(std::make_shared<KeyTexts>()),
          sets_(count, KeySet(texts_)) {}

    /// Adds what each set is to have of a parameter.
    void add(std::string_view name, const Dimensions& dimensions,
             std::span<const Coverage* const> coverages) {
        const auto all = isShared(dimensions, coverages) ? listAll(name, dimensions) : Stretch{};
        for (std::size_t i = 0; i < coverages.size(); ++i) {
            const auto& [isAll, part, written] = *coverages[i];
            if (isAll)
                sets_[i].append(all.first, all.last);
            else if (!part.empty() && !all.empty() && orderKeys(dimensions))
                addPart(sets_[i], dimensions, part, all);
            else if (!part.empty())
                addListed(sets_[i], listPart(name, dimensions, part));
            else if (!written.empty())
                addListed(sets_[i], listWritten(name, written));
        }
    }

    std::vector<KeySet> take() { return std::move(sets_); }

private:
    /// Places in the list of texts.
    struct Stretch {
        std::size_t first = 0;
        std::size_t last = 0;

        bool empty() const { return first == last; }
    };

    // Whether to list all keys of a parameter: if the sets together have as many. That is never
    // more than they would take if each had its own.
    static bool isShared(const Dimensions& dimensions, std::span<const Coverage* const> coverages) {
        double count = 1; // may be greater than any integer
        for (const auto* const values : dimensions)
            count *= static_cast<double>(values->texts().size());
        double wanted = 0;
        for (const auto* const coverage : coverages)
            wanted += coverage->all ? count : partSize(coverage->part);
        return count > 0 && wanted >= count;
    }

    static double partSize(const Places& part) {
        double count = part.empty() ? 0 : 1;
        for (const auto& places : part)
            count *= static_cast<double>(places.size());
        return count;
    }

    static void addListed(KeySet& set, const Stretch& stretch) {
        set.append(stretch.first, stretch.last);
    }

    // Adds some of the keys that are listed already, whole stretches of them: of places that follow
    // one another, with everything in the dimensions behind them.
    static void addPart(KeySet& set, const Dimensions& dimensions, const Places& part,
                        const Stretch& all) {
        const auto valuesOf = [&](std::size_t i) { return dimensions[i]->texts().size(); };
        auto last = part.size() - 1;
        std::size_t width = 1; // of a place in the last dimension that is not complete
        for (; part[last].size() == valuesOf(last); --last)
            width *= valuesOf(last);
        std::vector<std::size_t> begins{0};
        for (std::size_t i = 0; i < last; ++i)
            begins = combined(begins, part[i], valuesOf(i));
        const auto stretches = stretchesOf(part[last]);
        for (const auto begin : begins) {
            for (const auto& [first, end] : stretches)
                set.append(all.first + (begin * valuesOf(last) + first) * width,
                           all.first + (begin * valuesOf(last) + end) * width);
        }
    }

    static std::vector<std::size_t> combined(const std::vector<std::size_t>& begins,
                                             const std::vector<std::uint32_t>& places,
                                             std::size_t values) {
        std::vector<std::size_t> longer;
        for (const auto begin : begins) {
            for (const auto place : places)
                longer.push_back(begin * values + place);
        }
        return longer;
    }

    static std::vector<Stretch> stretchesOf(const std::vector<std::uint32_t>& places) {
        std::vector<Stretch> stretches;
        for (const std::size_t place : places) {
            if (stretches.empty() || stretches.back().last != place)
                stretches.push_back({place, place});
            ++stretches.back().last;
        }
        return stretches;
    }

    // Notes what holds for the keys: of their parts, of which there are fewer.
    void addTraits(std::string_view name, const Dimensions& dimensions) {
        texts_->traits.narrow(traitsOfKey(name));
        for (const auto* const values : dimensions)
            texts_->traits.narrow(values->traits());
    }

    static void addKeys(std::string_view name, const Dimensions& dimensions,
                        std::vector<std::string>& keys) {
        forEachKey(name, dimensions, [&](std::string_view key) { keys.emplace_back(key); });
    }

    Stretch listAll(std::string_view name, const Dimensions& dimensions) {
        const auto first = texts_->list.size();
        addTraits(name, dimensions);
        if (orderKeys(dimensions)) {
            forEachKey(name, dimensions, [&](std::string_view key) { texts_->list.append(key); });
        } else {
            std::vector<std::string> keys;
            addKeys(name, dimensions, keys);
            texts_->list.appendSorted(std::move(keys));
        }
        return {first, texts_->list.size()};
    }

    Stretch listPart(std::string_view name, const Dimensions& dimensions, const Places& part) {
        std::list<SortedValues> owned;
        Dimensions left;
        for (std::size_t i = 0; i < part.size(); ++i) {
            std::vector<std::string_view> texts;
            for (const auto place : part[i])
                texts.push_back(dimensions[i]->texts()[place]);
            left.push_back(&owned.emplace_back(std::move(texts)));
        }
        return listAll(name, left);
    }

    Stretch listWritten(std::string_view name, const std::vector<WrittenValues>& written) {
        const auto first = texts_->list.size();
        std::vector<std::string> keys;
        for (const auto& values : written) {
            const std::list<SortedValues> owned(values.begin(), values.end());
            Dimensions dimensions;
            for (const auto& sorted : owned)
                dimensions.push_back(&sorted);
            addTraits(name, dimensions);
            addKeys(name, dimensions, keys);
        }
        texts_->list.appendSorted(std::move(keys));
        return {first, texts_->list.size()};
    }

    std::shared_ptr<KeyTexts> texts_;
    std::vector<KeySet> sets_;
};

} // namespace

std::vector<KeySet> PresetGenerate::keySets(const IndexTable& indices,
                                            const ParameterMap& readWrite,
                                            const ParameterMap& readOnly,
                                            std::span<const PresetDefinition> presets) {
    using Lists = ListCoverage::Lists;
    std::list<ListCoverage> included; // what has selections is not to be moved
    std::list<ListCoverage> excluded;
    for (const auto& preset : presets) {
        included.emplace_back(Lists::include, preset.includeLists, indices, readOnly);
        excluded.emplace_back(Lists::exclude, preset.excludeLists, indices, readWrite);
    }
    DimensionTable dimensionTable(indices);
    KeySetBuilder builder(presets.size());
    std::vector<const Coverage*> coverages(presets.size());
    for (const auto& parameter : inKeyOrder(readWrite, readOnly)) {
        const auto& [map, place] = parameter;
        const auto* const dimensions = dimensionTable.of(parameter);
        if (dimensions == nullptr)
            continue;
        auto& lists = map == &readOnly ? included : excluded;
        std::transform(
            lists.begin(), lists.end(), coverages.begin(),
            [&, place = place](ListCoverage& list) { return &list.of(place, *dimensions); });
        builder.add(map->name(place), *dimensions, coverages);
    }
    return builder.take();
}

KeySet PresetGenerate::keySet(const IndexTable& indices, const ParameterMap& readWrite,
                              const ParameterMap& readOnly, const PresetDefinition& preset) {
    return keySets(indices, readWrite, readOnly, {&preset, 1}).front();
}

KeySet PresetGenerate::parameterKeys(const IndexTable& indices, std::string_view name,
                                     const IndexNames& indexNames) {
    return keySet(indices, {{name, indexNames}}, {}, {});
}

} // namespace morvane
