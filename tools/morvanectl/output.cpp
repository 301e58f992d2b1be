#include "output.h"

#include <cerrno>
#include <iostream>

namespace morvane::ctl {

StandardOutput::StandardOutput() : target_(std::cout.rdbuf(this)) {}

StandardOutput::~StandardOutput() {
    std::cout.rdbuf(target_);
}

void StandardOutput::discard() {
    isDiscarded_ = true;
    error_ = 0;
    std::cout.clear();
}

StandardOutput::int_type StandardOutput::overflow(int_type byte) {
    const char one = traits_type::to_char_type(byte);
    return xsputn(&one, 1) == 1 ? traits_type::not_eof(byte) : traits_type::eof();
}

std::streamsize StandardOutput::xsputn(const char* bytes, std::streamsize count) {
    const auto written = isDiscarded_ ? count : target_->sputn(bytes, count);
    note(written == count);
    return written;
}

int StandardOutput::sync() {
    const int status = isDiscarded_ ? 0 : target_->pubsync();
    note(status == 0);
    return status;
}

void StandardOutput::note(bool isWritten) {
    if (!isWritten && error_ == 0)
        error_ = errno;
}

Messages Messages::keptIn(std::vector<std::string>& problems) {
    Messages messages;
    messages.problems_ = &problems;
    return messages;
}

bool Messages::keep(std::string_view problem) const {
    if (problems_ != nullptr)
        problems_->emplace_back(problem);
    return problems_ != nullptr;
}

ExitStatus Messages::fail(std::string_view problem) const {
    if (!keep(problem))
        say(Severity::error, problem);
    return ExitStatus::error;
}

void Messages::warn(std::string_view problem) const {
    if (!keep(problem))
        say(Severity::warning, problem);
}

void Messages::note(std::string_view text) const {
    if (problems_ == nullptr)
        say(Severity::note, text);
}

void Messages::say(Severity severity, std::string_view text) const {
    const Json nothing;
    if (asJson_) {
        writeJsonLine({{"file", nothing},
                       {"line", nothing},
                       {"column", nothing},
                       {"severity", nameOf(severity)},
                       {"code", nothing},
                       {"text", text},
                       {"variants", Json::array()}});
        return;
    }
    std::cerr << "morvanectl: " << (severity == Severity::warning ? label(severity, std::cerr) : "")
              << text << std::endl;
}

std::string joined(std::span<const std::string> texts, const char* separator) {
    std::string all;
    for (const auto& text : texts)
        all += (all.empty() ? "" : separator) + text;
    return all;
}

std::string shortList(std::span<const std::string> texts) {
    constexpr std::size_t most = 8;
    if (texts.size() <= most)
        return joined(texts, ", ");
    return joined(texts.first(most), ", ") + " and " + std::to_string(texts.size() - most) +
           " more";
}

void writeList(std::span<const std::string> texts, bool asJson) {
    if (asJson) {
        auto list = Json::array();
        for (const auto& text : texts)
            list.push_back(text);
        writeJson(list);
        return;
    }
    for (const auto& text : texts)
        std::cout << text << '\n';
}

void writeJsonLine(const Json& value) {
    std::cerr << value.dump(-1, ' ', false, Json::error_handler_t::replace) << std::endl;
}

void writeJson(const Json& value) {
    constexpr int indentation = 2;
    std::cout << value.dump(indentation, ' ', false, Json::error_handler_t::replace) << '\n';
}

} // namespace morvane::ctl
