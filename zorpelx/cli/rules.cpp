/* zorpelx/cli/rules.cpp: the numbered rules, with their explanations. */
#include "rules.h"

#include <cstring>
#include <strings.h>

#include "failure.h"

const Rule RULES[NRULES] = {
    {"H01", "no-header", ERROR, "the file has no header line",
     "The first line that does not begin with % must hold the number of hyperedges and the number "
     "of vertices. This file holds only comments, or nothing."},
    {"H02", "header-numbers", ERROR, "the header lacks a number",
     "The header needs two numbers: hyperedges first, then vertices; a third, the format code, "
     "may follow."},
    {"H03", "header-rest", WARNING, "more than three numbers in the header",
     "zorpel reads two numbers and a format code and ignores the rest of the line. If the third "
     "word is not a number, the format code is 0 and all weights of the file are taken for "
     "vertices or for lines too many. The clean file holds the header as it is read."},
    {"H04", "format-code", ERROR, "format code above 99",
     "The format code is 0 (no weights), 1 (a weight first on each hyperedge line), 10 (a line "
     "with a weight for each vertex, after the hyperedges) or 11 (both)."},
    {"H05", "odd-code", WARNING, "unusual format code",
     "zorpel looks at the digits: hyperedge weights if the last digit is above 0, vertex weights "
     "if the tens digit is; a negative code means no weights. So 2 reads as 1 and 20 as 10. "
     "The clean file holds the usual code."},
    {"H06", "counts", ERROR, "fewer than 2 vertices or a negative number of hyperedges",
     "There is nothing to partition below two vertices."},
    {"H07", "range", ERROR, "number beyond 32 bits",
     "Vertex numbers, weights and counts are 32-bit: at most 2147483647."},
    {"H08", "hyperedges-missing", ERROR, "fewer hyperedge lines than announced",
     "The file ends before as many hyperedges were read as the header announces. Lines that begin "
     "with % do not count. The two numbers of the header may have been exchanged: hyperedges come "
     "first."},
    {"H09", "vertex-above", ERROR, "vertex number above the number of vertices",
     "Vertices are numbered from 1 to the second number of the header."},
    {"H10", "empty-hyperedge", ERROR, "hyperedge without vertices",
     "zorpel stops at a hyperedge line from which it reads no vertex, a blank line included; only "
     "as the last hyperedge is it let through. The clean file leaves empty hyperedges out."},
    {"H11", "repeated-pin", WARNING, "vertex listed twice in a hyperedge",
     "A vertex that a hyperedge lists again is dropped silently. The clean file lists it once."},
    {"H12", "list-ended", WARNING, "zero or negative number in a hyperedge",
     "A list of vertices ends at the first number that is not positive; what follows on the line "
     "is ignored silently. The clean file holds what was read; for files that number their "
     "vertices from 0 see H13."},
    {"H13", "zero-based", WARNING, "the vertices seem to be numbered from 0",
     "Hyperedges list vertex 0, and none lists the highest vertex number. Vertices are numbered "
     "from 1: read from 0, every list that holds a 0 would be cut short there. Say --from 0 to "
     "read the file so; with --fix the clean file is numbered from 1."},
    {"H14", "rubbish", WARNING, "something that is not a number in a hyperedge",
     "A list of vertices ends at the first thing that is not a decimal number: letters, commas, "
     "decimal points. What follows on the line is ignored silently. The clean file holds what was "
     "read."},
    {"H15", "single-vertex", WARNING, "hyperedge of one vertex",
     "It can never be cut, but zorpel's own count of the cut may be off in its presence, and "
     "traces may show 'Wrong cut!'. The statistics are right. The clean file leaves it out."},
    {"H16", "no-hyperedge-weight", WARNING, "hyperedge line without its weight",
     "The format code announces a weight first on each hyperedge line. None can be read here, and "
     "the weight is 0."},
    {"H17", "zero-hyperedge-weight", WARNING, "hyperedge of weight 0",
     "It does not matter whether it is cut. zorpel's first look at the file takes the weight for "
     "the end of the list and may then stop for want of room (H30). The clean file leaves it out."},
    {"H18", "negative-weight", ERROR, "negative weight", "Weights must be 0 or more."},
    {"H19", "weights-missing", ERROR, "fewer vertex weights than vertices",
     "The format code announces a line with a weight for every vertex after the hyperedges."},
    {"H20", "no-vertex-weight", WARNING, "vertex-weight line without a number",
     "No number can be read from the line, so the vertex weighs 0; a blank line counts as a line. "
     "The clean file says 0."},
    {"H21", "zero-vertex-weight", NOTE, "vertex of weight 0",
     "Accepted: it can lie on any side. Pads of circuits often have no area."},
    {"H22", "weight-rest", WARNING, "more than a weight on a vertex-weight line",
     "Each vertex has a line of its own; only the first number of the line is read. The clean file "
     "holds only that."},
    {"H23", "sum", ERROR, "weights add up beyond 32 bits",
     "The weights of all vertices, and those of all hyperedges, may each total at most "
     "2147483646. Divide them by a common number."},
    {"H24", "weightless", WARNING, "all vertices weigh 0",
     "Nothing is left to balance: a part may hold every vertex, and scaled cost divides by 0."},
    {"H25", "trailing", WARNING, "lines after the last one that is read",
     "The header announces fewer lines than there are. They are ignored: the number of hyperedges "
     "may be wrong, or the format code may not announce the vertex weights (10 or 11). The clean "
     "file leaves them out."},
    {"H26", "long-line", ERROR, "line longer than zorpel reads at once",
     "zorpel reads 131071 characters at a time and takes the remainder for the next line, so that "
     "a long hyperedge becomes two and a long comment becomes a hyperedge. Say --lines whole to "
     "read the line as one, --lines pieces to read it as zorpel does. The clean file holds the "
     "line with single blanks, which may be short enough."},
    {"H27", "comment", WARNING, "% that is not at the start of its line",
     "Only a line whose first character is % is a comment. Here the % ends the list of numbers, "
     "and a line of its own counts as an empty hyperedge or a weight of 0."},
    {"H28", "line-ends", NOTE, "lines end in carriage return and newline",
     "Accepted: the carriage return counts as white space. The clean file has newlines only."},
    {"H29", "byte-order-mark", ERROR, "the file begins with a byte order mark",
     "zorpel finds no number at the start of the header. The clean file begins with the header."},
    {"H30", "no-room", WARNING, "zorpel stops with 'Out of netind memory!'",
     "zorpel counts the vertices of all lists before it reads them, and a hyperedge weight that is "
     "not positive makes it count too few. zorpelx reads the file all the same; the clean file is "
     "read by both."},
    {"H31", "isolated", NOTE, "vertex in no hyperedge",
     "Accepted: it is put where weight is missing."},
    {"H32", "twin-hyperedges", NOTE, "hyperedge with the same vertices as an earlier one",
     "Accepted. One hyperedge with the sum of both weights means the same and is faster."},
    {"H33", "too-many-vertices", ERROR, "far more vertices than the file can mention",
     "The header announces more than 16 vertices for every byte of the file, and more than a "
     "million: almost all would be in no hyperedge, and the memory would hold nothing else."},
    {"F01", "fix-short", ERROR, "fewer entries than vertices",
     "The fix file needs a part or -1 for every vertex. zorpel takes 0 for each entry that is "
     "missing, which fixes all remaining vertices to part 0."},
    {"F02", "fix-rubbish", ERROR, "something that is not a number",
     "zorpel stops reading here and takes 0 for this entry and all that follow, which fixes them "
     "to part 0. A fix file has no comments."},
    {"F03", "fix-negative", ERROR, "entry below -1",
     "-1 leaves a vertex free; other negative numbers are refused."},
    {"F04", "fix-part", ERROR, "part number not below the number of parts",
     "Parts are numbered from 0 to one less than the number of parts."},
    {"F05", "fix-extra", WARNING, "more entries than vertices",
     "They are ignored. The fix file may belong to another hypergraph."},
    {"F06", "fix-lines", NOTE, "several entries on a line",
     "Accepted: entries may be separated by any white space, not only by line ends."},
    {"F07", "fix-range", ERROR, "number beyond 32 bits", "Part numbers are 32-bit."},
    {"F08", "fix-none", NOTE, "no vertex is fixed",
     "Every entry is -1. The partition is as free as without the file, but the random sequence is "
     "another, so the result may differ."},
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
    static const char *const names[] = {"note", "warning", "error"};
    return names[severity];
}

void add_milder(Findings *findings, RuleIndex rule, Severity severity, Place place,
                std::string text)
{
    findings->severities[severity]++;
    const int64_t count = ++findings->count[rule];
    if (findings->most == 0 || count <= findings->most)
        findings->listed.push_back({rule, severity, place, std::move(text)});
}

void add_finding(Findings *findings, RuleIndex rule, Place place, std::string text)
{
    add_milder(findings, rule, RULES[rule].severity, place, std::move(text));
}

const Finding *first_error(const Findings &findings)
{
    for (const Finding &finding : findings.listed)
        if (finding.severity == ERROR) return &finding;
    return nullptr;
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
