// SPDX-License-Identifier: MIT
/* zorpelx/cli/manual.cpp: the manual page, from the table of options and that of rules. */
#include <cctype>

#include "commands.h"
#include "rules.h"
#include "version.h"

/* Text as roff takes it: no escapes, no requests, hyphens that can be copied. */
static std::string roff(const std::string &text)
{
    std::string out;
    for (const char c : text) {
        if (c == '\\')
            out += "\\e";
        else if (c == '-')
            out += "\\-";
        else if (c == '\n')
            out += "\n.PP\n";
        else if ((c == '.' || c == '\'') && (out.empty() || out.back() == '\n'))
            out += std::string("\\&") + c;
        else
            out += c;
    }
    return out;
}

/* "-k, --nparts K" with the value in italics. */
static std::string option_head(const OptionRow &row)
{
    std::string names = row.names;
    const size_t comma = names.find(',');
    if (comma != std::string::npos) names.replace(comma, 1, ", ");
    std::string head = "\\fB" + roff(names) + "\\fR";
    if (!is_switch(row) && !is_place(row)) head += " \\fI" + roff(row.value) + "\\fR";
    return head;
}

static std::string sentence(std::string text)
{
    text[0] = static_cast<char>(toupper(static_cast<unsigned char>(text[0])));
    return text + ".\n";
}

static std::string upper(std::string text)
{
    for (char &c : text) c = static_cast<char>(toupper(static_cast<unsigned char>(c)));
    return text;
}

static std::string options_of(unsigned command)
{
    std::string page;
    for (const OptionRow &row : OPTIONS)
        if (row.commands & command)
            page += ".TP\n" + option_head(row) + "\n" + sentence(roff(full_help(row)));
    return page;
}

static std::string synopsis(const CommandRow &command)
{
    std::string line = text_of("\\fBzorpelx %s\\fR", command.name);
    for (const OptionRow &row : OPTIONS)
        if ((row.commands & command.command) && is_place(row))
            line += text_of(row.fallback == nullptr ? " \\fI%s\\fR%s" : " [\\fI%s\\fR]%s",
                            row.names, takes_several(row) ? "..." : "");
    return line + " [options]\n";
}

static std::string presets_section()
{
    std::string page = ".SH PRESETS\nA preset says what is used where no option does.\n";
    for (const PresetRow &row : PRESET_ROWS)
        page += text_of(".TP\n\\fB%s\\fR\n%s.\n", row.name, roff(preset_text(row)).c_str());
    return page;
}

static std::string statuses_section()
{
    std::string page = ".SH EXIT STATUS\n";
    for (const StatusRow &row : STATUS_ROWS)
        page += text_of(".TP\n\\fB%s\\fR\n%s", row.number, sentence(roff(row.meaning)).c_str());
    return page;
}

static std::string rules()
{
    std::string page =
        ".SH RULES\nWhat \\fBzorpelx lint\\fR looks for; \\fB\\-\\-explain\\fR says "
        "more.\n";
    for (const Rule &rule : RULES)
        page += text_of(".TP\n\\fB%s\\fR %s\n%s: %s.\n", rule.id, roff(rule.name).c_str(),
                        severity_name(rule.severity), roff(rule.title).c_str());
    return page;
}

/* Where to break a line of text that begins at from: at the last blank of a line, but not before
 * what would be a request there; npos if the rest is short enough. */
static size_t break_of(const std::string &text, size_t from, size_t end)
{
    constexpr size_t WIDTH = 79;
    if (end - from <= WIDTH) return std::string::npos;
    size_t blank = text.rfind(' ', from + WIDTH);
    while (blank != std::string::npos && blank > from &&
           (text[blank + 1] == '.' || text[blank + 1] == '\''))
        blank = text.rfind(' ', blank - 1);
    return blank == std::string::npos || blank <= from ? std::string::npos : blank;
}

/* The page with its lines of text broken to a width that style checkers like. */
static std::string broken(std::string page)
{
    for (size_t from = 0, end; from < page.size(); from = end + 1) {
        end = page.find('\n', from);
        if (page[from] == '.') continue;
        for (size_t blank; (blank = break_of(page, from, end)) != std::string::npos;
             from = blank + 1)
            page[blank] = '\n';
    }
    return page;
}

std::string manual_page()
{
    std::string page =
        ".TH ZORPELX 1 2026-11-21 \"zorpelx " ZORPELX_CLI_VERSION "\" \"User Commands\"\n"
        ".SH NAME\nzorpelx \\- partition hypergraphs and check what came out\n"
        ".SH SYNOPSIS\n.nf\n";
    for (const CommandRow &command : COMMANDS) page += synopsis(command);
    page += ".fi\n.SH DESCRIPTION\n"
            "A hypergraph is divided into parts of about equal weight such that hyperedges with "
            "vertices in several parts weigh as little as possible. The files are those of "
            "\\fBzorpel\\fR(1), described in \\fBzorpel_hgr\\fR(5); hypergraph, partition and fix "
            "files may be compressed by gzip, zstd, xz or bzip2.\n";
    page += options_of(GLOBAL);
    page += ".TP\n\\fB\\-h, \\-\\-help\\fR\nPrint help, also after a command.\n"
            ".TP\n\\fB\\-V, \\-\\-version\\fR\nPrint the version.\n";
    for (const CommandRow &command : COMMANDS)
        page += text_of(".SH %s\n%s\n.PP\n%s\n", upper(command.name).c_str(),
                        roff(command.summary).c_str(), roff(command.description).c_str()) +
                options_of(command.command);
    page += presets_section() + statuses_section() + rules();
    page += ".SH EXAMPLES\n.nf\nzorpelx partition chip.hgr.gz \\-k 8 \\-\\-preset best "
            "\\-\\-json chip.json\n"
            "zorpelx verify chip.hgr.gz chip.hgr.part.8 \\-\\-epsilon 3\n"
            "zorpelx lint chip.hgr \\-\\-fix clean.hgr\n"
            "zorpelx lint chip.hgr \\-k 16 \\-\\-epsilon 3\n.fi\n"
            ".SH SEE ALSO\n.BR zorpel (1),\n.BR zorpel (3),\n.BR zorpel_hgr (5)\n";
    return broken(page);
}
