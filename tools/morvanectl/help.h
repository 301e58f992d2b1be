// Help texts of subcommands, with the options of the program that they take.
#pragma once

#include <CLI/CLI.hpp>

#include <set>
#include <string>
#include <utility>
#include <vector>

namespace morvane::ctl {

/// The names of the subcommands that the help text of the program lists.
std::vector<std::string> subcommandsOf(const CLI::App& program);

/// Knows which options of the program have an effect on a subcommand: all but those left out.
class Help : public CLI::Formatter {
public:
    /// The option has no effect on the subcommand. Both are borrowed for the object's life.
    void leaveOut(const CLI::App& subcommand, const CLI::Option& option);

    /// What a subcommand, or the program itself, takes: first its own, then those of the program.
    std::vector<const CLI::Option*> optionsOf(const CLI::App& app) const;

    /// A section of subcommands or, behind the options of a subcommand, of those of the program.
    std::string make_subcommands(const CLI::App* app, CLI::AppFormatMode mode) const override;

private:
    std::vector<const CLI::Option*> commonOptionsOf(const CLI::App& app) const;

    std::set<std::pair<const CLI::App*, const CLI::Option*>> leftOut_;
};

} // namespace morvane::ctl
