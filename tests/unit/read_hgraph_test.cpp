// SPDX-License-Identifier: MIT
/* tests/unit/read_hgraph_test.cpp: the hypergraph file, good and bad. */
#include "io/read_hgraph.h"

#include <gtest/gtest.h>

#include "support.h"

constexpr int BUFFER = 131072; // a line longer than BUFFER - 1 bytes is read in pieces

static HGraphPtr read_text(const std::string &text)
{
    const TempFolder folder;
    return HGraphPtr(ReadHGraph(folder.file("g.hgr", text).c_str()));
}

static int entries_in(const std::string &text)
{
    const TempFolder folder;
    return GetNetListSize(folder.file("g.hgr", text).c_str());
}

/* The message with which reading ends; it must end with status 0 and print nothing else. */
static std::string refusal(const std::string &text)
{
    const TempFolder folder;
    const std::string name = folder.file("g.hgr", text);
    const Outcome end = run_in_child([&] { ReadHGraph(name.c_str()); });
    EXPECT_EQ(end.status, 0) << "the file was read";
    EXPECT_EQ(end.out, "");
    return end.err;
}

TEST(ReadHGraph, two_header_numbers_read_a_file_without_weights)
{
    const HGraphPtr graph = read_text("3 4\n1 2\n2 3 4\n4 1\n");
    EXPECT_EQ(graph->nnets, 3);
    EXPECT_EQ(graph->ncells, 4);
    EXPECT_EQ(pins_of(graph.get()), (Nets{{0, 1}, {1, 2, 3}, {3, 0}}));
    EXPECT_EQ(graph->netwgt, nullptr);
    EXPECT_EQ(graph->cellwgt, nullptr);
}

TEST(ReadHGraph, everything_else_in_the_record_keeps_its_initial_value)
{
    const HGraphPtr graph = read_text("1 2\n1 2\n");
    EXPECT_EQ(graph->nfixed, -1);
    EXPECT_EQ(graph->level, -1);
    EXPECT_EQ(graph->nislands, 0);
    EXPECT_EQ(graph->incptr, nullptr);
    EXPECT_EQ(graph->where, nullptr);
}

TEST(ReadHGraph, format_1_reads_a_weight_first_on_each_hyperedge_line)
{
    const HGraphPtr graph = read_text("3 4 1\n7 1 2\n8 2 3 4\n9 4 1\n");
    EXPECT_EQ(pins_of(graph.get()), (Nets{{0, 1}, {1, 2, 3}, {3, 0}}));
    EXPECT_EQ(to_ints(graph->netwgt, 3), (std::vector<int>{7, 8, 9}));
    EXPECT_EQ(graph->cellwgt, nullptr);
}

TEST(ReadHGraph, format_10_reads_a_line_for_each_vertex_after_the_hyperedges)
{
    const HGraphPtr graph = read_text("3 4 10\n1 2\n2 3 4\n4 1\n5\n6\n7\n8\n");
    EXPECT_EQ(pins_of(graph.get()), (Nets{{0, 1}, {1, 2, 3}, {3, 0}}));
    EXPECT_EQ(graph->netwgt, nullptr);
    EXPECT_EQ(to_ints(graph->cellwgt, 4), (std::vector<int>{5, 6, 7, 8}));
}

TEST(ReadHGraph, format_11_reads_both_weights)
{
    const HGraphPtr graph = read_text("3 4 11\n7 1 2\n8 2 3 4\n9 4 1\n5\n6\n7\n8\n");
    EXPECT_EQ(to_ints(graph->netwgt, 3), (std::vector<int>{7, 8, 9}));
    EXPECT_EQ(to_ints(graph->cellwgt, 4), (std::vector<int>{5, 6, 7, 8}));
}

TEST(ReadHGraph, other_formats_go_by_their_last_two_digits)
{
    EXPECT_NE(read_text("1 2 20\n1 2\n3\n4\n")->cellwgt, nullptr);
    EXPECT_EQ(read_text("1 2 20\n1 2\n3\n4\n")->netwgt, nullptr);
    EXPECT_NE(read_text("1 2 5\n9 1 2\n")->netwgt, nullptr);
    EXPECT_EQ(read_text("1 2 5\n9 1 2\n")->cellwgt, nullptr);
    const HGraphPtr both = read_text("1 2 99\n9 1 2\n3\n4\n");
    EXPECT_NE(both->netwgt, nullptr);
    EXPECT_NE(both->cellwgt, nullptr);
}

TEST(ReadHGraph, format_0_and_a_negative_one_mean_no_weights)
{
    for (const char *code : {"0", "-1", "-11", "-100", "x"}) {
        const HGraphPtr graph = read_text(std::string("1 2 ") + code + "\n1 2\n");
        EXPECT_EQ(graph->netwgt, nullptr) << code;
        EXPECT_EQ(graph->cellwgt, nullptr) << code;
        EXPECT_EQ(pins_of(graph.get()), (Nets{{0, 1}})) << code;
    }
}

TEST(ReadHGraph, format_100_is_refused)
{
    EXPECT_EQ(refusal("3 4 100\n1 2\n2 3\n3 4\n"), "Cannot read this type of file format!\n");
    EXPECT_EQ(refusal("3 4 111\n1 2\n2 3\n3 4\n"), "Cannot read this type of file format!\n");
}

TEST(ReadHGraph, a_vertex_listed_again_is_dropped_and_the_first_mention_stands)
{
    const HGraphPtr graph = read_text("2 4\n2 2 3\n4 1 4 3 1 2\n");
    EXPECT_EQ(pins_of(graph.get()), (Nets{{1, 2}, {3, 0, 2, 1}}));
    EXPECT_EQ(graph->netptr[2], 6);
}

TEST(ReadHGraph, a_vertex_may_come_again_in_the_next_hyperedge)
{
    EXPECT_EQ(pins_of(read_text("2 2\n1 2\n1 2\n").get()), (Nets{{0, 1}, {0, 1}}));
}

TEST(ReadHGraph, a_header_with_one_vertex_or_fewer_is_refused_before_any_hyperedge_is_read)
{
    EXPECT_EQ(refusal("3 1\n"), "Cannot partition graph with 1 cells\n\n");
    EXPECT_EQ(refusal("3 0\n"), "Cannot partition graph with 0 cells\n\n");
    EXPECT_EQ(refusal("3 -2\n"), "Cannot partition graph with -2 cells\n\n");
    EXPECT_EQ(refusal("3 1 100\n"), "Cannot partition graph with 1 cells\n\n");
}

TEST(ReadHGraph, a_negative_number_of_hyperedges_is_refused)
{
    EXPECT_EQ(refusal("-1 4\n"), "Cannot partition graph with -1 hyperedges\n\n");
}

TEST(ReadHGraph, a_header_of_fewer_than_two_numbers_is_refused)
{
    const std::string message =
        "The header needs the number of hyperedges and the number of vertices!\n\n";
    EXPECT_EQ(refusal("3\n1 2\n"), message);
    EXPECT_EQ(refusal("\n3 4\n"), message);
    EXPECT_EQ(refusal("x 4\n"), message);
    EXPECT_EQ(refusal("3 y\n"), message);
    EXPECT_EQ(refusal("3\n4\n1 2\n"), message); // not gathered from two lines
}

TEST(ReadHGraph, a_file_without_a_header_is_refused)
{
    const std::string message = "Header line missing from the input file!\n\n";
    EXPECT_EQ(refusal(""), message);
    EXPECT_EQ(refusal("% only\n% comments\n"), message);
    EXPECT_EQ(refusal("% one without an end"), message);
}

TEST(ReadHGraph, no_hyperedges_give_one_start_and_no_vertices)
{
    const HGraphPtr graph = read_text("0 5\n");
    EXPECT_EQ(graph->nnets, 0);
    EXPECT_EQ(graph->ncells, 5);
    EXPECT_EQ(graph->netptr[0], 0);
    EXPECT_EQ(graph->netind, nullptr);
    EXPECT_EQ(entries_in("0 5\n"), 0);
    EXPECT_EQ(to_ints(read_text("0 5 10\n1\n2\n3\n4\n5\n")->cellwgt, 5),
              (std::vector<int>{1, 2, 3, 4, 5}));
}

TEST(ReadHGraph, an_empty_last_hyperedge_is_accepted)
{
    const HGraphPtr graph = read_text("2 3\n1 2\n\n");
    EXPECT_EQ(pins_of(graph.get()), (Nets{{0, 1}, {}}));
}

TEST(ReadHGraph, an_empty_hyperedge_is_reported_with_its_number_by_the_next_one)
{
    EXPECT_EQ(refusal("2 3\n\n1 2\n"), "Empty Hyperedge # 1\n\n");
    EXPECT_EQ(refusal("4 3\n1 2\n2 3\n\n1 2\n"), "Empty Hyperedge # 3\n\n");
    EXPECT_EQ(refusal("2 3\n0 1 2\n1 2\n"), "Empty Hyperedge # 1\n\n");
}

TEST(ReadHGraph, the_last_hyperedge_reports_an_empty_one_before_it_even_if_empty_too)
{
    EXPECT_EQ(refusal("3 3\n1 2\n\n\n"), "Empty Hyperedge # 2\n\n");
}

TEST(ReadHGraph, comment_lines_are_skipped_wherever_a_line_is_expected)
{
    const HGraphPtr graph =
        read_text("% a\n%b\n2 2 11\n% c\n3 1 2\n%\n% 9 9\n4 2 1\n%d\n5\n% e\n6");
    EXPECT_EQ(pins_of(graph.get()), (Nets{{0, 1}, {1, 0}}));
    EXPECT_EQ(to_ints(graph->netwgt, 2), (std::vector<int>{3, 4}));
    EXPECT_EQ(to_ints(graph->cellwgt, 2), (std::vector<int>{5, 6}));
}

TEST(ReadHGraph, a_percent_sign_inside_a_line_only_ends_its_numbers)
{
    EXPECT_EQ(pins_of(read_text("2 3\n1 2 % 3\n 3 %\n").get()), (Nets{{0, 1}, {2}}));
    EXPECT_EQ(pins_of(read_text("1 3\n % 1\n").get()), (Nets{{}})); // blank first: a line
}

TEST(ReadHGraph, a_list_ends_at_the_first_number_that_is_not_positive_or_not_a_number)
{
    EXPECT_EQ(pins_of(read_text("4 4\n1 2 0 3\n1 2 -3 4\n3 x 4\n2 1.5 4\n").get()),
              (Nets{{0, 1}, {0, 1}, {2}, {1, 0}}));
}

TEST(ReadHGraph, numbers_may_carry_signs_zeros_and_any_white_space)
{
    EXPECT_EQ(pins_of(read_text("1 3\n\t+1\v 02\f003\r\n").get()), (Nets{{0, 1, 2}}));
}

TEST(ReadHGraph, a_file_may_end_without_a_newline)
{
    EXPECT_EQ(pins_of(read_text("2 3\n1 2\n2 3").get()), (Nets{{0, 1}, {1, 2}}));
}

TEST(ReadHGraph, what_follows_the_last_line_needed_is_not_looked_at)
{
    EXPECT_EQ(pins_of(read_text("1 2\n1 2\n9 9 9\nrubbish\n").get()), (Nets{{0, 1}}));
    EXPECT_EQ(to_ints(read_text("1 2 10\n1 2\n5 77\n6 x\n7\n")->cellwgt, 2),
              (std::vector<int>{5, 6}));
}

TEST(ReadHGraph, a_file_that_lacks_hyperedge_lines_tells_how_many_it_has)
{
    EXPECT_EQ(refusal("3 4\n"), "Data about hyperedge 0 missing from the input file!\n\n");
    EXPECT_EQ(refusal("3 4\n1 2\n2 3\n"),
              "Data about hyperedge 2 missing from the input file!\n\n");
    EXPECT_EQ(refusal("3 4\n1 2\n2 3"), "Data about hyperedge 2 missing from the input file!\n\n");
    EXPECT_EQ(refusal("2 4\n1 2\n% no more\n"),
              "Data about hyperedge 1 missing from the input file!\n\n");
}

TEST(ReadHGraph, a_file_that_lacks_vertex_weights_tells_the_first_vertex_without)
{
    EXPECT_EQ(refusal("1 3 10\n1 2\n"),
              "Weights from vertex 0 onwards missing from the input file!\n\n");
    EXPECT_EQ(refusal("1 3 10\n1 2\n5\n6\n"),
              "Weights from vertex 2 onwards missing from the input file!\n\n");
    EXPECT_EQ(refusal("1 3 10\n1 2\n5\n6\n% 7\n"),
              "Weights from vertex 2 onwards missing from the input file!\n\n");
}

TEST(ReadHGraph, a_vertex_number_above_the_count_is_refused)
{
    const std::string message = "Mismatch between the provided and actual value of num_cells\n\n";
    EXPECT_EQ(refusal("2 4\n1 5\n1 2\n"), message);
    EXPECT_EQ(refusal("1 4\n2147483647\n"), message);
    EXPECT_EQ(pins_of(read_text("1 4\n1 4\n").get()), (Nets{{0, 3}}));
}

TEST(ReadHGraph, weights_are_taken_as_they_are)
{
    const HGraphPtr graph = read_text("2 2 11\n-5 1 2\n7 1 2 1 2 1\n 8 1\n\n");
    EXPECT_EQ(to_ints(graph->netwgt, 2), (std::vector<int>{-5, 7}));
    EXPECT_EQ(to_ints(graph->cellwgt, 2), (std::vector<int>{8, 0}));
    EXPECT_EQ(to_ints(read_text("1 2 10\n1 2\n-3\nx\n")->cellwgt, 2), (std::vector<int>{-3, 0}));
}

TEST(ReadHGraph, vertices_behind_a_weight_that_is_not_positive_need_room_that_others_leave)
{
    const std::string room_for_4 = "2 2 1\n0 1 2\n7 1 2 1 2 1\n",
                      room_for_3 = "2 2 1\n0 1 2\n7 1 2 1 2\n";
    EXPECT_EQ(entries_in(room_for_4), 4);
    EXPECT_EQ(pins_of(read_text(room_for_4).get()), (Nets{{0, 1}, {0, 1}}));
    EXPECT_EQ(entries_in(room_for_3), 3);
    EXPECT_EQ(refusal(room_for_3), "Out of netind memory!\n");
    EXPECT_EQ(entries_in("1 2 1\n-4 1 2\n"), -1);
    EXPECT_EQ(refusal("1 2 1\n-4 1 2\n"), "Out of netind memory!\n");
}

TEST(ReadHGraph, the_first_pass_counts_entries_repeated_ones_included_and_weights_not)
{
    EXPECT_EQ(entries_in("2 4\n2 2 3\n1 0 4\n"), 4);
    EXPECT_EQ(entries_in("2 4 1\n9 2 2 3\n9 1 0 4\n"), 4);
    EXPECT_EQ(entries_in("1 4 10\n1 2\n"), 2); // vertex weights are not its business
    EXPECT_EQ(entries_in("2 4\n\n\n"), 0);
}

/* text, then blanks up to this length. */
static std::string padded(const std::string &text, size_t length)
{
    return text + std::string(length - text.size(), ' ');
}

TEST(ReadHGraph, a_line_that_fills_the_buffer_is_one_line)
{
    const std::string line = padded("1 2", BUFFER - 3) + "3\n"; // BUFFER - 1 bytes
    EXPECT_EQ(pins_of(read_text("2 3\n" + line + "1\n").get()), (Nets{{0, 1, 2}, {0}}));
}

TEST(ReadHGraph, the_rest_of_a_longer_line_is_the_next_line)
{
    const std::string line = padded("1 2", BUFFER - 1) + "3\n";
    EXPECT_EQ(pins_of(read_text("2 3\n" + line).get()), (Nets{{0, 1}, {2}}));
    EXPECT_EQ(pins_of(read_text("2 3\n" + padded("1 2", BUFFER - 1) + "\n").get()),
              (Nets{{0, 1}, {}}));
}

TEST(ReadHGraph, a_number_across_the_end_of_the_buffer_is_two_numbers)
{
    const std::string line = padded("1", BUFFER - 2) + "23\n";
    EXPECT_EQ(pins_of(read_text("2 3\n" + line).get()), (Nets{{0, 1}, {2}}));
}

TEST(ReadHGraph, the_rest_of_a_longer_comment_is_the_next_line)
{
    const std::string comment = "%" + std::string(BUFFER - 2, 'x');
    EXPECT_EQ(pins_of(read_text("1 3\n" + comment + "1 2\n3\n").get()), (Nets{{0, 1}}));
    EXPECT_EQ(pins_of(read_text(comment + "% x\n1 3\n3\n").get()), (Nets{{2}}));
}

TEST(ReadHGraph, a_long_hyperedge_is_read_in_pieces_too)
{
    std::string line;
    for (int v = 1; v <= 40000; v++) line += std::to_string(v) + " ";
    const HGraphPtr graph = read_text("2 40000\n" + line + "\n");
    EXPECT_LT(net_size(graph.get(), 0), 40000);
    EXPECT_EQ(graph->netptr[2] - graph->netptr[1], net_size(graph.get(), 1));
    EXPECT_GT(net_size(graph.get(), 1), 0);
}

TEST(ReadHGraph, numbers_of_32_bits_are_read_and_larger_ones_refused)
{
    EXPECT_EQ(to_ints(read_text("1 2 10\n1 2\n2147483647\n-2147483648\n")->cellwgt, 2),
              (std::vector<int>{2147483647, -2147483647 - 1}));
    const std::string message = "Number too large for 32 bits in the input file!\n\n";
    EXPECT_EQ(refusal("1 2 10\n1 2\n2147483648\n1\n"), message);
    EXPECT_EQ(refusal("1 2 10\n1 2\n-2147483649\n1\n"), message);
    EXPECT_EQ(refusal("1 2\n1 4294967298\n"), message);
    EXPECT_EQ(refusal("99999999999999999999999999 2\n1 2\n"), message);
}

TEST(ReadHGraph, a_file_that_is_not_there_is_reported_with_the_system_reason)
{
    const TempFolder folder;
    const std::string name = folder.file("absent.hgr");
    const Outcome end = run_in_child([&] { ReadHGraph(name.c_str()); });
    EXPECT_EQ(end.err, "Can't open input file: No such file or directory\n");
    EXPECT_EQ(end.status, 0);
    EXPECT_EQ(run_in_child([&] { GetNetListSize(name.c_str()); }).err, end.err);
}

TEST(ReadHGraph, a_folder_cannot_be_read)
{
    const TempFolder folder;
    const Outcome end = run_in_child([&] { ReadHGraph(folder.path.c_str()); });
    EXPECT_EQ(end.err, "Can't open input file: cannot read " + folder.path + ": Is a directory\n");
    EXPECT_EQ(end.status, 0);
}

TEST(ReadHGraph, the_first_pass_makes_the_same_checks)
{
    const TempFolder folder;
    const std::string name = folder.file("g.hgr", "3 4\n1 2\n");
    const Outcome end = run_in_child([&] { GetNetListSize(name.c_str()); });
    EXPECT_EQ(end.err, "Data about hyperedge 1 missing from the input file!\n\n");
    EXPECT_EQ(end.status, 0);
}

TEST(ReadHGraph, a_file_larger_than_the_first_block_of_memory_is_read_whole)
{
    std::string text = "30000 7\n";
    for (int e = 0; e < 30000; e++) text += std::to_string(1 + e % 6) + " 7\n";
    const HGraphPtr graph = read_text(text);
    EXPECT_EQ(graph->netptr[30000], 60000);
    for (int e = 0; e < 30000; e++) {
        ASSERT_EQ(graph->netind[2 * e], e % 6);
        ASSERT_EQ(graph->netind[2 * e + 1], 6);
    }
}
