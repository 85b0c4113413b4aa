// SPDX-License-Identifier: MIT
/* zorpelx/cli/app.cpp: the command line, parsed by the table of options. */
#include "app.h"

#include <memory>

#include <CLI/CLI.hpp>

#include "escaped.h"
#include "failure.h"
#include "version.h"
#include "words.h"

static void add_option(CLI::App *command, size_t index, Settings *settings)
{
    const OptionRow &row = OPTIONS[index];
    const auto take = [index, settings](const std::string &word) {
        const std::string why = set_field(OPTIONS[index], word, settings);
        if (!why.empty()) throw CLI::ValidationError(long_name(OPTIONS[index]), why);
        settings->given[index] = true;
    };
    if (is_switch(row)) {
        command->add_flag_function(row.names, [take](int64_t) { take("yes"); });
        return;
    }
    if (takes_several(row)) {
        const auto take_all = [take](const std::vector<std::string> &words) {
            for (const std::string &word : words) take(word);
        };
        command->add_option_function<std::vector<std::string>>(row.names, take_all)->required();
        return;
    }
    CLI::Option *const option = command->add_option_function<std::string>(row.names, take);
    if (!is_place(row)) option->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
    if (row.fallback == nullptr) option->required();
}

static void add_options(CLI::App *app, unsigned command, Settings *settings)
{
    for (size_t i = 0; i < OPTIONS.size(); i++)
        if (OPTIONS[i].commands & command) add_option(app, i, settings);
}

/* A parser that fills settings when a command line of a program is parsed. */
static std::unique_ptr<CLI::App> make_app(Settings *settings,
                                          const std::vector<CommandRow> &commands)
{
    const ProgramRow &program = *commands.front().program;
    auto app = std::make_unique<CLI::App>(program.summary, program.name);
    app->set_version_flag("-V,--version", ZORPELX_CLI_VERSION);
    app->require_subcommand(0, 1);
    add_options(app.get(), GLOBAL, settings);
    for (const CommandRow &row : commands) {
        CLI::App *const command = app->add_subcommand(row.name, row.summary);
        add_options(command, row.command, settings);
    }
    return app;
}

static const CommandRow *chosen_command(const CLI::App &app,
                                        const std::vector<CommandRow> &commands)
{
    for (const CommandRow &row : commands)
        if (app.got_subcommand(row.name)) return &row;
    return nullptr;
}

/* Help and version are asked for by exceptions. */
static Wish wish_of(const CLI::ParseError &error)
{
    if (error.get_name() == "CallForVersion") return WISH_VERSION;
    return error.get_exit_code() == 0 ? WISH_HELP : WISH_UNCLEAR;
}

ParsedWords parse_words(const std::vector<std::string> &words, Settings *settings,
                        const std::vector<CommandRow> &commands)
{
    ParsedWords parsed;
    const auto app = make_app(settings, commands);
    try {
        app->parse(std::vector<std::string>(words.rbegin(), words.rend())); // the last one first
    } catch (const CLI::ParseError &error) {
        parsed.wish = wish_of(error);
        parsed.fault = error.what();
    }
    parsed.command = chosen_command(*app, commands);
    return parsed;
}

void refuse_words(const ParsedWords &parsed, const std::vector<std::string> &words,
                  const std::vector<CommandRow> &commands)
{
    std::string fault = fault_of_words(words, commands);
    if (fault.empty()) fault = parsed.fault;
    const CommandRow *const command = parsed.command;
    fail(STATUS_USAGE, "%s\nSee %s%s%s --help.", escaped(fault).c_str(),
         commands.front().program->name, command ? " " : "", command ? command->name : "");
}
