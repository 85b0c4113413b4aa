// SPDX-License-Identifier: MIT
/* tests/unit/dump_test.cpp: writers for inspecting hypergraphs. */
#include "spare/dump.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>

#include "io/read_hgraph.h"
#include "support.h"

/* A new folder that is the working folder for the scope. */
struct WorkingFolder {
    TempFolder folder;
    std::filesystem::path before = std::filesystem::current_path();
    WorkingFolder() { std::filesystem::current_path(folder.path); }
    ~WorkingFolder() { std::filesystem::current_path(before); }
};

TEST(Dump, a_hypergraph_is_printed_between_rules_with_vertices_from_1)
{
    const HGraphPtr graph = make_hgraph(4, {{0, 3}, {1, 2, 0}, {}}, {5, 1, 8});
    EXPECT_EQ(capture_stdout([&] { DumpHGraph(graph.get()); }),
              "--------------------------\n3 4\n\n[5] 1 4\n[1] 2 3 1\n[8]\n"
              "--------------------------\n");
}

TEST(Dump, seven_vertices_go_to_hgr_7_with_both_weights_and_format_11)
{
    const WorkingFolder work;
    const HGraphPtr graph =
        make_hgraph(7, {{0, 6}, {1, 2, 0}}, {5, 9}, {10, 20, 30, 40, 50, 60, 70});
    WriteHGraph(graph.get());
    EXPECT_EQ(read_file("hgr.7"), "2 7 11\n5 1 7\n9 2 3 1\n10\n20\n30\n40\n50\n60\n70");
}

TEST(Dump, what_is_written_reads_back_the_same)
{
    const WorkingFolder work;
    const Nets nets = random_nets(4, 50, 80, 6);
    const std::vector<int> netwgt = random_ints(5, 80, 1, 99), cellwgt = random_ints(6, 50, 0, 99);
    WriteHGraph(make_hgraph(50, nets, netwgt, cellwgt).get());
    const HGraphPtr graph(ReadHGraph("hgr.50"));
    EXPECT_EQ(pins_of(graph.get()), nets);
    EXPECT_EQ(to_ints(graph->netwgt, 80), netwgt);
    EXPECT_EQ(to_ints(graph->cellwgt, 50), cellwgt);
}

TEST(Dump, vertices_in_no_hyperedge_are_left_out_and_the_gap_is_closed)
{
    const WorkingFolder work;
    WriteConnectedHGraph(make_incident(6, {{1, 5}, {3, 1}}).get());
    EXPECT_EQ(read_file("new.hgr"), "2 3\n 1 3\n 2 1");
}

TEST(Dump, a_hypergraph_without_hyperedges_is_a_header)
{
    const WorkingFolder work;
    WriteConnectedHGraph(make_incident(3, {}).get());
    EXPECT_EQ(read_file("new.hgr"), "0 0");
}

TEST(Dump, pins_are_counted_once_a_part_in_cut_hyperedges_only)
{
    const HGraphPtr graph = make_hgraph(6, {{0, 1}, {0, 2, 1}, {2, 3, 4}, {5}, {}, {4, 0, 5, 2}});
    const int where[] = {0, 0, 1, 1, 1, 2};
    EXPECT_EQ(capture_stdout([&] { Print_Pins(graph.get(), where, 3); }),
              "Number of Pins for each partition are: \n2 2 1 \nTotal number of pins = 5\n");
}

TEST(Dump, hyperedges_inside_one_part_count_for_nothing)
{
    const HGraphPtr graph = make_hgraph(4, {{0, 1}, {2, 3}});
    const int where[] = {1, 1, 0, 0};
    EXPECT_EQ(capture_stdout([&] { Print_Pins(graph.get(), where, 2); }),
              "Number of Pins for each partition are: \n0 0 \nTotal number of pins = 0\n");
}

TEST(Dump, a_file_that_cannot_be_opened_is_reported_with_status_0)
{
    const WorkingFolder work;
    std::filesystem::create_directory("hgr.2");
    std::filesystem::create_directory("new.hgr");
    const HGraphPtr graph = make_incident(2, {{0, 1}});
    for (auto write : {WriteHGraph, WriteConnectedHGraph}) {
        const Outcome end = run_in_child([&] { write(graph.get()); });
        EXPECT_EQ(end.err, "Can't open output file: Is a directory\n");
        EXPECT_EQ(end.status, 0);
    }
}

TEST(Dump, a_full_disk_is_reported)
{
    if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "needs /dev/full";
    const WorkingFolder work;
    std::filesystem::create_symlink("/dev/full", "hgr.2");
    const HGraphPtr graph = make_hgraph(2, {{0, 1}});
    const Outcome end = run_in_child([&] { WriteHGraph(graph.get()); });
    EXPECT_EQ(end.err, "WriteHGraph: cannot write hgr.2: No space left on device\n");
    EXPECT_EQ(end.status, 0);
}

/* Runs write in a child whose files may hold no more than 100 bytes. */
template <class Write> static Outcome write_beyond_limit(Write write)
{
    return run_in_child([&] {
        signal(SIGXFSZ, SIG_IGN);
        rlimit before;
        getrlimit(RLIMIT_FSIZE, &before);
        const rlimit limit = {100, before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
        write();
        setrlimit(RLIMIT_FSIZE, &before); // what the process writes at its end is not cut off
    });
}

TEST(Dump, a_file_that_cannot_be_written_whole_is_told_and_does_not_stay)
{
    const WorkingFolder work;
    const HGraphPtr graph = make_incident(40, Nets(40, {0, 1, 2}));
    const Outcome both = write_beyond_limit([&] { WriteHGraph(graph.get()); });
    EXPECT_EQ(both.err, "WriteHGraph: cannot write hgr.40: File too large\n");
    const Outcome connected = write_beyond_limit([&] { WriteConnectedHGraph(graph.get()); });
    EXPECT_EQ(connected.err, "WriteConnectedHGraph: cannot write new.hgr: File too large\n");
    EXPECT_TRUE(std::filesystem::is_empty(work.folder.path));
}
