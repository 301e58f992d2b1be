#include "preset_parts.h"

#include "tables/preset_keys.h"
#include "tables/selections.h"

#include <set>

namespace morvane::ctl {

namespace {

using Kind = PresetList::Kind;

/// Collects the parts of one list.
class PartCollector {
public:
    PartCollector(const PresetDefinition& preset, const PresetList& list,
                  std::vector<PresetPart>& parts)
        : preset_(preset),
          list_(list),
          parts_(parts) {}

    void addParts() {
        if (list_.all) {
            auto everything = emptyList();
            everything.all = true;
            add({list_.line, "all", list_.place, nullptr, {}}, std::move(everything));
        }
        for (const auto& clause : list_.indexSpecs) {
            auto alone = emptyList();
            alone.indexSpecs = {clause};
            add({clause.line, "index clause", clause.place, &clause, {}}, std::move(alone));
        }
        for (const auto& item : list_.items)
            addItem(item);
    }

private:
    struct Description {
        std::uint32_t line;
        std::string text;
        std::string_view place;
        const IndexSpec* clause;
        std::string item;
    };

    PresetList emptyList() const {
        PresetList list;
        list.line = list_.line;
        list.kind = list_.kind;
        list.access = list_.access;
        return list;
    }

    void addItem(const PresetItem& item) {
        const std::string name(item.name);
        if (item.indexSpecs.empty()) {
            auto alone = emptyList();
            alone.items = {item};
            add({item.line, "item " + name, item.name, nullptr, name}, std::move(alone));
        }
        for (const auto& clause : item.indexSpecs) {
            auto alone = emptyList();
            alone.items = {{item.line, item.name, {clause}}};
            add({clause.line,
                 "item " + name + ", index clause on line " + std::to_string(clause.line),
                 clause.place, &clause, name},
                std::move(alone));
        }
    }

    void add(const Description& description, PresetList list) {
        PresetDefinition alone{preset_.line, preset_.name, {}, {}};
        (list_.kind == Kind::include ? alone.includeLists : alone.excludeLists)
            .push_back(std::move(list));
        const auto& [line, text, place, clause, item] = description;
        parts_.push_back({list_.kind, line, text, place, std::move(alone), clause, item});
    }

    const PresetDefinition& preset_;
    const PresetList& list_;
    std::vector<PresetPart>& parts_;
};

} // namespace

std::vector<PresetPart> partsOf(const PresetDefinition& preset) {
    std::vector<PresetPart> parts;
    for (const auto* const lists : {&preset.includeLists, &preset.excludeLists}) {
        for (const auto& list : *lists)
            PartCollector(preset, list, parts).addParts();
    }
    return parts;
}

// The parameters of a group have the same instances: one of them stands for all.
bool selectsAny(const PresetPart& part, const PresetManager& manager) {
    const bool includes = part.kind == Kind::include;
    const auto& all = includes ? manager.readOnly() : manager.readWrite();
    const auto& lists = includes ? part.alone.includeLists : part.alone.excludeLists;
    Selections selections(manager.indices(), all);
    selections.add(lists.front());
    std::set<ParameterMap::Group> seen;
    for (std::size_t place = 0; place < all.size(); ++place) {
        const auto group = all.group(place);
        const bool mayBe = lists.front().all || !selections.ofItem(place).empty() ||
                           (!selections.ofGroup(group).empty() && seen.insert(group).second);
        if (mayBe &&
            !selectedKeys(part, manager, {{all.name(place), all.indexNames(place)}}).empty())
            return true;
    }
    return false;
}

KeySet selectedKeys(const PresetPart& part, const PresetManager& manager,
                    const ParameterMap& parameters) {
    if (part.kind == Kind::include)
        return PresetGenerate::keySet(manager.indices(), {}, parameters, part.alone);
    const auto all = PresetGenerate::keySet(manager.indices(), parameters, {}, {});
    const auto left = PresetGenerate::keySet(manager.indices(), parameters, {}, part.alone);
    std::vector<std::string> taken;
    for (const auto key : all) {
        if (!left.contains(key.view()))
            taken.emplace_back(key.view());
    }
    return KeySet(std::move(taken));
}

} // namespace morvane::ctl
