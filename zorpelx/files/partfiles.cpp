// SPDX-License-Identifier: MIT
/* zorpelx/files/partfiles.cpp: partition and fix files, a number per vertex. */
#include "partfiles.h"

#include <climits>
#include <string>

#include "bytes.h"
#include "casts.h"
#include "fileerror.h"
#include "scan.h"
#include "told.h"
#include "zorpelx.h"

constexpr int64_t CLOCK_LINES = 4096; // between two looks at the deadline

static void check_entry(const Token &token, int64_t v, int64_t nparts, Findings *findings)
{
    const long long vertex = ll(v + 1), entry = ll(token.value);
    if (!token.fits)
        add_finding(findings, RULE_FIX_RANGE, token.place,
                    text_of("%s does not fit 32 bits", shown(token).c_str()));
    else if (token.value < -1)
        add_finding(findings, RULE_FIX_NEGATIVE, token.place,
                    text_of("vertex %lld is fixed to part %lld", vertex, entry));
    else if (nparts > 0 && token.value >= nparts)
        add_finding(
            findings, RULE_FIX_PART, token.place,
            text_of("vertex %lld is fixed to part %lld of %lld", vertex, entry, ll(nparts)));
}

/* Entries read so far, and where. */
struct FixScan {
    std::vector<int64_t> fix;
    int64_t next;   // vertex of the next entry
    int64_t nextra; // entries past the last vertex
    bool stopped;   // by something that is not a number
};

static void scan_fix_line(FixScan *scan, Line *line, int64_t nparts, Findings *findings)
{
    const int64_t nvertices = static_cast<int64_t>(scan->fix.size());
    Token token;
    for (int64_t n = 0; (token = take_token(line)).kind != TOKEN_END && !scan->stopped; n++) {
        if (scan->next == nvertices) {
            if (scan->nextra++ == 0)
                add_finding(findings, RULE_FIX_EXTRA, token.place,
                            text_of("%lld vertices have their entry", ll(nvertices)));
            continue;
        }
        if (token.kind == TOKEN_RUBBISH) {
            add_finding(findings, RULE_FIX_RUBBISH, token.place,
                        text_of("'%s' is not a whole number", shown_word(*line, token).c_str()));
            scan->stopped = true;
            return;
        }
        if (n == 1) add_finding(findings, RULE_FIX_LINES, token.place, "a second entry");
        check_entry(token, scan->next, nparts, findings);
        scan->fix[static_cast<size_t>(scan->next++)] = token.fits ? token.value : 0;
    }
}

static bool is_unended(std::string_view bytes)
{
    return !bytes.empty() && bytes.back() != '\n';
}

std::vector<int64_t> scan_fix(std::string_view bytes, int64_t nvertices, int64_t nparts,
                              Findings *findings, Budget *budget)
{
    const size_t n = static_cast<size_t>(nvertices);
    charge(budget, n * sizeof(int64_t));
    FixScan scan = {std::vector<int64_t>(n, 0), 0, 0, false};
    Text text = text_over(bytes, false);
    while (!at_end(text) && !scan.stopped) {
        Line line = take_line(&text);
        scan_fix_line(&scan, &line, nparts, findings);
        if (text.number % CLOCK_LINES == 0) check_time(*budget);
    }
    if (scan.next < nvertices && !scan.stopped)
        add_finding(findings, RULE_FIX_SHORT, {text.number + 1, 1},
                    text_of("%lld of %lld entries are there", ll(scan.next), ll(nvertices)));
    if (is_unended(bytes) && !scan.stopped)
        add_finding(findings, RULE_FIX_UNENDED, {text.number, text.column},
                    "the file ends within a line");
    bool none = scan.next == nvertices;
    for (const int64_t part : scan.fix) none = none && part == -1;
    if (none) add_finding(findings, RULE_FIX_NONE, {0, 0}, "every entry is -1");
    return scan.fix;
}

/* What a file of numbers must hold. */
struct NumberRule {
    int64_t least, most;
    const char *what; // one of them, such as "a part number"
};

static void check_number(const Budget &budget, const NumberRule &rule, const Line &line,
                         const Token &token)
{
    const long long row = ll(token.place.line), column = ll(token.place.column);
    if (token.kind == TOKEN_RUBBISH)
        file_error(ZORPELX_BAD_INPUT, "%s:%lld:%lld: '%s' is not %s", budget.name.c_str(), row,
                   column, shown_word(line, token).c_str(), rule.what);
    if (token.value < rule.least || token.value > rule.most)
        file_error(ZORPELX_BAD_INPUT, "%s:%lld:%lld: %s is not between %lld and %lld",
                   budget.name.c_str(), row, column, shown(token).c_str(), ll(rule.least),
                   ll(rule.most));
}

static std::vector<int64_t> scan_all(std::string_view bytes, const NumberRule &rule,
                                     int64_t nvertices, Budget *budget)
{
    std::vector<int64_t> numbers;
    Text text = text_over(without_mark(bytes), false);
    while (!at_end(text)) {
        Line line = take_line(&text);
        if (text.number % CLOCK_LINES == 0) check_time(*budget);
        for (Token token; (token = take_token(&line)).kind != TOKEN_END;) {
            check_number(*budget, rule, line, token);
            if (static_cast<int64_t>(numbers.size()) == nvertices)
                file_error(ZORPELX_BAD_INPUT, "%s:%lld:%lld: more entries than the %s",
                           budget->name.c_str(), ll(token.place.line), ll(token.place.column),
                           counted(nvertices, "vertex", "vertices").c_str());
            push_charged(budget, &numbers, token.value);
        }
    }
    return numbers;
}

std::vector<int64_t> scan_partition(std::string_view bytes, int64_t nvertices, Budget *budget,
                                    bool *unended)
{
    const NumberRule rule = {0, INT_MAX - 1, "a part number"};
    std::vector<int64_t> part = scan_all(bytes, rule, nvertices, budget);
    if (static_cast<int64_t>(part.size()) < nvertices)
        file_error(
            ZORPELX_BAD_INPUT, "%s: %s for %s", budget->name.c_str(),
            counted(static_cast<int64_t>(part.size()), "part number", "part numbers").c_str(),
            counted(nvertices, "vertex", "vertices").c_str());
    *unended = is_unended(bytes);
    return part;
}

std::vector<int64_t> scan_numbers(std::string_view bytes, Budget *budget, bool *unended)
{
    *unended = is_unended(bytes);
    return scan_all(bytes, {INT_MIN, INT_MAX, "a whole number"}, -1, budget);
}
