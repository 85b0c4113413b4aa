// SPDX-License-Identifier: MIT
/* tests/unit/partfile_test.cpp: the partition file and the fix file. */
#include "io/partfile.h"

#include <gtest/gtest.h>

#include <climits>

#include "support.h"

static void write_parts(const std::vector<int> &part, const std::string &name)
{
    WriteHGraphPart(static_cast<int>(part.size()), part.data(), name.c_str());
}

/* n entries read from a fix file of this text; those not read stay 77. */
static std::vector<int> read_fixes(int n, const std::string &text)
{
    const TempFolder folder;
    std::vector<int> part(static_cast<size_t>(n), 77);
    ReadPartition(n, part.data(), folder.file("fix", text).c_str());
    return part;
}

TEST(PartFile, four_parts_of_g_go_to_g_part_4_a_line_each)
{
    const TempFolder folder;
    write_parts({3, 0, 2, 1, 0}, folder.file("g"));
    EXPECT_EQ(read_file(folder.file("g.part.4")), "3\n0\n2\n1\n0\n");
}

TEST(PartFile, the_name_counts_the_parts_up_to_the_largest_one_used)
{
    const TempFolder folder;
    write_parts({2, 0, 0}, folder.file("g"));
    EXPECT_EQ(read_file(folder.file("g.part.3")), "2\n0\n0\n");
    EXPECT_FALSE(std::filesystem::exists(folder.file("g.part.4")));
}

TEST(PartFile, nothing_is_written_for_no_vertices)
{
    const TempFolder folder;
    write_parts({}, folder.file("g"));
    WriteHGraphPart(-1, nullptr, folder.file("g").c_str());
    EXPECT_TRUE(std::filesystem::is_empty(folder.path));
}

TEST(PartFile, one_vertex_is_written)
{
    const TempFolder folder;
    write_parts({0}, folder.file("g"));
    EXPECT_EQ(read_file(folder.file("g.part.1")), "0\n");
}

TEST(PartFile, numbers_of_every_length_and_sign_are_written_as_decimals)
{
    const TempFolder folder;
    write_parts({INT_MIN, -1, 0, 9, 10, 1234567890, INT_MAX - 1}, folder.file("g"));
    EXPECT_EQ(read_file(folder.file("g.part.2147483647")),
              "-2147483648\n-1\n0\n9\n10\n1234567890\n2147483646\n");
}

TEST(PartFile, more_lines_than_one_block_holds_are_all_written)
{
    const TempFolder folder;
    std::vector<int> part;
    std::string text;
    for (int v = 0; v < 100000; v++) {
        part.push_back(v * 7919 % 20011);
        text += std::to_string(part.back()) + "\n";
    }
    part[5] = 20010;
    write_parts(part, folder.file("g"));
    text.clear();
    for (int p : part) text += std::to_string(p) + "\n";
    EXPECT_EQ(read_file(folder.file("g.part.20011")), text);
}

TEST(PartFile, an_older_file_of_the_name_is_replaced)
{
    const TempFolder folder;
    folder.file("g.part.2", "an old and longer text\n");
    write_parts({1, 0}, folder.file("g"));
    EXPECT_EQ(read_file(folder.file("g.part.2")), "1\n0\n");
}

TEST(PartFile, a_file_that_cannot_be_opened_is_reported_with_status_0)
{
    const TempFolder folder;
    const std::string name = folder.file("no/such/folder");
    const Outcome end = run_in_child([&] { write_parts({0, 1}, name); });
    EXPECT_EQ(end.err, "WriteHGraphPart: partfile: No such file or directory\n");
    EXPECT_EQ(end.status, 0);
}

TEST(PartFile, a_full_disk_is_reported_whether_it_shows_at_the_end_or_before)
{
    const TempFolder folder;
    const std::string name = folder.file("g");
    if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "needs /dev/full";
    std::filesystem::create_symlink("/dev/full", folder.file("g.part.2"));
    for (size_t n : {size_t{2}, size_t{200000}}) {
        const Outcome end = run_in_child([&] { write_parts(std::vector<int>(n, 1), name); });
        EXPECT_EQ(end.err,
                  "WriteHGraphPart: cannot write " + name + ".part.2: No space left on device\n");
        EXPECT_EQ(end.status, 0);
    }
}

TEST(PartFile, what_is_written_can_be_read_as_a_fix_file)
{
    const TempFolder folder;
    const std::vector<int> part = {-1, 2, 0, 1, -1};
    write_parts(part, folder.file("g"));
    std::vector<int> read(5, 77);
    ReadPartition(5, read.data(), folder.file("g.part.3").c_str());
    EXPECT_EQ(read, part);
}

TEST(PartFile, a_fix_file_of_minus_1_in_each_line_leaves_every_vertex_free)
{
    EXPECT_EQ(read_fixes(3, "-1\n-1\n-1\n"), std::vector<int>(3, -1));
}

TEST(PartFile, entries_that_a_short_fix_file_does_not_supply_keep_their_value)
{
    EXPECT_EQ(read_fixes(4, "1\n-1\n"), (std::vector<int>{1, -1, 77, 77}));
    EXPECT_EQ(read_fixes(2, ""), (std::vector<int>{77, 77}));
}

TEST(PartFile, a_malformed_entry_stops_all_further_ones)
{
    EXPECT_EQ(read_fixes(4, "1\nx\n2\n3\n"), (std::vector<int>{1, 77, 77, 77}));
    EXPECT_EQ(read_fixes(4, "1\n2.5\n3\n"), (std::vector<int>{1, 2, 77, 77}));
    EXPECT_EQ(read_fixes(4, "% comment\n1\n"), std::vector<int>(4, 77));
    EXPECT_EQ(read_fixes(3, "1\n- 2\n3\n"), (std::vector<int>{1, 77, 77}));
}

TEST(PartFile, more_entries_than_vertices_are_left_unread)
{
    EXPECT_EQ(read_fixes(2, "1\n0\n5\nx\n"), (std::vector<int>{1, 0}));
}

TEST(PartFile, entries_may_be_spread_over_lines_at_will)
{
    EXPECT_EQ(read_fixes(4, "  1 0\n\n\n+2\t-1"), (std::vector<int>{1, 0, 2, -1}));
}

TEST(PartFile, an_entry_beyond_32_bits_is_refused)
{
    const TempFolder folder;
    const std::string name = folder.file("fix", "1\n2147483648\n");
    int part[2];
    const Outcome end = run_in_child([&] { ReadPartition(2, part, name.c_str()); });
    EXPECT_EQ(end.err, "Number too large for 32 bits in the input file!\n\n");
    EXPECT_EQ(end.status, 0);
}

TEST(PartFile, a_fix_file_that_is_not_there_is_reported_with_status_0)
{
    const TempFolder folder;
    const std::string name = folder.file("absent");
    int part[2];
    const Outcome end = run_in_child([&] { ReadPartition(2, part, name.c_str()); });
    EXPECT_EQ(end.err, "ReadPartition: partfile: No such file or directory\n");
    EXPECT_EQ(end.status, 0);
}
