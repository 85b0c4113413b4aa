/* SPDX-License-Identifier: MIT */
/* zorpelx/cli/app.h: the command line, parsed by the table of options. */
#ifndef ZORPELX_CLI_APP_H
#define ZORPELX_CLI_APP_H

#include "options.h"

enum Wish { WISH_RUN, WISH_HELP, WISH_VERSION, WISH_UNCLEAR };

/* What a command line asks for. */
struct ParsedWords {
    Wish wish = WISH_RUN;
    const CommandRow *command = nullptr; // null: none was named
    std::string fault = "";              // of an unclear one
};

/* Fills the settings by the words of a command line, without the program's name. */
ParsedWords parse_words(const std::vector<std::string> &words, Settings *settings,
                        const std::vector<CommandRow> &commands = COMMANDS);

/* Throws  STATUS_USAGE: what is wrong with words that are unclear, and where to read on */
[[noreturn]] void refuse_words(const ParsedWords &parsed, const std::vector<std::string> &words,
                               const std::vector<CommandRow> &commands = COMMANDS);

#endif
