// SPDX-License-Identifier: MIT
/* zorpelx/files/rules.cpp: the numbered rules, with their explanations. */
#include "rules.h"

#include <algorithm>
#include <cstring>
#include <utility>
#include <strings.h>

#include "fileerror.h"

const Rule RULES[NRULES] = {
    {"H01", "no-header", ERROR, true, "the file has no header line",
     "The first line that does not begin with % must hold the number of hyperedges and the number "
     "of vertices. This file holds only comments, or nothing."},
    {"H02", "header-numbers", ERROR, true, "the header lacks a number",
     "The header needs two numbers: hyperedges first, then vertices; a third, the format code, "
     "may follow."},
    {"H03", "header-rest", WARNING, false, "more than three numbers in the header",
     "zorpel reads two numbers and a format code and ignores the rest of the line. If the third "
     "word is not a whole number, the format code is 0 and all weights of the file are taken for "
     "vertices or for lines too many; that is an error. The clean file holds the header as it is "
     "read."},
    {"H04", "format-code", ERROR, true, "format code above 99",
     "The format code is 0 (no weights), 1 (a weight first on each hyperedge line), 10 (a line "
     "with a weight for each vertex, after the hyperedges) or 11 (both)."},
    {"H05", "odd-code", WARNING, false, "unusual format code",
     "zorpel looks at the digits: hyperedge weights if the last digit is above 0, vertex weights "
     "if the tens digit is; a negative code means no weights. So 2 reads as 1 and 20 as 10. "
     "The clean file holds the usual code."},
    {"H06", "counts", ERROR, true, "fewer than 2 vertices or a negative number of hyperedges",
     "There is nothing to partition below two vertices."},
    {"H07", "range", ERROR, true, "number beyond 32 bits",
     "Vertex numbers, weights and counts are 32-bit: at most 2147483647."},
    {"H08", "hyperedges-missing", ERROR, true, "fewer hyperedge lines than announced",
     "The file ends before as many hyperedges were read as the header announces. Lines that begin "
     "with % do not count. The two numbers of the header may have been exchanged: hyperedges come "
     "first."},
    {"H09", "vertex-above", ERROR, true, "vertex number above the number of vertices",
     "Vertices are numbered from 1 to the second number of the header."},
    {"H10", "empty-hyperedge", ERROR, true, "hyperedge without vertices",
     "zorpel stops at a hyperedge line from which it reads no vertex, a blank line included. As "
     "the "
     "last hyperedge it lets one through, so that a blank line at the end takes the place of a "
     "hyperedge that is missing. The clean file leaves empty hyperedges out."},
    {"H11", "repeated-pin", WARNING, false, "vertex listed twice in a hyperedge",
     "A vertex that a hyperedge lists again is dropped silently. The clean file lists it once."},
    {"H12", "list-ended", LOSS, false, "zero or negative number in a hyperedge",
     "A list of vertices ends at the first number that is not positive; what follows on the line "
     "is ignored silently, and the number itself may have been meant for a vertex. For files that "
     "number their vertices from 0 see H13."},
    {"H13", "zero-based", LOSS, false, "the vertices seem to be numbered from 0",
     "Hyperedges list vertex 0, and none lists the highest vertex number. Vertices are numbered "
     "from 1: read from 0, every list that holds a 0 would be cut short there. Say --from 0 to "
     "read the file so; with --fix the clean file is numbered from 1."},
    {"H14", "rubbish", LOSS, false, "something that is not a number in a hyperedge",
     "A list of vertices ends at the first thing that is not a decimal number: letters, commas, "
     "decimal points. What follows on the line is ignored silently, and of 1.5 the 1 is read."},
    {"H15", "single-vertex", WARNING, false, "hyperedge of one vertex",
     "It can never be cut, but zorpel's own count of the cut may be off in its presence, and "
     "traces may show 'Wrong cut!'. The statistics are right. The clean file leaves it out."},
    {"H16", "no-hyperedge-weight", LOSS, false, "hyperedge line without its weight",
     "The format code announces a weight first on each hyperedge line. None can be read here, and "
     "zorpel takes 0."},
    {"H17", "zero-hyperedge-weight", WARNING, false, "hyperedge of weight 0",
     "It does not matter whether it is cut. zorpel's first look at the file takes the weight for "
     "the end of the list and may then stop for want of room (H30). The clean file leaves it out."},
    {"H18", "negative-weight", ERROR, true, "negative weight", "Weights must be 0 or more."},
    {"H19", "weights-missing", ERROR, true, "fewer vertex weights than vertices",
     "The format code announces a line with a weight for every vertex after the hyperedges."},
    {"H20", "no-vertex-weight", LOSS, false, "vertex-weight line without a number",
     "No number can be read from the line, and zorpel takes 0; a blank line counts as a line."},
    {"H21", "zero-vertex-weight", NOTE, false, "vertex of weight 0",
     "Accepted: it can lie on any side. Pads of circuits often have no area."},
    {"H22", "weight-rest", LOSS, false, "more than a weight on a vertex-weight line",
     "Each vertex has a line of its own; only the first number of the line is read, and of 1.5 the "
     "1."},
    {"H23", "sum", ERROR, true, "weights add up beyond 32 bits",
     "The weights of all vertices, and those of all hyperedges, may each total at most "
     "2147483646. Divide them by a common number."},
    {"H24", "weightless", WARNING, false, "all vertices weigh 0",
     "Nothing is left to balance: a part may hold every vertex, and scaled cost divides by 0."},
    {"H25", "trailing", LOSS, false, "lines after the last one that is read",
     "The header announces fewer lines than there are. They are ignored: the number of hyperedges "
     "may be wrong, or the format code may not announce the vertex weights (10 or 11). It is a "
     "warning if none of them begins with a number."},
    {"H26", "long-line", WARNING, false, "line longer than zorpel reads at once",
     "zorpel reads 131071 characters at a time and takes the remainder for the next line, so that "
     "a long hyperedge becomes two and a long comment becomes a hyperedge. zorpelx reads the line "
     "as one unless --lines pieces asks for zorpel's way, or --lines refuse for an error. The "
     "clean file holds the line with single blanks, which may be short enough."},
    {"H27", "comment", WARNING, false, "% that is not at the start of its line",
     "Only a line whose first character is % is a comment. Here the % ends the list of numbers, "
     "and a line of its own counts as an empty hyperedge or a weight of 0, which is an error."},
    {"H28", "line-ends", NOTE, false, "lines end in carriage return and newline",
     "Accepted: the carriage return counts as white space. The clean file has newlines only."},
    {"H29", "byte-order-mark", ERROR, true, "the file begins with a byte order mark",
     "zorpel finds no number at the start of the header. The clean file begins with the header."},
    {"H30", "no-room", LOSS, true, "zorpel stops with 'Out of netind memory!'",
     "zorpel counts the vertices of all lists before it reads them, and a hyperedge weight that is "
     "not positive makes it count too few. zorpelx reads the file when forced; the clean file is "
     "read by both."},
    {"H31", "isolated", NOTE, false, "vertex in no hyperedge",
     "Accepted: it is put where weight is missing."},
    {"H32", "twin-hyperedges", NOTE, false, "hyperedge with the same vertices as an earlier one",
     "Accepted. One hyperedge with the sum of both weights means the same and is faster."},
    {"H33", "too-many-vertices", ERROR, false, "far more vertices than the file can mention",
     "The header announces more than 16 vertices for every byte of the file, and more than a "
     "million: almost all would be in no hyperedge, and the memory would hold nothing else."},
    {"H34", "other-format", LOSS, false, "the file seems to be of another format",
     "Its first bytes are those of a format that the message names. Some of them read as a "
     "hypergraph of a kind: the banner of a Matrix Market file is a comment, and its sizes are a "
     "header."},
    {"H35", "unended", WARNING, false, "the last line has no newline",
     "Accepted, but the file may have been cut off: a number at its end may lack digits. The clean "
     "file ends with a newline."},
    {"H36", "told", NOTE, false, "something to know about how the file was read",
     "Files of other formats than zorpel's own: what was left out or merged, and how the file was "
     "understood. The programs print it."},
    {"H37", "contradiction", WARNING, false, "the file contradicts itself",
     "Files of other formats than zorpel's own: a count in a header that is off, or a file named "
     "in it that is missing, where reading can go on. The programs print it."},
    {"F01", "fix-short", LOSS, false, "fewer entries than vertices",
     "The fix file needs a part or -1 for every vertex. zorpel takes 0 for each entry that is "
     "missing, which fixes all remaining vertices to part 0."},
    {"F02", "fix-rubbish", LOSS, false, "something that is not a number",
     "zorpel stops reading here and takes 0 for this entry and all that follow, which fixes them "
     "to part 0. A fix file has no comments."},
    {"F03", "fix-negative", ERROR, true, "entry below -1",
     "-1 leaves a vertex free; other negative numbers are refused."},
    {"F04", "fix-part", ERROR, true, "part number not below the number of parts",
     "Parts are numbered from 0 to one less than the number of parts."},
    {"F05", "fix-extra", LOSS, false, "more entries than vertices",
     "zorpel ignores them. The fix file may belong to another hypergraph."},
    {"F06", "fix-lines", NOTE, false, "several entries on a line",
     "Accepted: entries may be separated by any white space, not only by line ends."},
    {"F07", "fix-range", ERROR, true, "number beyond 32 bits", "Part numbers are 32-bit."},
    {"F08", "fix-none", NOTE, false, "no vertex is fixed",
     "Every entry is -1. The partition is as free as without the file, but the random sequence is "
     "another, so the result may differ."},
    {"F09", "fix-unended", WARNING, false, "the last line has no newline",
     "Accepted, but the file may have been cut off: the number at its end may lack digits."},
};

const Rule *find_rule(const std::string &word)
{
    for (const Rule &rule : RULES)
        if (strcasecmp(rule.id, word.c_str()) == 0 || strcasecmp(rule.name, word.c_str()) == 0)
            return &rule;
    return nullptr;
}

const char *severity_name(Severity severity)
{
    static const char *const names[] = {"note", "warning", "error", "error"};
    return names[severity];
}

void add_finding_as(Findings *findings, RuleIndex rule, Severity severity, Place place,
                    std::string text)
{
    bool *const met = &findings->met[rule][severity];
    const int64_t count = ++findings->count[rule];
    findings->severities[severity]++;
    if (RULES[rule].stops && severity >= RULES[rule].severity) findings->stops++;
    if (!*met || findings->most == 0 || count <= findings->most) {
        if (findings->budget != nullptr) charge(findings->budget, sizeof(Finding) + text.size());
        findings->listed.push_back({rule, severity, place, std::move(text)});
    }
    *met = true;
}

void add_finding(Findings *findings, RuleIndex rule, Place place, std::string text)
{
    add_finding_as(findings, rule, RULES[rule].severity, place, std::move(text));
}

const Finding *first_finding(const Findings &findings, Severity least)
{
    for (const Finding &finding : findings.listed)
        if (finding.severity >= least) return &finding;
    return nullptr;
}

int64_t count_errors(const Findings &findings)
{
    return findings.severities[LOSS] + findings.severities[ERROR];
}

/* What explains all the others comes first. */
void forget_rule(Findings *findings, RuleIndex rule)
{
    const auto is_of_rule = [rule](const Finding &finding) { return finding.rule == rule; };
    for (const Finding &finding : findings->listed)
        if (is_of_rule(finding)) findings->severities[finding.severity]--;
    findings->stops -= RULES[rule].stops ? findings->count[rule] : 0;
    findings->count[rule] = 0;
    std::erase_if(findings->listed, is_of_rule);
}

const Finding *refusal(const Findings &findings, bool strict, bool force)
{
    const Severity least = strict ? WARNING : force ? ERROR : LOSS;
    for (const RuleIndex rule : {RULE_OTHER_FORMAT, RULE_ZERO_BASED})
        for (const Finding &finding : findings.listed)
            if (finding.rule == rule && finding.severity >= least) return &finding;
    return first_finding(findings, least);
}

void sort_by_place(Findings *findings)
{
    const auto key = [](const Finding &finding) {
        const int64_t line = finding.place.line;
        return std::pair(line > 0 ? line : INT64_MAX, finding.place.column);
    };
    std::stable_sort(findings->listed.begin(), findings->listed.end(),
                     [&](const Finding &a, const Finding &b) { return key(a) < key(b); });
}

std::string finding_line(const std::string &file, const Finding &finding)
{
    const Rule &rule = RULES[finding.rule];
    std::string place = file;
    if (finding.place.line > 0)
        place += text_of(":%lld:%lld", static_cast<long long>(finding.place.line),
                         static_cast<long long>(finding.place.column));
    return text_of("%s: %s %s %s: %s", place.c_str(), severity_name(finding.severity), rule.id,
                   rule.name, finding.text.c_str());
}
