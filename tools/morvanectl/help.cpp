#include "help.h"

namespace morvane::ctl {

std::vector<std::string> subcommandsOf(const CLI::App& program) {
    const auto isListed = [](const CLI::App* command) { return !command->get_group().empty(); };
    std::vector<std::string> names;
    for (const auto* const subcommand : program.get_subcommands(isListed))
        names.push_back(subcommand->get_name());
    return names;
}

void Help::leaveOut(const CLI::App& subcommand, const CLI::Option& option) {
    leftOut_.insert({&subcommand, &option});
}

std::vector<const CLI::Option*> Help::commonOptionsOf(const CLI::App& app) const {
    const auto* const program = app.get_parent();
    if (program == nullptr)
        return {};
    return program->get_options([&](const CLI::Option* option) {
        return option != program->get_help_ptr() && option != program->get_version_ptr() &&
               !leftOut_.contains({&app, option});
    });
}

std::vector<const CLI::Option*> Help::optionsOf(const CLI::App& app) const {
    auto options =
        app.get_options([](const CLI::Option* option) { return option->nonpositional(); });
    const auto common = commonOptionsOf(app);
    options.insert(options.end(), common.begin(), common.end());
    return options;
}

std::string Help::make_subcommands(const CLI::App* app, CLI::AppFormatMode mode) const {
    const auto common = commonOptionsOf(*app);
    return common.empty() ? Formatter::make_subcommands(app, mode)
                          : make_group("Common options", false, common);
}

} // namespace morvane::ctl
