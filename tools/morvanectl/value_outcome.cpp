#include "value_outcome.h"

#include "engine/preset_entry.h"
#include "engine/preset_translate.h"
#include "tables/condition.h"
#include "text/number.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <set>
#include <utility>
#include <variant>

namespace morvane::ctl {

namespace {

// What a text stands for in a file: that of a number in decimal is the number.
ValidValue asStored(std::string_view text) {
    const auto number = text.empty() ? std::nullopt : wholeNumber(text);
    if (number && decimalText(*number) == text)
        return NumberSpan{*number, *number};
    return std::string(text);
}

ValidValue asStored(const ValidValue& item) {
    const auto* const text = std::get_if<std::string>(&item);
    return text != nullptr ? asStored(std::string_view(*text)) : item;
}

/// Numbers, split where what becomes of them may change; texts; each once and in order.
class Pieces {
public:
    void splitAt(const ValidValue& item) {
        if (const auto* const span = std::get_if<NumberSpan>(&item)) {
            begins_.insert(span->low);
            begins_.insert(std::int64_t{span->high} + 1);
        }
    }

    /// After all splits.
    void add(const ValidValue& item) {
        if (const auto* const text = std::get_if<std::string>(&item)) {
            if (!text->empty()) // which no store writes
                texts_.insert(*text);
            return;
        }
        const auto [low, high] = std::get<NumberSpan>(item);
        const auto end = std::int64_t{high} + 1;
        for (std::int64_t begin = low; begin < end;) {
            const auto split = begins_.upper_bound(begin);
            const auto next = split == begins_.end() ? end : std::min(*split, end);
            numbers_.emplace(begin, next - 1);
            begin = next;
        }
    }

    std::vector<ValidValue> list() const {
        std::vector<ValidValue> all;
        for (const auto& [low, high] : numbers_)
            all.emplace_back(
                NumberSpan{static_cast<std::int32_t>(low), static_cast<std::int32_t>(high)});
        all.insert(all.end(), texts_.begin(), texts_.end());
        return all;
    }

private:
    std::set<std::int64_t> begins_;
    std::set<std::pair<std::int64_t, std::int64_t>> numbers_;
    std::set<std::string> texts_;
};

/// Values with one outcome; numbers that follow one another are a span.
struct ValueList {
    std::vector<ValidValue> values;
    std::vector<std::string> mapped;

    void add(const ValidValue& piece) {
        const auto* const span = std::get_if<NumberSpan>(&piece);
        auto* const last = values.empty() ? nullptr : std::get_if<NumberSpan>(&values.back());
        if (span != nullptr && last != nullptr && std::int64_t{last->high} + 1 == span->low)
            last->high = span->high;
        else
            values.push_back(piece);
    }

    std::vector<std::string> texts() const {
        std::vector<std::string> all;
        for (const auto& value : values)
            all.push_back(textOf(value));
        all.insert(all.end(), mapped.begin(), mapped.end());
        return all;
    }
};

/// Follows values of one key.
class ValueFollower {
public:
    ValueFollower(std::string_view key, const TranslationTables& tables, ValueCheck& check)
        : key_(key),
          tables_(tables),
          check_(check) {}

    void follow(const ValidValue& piece) {
        const auto* const text = std::get_if<std::string>(&piece);
        const auto value = text != nullptr ? *text : decimalText(std::get<NumberSpan>(piece).low);
        const auto line = key_ + "=" + value;
        PresetEntry entry;
        parsePresetLine(line, entry);
        translateEntry(tables_, entry, Reports::off);
        auto* const list = listOf(check_.check(entry.name, entry.value).kind);
        if (entry.value != value) {
            const auto change = textOf(piece) + " -> " + textOf(asStored(entry.value));
            mapped_.push_back(change);
            if (list != nullptr)
                list->mapped.push_back(change);
        } else if (list != nullptr) {
            list->add(piece);
        }
    }

    ValueOutcome outcome() const { return {mapped_, refused_.texts(), undecided_.texts()}; }

private:
    ValueList* listOf(ValueVerdict::Kind kind) {
        switch (kind) {
        case ValueVerdict::Kind::refused:
            return &refused_;
        case ValueVerdict::Kind::unknown:
            return &undecided_;
        case ValueVerdict::Kind::accepted:
            break;
        }
        return nullptr;
    }

    std::string key_;
    const TranslationTables& tables_;
    ValueCheck& check_;
    std::vector<std::string> mapped_;
    ValueList refused_;
    ValueList undecided_;
};

// A text that stands for all that are not among some values.
std::string otherThan(const std::vector<ValidValue>& values) {
    std::string text = "other";
    while (std::any_of(values.begin(), values.end(),
                       [&](const ValidValue& value) { return standsFor(value, text); }))
        text += '_';
    return text;
}

std::vector<ValidValue> asStored(const std::vector<ValidValue>& items) {
    std::vector<ValidValue> stored;
    std::transform(items.begin(), items.end(), std::back_inserter(stored),
                   [](const ValidValue& item) { return asStored(item); });
    return stored;
}

std::vector<ValidValue> piecesOf(const std::vector<ValidValue>& stored,
                                 const std::vector<ValidValue>& accepted) {
    Pieces pieces;
    for (const auto* const items : {&stored, &accepted}) {
        for (const auto& item : *items)
            pieces.splitAt(item);
    }
    for (const auto& item : stored)
        pieces.add(item);
    return pieces.list();
}

} // namespace

ValueOutcome ValueComparison::outcomeOf(const SystemParameter& parameter, std::string_view key,
                                        std::string_view newName) {
    const auto& [definitions, arguments, manager] = newer_;
    const auto before = acceptedValues(parameter, older_.definitions.parameters, older_.arguments);
    const auto after =
        acceptedValues(*definitions.parameters.find(newName), definitions.parameters, arguments);
    const auto pieces = piecesOf(storedValues(parameter, before), asStored(after.values));
    ValueFollower follower(key, manager.translation(), values_);
    for (const auto& piece : pieces)
        follower.follow(piece);
    auto outcome = follower.outcome();
    if (!after.isRanged)
        return outcome;
    if (!before.isRanged) {
        auto known = pieces;
        known.insert(known.end(), after.values.begin(), after.values.end());
        const auto kind = values_.check(newName, otherThan(known)).kind;
        auto& texts = kind == ValueVerdict::Kind::refused ? outcome.refused : outcome.undecided;
        texts.push_back("all but " + textOf(after.values));
    }
    if (hasOpenRange(parameter))
        outcome.undecided.emplace_back("what a bound that names a parameter allows");
    return outcome;
}

// Those of the ranges, and of those that a translate section maps what the parameter takes.
std::vector<ValidValue> ValueComparison::storedValues(const SystemParameter& parameter,
                                                      const AcceptedValues& before) const {
    auto stored = asStored(before.values);
    const auto& mappings = newer_.manager.translation().nameMappings;
    const auto mapping = mappings.find(parameter.name);
    if (mapping == mappings.end())
        return stored;
    for (const auto& [value, mapped] : mapping->second.values) {
        if (before.accepts(value))
            stored.push_back(asStored(std::string_view(value)));
    }
    return stored;
}

bool ValueComparison::hasOpenRange(const SystemParameter& parameter) const {
    const auto& parameters = older_.definitions.parameters;
    return std::any_of(parameter.rangeValid.begin(), parameter.rangeValid.end(),
                       [&](const RangeSpec& range) {
                           return conditionHolds(range.condition, parameters, older_.arguments) &&
                                  hasOpenItem(range, parameters, older_.arguments);
                       });
}

} // namespace morvane::ctl
