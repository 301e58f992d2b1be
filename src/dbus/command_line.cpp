#include "dbus/command_line.h"

#include <argp.h>

#include <array>

// argp reads these two by name.
const char* argp_program_version = "morvane 1.07 velline-preset trunk 181";
const char* argp_program_bug_address = "";

namespace morvane {

namespace {

constexpr unsigned fileNames = 2;

void addPositional(Arguments& arguments, const char* text, argp_state* state) {
    switch (state->arg_num) {
    case 0:
        arguments.paramDefFile = text;
        break;
    case 1:
        arguments.presetDefFile = text;
        break;
    default:
        if (!addSystemArgument(arguments.systemArguments, text))
            argp_usage(state);
    }
}

error_t parse_opt(int key, char* text, argp_state* state) {
    auto& arguments = *static_cast<Arguments*>(state->input);
    switch (key) {
    case 'd':
        arguments.daemonize = 0;
        return 0;
    case ARGP_KEY_ARG:
        addPositional(arguments, text, state);
        return 0;
    case ARGP_KEY_END:
        if (state->arg_num < fileNames)
            argp_usage(state);
        return 0;
    default:
        return ARGP_ERR_UNKNOWN;
    }
}

} // namespace

void parseCommandLine(int argc, char** argv, Arguments& arguments) {
    constexpr std::array options{
        argp_option{"debug", 'd', nullptr, 0, "Allow debugging - do not daemonize", 0},
        argp_option{},
    };
    const argp parser{options.data(),
                      parse_opt,
                      "param_def_file preset_def_file system_arguments",
                      "morvane -- Preset load/store system",
                      nullptr,
                      nullptr,
                      nullptr};
    argp_parse(&parser, argc, argv, 0, nullptr, &arguments);
}

} // namespace morvane
