/* zorpelx/cli/rules.h: the numbered rules that lint holds files against. */
#ifndef ZORPELX_CLI_RULES_H
#define ZORPELX_CLI_RULES_H

#include <cstdint>
#include <string>
#include <vector>

enum Severity {
    NOTE,    // harmless, worth knowing
    WARNING, // read in another way than the file suggests
    ERROR    // cannot be partitioned, or not safely
};

/* Rules in the order of the table. */
enum RuleIndex {
    RULE_NO_HEADER,
    RULE_HEADER_NUMBERS,
    RULE_HEADER_REST,
    RULE_FORMAT_CODE,
    RULE_ODD_CODE,
    RULE_COUNTS,
    RULE_RANGE,
    RULE_NETS_MISSING,
    RULE_VERTEX_ABOVE,
    RULE_EMPTY_NET,
    RULE_REPEATED_PIN,
    RULE_LIST_ENDED,
    RULE_ZERO_BASED,
    RULE_RUBBISH,
    RULE_SINGLE_PIN,
    RULE_NO_NET_WEIGHT,
    RULE_ZERO_NET_WEIGHT,
    RULE_NEGATIVE_WEIGHT,
    RULE_WEIGHTS_MISSING,
    RULE_NO_VERTEX_WEIGHT,
    RULE_ZERO_VERTEX_WEIGHT,
    RULE_WEIGHT_REST,
    RULE_SUM,
    RULE_WEIGHTLESS,
    RULE_TRAILING,
    RULE_LONG_LINE,
    RULE_COMMENT,
    RULE_LINE_ENDS,
    RULE_MARK,
    RULE_NO_ROOM,
    RULE_ISLANDS,
    RULE_TWIN_NETS,
    RULE_HOLLOW,
    RULE_FIX_SHORT,
    RULE_FIX_RUBBISH,
    RULE_FIX_NEGATIVE,
    RULE_FIX_PART,
    RULE_FIX_EXTRA,
    RULE_FIX_LINES,
    RULE_FIX_RANGE,
    RULE_FIX_NONE,
    NRULES
};

struct Rule {
    const char *id;
    const char *name;
    Severity severity;
    const char *title;
    const char *explanation;
};
extern const Rule RULES[NRULES];

/* The rule with this id or name, letters of any case; null if there is none. */
const Rule *find_rule(const std::string &word);

const char *severity_name(Severity severity);

/* A place in a file, counted from 1; line 0: the file as a whole. */
struct Place {
    int64_t line, column;
};

struct Finding {
    RuleIndex rule;
    Severity severity; // the rule's, unless the place makes it milder
    Place place;
    std::string text;
};

/* What was found in one file.
 *   F1  count[r] is the number of findings of rule r, listed holds the first `most` of each,
 *       all of them if that is 0; so it holds the first finding of every kind */
struct Findings {
    std::vector<Finding> listed;
    int64_t count[NRULES] = {};
    int64_t severities[ERROR + 1] = {};
    int64_t most = 20;
};

void add_finding(Findings *findings, RuleIndex rule, Place place, std::string text);
void add_milder(Findings *findings, RuleIndex rule, Severity severity, Place place,
                std::string text);

/* The first finding that is an error; null if there is none. */
const Finding *first_error(const Findings &findings);

/* "FILE:LINE:COLUMN: error H09 vertex-above: text" */
std::string finding_line(const std::string &file, const Finding &finding);

#endif
