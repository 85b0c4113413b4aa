// SPDX-License-Identifier: MIT
/* zorpelx/cli/words.cpp: the words of a command line before they are parsed. */
#include "words.h"

#include <algorithm>

#include "escaped.h"
#include "failure.h"
#include "options.h"
#include "suggest.h"

using Commands = std::vector<CommandRow>;

static const CommandRow *command_named(const std::string &word, const Commands &commands)
{
    for (const CommandRow &row : commands)
        if (word == row.name) return &row;
    return nullptr;
}

static std::vector<std::string> command_names(const Commands &commands)
{
    std::vector<std::string> names;
    for (const CommandRow &row : commands) names.push_back(row.name);
    names.push_back("help");
    return names;
}

static std::string no_command(const std::string &word, const Commands &commands)
{
    return text_of("there is no command '%s'%s", escaped(word).c_str(),
                   suggestion(word, command_names(commands)).c_str());
}

std::vector<std::string> without_help_command(std::vector<std::string> words,
                                              const Commands &commands)
{
    if (words.empty() || words[0] != "help") return words;
    words.erase(words.begin());
    if (words.size() > 1) fail(STATUS_USAGE, "help takes one command");
    if (words.size() == 1 && words[0] == "help") words.clear();
    if (words.size() == 1 && words[0][0] != '-' && command_named(words[0], commands) == nullptr)
        fail(STATUS_USAGE, "%s", no_command(words[0], commands).c_str());
    words.push_back("--help");
    return words;
}

bool asks_for_manual(const std::vector<std::string> &words)
{
    const auto end = std::find(words.begin(), words.end(), "--");
    return std::find(words.begin(), end, "--man") != end;
}

/* Names of the options of commands; those that are known everywhere too. */
static std::vector<std::string> option_names(unsigned commands)
{
    std::vector<std::string> names = {"--help", "-h"};
    if (commands & GLOBAL) names.insert(names.end(), {"--version", "-V"});
    for (const OptionRow &row : OPTIONS) {
        if (!(row.commands & commands) || is_place(row)) continue;
        const std::string both = row.names;
        const size_t comma = both.find(',');
        names.push_back(long_name(row));
        if (comma != std::string::npos) names.push_back(both.substr(0, comma));
    }
    return names;
}

/* "--seed" of "--seed=7", "-s" of "-s7". */
static std::string name_in(const std::string &word)
{
    return word.compare(0, 2, "--") == 0 ? word.substr(0, word.find('=')) : word.substr(0, 2);
}

static const OptionRow *option_named(unsigned commands, const std::string &name)
{
    for (const OptionRow &row : OPTIONS) {
        const std::string names = row.names;
        if (!(row.commands & commands) || is_place(row)) continue;
        if (name == long_name(row) || name + ',' == names.substr(0, name.size() + 1)) return &row;
    }
    return nullptr;
}

/* Options of older versions, and what replaces them. */
static std::string replaced_option(const std::string &name)
{
    if (name == "--imbalance")
        return "--imbalance is gone: --epsilon bounds the parts in the end, --ubfactor each "
               "bisection "
               "of the engine alone";
    if (name == "--keep") return "--keep is gone: --epsilon bounds the parts in the end";
    return "";
}

static std::string no_option(unsigned command, const std::string &name, const Commands &commands)
{
    const std::string replaced = replaced_option(name);
    if (!replaced.empty()) return replaced;
    for (const CommandRow &row : commands)
        if (option_named(row.command, name) != nullptr && !(command & GLOBAL))
            return text_of("%s is an option of %s", name.c_str(), row.name);
    std::vector<std::string> names = option_names(command);
    const bool is_short = name.compare(0, 2, "--") != 0; // one letter is as near as any other
    return text_of("there is no option %s%s", name.c_str(),
                   is_short ? "" : suggestion(name, names).c_str());
}

/* Options behind the command, up to --. */
static std::string fault_of_options(unsigned command, const std::vector<std::string> &words,
                                    size_t first, const Commands &commands)
{
    const std::vector<std::string> names = option_names(command);
    for (size_t i = first; i < words.size() && words[i] != "--"; i++) {
        if (words[i].size() < 2 || words[i][0] != '-') continue;
        const std::string name = name_in(words[i]);
        if (std::find(names.begin(), names.end(), name) == names.end())
            return no_option(command, name, commands);
        const OptionRow *const row = option_named(command, name);
        if (row != nullptr && !is_switch(*row) && name == words[i]) i++; // its value
    }
    return "";
}

std::string fault_of_words(const std::vector<std::string> &words, const Commands &commands)
{
    if (words.empty() || words[0][0] == '-') return fault_of_options(GLOBAL, words, 0, commands);
    const CommandRow *const row = command_named(words[0], commands);
    return row == nullptr ? no_command(words[0], commands)
                          : fault_of_options(row->command, words, 1, commands);
}
