#include "data_check.h"

#include "engine/preset_file.h"
#include "tables/condition.h"
#include "text/utf8.h"

#include <algorithm>
#include <iostream>
#include <utility>

namespace morvane::ctl {

namespace {

std::string changes(const PresetEntry& before, const PresetEntry& after) {
    std::vector<std::string> what;
    if (after.name != before.name)
        what.emplace_back("renamed");
    if (after.value != before.value)
        what.emplace_back("value mapped");
    if (after.indices != before.indices)
        what.emplace_back("re-indexed");
    return what.empty() ? "kept" : joined(what, ", ");
}

bool isBefore(const Finding& first, const Finding& second) {
    return first.column < second.column;
}

std::size_t valueOffset(const DataLine& line) {
    return line.text.find('=') + 1;
}

// There are no comments, but a line that looks like one is none that was meant to be loaded.
bool looksLikeComment(std::string_view text) {
    return text.starts_with('#');
}

} // namespace

void noteFinding(const Finding& finding, const Messages& messages) {
    auto note = finding;
    note.severity = Severity::note;
    if (messages.asJson())
        report(note, messages);
    else
        writeHead(std::cerr, note, {});
}

std::vector<Finding> LineOutcome::findings() const {
    auto all = others;
    if (reason)
        all.push_back(*reason);
    std::stable_sort(all.begin(), all.end(), isBefore);
    return all;
}

DataCheck::DataCheck(const Variant& variant, std::string preset, std::string file, Reports reports)
    : variant_(variant),
      preset_(std::move(preset)),
      file_(std::move(file)),
      reports_(reports),
      values_(variant.definitions.parameters, variant.arguments),
      entries_(variant.manager) {}

LineOutcome DataCheck::check(const DataLine& line) {
    LineOutcome outcome;
    PresetEntry entry;
    parsePresetLine(line.text, entry);
    checkPlace(line, outcome);
    if (!entry.name.empty() && !entry.value.empty()) {
        checkEntry(line, entry, outcome);
    } else {
        outcome.what = "skipped: not NAME=VALUE";
        if (line.text.find('=') != std::string_view::npos)
            outcome.reason = findingAt(line, 0, Severity::warning, "no-entry",
                                       entry.name.empty() ? "a load skips a line without a name"
                                                          : "a load skips a line without a value");
    }
    if (looksLikeComment(line.text))
        outcome.reason.reset();
    std::stable_sort(outcome.others.begin(), outcome.others.end(), isBefore);
    wasSet_ = outcome.set.has_value();
    return outcome;
}

Finding DataCheck::findingAt(const DataLine& line, std::size_t offset, Severity severity,
                             const char* code, std::string text) const {
    const auto caret = static_cast<std::uint32_t>(offset);
    return {.file = file_,
            .line = line.number,
            .column = line.column + caret + 1,
            .severity = severity,
            .code = code,
            .text = std::move(text),
            .sourceLine = std::string(trimEnd(line.text)),
            .caret = caret};
}

// Where a line is not read as it stands in an editor.
void DataCheck::checkPlace(const DataLine& line, LineOutcome& outcome) const {
    if (line.endsAtNull)
        outcome.others.push_back(findingAt(line, line.text.size(), Severity::warning, "null-byte",
                                           "a load reads nothing between a null byte and the end "
                                           "of the line"));
    if (line.column == 0 || trimEnd(line.text).empty())
        return;
    const std::string cut =
        "a load reads " + std::to_string(presetLineBufferSize - 1) + " bytes of a line at once: ";
    outcome.others.push_back(
        wasSet_ ? findingAt(line, 0, Severity::warning, "long-line",
                            cut + "the value ends here, and the rest is a line of its own")
                : findingAt(line, 0, Severity::note, "long-line",
                            cut + "the rest is a line of its own"));
}

void DataCheck::checkEntry(const DataLine& line, const PresetEntry& entry, LineOutcome& outcome) {
    const auto drop = [&](const char* code, const std::string& why) {
        outcome.what = "dropped: " + why;
        outcome.reason = findingAt(line, 0, Severity::warning, code, why);
    };
    const auto [translated, key, unlessCovered] = entries_.translate(entry, reports_);
    if (isCovered(key)) {
        outcome.what = changes(entry, translated);
        checkSetting(line, translated, key, outcome);
        return;
    }
    switch (unlessCovered) {
    case DropReason::removed:
        outcome.what = "dropped: " + printableText(translated.name) + " is in a removed list";
        break;
    case DropReason::unmapped:
        drop("unknown-key",
             "its " + std::to_string(entry.indices.size()) + " indices cannot be mapped");
        break;
    case DropReason::noParameter:
        drop("unknown-key", whyNoParameter(translated.name));
        break;
    case DropReason::noInstance:
        drop("unknown-key", printableText(key) + " is not on this variant");
        break;
    case DropReason::notInPreset:
        drop("not-in-preset", preset_.empty() ? "no preset covers " + printableText(key)
                                              : printableText(key) + " is not in " + preset_);
        break;
    }
}

bool DataCheck::isCovered(const std::string& key) const {
    const auto& manager = variant_.manager;
    if (!preset_.empty())
        return manager.in_preset(key, preset_);
    return std::any_of(manager.presets().begin(), manager.presets().end(),
                       [&key](const auto& preset) { return preset.second.contains(key); });
}

std::string DataCheck::whyNoParameter(std::string_view name) const {
    const auto& [definitions, arguments, manager] = variant_;
    const auto* const parameter = definitions.parameters.find(name);
    const auto text = printableText(name);
    if (parameter != nullptr &&
        conditionsHold(parameter->ctrlValid, definitions.parameters, arguments)) {
        if (parameter->access == AccessType::ACCESS_WO)
            return text + " is write-only";
        if (parameter->access == AccessType::ACCESS_INDEX)
            return text + " is an index";
    }
    return "no parameter " + text + " on this variant";
}

// The daemon sends nothing of a file of which it cannot send everything.
void DataCheck::checkSetting(const DataLine& line, const PresetEntry& entry, const std::string& key,
                             LineOutcome& outcome) {
    if (!isUtf8(key) || !isUtf8(entry.value)) {
        const std::string why = std::string("its ") + (isUtf8(key) ? "value" : "key") +
                                " is not UTF-8, so the whole load fails";
        outcome.what = "refused: " + why;
        outcome.reason = findingAt(line, isUtf8(key) ? valueOffset(line) : 0, Severity::warning,
                                   "not-utf8", why);
        return;
    }
    outcome.set = {key, std::string(entry.value)};
    const auto name = std::string_view(key).substr(0, key.find('['));
    const auto add = [&](std::size_t offset, Severity severity, const char* code,
                         const std::string& text) {
        outcome.others.push_back(findingAt(line, offset, severity, code, text));
    };
    if (!entries_.isOnDevice(name, key))
        add(0, Severity::warning, "unknown-key",
            "a load sets " + key + ", which a preset includes, but which is not on this variant");
    const auto [before, isFirst] = setOn_.try_emplace(key, line.number);
    if (!isFirst)
        add(0, Severity::note, "set-twice",
            key + " is set on line " + std::to_string(before->second) +
                ", too; this value is set after that one");
    before->second = line.number;
    const auto verdict = values_.check(name, entry.value);
    if (verdict.kind != ValueVerdict::Kind::accepted)
        add(valueOffset(line),
            verdict.kind == ValueVerdict::Kind::refused ? Severity::warning : Severity::note,
            verdict.kind == ValueVerdict::Kind::refused ? "bad-value" : "undecided-value",
            key + ": " + verdict.why);
}

} // namespace morvane::ctl
