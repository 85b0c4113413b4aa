/* zorpelx/cli/partfiles.cpp: partition and fix files, a number per vertex. */
#include <climits>

#include "failure.h"
#include "hypergraph.h"
#include "input.h"

static long long ll(int64_t number)
{
    return number;
}

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
                        text_of("'%s' is not a number", shown(token).c_str()));
            scan->stopped = true;
            return;
        }
        if (n == 1) add_finding(findings, RULE_FIX_LINES, token.place, "a second entry");
        check_entry(token, scan->next, nparts, findings);
        scan->fix[static_cast<size_t>(scan->next++)] = token.fits ? token.value : -1;
    }
}

std::vector<int64_t> scan_fix(const std::string &bytes, int64_t nvertices, int64_t nparts,
                              Findings *findings)
{
    FixScan scan = {std::vector<int64_t>(static_cast<size_t>(nvertices), -1), 0, 0, false};
    Text text = text_over(bytes, false);
    while (!at_end(text) && !scan.stopped) {
        Line line = take_line(&text);
        scan_fix_line(&scan, &line, nparts, findings);
    }
    if (scan.next < nvertices && !scan.stopped)
        add_finding(findings, RULE_FIX_SHORT, {text.number + 1, 1},
                    text_of("%lld of %lld entries are there", ll(scan.next), ll(nvertices)));
    bool none = scan.next == nvertices;
    for (const int64_t part : scan.fix) none = none && part == -1;
    if (none) add_finding(findings, RULE_FIX_NONE, {0, 0}, "every entry is -1");
    return scan.fix;
}

std::vector<int64_t> read_fix(const std::string &name, int64_t nvertices, int64_t nparts)
{
    Findings findings;
    std::vector<int64_t> fix = scan_fix(read_whole(name), nvertices, nparts, &findings);
    const Finding *const bad = first_error(findings);
    if (bad != nullptr) fail(STATUS_BAD_INPUT, "%s", finding_line(shown_name(name), *bad).c_str());
    return fix;
}

std::vector<int64_t> read_partition(const std::string &name, int64_t nvertices)
{
    const std::string bytes = read_whole(name), file = shown_name(name);
    Text text = text_over(bytes, false);
    std::vector<int64_t> part;
    while (!at_end(text)) {
        Line line = take_line(&text);
        for (Token token; (token = take_token(&line)).kind != TOKEN_END;) {
            const long long row = ll(token.place.line), column = ll(token.place.column);
            if (token.kind == TOKEN_RUBBISH)
                fail(STATUS_BAD_INPUT, "%s:%lld:%lld: '%s' is not a part number", file.c_str(), row,
                     column, shown(token).c_str());
            if (token.value < 0 || token.value >= INT_MAX)
                fail(STATUS_BAD_INPUT, "%s:%lld:%lld: part number %s", file.c_str(), row, column,
                     shown(token).c_str());
            if (static_cast<int64_t>(part.size()) == nvertices)
                fail(STATUS_BAD_INPUT, "%s:%lld:%lld: more entries than the %lld vertices",
                     file.c_str(), row, column, ll(nvertices));
            part.push_back(token.value);
        }
    }
    if (static_cast<int64_t>(part.size()) < nvertices)
        fail(STATUS_BAD_INPUT, "%s: %lld part numbers for %lld vertices", file.c_str(),
             ll(static_cast<int64_t>(part.size())), ll(nvertices));
    return part;
}
