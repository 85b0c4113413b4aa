// SPDX-License-Identifier: MIT
/* zorpelx/cli/report.cpp: what zorpel prints about a partition, rebuilt from the files.
 *
 * A report is compared from its first byte to its last: a text that the files settle must be there
 * literally, and what they do not settle (the version, say) must have its form. The first byte that
 * differs is told by its line.
 */
#include "report.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <map>

#include "casts.h"
#include "failure.h"
#include "figures.h"

static const char *const SUMMARY = "\n  Summary for the ";
static const char *const STARS =
    "*******************************************************************************";
static const char *const GRAPH_HEAD =
    "HyperGraph Information -----------------------------------------------------\n Name: ";
static const char *const BISECTING =
    "\n\nRecursive Partitioning... --------------------------------------------------\n";
static const char *const TIMING =
    "\n\nTiming Information ---------------------------------------------------------";

int64_t parts_in_report(const std::string &report)
{
    const size_t place = report.find(SUMMARY);
    return place == std::string::npos
               ? 0
               : strtoll(report.c_str() + place + strlen(SUMMARY), nullptr, 10);
}

/* "-nan" and "nan" are the same figure, in the same width. */
static std::string without_sign_of_nan(std::string text)
{
    for (size_t place = 0; (place = text.find("-nan", place)) != std::string::npos; place += 4)
        text[place] = ' ';
    return text;
}

/* A sum in single precision: the addition in double, rounded once. */
static float single_sum(float sum, double term)
{
    return static_cast<float>(static_cast<double>(sum) + term);
}

/* Vertices of a hyperedge per part, in part order, as zorpel adds them up. */
static float single_absorption(const Hypergraph &graph, const std::vector<int64_t> &part)
{
    float absorption = 0;
    std::map<int64_t, int64_t> pins;
    for (int64_t e = 0; e < graph.nnets; e++) {
        pins.clear();
        for (int64_t j = graph.start[static_cast<size_t>(e)];
             j < graph.start[static_cast<size_t>(e) + 1]; j++)
            pins[part[static_cast<size_t>(graph.pins[static_cast<size_t>(j)])]]++;
        const double rest = static_cast<double>(net_size(graph, e) - 1);
        if (pins.size() < 2) absorption = single_sum(absorption, 1.0);
        if (pins.size() < 2) continue;
        for (const auto &[p, count] : pins)
            absorption = single_sum(absorption, static_cast<double>(count - 1) / rest);
    }
    return absorption;
}

static float single_scaled_cost(const Figures &figures, int64_t nvertices)
{
    float sum = 0;
    for (size_t p = 0; p < figures.weight.size(); p++)
        sum = single_sum(sum, static_cast<double>(figures.external[p]) /
                                  static_cast<double>(figures.weight[p]));
    return static_cast<float>(static_cast<double>(sum) / (static_cast<double>(nvertices) *
                                                          static_cast<double>(figures.nparts - 1)));
}

std::string tool_statistics(const Hypergraph &graph, const std::vector<int64_t> &part,
                            int64_t nparts)
{
    const Figures figures = figures_of(graph, part, nparts);
    std::string text = "\n " + std::string(74, '-');
    text += text_of("\n  Summary for the %lld-way partition:", static_cast<long long>(nparts));
    text += text_of("\n                Hyperedge Cut:%10lld\t\t(minimize)",
                    static_cast<long long>(figures.cut));
    text += text_of("\n      Sum of External Degrees:%10lld\t\t(minimize)",
                    static_cast<long long>(figures.soed));
    text += text_of("\n                  Scaled Cost:%10.2e\t\t(minimize)",
                    static_cast<double>(single_scaled_cost(figures, graph.nvertices)));
    text += text_of("\n                   Absorption:%10.2f\t\t(maximize)",
                    static_cast<double>(single_absorption(graph, part)));
    text += "\n\n      Partition Sizes & External Degrees:\n\t";
    for (size_t p = 0; p < figures.weight.size(); p++) {
        text += text_of("%6lld[%4lld] ", static_cast<long long>(figures.weight[p]),
                        static_cast<long long>(figures.external[p]));
        if (p % 5 == 4) text += "\n\t";
    }
    return text;
}

/* A report being compared.
 *   place  of the next byte; fault: what is wrong before it, empty if nothing */
struct Comparison {
    const std::string &report;
    size_t place;
    std::string fault;
};

static std::string line_around(const std::string &text, size_t place)
{
    const size_t from = place == 0 ? 0 : text.rfind('\n', place - 1) + 1; // npos + 1 is 0
    return text.substr(from, text.find('\n', place) - from);
}

static void found_fault(Comparison *at, size_t place, const std::string &wanted)
{
    const std::string &report = at->report;
    const auto end = report.begin() + static_cast<std::ptrdiff_t>(std::min(place, report.size()));
    at->fault = text_of("line %lld reads '%s', and should read %s",
                        ll(1 + std::count(report.begin(), end, '\n')),
                        line_around(report, place).c_str(), wanted.c_str());
}

/* The report must go on with this text. */
static void expect(Comparison *at, const std::string &wanted)
{
    if (!at->fault.empty()) return;
    size_t same = 0;
    while (same < wanted.size() && at->place + same < at->report.size() &&
           wanted[same] == at->report[at->place + same])
        same++;
    if (same < wanted.size())
        found_fault(at, at->place + same, text_of("'%s'", line_around(wanted, same).c_str()));
    at->place += same;
}

/* The report must go on with characters of a set. */
static void expect_some(Comparison *at, const char *set, const char *what)
{
    if (!at->fault.empty()) return;
    const size_t end = std::min(at->report.find_first_not_of(set, at->place), at->report.size());
    if (end == at->place) found_fault(at, at->place, what);
    at->place = end;
}

/* The report must go on with one of some words. */
static void expect_one_of(Comparison *at, std::initializer_list<const char *> words)
{
    const char *longest = "";
    for (const char *word : words)
        if (at->report.compare(at->place, strlen(word), word) == 0 &&
            strlen(word) > strlen(longest))
            longest = word;
    expect(at, longest[0] != '\0' ? longest : *words.begin());
}

/* The report must hold a text further on; what comes before it does not matter. */
static void skip_to(Comparison *at, const std::string &wanted, const std::string &missing)
{
    if (!at->fault.empty()) return;
    const size_t place = at->report.find(wanted, at->place);
    if (place == std::string::npos)
        at->fault = missing;
    else
        at->place = place;
}

/* The name is as it was on the command line, so it is not looked at. */
static void compare_head(Comparison *at, const ReportFacts &facts)
{
    const std::string sizes = text_of(
        ", #Vtxs: %5lld, #Hedges: %5lld, #Parts: %lld, UBfactor: ", ll(facts.graph.nvertices),
        ll(facts.graph.nnets), ll(facts.nparts));
    expect(at, std::string(STARS) + "\n ZORPEL ");
    expect_some(at, "0123456789.", "a version");
    expect(at, std::string("  Copyright (c) 2026 the ZORPEL authors\n\n") + GRAPH_HEAD);
    skip_to(at, sizes, text_of("its head does not say '%s'", sizes.c_str() + 2));
    expect(at, sizes);
    if (facts.ubfactor > 0)
        expect(at, text_of("%1.2f", facts.ubfactor / 100.0));
    else
        expect_some(at, "0123456789.", "a balance factor");
}

static void compare_options(Comparison *at, bool fixed)
{
    expect(at, "\n Options: ");
    expect_one_of(at, {"HFC", "FC", "GFC", "HEDGE", "EDGE"});
    expect(at, ", ");
    expect_one_of(at, {"FM", "1WayFM", "EEFM"});
    expect(at, ", ");
    expect_one_of(at, {"Reconst-False", "Reconst-True"});
    expect(at, ", ");
    expect_one_of(at, {"No V-cycles", "V-cycles @ End", "V-cycle for Min", "Always V-cycle"});
    expect(at, ", ");
    if (fixed)
        expect(at, "With Fixed Vertices");
    else
        expect_one_of(at, {"No Fixed Vertices", "With Fixed Vertices"});
}

static void compare_time(Comparison *at, const char *name)
{
    expect(at, name);
    expect_some(at, " 0123456789.", "seconds");
    expect(at, "sec");
}

std::string fault_of_report(const std::string &saved, const ReportFacts &facts)
{
    const std::string report = without_sign_of_nan(saved);
    const std::string statistics =
        without_sign_of_nan(tool_statistics(facts.graph, facts.part, facts.nparts));
    const std::string rule = statistics.substr(0, statistics.find(SUMMARY));
    Comparison at = {report, 0, ""};
    compare_head(&at, facts);
    compare_options(&at, facts.fixed);
    expect(&at, BISECTING);
    skip_to(&at, rule + SUMMARY, "it holds no statistics"); // traces may stand before them
    expect(&at, statistics + TIMING);
    compare_time(&at, "\n  Partitioning Time:\t\t ");
    compare_time(&at, "\n           I/O Time:\t\t ");
    expect(&at, std::string("\n") + STARS + "\n");
    if (at.fault.empty() && at.place < report.size()) found_fault(&at, at.place, "nothing more");
    return at.fault;
}
