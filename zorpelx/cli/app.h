/* SPDX-License-Identifier: MIT */
/* zorpelx/cli/app.h: the command line, parsed by the table of options. */
#ifndef ZORPELX_CLI_APP_H
#define ZORPELX_CLI_APP_H

#include <memory>

#include <CLI/CLI.hpp>

#include "options.h"

/* A parser that fills settings when a command line of a program is parsed. */
std::unique_ptr<CLI::App> make_app(Settings *settings,
                                   const std::vector<CommandRow> &commands = COMMANDS);

/* The command named on the command line, null if none was. */
const CommandRow *chosen_command(const CLI::App &app,
                                 const std::vector<CommandRow> &commands = COMMANDS);

#endif
