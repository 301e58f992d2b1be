#include "tables/preset_keys.h"

#include "presetdef/preset_definition.h"
#include "tables/selections.h"

#include <algorithm>
#include <iterator>
#include <list>
#include <utility>

namespace morvane {

namespace {

/// The values of each dimension of a parameter, none of them empty; borrowed.
using Dimensions = std::vector<const IndexValues*>;

std::string keyOf(const std::string& name, const Dimensions& dimensions,
                  const std::vector<std::size_t>& positions) {
    std::string key = name;
    for (std::size_t i = 0; i < dimensions.size(); ++i)
        key.append("[").append((*dimensions[i])[positions[i]]).append("]");
    return key;
}

// Advances to the next combination, the last dimension fastest. False after the last one.
bool advance(std::vector<std::size_t>& positions, const Dimensions& dimensions) {
    for (auto i = positions.size(); i-- > 0;) {
        if (++positions[i] < dimensions[i]->size())
            return true;
        positions[i] = 0;
    }
    return false;
}

/// Gathers the keys of one preset.
class KeyCollector {
public:
    /// @param parameters the number of parameters, most of which usually have one key.
    KeyCollector(const IndexTable& indices, std::size_t parameters) : indices_(indices) {
        keys_.reserve(parameters);
    }

    /// Adds every instance of a parameter.
    void addAll(const std::string& name, const IndexNames& indexNames) {
        addRemaining(name, indexNames, {});
    }

    /// Adds the instances that a selection describes.
    void add(const std::string& name, const IndexNames& indexNames, const Selection& selection) {
        if (!hasInstances(indexNames, selection))
            return;
        std::list<IndexValues> chosen; // a list never moves what the dimensions point to
        Dimensions dimensions;
        for (std::size_t i = 0; i < indexNames.size(); ++i) {
            if (selection[i] == nullptr) {
                dimensions.push_back(valuesOf(indexNames[i]));
            } else {
                chosen.push_back(selection[i]->list());
                dimensions.push_back(&chosen.back());
            }
        }
        appendKeys(name, dimensions);
    }

    /// Adds the instances that are left after applying the exclusions, one after the other and
    /// dimension by dimension: without value 1 of its first dimension, a parameter loses every key
    /// whose first index is 1, whatever the second.
    void addRemaining(const std::string& name, const IndexNames& indexNames,
                      const std::vector<Selection>& exclusions) {
        std::list<IndexValues> remaining;
        Dimensions dimensions;
        for (const auto& indexName : indexNames)
            dimensions.push_back(valuesOf(indexName));
        for (const auto& exclusion : exclusions) {
            if (!isRestricted(exclusion))
                return;
            for (std::size_t i = 0; i < dimensions.size(); ++i) {
                if (exclusion[i] == nullptr)
                    continue;
                remaining.push_back(without(*dimensions[i], *exclusion[i]));
                dimensions[i] = &remaining.back();
            }
        }
        appendKeys(name, dimensions);
    }

    KeySet take() { return KeySet(std::exchange(keys_, {})); }

private:
    static bool isRestricted(const Selection& selection) {
        return std::any_of(selection.begin(), selection.end(),
                           [](const ChosenValues* chosen) { return chosen != nullptr; });
    }

    static IndexValues without(const IndexValues& values, const ChosenValues& excluded) {
        IndexValues kept;
        std::copy_if(values.begin(), values.end(), std::back_inserter(kept),
                     [&](const std::string& value) { return !excluded.contains(value); });
        return kept;
    }

    // False if a dimension has no value, checked before a huge range is listed. An index that does
    // not exist on this device has none, whatever the selection names.
    bool hasInstances(const IndexNames& indexNames, const Selection& selection) const {
        for (std::size_t i = 0; i < indexNames.size(); ++i) {
            const auto index = indices_.find(indexNames[i]);
            if (index == indices_.end() || (selection[i] == nullptr && index->second.empty()))
                return false;
        }
        return true;
    }

    // An index that does not exist on this device has no values, which leaves no key.
    const IndexValues* valuesOf(const std::string& indexName) const {
        static const IndexValues noValues;
        const auto index = indices_.find(indexName);
        return index == indices_.end() ? &noValues : &index->second;
    }

    // Appends the key of every combination of one value per dimension, or the bare name if there
    // are no dimensions.
    void appendKeys(const std::string& name, const Dimensions& dimensions) {
        if (dimensions.empty()) {
            keys_.push_back(name);
            return;
        }
        if (std::any_of(dimensions.begin(), dimensions.end(),
                        [](const IndexValues* values) { return values->empty(); }))
            return;
        std::vector<std::size_t> positions(dimensions.size(), 0);
        do {
            keys_.push_back(keyOf(name, dimensions, positions));
        } while (advance(positions, dimensions));
    }

    const IndexTable& indices_;
    std::vector<std::string> keys_;
};

// Adds what the include lists name. A list of "all" adds everything and ends the walk.
void addIncluded(const PresetDefinition& preset, const IndexTable& indices,
                 const ParameterMap& readOnly, KeyCollector& keys) {
    Selections included(indices, readOnly);
    for (const auto& list : preset.includeLists) {
        if (list.all) {
            for (const auto& [name, indexNames] : readOnly)
                keys.addAll(name, indexNames);
            break;
        }
        included.add(list);
    }
    for (const auto& [name, selections] : included.byParameter()) {
        const auto& [fullName, indexNames] = *readOnly.find(name);
        for (const auto& selection : selections)
            keys.add(fullName, indexNames, selection);
    }
}

// Adds what the exclude lists leave, which is nothing after a list of "all".
void addNotExcluded(const PresetDefinition& preset, const IndexTable& indices,
                    const ParameterMap& readWrite, KeyCollector& keys) {
    Selections excluded(indices, readWrite);
    for (const auto& list : preset.excludeLists) {
        if (list.all)
            return;
        excluded.add(list);
    }
    for (const auto& [name, indexNames] : readWrite) {
        const auto exclusions = excluded.byParameter().find(name);
        if (exclusions == excluded.byParameter().end())
            keys.addAll(name, indexNames);
        else
            keys.addRemaining(name, indexNames, exclusions->second);
    }
}

} // namespace

KeySet PresetGenerate::keySet(const IndexTable& indices, const ParameterMap& readWrite,
                              const ParameterMap& readOnly, const PresetDefinition& preset) {
    KeyCollector keys(indices, readWrite.size());
    addIncluded(preset, indices, readOnly, keys);
    addNotExcluded(preset, indices, readWrite, keys);
    return keys.take();
}

KeySet PresetGenerate::parameterKeys(const IndexTable& indices, const std::string& name,
                                     const IndexNames& indexNames) {
    KeyCollector keys(indices, 1);
    keys.addAll(name, indexNames);
    return keys.take();
}

} // namespace morvane
