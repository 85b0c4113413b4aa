// SPDX-License-Identifier: MIT
/* zorpelx/cli/help.cpp: the help of the program and of its commands, from the table of options.
 *
 * Every line fits 80 columns: a head, then its text in a column of its own, or below the head if
 * that is too long.
 */
#include "commands.h"

constexpr size_t WIDTH = 79;
constexpr size_t COLUMN = 26; // where texts begin

/* Appends text in lines that begin at the column; the first goes on where the line is. */
static void append_wrapped(const std::string &text, size_t column, std::string *out)
{
    for (size_t from = 0, end; from < text.size(); from = end + 1) {
        if (from > 0) out->append(1, '\n').append(column, ' ');
        end = text.size();
        if (end - from > WIDTH - column) {
            const size_t blank = text.rfind(' ', from + WIDTH - column);
            end = blank == std::string::npos || blank <= from ? text.find(' ', from) : blank;
            if (end == std::string::npos) end = text.size();
        }
        *out += text.substr(from, end - from);
    }
    *out += '\n';
}

static std::string item(const std::string &head, const std::string &text)
{
    std::string out = "  " + head;
    if (out.size() + 2 > COLUMN)
        out.append(1, '\n').append(COLUMN, ' ');
    else
        out.resize(COLUMN, ' ');
    append_wrapped(text, COLUMN, &out);
    return out;
}

static std::string paragraph(const std::string &text)
{
    std::string out;
    append_wrapped(text, 0, &out);
    return out;
}

static std::string head_of(const OptionRow &row)
{
    return is_switch(row) || is_place(row) ? row.names : text_of("%s %s", row.names, row.value);
}

static std::string rows_of(unsigned command, bool places)
{
    std::string text;
    for (const OptionRow &row : OPTIONS)
        if ((row.commands & command) && is_place(row) == places)
            text +=
                item(head_of(row),
                     full_help(row) + (row.fallback == nullptr && !places ? " (required)" : ""));
    return text;
}

static std::string usage_of(const CommandRow &command)
{
    std::string line = text_of("Usage: %s %s", command.program->name, command.name);
    for (const OptionRow &row : OPTIONS)
        if ((row.commands & command.command) && is_place(row))
            line += text_of(row.fallback == nullptr ? " %s%s" : " [%s]%s", row.names,
                            takes_several(row) ? "..." : "");
    return line + " [OPTIONS]\n";
}

static std::string presets()
{
    std::string text = "\nPresets:\n";
    for (const PresetRow &preset : PRESET_ROWS) text += item(preset.name, preset_text(preset));
    return text;
}

std::string help_of(const CommandRow &command)
{
    return usage_of(command) + '\n' + paragraph(command.summary) + "\nArguments:\n" +
           rows_of(command.command, true) + "\nOptions:\n" +
           item("-h,--help", "print this help and end") + rows_of(command.command, false) +
           (command.command & PARTITION ? presets() : "");
}

std::string help_of_all()
{
    std::string text = "Usage: zorpelx COMMAND [ARGUMENTS] [OPTIONS]\n\n"
                       "Partition hypergraphs and check what came out.\n\nCommands:\n";
    for (const CommandRow &row : COMMANDS) text += item(row.name, row.summary);
    text += item("help", "Print this help, or that of a command: zorpelx help COMMAND.");
    text += "\nOptions:\n" + item("-h,--help", "print this help and end") +
            item("-V,--version", "print the version and end") + rows_of(GLOBAL, false);
    text += "\nExit status:\n";
    for (const StatusRow &row : STATUS_ROWS) text += item(row.number, row.meaning);
    return text + "\nzorpelx COMMAND --help lists the options of a command.\n";
}
