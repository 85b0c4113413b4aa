// SPDX-License-Identifier: MIT
/* tests/unit/reports_test.cpp: what the program prints before and after partitioning. */
#include "driver/reports.h"

#include <gtest/gtest.h>

#include <ctime>

#include "driver/tool_version.h"
#include "support.h"
#include "spare/part_cuts.h"

static const char STARS[] =
    "*******************************************************************************\n";
static const char RECURSIVE[] =
    "\nRecursive Partitioning... --------------------------------------------------\n";
static const char KWAY[] =
    "\nK-way Partitioning... ------------------------------------------------------\n";

static std::string banner()
{
    return std::string(STARS) + " ZORPEL " + ZORPEL_VERSION +
           "  Copyright (c) 2026 the ZORPEL authors\n\n"
           "HyperGraph Information -----------------------------------------------------\n";
}

/* The report on a hypergraph of 24 vertices and 7 hyperedges. */
static std::string info(const int *options, int mode, int ubfactor = 5)
{
    HGraph graph = {};
    graph.ncells = 24;
    graph.nnets = 7;
    return capture_stdout([&] { PrintInfo(&graph, 4, ubfactor, options, "g.hgr", mode); });
}

TEST(Reports, the_summary_of_recursive_partitioning_stands_line_by_line)
{
    const int options[] = {1, 10, 1, 1, 1, 0, 0, -1, 0};
    EXPECT_EQ(info(options, MODE_RECURSIVE),
              banner() +
                  " Name: g.hgr, #Vtxs:    24, #Hedges:     7, #Parts: 4, UBfactor: 0.05\n"
                  " Options: HFC, FM, Reconst-False, V-cycles @ End, No Fixed Vertices\n" +
                  RECURSIVE);
}

TEST(Reports, the_summary_of_kway_partitioning_shows_the_balance_as_a_ratio_and_the_objective)
{
    const int options[] = {1, 10, 2, 2, 0, 0, 0, -1, 0};
    EXPECT_EQ(info(options, MODE_KWAY, 12),
              banner() +
                  " Name: g.hgr, #Vtxs:    24, #Hedges:     7, #Parts: 4, UBfactor: 1.12\n"
                  " Options: FC, SOED-minimization, No V-cycles\n" +
                  KWAY);
    EXPECT_EQ(info(options, 2).substr(info(options, 2).find("\n\nK-way") + 1), KWAY);
}

TEST(Reports, without_options_their_line_is_left_out)
{
    EXPECT_EQ(info(nullptr, MODE_RECURSIVE),
              banner() + " Name: g.hgr, #Vtxs:    24, #Hedges:     7, #Parts: 4, UBfactor: 0.05\n" +
                  RECURSIVE);
}

/* The options line with one slot changed. */
static std::string options_line(int slot, int value, int mode)
{
    int options[] = {1, 10, 1, 1, 1, 0, 0, -1, 0};
    options[slot] = value;
    const std::string text = info(options, mode);
    const size_t start = text.find(" Options: ");
    return text.substr(start, text.find('\n', start) - start);
}

TEST(Reports, every_option_value_has_its_name_and_others_are_doubtful)
{
    const std::vector<std::string> ctypes = {"??", "HFC", "FC", "GFC", "HEDGE", "EDGE", "??"};
    for (int value = 0; value <= 6; value++)
        EXPECT_EQ(options_line(2, value, MODE_RECURSIVE),
                  " Options: " + ctypes[static_cast<size_t>(value)] +
                      ", FM, Reconst-False, V-cycles @ End, No Fixed Vertices");
    const std::vector<std::string> rtypes = {"??", "FM", "1WayFM", "EEFM", "??"};
    for (int value = 0; value <= 4; value++)
        EXPECT_EQ(options_line(3, value, MODE_RECURSIVE),
                  " Options: HFC, " + rtypes[static_cast<size_t>(value)] +
                      ", Reconst-False, V-cycles @ End, No Fixed Vertices");
    const std::vector<std::string> objectives = {"??", "Cut-minimization", "SOED-minimization",
                                                 "??"};
    for (int value = 0; value <= 3; value++)
        EXPECT_EQ(options_line(3, value, MODE_KWAY),
                  " Options: HFC, " + objectives[static_cast<size_t>(value)] + ", V-cycles @ End");
}

TEST(Reports, every_flag_and_cycle_mode_has_its_name_and_others_are_doubtful)
{
    const std::vector<std::string> vcycles = {
        "??", "No V-cycles", "V-cycles @ End", "V-cycle for Min", "Always V-cycle", "??"};
    for (int value = -1; value <= 4; value++)
        EXPECT_EQ(options_line(4, value, MODE_RECURSIVE),
                  " Options: HFC, FM, Reconst-False, " + vcycles[static_cast<size_t>(value + 1)] +
                      ", No Fixed Vertices");
    const std::vector<std::string> reconsts = {"??", "Reconst-False", "Reconst-True", "??"};
    const std::vector<std::string> fixeds = {"??", "No Fixed Vertices", "With Fixed Vertices",
                                             "??"};
    for (int value = -1; value <= 2; value++) {
        EXPECT_EQ(options_line(5, value, MODE_RECURSIVE),
                  " Options: HFC, FM, " + reconsts[static_cast<size_t>(value + 1)] +
                      ", V-cycles @ End, No Fixed Vertices");
        EXPECT_EQ(options_line(6, value, MODE_RECURSIVE),
                  " Options: HFC, FM, Reconst-False, V-cycles @ End, " +
                      fixeds[static_cast<size_t>(value + 1)]);
    }
}

TEST(Reports, part_weights_are_added_to_what_is_there)
{
    const int part[] = {1, 0, 1}, vwgts[] = {5, 7, 11};
    int pwgts[] = {100, 200};
    ComputePartWeights(3, vwgts, part, pwgts);
    EXPECT_EQ(to_ints(pwgts, 2), (std::vector<int>{107, 216}));
    int counts[] = {0, 0};
    ComputePartWeights(3, nullptr, part, counts);
    EXPECT_EQ(to_ints(counts, 2), (std::vector<int>{1, 2}));
}

TEST(Reports, part_cuts_count_each_cut_hyperedge_once_in_every_part_it_touches)
{
    const int eptr[] = {0, 3, 5, 6, 6, 9}, eind[] = {0, 1, 2, 2, 3, 0, 3, 2, 0};
    const int part[] = {0, 0, 1, 1}, hewgts[] = {10, 100, 1000, 10000, 5};
    int pcuts[] = {-9, -9, -9}; // zeroed by the routine
    ComputePartCuts(5, 3, eptr, eind, hewgts, part, pcuts);
    EXPECT_EQ(to_ints(pcuts, 3), (std::vector<int>{15, 15, 0}));
    ComputePartCuts(5, 3, eptr, eind, nullptr, part, pcuts);
    EXPECT_EQ(to_ints(pcuts, 3), (std::vector<int>{2, 2, 0}));
}

/* The four figures and the table of the statistics of hypergraph nets under part. */
static std::string statistics(int nparts, const Nets &nets, const std::vector<int> &hewgts,
                              const std::vector<int> &vwgts, const std::vector<int> &part)
{
    const int nvtxs = static_cast<int>(part.size());
    const HGraphPtr graph = make_hgraph(nvtxs, nets);
    return capture_stdout([&] {
        PrintPartStatistics(nvtxs, graph->nnets, nparts, graph->netptr, graph->netind,
                            hewgts.empty() ? nullptr : hewgts.data(),
                            vwgts.empty() ? nullptr : vwgts.data(), part.data());
    });
}

TEST(Reports, the_statistics_stand_line_by_line)
{
    /* cut: hyperedges 1 (10, parts 0 and 1) and 2 (100, all three); absorption: hyperedge 0 adds
     * 1, 1 adds 1/2 and 0, 2 adds 0 three times; scaled cost (110/3 + 110/3 + 100/5) / (5 x 2) */
    EXPECT_EQ(statistics(3, {{0, 1}, {0, 1, 2}, {0, 2, 4}}, {1, 10, 100}, {1, 2, 1, 2, 5},
                         {0, 0, 1, 1, 2}),
              "\n --------------------------------------------------------------------------"
              "\n  Summary for the 3-way partition:"
              "\n                Hyperedge Cut:       110\t\t(minimize)"
              "\n      Sum of External Degrees:       320\t\t(minimize)"
              "\n                  Scaled Cost:  9.33e+00\t\t(minimize)"
              "\n                   Absorption:      1.50\t\t(maximize)"
              "\n\n      Partition Sizes & External Degrees:\n\t"
              "     3[ 110]      3[ 110]      5[ 100] ");
}

TEST(Reports, absent_weights_count_1)
{
    const std::string text = statistics(2, {{0, 1}, {1, 2, 3}}, {}, {}, {0, 0, 1, 1});
    EXPECT_NE(text.find("Hyperedge Cut:         1\t"), std::string::npos) << text;
    EXPECT_NE(text.find("\n\t     2[   1]      2[   1] "), std::string::npos) << text;
    EXPECT_EQ(text, statistics(2, {{0, 1}, {1, 2, 3}}, {1, 1}, {1, 1, 1, 1}, {0, 0, 1, 1}));
}

TEST(Reports, an_empty_part_has_weight_0_and_the_scaled_cost_is_not_a_number)
{
    const std::string text = statistics(3, {{0, 1}}, {}, {}, {0, 1});
    EXPECT_NE(text.find("nan\t\t(minimize)"), std::string::npos) << text;
    EXPECT_NE(text.find("     0[   0] "), std::string::npos) << text;
}

TEST(Reports, a_cut_part_of_weight_0_makes_the_scaled_cost_infinite)
{
    const std::string text = statistics(2, {{0, 1}}, {}, {0, 4}, {0, 1});
    EXPECT_NE(text.find("Scaled Cost:       inf\t"), std::string::npos) << text;
}

TEST(Reports, a_hyperedge_of_one_vertex_is_not_cut_and_adds_1_to_the_absorption)
{
    const std::string text = statistics(2, {{0}, {1}, {}}, {}, {}, {0, 1});
    EXPECT_NE(text.find("Hyperedge Cut:         0\t"), std::string::npos) << text;
    EXPECT_NE(text.find("Absorption:      3.00\t"), std::string::npos) << text; // an empty one too
}

TEST(Reports, the_table_breaks_after_every_fifth_part)
{
    const std::string text = statistics(7, {{0, 1}}, {}, {}, {0, 1, 2, 3, 4, 5, 6});
    const std::string table = text.substr(text.find("Degrees:\n") + 9);
    EXPECT_EQ(table, "\t     1[   1]      1[   1]      1[   0]      1[   0]      1[   0] \n"
                     "\t     1[   0]      1[   0] ");
    const std::string five = statistics(5, {{0, 1}}, {}, {}, {0, 1, 2, 3, 4});
    EXPECT_EQ(five.substr(five.size() - 2), "\n\t");
}

/* The figure behind this name. */
static std::string figure(const std::string &text, const std::string &name)
{
    const size_t start = text.find(name + ":") + name.size() + 1;
    return text.substr(start, text.find('\t', start) - start);
}

static std::string formatted(const char *format, double value)
{
    char text[64];
    snprintf(text, sizeof text, format, value);
    return text;
}

TEST(Reports, the_scaled_cost_is_rounded_to_single_at_each_part)
{
    const int nparts = 200001; // the first part has share 2^24, beside which each 1 is lost
    std::vector<int> all;
    for (int v = 0; v < nparts; v++) all.push_back(v);
    const std::string text = statistics(nparts, {all, {0, 1}}, {1, 16777215}, {}, all);
    const double scale = static_cast<double>(nparts) * (nparts - 1);
    const double rest = nparts - 2; // part 1 has share 2^24 too
    EXPECT_EQ(figure(text, "Scaled Cost"), formatted("%10.2e", 33554432.0 / scale));
    EXPECT_NE(figure(text, "Scaled Cost"), formatted("%10.2e", (33554432.0 + rest) / scale));
}

TEST(Reports, the_absorption_is_rounded_to_single_at_each_addition)
{
    const Nets nets(9000, {0, 1, 2, 3});
    const std::string text = statistics(2, nets, {}, {}, {0, 0, 1, 1});
    float absorption = 0;
    double unrounded = 0;
    for (int i = 0; i < 18000; i++) {
        absorption = static_cast<float>(static_cast<double>(absorption) + 1.0 / 3);
        unrounded += 1.0 / 3;
    }
    EXPECT_EQ(figure(text, "Absorption"), formatted("%10.2f", static_cast<double>(absorption)));
    EXPECT_NE(figure(text, "Absorption"), formatted("%10.2f", unrounded));
}

TEST(Reports, the_absorption_adds_the_parts_of_a_hyperedge_in_their_order)
{
    /* 131071 hyperedges of one vertex add 1 each, so that the two that follow pass 2^17, where
     * roundings become coarser: the sum depends on what was added before and what after. */
    const int counts[2][3] = {{32, 36, 15}, {23, 15, 44}};
    Nets nets(131071, {0});
    std::vector<int> part = {0};
    for (const auto &count : counts) {
        nets.emplace_back();
        for (int p = 0; p < 3; p++)
            for (int i = 0; i < count[p]; i++) {
                nets.back().insert(nets.back().begin(), static_cast<int>(part.size()));
                part.push_back(p);
            }
    }
    EXPECT_EQ(figure(statistics(3, nets, {}, {}, part), "Absorption"), " 131072.95");
    for (int &p : part) p = 2 - p;
    EXPECT_EQ(figure(statistics(3, nets, {}, {}, part), "Absorption"), " 131072.94");
}

TEST(Reports, many_cut_hyperedges_and_many_parts_are_measured_in_linear_time)
{
    constexpr int nparts = 200000;
    std::vector<int> part;
    Nets nets;
    for (int v = 0; v < nparts; v++) {
        part.push_back(v);
        for (int step = 1; step <= 5; step++) nets.push_back({v, (v + step) % nparts});
    }
    const clock_t begin = clock();
    const std::string text = statistics(nparts, nets, {}, {}, part);
    EXPECT_LT(static_cast<double>(clock() - begin) / CLOCKS_PER_SEC, 30);
    EXPECT_EQ(figure(text, "Hyperedge Cut"), "   1000000");
    EXPECT_EQ(figure(text, "Sum of External Degrees"), "   2000000");
}

TEST(Reports, sums_of_external_degrees_beyond_32_bits_are_shown_whole)
{
    const std::string text = statistics(3, {{0, 1, 2}}, {2147483646}, {}, {0, 1, 2});
    EXPECT_NE(text.find("Sum of External Degrees:6442450938\t"), std::string::npos) << text;
    EXPECT_NE(text.find("Hyperedge Cut:2147483646\t"), std::string::npos) << text;
}
