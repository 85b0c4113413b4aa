// SPDX-License-Identifier: MIT
/* zorpelx/cli/completion.cpp: completions of bash and zsh, from the table of options. */
#include "commands.h"
#include "rules.h"

/* "--nparts -k": all names of an option. */
static std::string names_of(const OptionRow &row)
{
    std::string names = row.names;
    for (char &c : names)
        if (c == ',') c = ' ';
    return names;
}

static std::string option_words(unsigned command)
{
    std::string names = "--help";
    for (const OptionRow &row : OPTIONS)
        if ((row.commands & command) && !is_place(row)) names += ' ' + names_of(row);
    return names;
}

static std::string command_names()
{
    std::string names;
    for (const CommandRow &row : COMMANDS)
        names += std::string(names.empty() ? "" : " ") + row.name;
    return names;
}

static bool takes_file(const OptionRow &row)
{
    return std::string(row.value) == "FILE";
}

static std::string rule_words()
{
    std::string words = "all";
    for (const Rule &rule : RULES) words += text_of(" %s %s", rule.id, rule.name);
    return words;
}

/* What an option takes if that is one of some words; empty otherwise. */
static std::string words_for(const OptionRow &row)
{
    if (row.field == Field(&Settings::explain)) return rule_words();
    return row.choices != nullptr ? choice_names(row, " ") : "";
}

/* The words that may follow an option, a line each. */
static std::string bash_values(const OptionRow &row)
{
    const std::string words = words_for(row);
    if (!words.empty()) return text_of("compgen -W '%s' -- \"$cur\"", words.c_str());
    return takes_file(row) ? "compgen -f -- \"$cur\"" : ":";
}

/* "        lint:-k|lint:--nparts) mapfile -t COMPREPLY < <(...); return ;;" */
static std::string bash_case(const char *command, const OptionRow &row)
{
    std::string patterns, names = names_of(row) + ' ';
    for (size_t blank; (blank = names.find(' ')) != std::string::npos; names.erase(0, blank + 1))
        patterns +=
            std::string(patterns.empty() ? "" : "|") + command + ':' + names.substr(0, blank);
    return "        " + patterns + ") mapfile -t COMPREPLY < <(" + bash_values(row) +
           "); return ;;\n";
}

static std::string bash_cases(const char *name, unsigned command)
{
    std::string cases;
    for (const OptionRow &row : OPTIONS)
        if ((row.commands & command) && !is_place(row) && !is_switch(row))
            cases += bash_case(name, row);
    return cases;
}

/* Bash takes the = of --name=value for a word of its own. */
std::string bash_completion()
{
    std::string text = "# bash completion of zorpelx, made by zorpelx --completion bash\n"
                       "_zorpelx()\n{\n"
                       "    local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD-1]}\n"
                       "    local command= options=\n"
                       "    if [[ $cur == = ]]; then cur=\n"
                       "    elif [[ $prev == = ]]; then prev=${COMP_WORDS[COMP_CWORD-2]}; fi\n"
                       "    if ((COMP_CWORD > 1)); then command=${COMP_WORDS[1]}; fi\n"
                       "    case $command:$prev in\n" +
                       bash_cases("", GLOBAL) + bash_cases("--completion", GLOBAL);
    for (const CommandRow &row : COMMANDS) text += bash_cases(row.name, row.command);
    text += "    esac\n    case $command in\n";
    for (const CommandRow &row : COMMANDS)
        text += std::string("        ") + row.name + ") options='" + option_words(row.command) +
                "' ;;\n";
    text += "        help) options='" + command_names() + "' ;;\n";
    text += "        '') options='" + command_names() + " help -V --version " +
            option_words(GLOBAL) +
            "' ;;\n    esac\n"
            "    if [[ -n $command && $command != help && $cur != -* ]]; then\n"
            "        mapfile -t COMPREPLY < <(compgen -f -- \"$cur\")\n"
            "    else\n"
            "        mapfile -t COMPREPLY < <(compgen -W \"$options\" -- \"$cur\")\n"
            "    fi\n"
            "}\ncomplete -o filenames -F _zorpelx zorpelx\n";
    return text;
}

/* Text in brackets inside single quotes, as _arguments takes it. */
static std::string zsh_text(const std::string &text)
{
    std::string out;
    for (const char c : text) {
        if (c == '\'')
            out += "'\\''";
        else if (c == '[' || c == ']')
            out += std::string("\\") + c;
        else
            out += c;
    }
    return out;
}

static std::string zsh_action(const OptionRow &row)
{
    if (is_switch(row)) return "";
    const std::string words = words_for(row);
    std::string values = takes_file(row) ? "_files" : "";
    if (!words.empty()) values = text_of("(%s)", words.c_str());
    return text_of(":%s:%s", row.value, values.c_str());
}

/* One argument of _arguments for each name of an option. The = at the end of a long name lets the
 * value follow in the same word as well. */
static std::string zsh_option(const OptionRow &row)
{
    const std::string rest =
        text_of("[%s]%s'", zsh_text(row.help).c_str(), zsh_action(row).c_str());
    std::string text, names = names_of(row) + ' ';
    for (size_t blank; (blank = names.find(' ')) != std::string::npos; names.erase(0, blank + 1)) {
        const std::string name = names.substr(0, blank);
        const bool joined = !is_switch(row) && name.compare(0, 2, "--") == 0;
        text += " \\\n            '" + name + (joined ? "=" : "") + rest;
    }
    return text;
}

static std::string zsh_place(const OptionRow &row)
{
    const char *const colons = takes_several(row) ? "*:" : row.fallback == nullptr ? ":" : "::";
    return std::string(" \\\n            '") + colons + row.names + ":_files'";
}

static std::string zsh_arguments(unsigned command)
{
    std::string text = "_arguments '--help[print help]'";
    for (const OptionRow &row : OPTIONS)
        if (row.commands & command) text += is_place(row) ? zsh_place(row) : zsh_option(row);
    return text;
}

std::string zsh_completion()
{
    std::string text = "#compdef zorpelx\n# made by zorpelx --completion zsh\n"
                       "_zorpelx()\n{\n    local -a commands=(";
    for (const CommandRow &row : COMMANDS)
        text += std::string("\n        '") + row.name + ":" + zsh_text(row.summary) + "'";
    text += "\n        'help:Print the help of the program or of a command.'\n    )\n"
            "    if ((CURRENT == 2)) && [[ $PREFIX != -* ]]; then\n"
            "        _describe command commands\n        return\n    fi\n"
            "    case $words[2] in\n";
    for (const CommandRow &row : COMMANDS)
        text += std::string("        ") + row.name +
                ")\n            shift words\n"
                "            ((CURRENT--))\n            " +
                zsh_arguments(row.command) + " ;;\n";
    text += "        help) compadd " + command_names() + " ;;\n";
    text += "        *) " + zsh_arguments(GLOBAL) +
            " \\\n            '-V[print the version]'"
            " \\\n            '--version[print the version]' ;;\n"
            "    esac\n}\n_zorpelx \"$@\"\n";
    return text;
}
