#include "release_comparison.h"

#include "core/preset_manager.h"
#include "entry_check.h"
#include "tables/condition.h"
#include "tables/key_order.h"
#include "tables/preset_keys.h"
#include "value_outcome.h"

#include <algorithm>
#include <iterator>
#include <list>
#include <optional>
#include <set>
#include <string_view>
#include <tuple>
#include <utility>

namespace morvane::ctl {

namespace {

/// Presets of a variant that have the same keys in both releases.
class PresetGroup {
public:
    PresetGroup(const KeySet& before, const KeySet& after)
        : before_(before),
          after_(after),
          searchBefore_(before),
          searchAfter_(after),
          isSet_(after.size()) {}

    bool isFor(const KeySet& before, const KeySet& after) const {
        return before == before_ && after == after_;
    }

    std::vector<std::string> presets{};

    bool couldStore(std::string_view key) { return searchBefore_.find(key).has_value(); }
    std::optional<std::size_t> place(std::string_view key) { return searchAfter_.find(key); }

    /// Notes that a file sets the key at the place.
    /// @return whether another one has done so.
    bool set(std::size_t place) {
        const bool wasSet = isSet_[place];
        isSet_[place] = true;
        return wasSet;
    }
    bool isSet(std::size_t place) const { return isSet_[place]; }

private:
    const KeySet& before_;
    const KeySet& after_;
    KeySearch searchBefore_;
    KeySearch searchAfter_;
    std::vector<bool> isSet_; ///< by place in `after`
};

/// Numbers of groups, in order.
using Groups = std::vector<std::uint32_t>;

/// Collects rows over all variants. Sets of presets, of which many keys have the same, are numbers.
class RowTable {
public:
    using Head = std::tuple<Fate, std::string, std::string, std::vector<std::string>>;

    /// Makes the presets of some groups a number.
    std::uint32_t placesOf(std::size_t variant, const Groups& groups,
                           const std::list<PresetGroup>& all) {
        PresetsOnVariant presets{variant, {}};
        std::uint32_t number = 0;
        for (const auto& group : all) {
            if (std::binary_search(groups.begin(), groups.end(), number++))
                presets.presets.insert(presets.presets.end(), group.presets.begin(),
                                       group.presets.end());
        }
        std::sort(presets.presets.begin(), presets.presets.end());
        places_.push_back(std::move(presets));
        return static_cast<std::uint32_t>(places_.size() - 1);
    }

    /// @param places a number that `placesOf` has made.
    void add(Head head, ReleaseRow::Key key, std::uint32_t places) {
        keys_[std::move(head)][std::move(key)].push_back(places);
    }

    std::vector<ReleaseRow> rows() const {
        std::vector<ReleaseRow> all;
        for (const auto& [head, keys] : keys_) {
            auto rows = rowsOf(head, keys);
            std::sort(rows.begin(), rows.end(),
                      [](const ReleaseRow& a, const ReleaseRow& b) { return a.keys < b.keys; });
            std::move(rows.begin(), rows.end(), std::back_inserter(all));
        }
        return all;
    }

private:
    using Numbers = std::vector<std::uint32_t>;
    using Keys = std::map<ReleaseRow::Key, Numbers>;

    // One for the keys that are in the same presets.
    std::vector<ReleaseRow> rowsOf(const Head& head, const Keys& keys) const {
        std::map<Numbers, std::vector<ReleaseRow::Key>> byPlaces;
        for (const auto& [key, places] : keys)
            byPlaces[places].push_back(key);
        std::vector<ReleaseRow> rows;
        for (auto& [places, alike] : byPlaces) {
            const auto& [fate, parameter, newName, values] = head;
            rows.push_back({fate, parameter, newName, values, std::move(alike), {}});
            for (const auto number : places)
                rows.back().places.push_back(places_[number]);
        }
        return rows;
    }

    std::vector<PresetsOnVariant> places_;
    std::map<Head, Keys> keys_;
};

/// Compares both releases on one variant.
class VariantComparison {
public:
    VariantComparison(const ReleaseOnVariant& older, const ReleaseOnVariant& newer,
                      std::size_t variant, RowTable& rows)
        : older_(older),
          newer_(newer),
          variant_(variant),
          rows_(rows),
          entries_(newer.manager),
          values_(older, newer) {}

    /// @return the presets that the newer release does not have.
    std::vector<std::string> compare() {
        auto gone = groupPresets();
        forEachParameter(older_.manager, [this](std::string_view name, const KeySet& keys) {
            followParameter(name, keys);
        });
        forEachParameter(newer_.manager, [this](std::string_view name, const KeySet& keys) {
            addUnset(name, keys);
        });
        return gone;
    }

    /// The presets that both releases have, in order.
    std::vector<std::string> presets() const {
        std::vector<std::string> all;
        for (const auto& group : groups_)
            all.insert(all.end(), group.presets.begin(), group.presets.end());
        std::sort(all.begin(), all.end());
        return all;
    }

private:
    /// A key with the presets for which a file of it sets something.
    struct Setting {
        ReleaseRow::Key key;
        Groups groups;
    };

    std::vector<std::string> groupPresets() {
        std::vector<std::string> gone;
        for (const auto& [name, before] : older_.manager.presets()) {
            const auto* const after = newer_.manager.findPreset(name);
            if (after == nullptr) {
                gone.push_back(name);
                continue;
            }
            auto group =
                std::find_if(groups_.begin(), groups_.end(), [&, &before = before](const auto& g) {
                    return g.isFor(before, *after);
                });
            if (group == groups_.end())
                group = groups_.emplace(groups_.end(), before, *after);
            group->presets.push_back(name);
        }
        return gone;
    }

    // In the order of the keys, in which they are found fastest.
    template <typename Use>
    static void forEachParameter(const PresetManager& manager, Use use) {
        for (const auto& [map, place] : inKeyOrder(manager.readWrite(), manager.readOnly())) {
            const auto name = map->name(place);
            use(name,
                PresetGenerate::parameterKeys(manager.indices(), name, map->indexNames(place)));
        }
    }

    void add(Fate fate, std::string_view parameter, std::string_view newName,
             std::vector<std::string> values, const ReleaseRow::Key& key, const Groups& groups) {
        if (groups.empty())
            return;
        auto known = places_.find(groups);
        if (known == places_.end())
            known = places_.emplace(groups, rows_.placesOf(variant_, groups, groups_)).first;
        rows_.add({fate, std::string(parameter), std::string(newName), std::move(values)}, key,
                  known->second);
    }

    // Keys with index values that the older release does not have were never stored: they are not
    // among those of the parameter.
    void followParameter(std::string_view name, const KeySet& keys) {
        std::vector<Setting> settings;
        for (const auto key : keys) {
            auto setting = followKey(name, key.view());
            if (!setting.groups.empty())
                settings.push_back(std::move(setting));
        }
        if (settings.empty())
            return;
        const std::string newName(nameOf(settings.front().key.after));
        const auto [mapped, refused, undecided] = values_.outcomeOf(
            *older_.definitions.parameters.find(name), settings.front().key.before, newName);
        for (const auto& [fate, values] : {std::pair(Fate::valueMapped, &mapped),
                                           {Fate::badValue, &refused},
                                           {Fate::undecidedValue, &undecided}}) {
            for (const auto& [key, groups] : settings) {
                if (!values->empty())
                    add(fate, name, newName, *values, key, groups);
            }
        }
    }

    std::string_view newNameOf(std::string_view name) const {
        const auto& mappings = newer_.manager.translation().nameMappings;
        const auto mapping = mappings.find(name);
        return mapping == mappings.end() ? name : mapping->second.newName;
    }

    static std::string_view nameOf(std::string_view key) { return key.substr(0, key.find('[')); }

    Setting followKey(std::string_view name, std::string_view key) {
        Groups covered;
        Groups uncovered;
        Groups again;
        const auto line = std::string(key) + "=?"; // any value
        PresetEntry entry;
        parsePresetLine(line, entry);
        const auto translated = entries_.translate(entry, Reports::off);
        std::uint32_t number = 0;
        for (auto& group : groups_) {
            const auto here = number++;
            if (!group.couldStore(key))
                continue;
            const auto place = group.place(translated.key);
            (place ? covered : uncovered).push_back(here);
            if (place && group.set(*place))
                again.push_back(here);
        }
        const ReleaseRow::Key keys{std::string(key), translated.key};
        add(fateOfDropped(entry, translated), name, newNameOf(entry.name), {}, {keys.before, ""},
            uncovered);
        if (covered.empty())
            return {};
        addCovered(name, entry, translated, keys, covered);
        add(Fate::setTwice, name, nameOf(keys.after), {}, keys, again);
        return {keys, std::move(covered)};
    }

    void addCovered(std::string_view name, const PresetEntry& before,
                    const TranslatedEntry& translated, const ReleaseRow::Key& key,
                    const Groups& groups) {
        const auto newName = translated.entry.name;
        if (translated.unlessCovered == DropReason::noInstance) {
            add(Fate::unknownKey, name, newName, {}, key, groups);
            return;
        }
        add(fateOfSet(before, translated.entry), name, newName, {}, key, groups);
        if (newer_.manager.isReadOnly(newName) && !older_.manager.isReadOnly(name))
            add(Fate::asStatus, name, newName, {}, key, groups);
    }

    static Fate fateOfSet(const PresetEntry& before, const PresetEntry& after) {
        if (before.name == after.name)
            return before.indices == after.indices ? Fate::kept : Fate::reindexed;
        return before.indices == after.indices ? Fate::renamed : Fate::renamedAndReindexed;
    }

    Fate fateOfDropped(const PresetEntry& before, const TranslatedEntry& translated) const {
        switch (translated.unlessCovered) {
        case DropReason::removed:
            return Fate::removed;
        case DropReason::unmapped:
            return hasMapping(newNameOf(before.name), before.indices.size()) ? Fate::badMapping
                                                                             : Fate::unmapped;
        case DropReason::noParameter:
            return newer_.definitions.parameters.find(translated.entry.name) == nullptr
                       ? Fate::unlisted
                       : Fate::absent;
        case DropReason::noInstance:
            return hasItsIndices(translated.entry) ? Fate::noInstance : Fate::unmapped;
        case DropReason::notInPreset:
            break;
        }
        const bool isReadOnlyNow = newer_.manager.isReadOnly(translated.entry.name) &&
                                   !older_.manager.isReadOnly(before.name);
        return isReadOnlyNow ? Fate::readOnly : Fate::notInPreset;
    }

    bool hasMapping(std::string_view name, std::size_t count) const {
        const auto& all = newer_.manager.translation().indexMaps;
        const auto found = all.find(name);
        return found != all.end() && found->second.contains(count);
    }

    bool hasItsIndices(const PresetEntry& entry) const {
        const auto* const parameter = newer_.definitions.parameters.find(entry.name);
        return parameter->indices.size() == entry.indices.size();
    }

    void addUnset(std::string_view name, const KeySet& keys) {
        const auto& [definitions, arguments, manager] = newer_;
        const auto* const parameter = definitions.parameters.find(name);
        const bool hasDefault =
            std::any_of(parameter->defaults.begin(), parameter->defaults.end(),
                        [&, &parameters = definitions.parameters,
                         &given = arguments](const DefaultSpec& chosen) {
                            return conditionHolds(chosen.condition, parameters, given);
                        });
        for (const auto key : keys) {
            Groups groups;
            std::uint32_t number = 0;
            for (auto& group : groups_) {
                const auto here = number++;
                const auto place = group.place(key.view());
                if (place && !group.isSet(*place))
                    groups.push_back(here);
            }
            add(hasDefault ? Fate::added : Fate::addedWithoutDefault, name, name, {},
                {"", std::string(key.view())}, groups);
        }
    }

    ReleaseOnVariant older_;
    ReleaseOnVariant newer_;
    std::size_t variant_;
    RowTable& rows_;
    EntryCheck entries_;
    ValueComparison values_;
    std::list<PresetGroup> groups_; ///< a search is not to be moved
    std::map<Groups, std::uint32_t> places_;
};

} // namespace

const SystemArguments* argumentsIn(const Release& newer, const DescribedVariant& variant) {
    if (variant.name.empty())
        return &variant.arguments;
    const auto found =
        std::find_if(newer.variants.begin(), newer.variants.end(),
                     [&](const DescribedVariant& v) { return v.name == variant.name; });
    return found == newer.variants.end() ? nullptr : &found->arguments;
}

bool isLoss(Fate fate) {
    return fate <= Fate::badValue;
}

bool ReleaseReport::hasLoss() const {
    return !goneVariants.empty() || !gonePresets.empty() ||
           std::any_of(rows.begin(), rows.end(),
                       [](const ReleaseRow& row) { return isLoss(row.fate); });
}

ReleaseReport compareReleases(const Release& older, const Release& newer) {
    ReleaseReport report;
    RowTable rows;
    for (std::size_t i = 0; i < older.variants.size(); ++i) {
        const auto& [name, arguments] = older.variants[i];
        const auto* const newArguments = argumentsIn(newer, older.variants[i]);
        if (newArguments == nullptr) {
            report.goneVariants.push_back(name);
            continue;
        }
        const PresetManager before(older.definitions, arguments);
        const PresetManager after(newer.definitions, *newArguments);
        VariantComparison comparison({older.definitions, arguments, before},
                                     {newer.definitions, *newArguments, after}, i, rows);
        auto gone = comparison.compare();
        if (!gone.empty())
            report.gonePresets.push_back({i, std::move(gone)});
        report.compared.push_back({i, comparison.presets()});
    }
    report.rows = rows.rows();
    return report;
}

} // namespace morvane::ctl
