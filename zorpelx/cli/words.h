/* SPDX-License-Identifier: MIT */
/* zorpelx/cli/words.h: the words of a command line before they are parsed, and what is wrong with
 * them where the parser has no good sentence. */
#ifndef ZORPELX_CLI_WORDS_H
#define ZORPELX_CLI_WORDS_H

#include <string>
#include <vector>

#include "options.h"

/* "help", "help COMMAND": with --help instead. */
std::vector<std::string> without_help_command(std::vector<std::string> words,
                                              const std::vector<CommandRow> &commands = COMMANDS);

/* Whether --man is among the words, wherever that is. */
bool asks_for_manual(const std::vector<std::string> &words);

/* A sentence on the first command or option that there is not, with what was probably meant; empty
 * if all are known. */
std::string fault_of_words(const std::vector<std::string> &words,
                           const std::vector<CommandRow> &commands = COMMANDS);

#endif
