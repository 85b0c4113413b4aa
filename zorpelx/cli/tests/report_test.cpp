// SPDX-License-Identifier: MIT
/* zorpelx/cli/tests/report_test.cpp: a report of zorpel, and the same with every byte changed. */
#include "report.h"

#include <cstring>

#include <gtest/gtest.h>

static const char *const REPORT =
    "*******************************************************************************\n"
    " ZORPEL 1.0.0  Copyright (c) 2026 the ZORPEL authors\n"
    "\n"
    "HyperGraph Information -----------------------------------------------------\n"
    " Name: a.hgr, #Vtxs:     4, #Hedges:     3, #Parts: 2, UBfactor: 0.05\n"
    " Options: HFC, FM, Reconst-False, V-cycles @ End, No Fixed Vertices\n"
    "\n"
    "Recursive Partitioning... --------------------------------------------------\n"
    "\n"
    " --------------------------------------------------------------------------\n"
    "  Summary for the 2-way partition:\n"
    "                Hyperedge Cut:         1\t\t(minimize)\n"
    "      Sum of External Degrees:         2\t\t(minimize)\n"
    "                  Scaled Cost:  2.50e-01\t\t(minimize)\n"
    "                   Absorption:      2.00\t\t(maximize)\n"
    "\n"
    "      Partition Sizes & External Degrees:\n"
    "\t     2[   1]      2[   1] \n"
    "\n"
    "Timing Information ---------------------------------------------------------\n"
    "  Partitioning Time:\t\t   0.001sec\n"
    "           I/O Time:\t\t   0.000sec\n"
    "*******************************************************************************\n";

/* The chain 0 - 1 - 2 - 3 cut in its middle. */
static const Hypergraph CHAIN = {
    4, 3, false, false, {0, 2, 4, 6}, {0, 1, 1, 2, 2, 3}, {1, 1, 1}, {1, 1, 1, 1}};
static const std::vector<int64_t> HALVES = {0, 0, 1, 1};

static std::string fault_of(const std::string &report, bool fixed = false, int ubfactor = 0)
{
    return fault_of_report(report, {CHAIN, HALVES, 2, fixed, ubfactor});
}

static std::string with(std::string report, const std::string &old, const std::string &text)
{
    return report.replace(report.find(old), old.size(), text);
}

/* Whether a byte at place is settled by the files: not in the name, a number of the run, an
 * option. */
static bool is_settled(const std::string &report, size_t place)
{
    const std::string head = report.substr(0, place);
    const size_t line = head.rfind('\n') + 1; // npos + 1 is 0
    const std::string text = report.substr(line, report.find('\n', line) - line);
    const std::string before = text.substr(0, place - line);
    const auto between = [&](const char *from, const char *to) {
        const size_t begin = text.find(from), end = text.find(to);
        return begin != std::string::npos && end != std::string::npos &&
               before.size() >= begin + strlen(from) && before.size() < end;
    };
    return !between(" ZORPEL ", "  Copyright") && !between(" Name: ", ", #Vtxs") &&
           !between("Time:\t\t ", "sec");
}

TEST(report, of_zorpel_has_no_fault)
{
    EXPECT_EQ(fault_of(REPORT), "");
    EXPECT_EQ(fault_of(REPORT, false, 5), "");
    EXPECT_EQ(parts_in_report(REPORT), 2);
    EXPECT_EQ(parts_in_report("no report"), 0);
}

TEST(report, cut_short_anywhere_is_found)
{
    const std::string report = REPORT;
    for (size_t length = 0; length < report.size(); length++)
        EXPECT_NE(fault_of(report.substr(0, length)), "") << length;
}

TEST(report, every_byte_that_the_files_settle_counts)
{
    const std::string report = REPORT;
    int nfaults = 0;
    for (size_t i = 0; i < report.size(); i++) {
        std::string changed = report;
        changed[i] = report[i] == '#' ? '+' : '#';
        nfaults += !fault_of(changed).empty();
        if (is_settled(report, i)) {
            EXPECT_NE(fault_of(changed), "") << i << ' ' << report.substr(i, 20);
        }
        changed = report;
        changed.insert(i, 1, '\1');
        if (is_settled(report, i) && report.compare(i, 8, "\n ------") != 0 &&
            report.compare(i, 7, ", #Vtxs") != 0) { // the end of the traces and of the name
            EXPECT_NE(fault_of(changed), "") << i << ' ' << report.substr(i, 20);
        }
    }
    EXPECT_EQ(nfaults, static_cast<int>(report.size() - strlen("a.hgr")));
    EXPECT_NE(fault_of(report + "\n"), "");
}

TEST(report, options_have_to_be_some_that_zorpel_knows)
{
    EXPECT_EQ(fault_of(with(REPORT, "HFC, FM", "EDGE, 1WayFM")), "");
    EXPECT_EQ(fault_of(with(REPORT, "Reconst-False, V-cycles @ End", "Reconst-True, No V-cycles")),
              "");
    EXPECT_NE(fault_of(with(REPORT, "HFC", "XYZ")), "");
    EXPECT_NE(fault_of(with(REPORT, "V-cycles @ End", "Some V-cycles")), "");
}

TEST(report, options_that_are_known_have_to_be_told)
{
    EXPECT_NE(fault_of(REPORT, true), "");
    EXPECT_EQ(fault_of(with(REPORT, "No Fixed", "With Fixed"), true), "");
    EXPECT_EQ(fault_of(with(REPORT, "No Fixed", "With Fixed")), "");
    EXPECT_NE(fault_of(REPORT, false, 6), "");
    EXPECT_EQ(fault_of(with(REPORT, "0.05", "0.31"), false, 31), "");
}

TEST(report, traces_may_stand_before_the_statistics)
{
    EXPECT_EQ(fault_of(with(REPORT, "\n\n ----", "\n [ 4 3]\n\n ----")), "");
}

TEST(report, fault_tells_line_and_both_texts)
{
    EXPECT_EQ(fault_of(with(REPORT, "Cut:         1", "Cut:         7")),
              "line 12 reads '                Hyperedge Cut:         7\t\t(minimize)', and should "
              "read '                Hyperedge Cut:         1\t\t(minimize)'");
}
