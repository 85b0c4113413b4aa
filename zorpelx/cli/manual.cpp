/* zorpelx/cli/manual.cpp: the manual page, from the table of options and that of rules. */
#include <cctype>

#include "commands.h"
#include "rules.h"
#include "version.h"

struct StatusRow {
    const char *number;
    const char *meaning;
};

static const StatusRow STATUSES[] = {
    {"0", "Done. For verify: all that was claimed is so."},
    {"1", "The run failed, or something that verify was to check is not so."},
    {"2", "The command line is wrong."},
    {"3", "A file does not hold what it should; the message tells file, line and column."},
    {"4", "No partition can be within the imbalance, or none was found; what was found is "
          "delivered."},
    {"5", "A file cannot be opened, read or written."},
    {"6", "Out of memory, or past --memory."},
    {"124", "The deadline passed. The best finished start, if any, was delivered."},
    {"130, 143", "Interrupted or terminated. The best finished start, if any, was delivered."},
};

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
            line += text_of(row.fallback == nullptr ? " \\fI%s\\fR" : " [\\fI%s\\fR]", row.names);
    return line + " [options]\n";
}

static std::string presets()
{
    std::string page = ".SH PRESETS\nA preset says what is used where no option does.\n";
    for (const PresetRow &row : PRESET_ROWS)
        page += text_of(".TP\n\\fB%s\\fR\n%lld runs, matching %s, refinement %s, V\\-cycles %s, "
                        "%lld start%s.\n",
                        row.name, static_cast<long long>(row.runs),
                        choice_name(&Settings::matching, row.matching).c_str(),
                        choice_name(&Settings::refine, row.refine).c_str(),
                        choice_name(&Settings::vcycle, row.vcycle).c_str(),
                        static_cast<long long>(row.starts), row.starts == 1 ? "" : "s");
    return page;
}

static std::string statuses()
{
    std::string page = ".SH EXIT STATUS\n";
    for (const StatusRow &row : STATUSES)
        page += text_of(".TP\n\\fB%s\\fR\n%s\n", row.number, roff(row.meaning).c_str());
    return page;
}

static std::string rules()
{
    std::string page =
        ".SH RULES\nWhat \\fBzorpelx lint\\fR looks for; \\fB\\-\\-explain\\fR tells "
        "more.\n";
    for (const Rule &rule : RULES)
        page += text_of(".TP\n\\fB%s\\fR %s\n%s: %s.\n", rule.id, roff(rule.name).c_str(),
                        severity_name(rule.severity), roff(rule.title).c_str());
    return page;
}

std::string manual_page()
{
    std::string page = ".TH ZORPELX 1 \"\" \"zorpelx " ZORPELX_CLI_VERSION "\" \"User Commands\"\n"
                       ".SH NAME\nzorpelx \\- partition hypergraphs and check what came out\n"
                       ".SH SYNOPSIS\n.nf\n";
    for (const CommandRow &command : COMMANDS) page += synopsis(command);
    page += ".fi\n.SH DESCRIPTION\n"
            "A hypergraph is divided into parts of about equal weight such that hyperedges with "
            "vertices in several parts weigh as little as possible. The files are those of "
            "\\fBzorpel\\fR(1), described in \\fBzorpel_hgr\\fR(5); hypergraph, partition and fix "
            "files may be compressed by gzip or zstd.\n";
    page += options_of(GLOBAL);
    page += ".TP\n\\fB\\-h, \\-\\-help\\fR\nPrint help, also after a command.\n"
            ".TP\n\\fB\\-\\-version\\fR\nPrint the version.\n";
    for (const CommandRow &command : COMMANDS)
        page += text_of(".SH %s\n%s\n.PP\n%s\n", upper(command.name).c_str(),
                        roff(command.summary).c_str(), roff(command.description).c_str()) +
                options_of(command.command);
    page += presets() + statuses() + rules();
    page += ".SH EXAMPLES\n.nf\nzorpelx partition chip.hgr.gz \\-k 8 \\-\\-preset best "
            "\\-\\-json chip.json\n"
            "zorpelx verify chip.hgr.gz chip.hgr.part.8 \\-\\-imbalance 5\n"
            "zorpelx lint chip.hgr \\-\\-fix clean.hgr\n"
            "zorpelx lint chip.hgr \\-k 16 \\-\\-keep 3\n.fi\n"
            ".SH SEE ALSO\n.BR zorpel (1),\n.BR zorpel (3),\n.BR zorpel_hgr (5)\n";
    return page;
}
