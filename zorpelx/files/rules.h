/* SPDX-License-Identifier: MIT */
/* zorpelx/files/rules.h: the numbered rules that files are held against. */
#ifndef ZORPELX_FILES_RULES_H
#define ZORPELX_FILES_RULES_H

#include <cstdint>
#include <string>
#include <vector>

#include "budget.h"

enum Severity {
    NOTE,    // harmless, worth knowing
    WARNING, // read in another way than the file suggests
    LOSS,    // read without some of its vertices or weights: an error unless that is forced
    ERROR    // cannot be partitioned, or not safely
};
constexpr int NSEVERITIES = ERROR + 1;

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
    RULE_OTHER_FORMAT,
    RULE_UNENDED,
    RULE_TOLD,
    RULE_CONTRADICTS,
    RULE_FIX_SHORT,
    RULE_FIX_RUBBISH,
    RULE_FIX_NEGATIVE,
    RULE_FIX_PART,
    RULE_FIX_EXTRA,
    RULE_FIX_LINES,
    RULE_FIX_RANGE,
    RULE_FIX_NONE,
    RULE_FIX_UNENDED,
    NRULES
};

struct Rule {
    const char *id;
    const char *name;
    Severity severity;
    bool stops; // zorpel refuses a file for it, unless its place makes it milder
    const char *title;
    const char *explanation;
};
extern const Rule RULES[NRULES];

/* The rule with this id or name, letters of any case; null if there is none. */
const Rule *find_rule(const std::string &word);

/* "note", "warning" or "error". */
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
 *       all of them if that is 0; and the first of each severity of a rule in any case
 *   F2  severities[s] is the number of findings of severity s
 *   F3  stops is the number of findings for which zorpel refuses the file */
struct Findings {
    std::vector<Finding> listed;
    int64_t count[NRULES] = {};
    int64_t severities[NSEVERITIES] = {};
    bool met[NRULES][NSEVERITIES] = {};
    int64_t stops = 0;
    int64_t most = 20;
    Budget *budget = nullptr; // charged with what is listed; or null
};

void add_finding(Findings *findings, RuleIndex rule, Place place, std::string text);

/* With a severity that is not the rule's own. */
void add_finding_as(Findings *findings, RuleIndex rule, Severity severity, Place place,
                    std::string text);

/* Takes all findings of a rule back. */
void forget_rule(Findings *findings, RuleIndex rule);

/* The first listed finding that is at least as severe; null if there is none. */
const Finding *first_finding(const Findings &findings, Severity least);

/* The finding for which a file is refused; null if it is not. A loss is forgiven by force, warnings
 * unless strict. */
const Finding *refusal(const Findings &findings, bool strict, bool force);

/* Errors and losses. */
int64_t count_errors(const Findings &findings);

/* Puts what is listed in the order of the file; what has no place comes last. */
void sort_by_place(Findings *findings);

/* "FILE:LINE:COLUMN: error H09 vertex-above: text" */
std::string finding_line(const std::string &file, const Finding &finding);

#endif
