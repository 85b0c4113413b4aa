// SPDX-License-Identifier: MIT
/* tests/unit/main_test.cpp: the program's own checks of words and fix file, on the program built.
 */
#include <gtest/gtest.h>

#include "support.h"

/* Runs the program with these words in a child process. */
static Outcome run_program(const std::vector<std::string> &words)
{
    return run_in_child([&] {
        std::vector<char *> argv = {const_cast<char *>("zorpel")};
        for (const std::string &word : words) argv.push_back(const_cast<char *>(word.c_str()));
        argv.push_back(nullptr);
        execv(ZORPEL_PROGRAM, argv.data());
        _exit(127);
    });
}

/* The same on a square of four vertices with a fix file of this text. */
static Outcome run_fixed(const std::string &fixes, const std::string &nparts)
{
    const TempFolder folder;
    const std::string graph = folder.file("g", "4 4\n1 2\n2 3\n3 4\n4 1\n");
    Outcome end =
        run_program({graph, folder.file("fix", fixes), nparts, "5", "1", "1", "1", "0", "0", "0"});
    const std::string written = read_file(graph + ".part." + nparts);
    end.out += written.empty() ? "" : "written: " + written;
    for (size_t at; (at = end.out.find(folder.path)) != std::string::npos;)
        end.out.replace(at, folder.path.size(), "FOLDER");
    for (size_t at; (at = end.err.find(folder.path)) != std::string::npos;)
        end.err.replace(at, folder.path.size(), "FOLDER");
    return end;
}

TEST(Main, a_word_too_few_or_too_many_prints_the_usage_with_status_0)
{
    for (size_t n : {size_t{0}, size_t{8}, size_t{11}}) {
        const Outcome end = run_program(std::vector<std::string>(n, "2"));
        EXPECT_EQ(end.out.find("Usage: \n zorpel <GraphFile> <Nparts> <UBfactor> <Nruns> <Ctype> "
                               "<RType> <VCycle> <Reconst> <dbglvl>\n or\n zorpel <GraphFile> "
                               "<FixFile> <Nparts>"),
                  0u);
        EXPECT_EQ(end.err, "");
        EXPECT_EQ(end.status, 0);
    }
}

TEST(Main, a_word_that_is_no_number_counts_as_0_and_is_judged_by_the_library)
{
    const TempFolder folder;
    const std::string graph = folder.file("g", "1 2\n1 2\n");
    const Outcome end = run_program({graph, "two", "5", "1", "1", "1", "1", "0", "0"});
    EXPECT_EQ(end.err, "Nparts should be at least 2.\n\n");
    EXPECT_EQ(end.status, 0);
    EXPECT_EQ(run_program({graph, "2", "5", "1", "HFC", "1", "1", "0", "0"}).err,
              "Ctype should be between 1 and 5.\n\n");
}

TEST(Main, a_fix_file_naming_part_nparts_stops_the_run_before_any_other_output)
{
    const Outcome end = run_fixed("0\n2\n-1\n-1\n", "2");
    EXPECT_EQ(end.out, "Input Error:\n\tThe file FOLDER/fix contains more than 2 sets of "
                       "pre-assigned vertices.\n\n");
    EXPECT_EQ(end.err, "");
    EXPECT_EQ(end.status, 0);
}

TEST(Main, a_fix_file_with_an_entry_below_minus_1_is_refused)
{
    const Outcome end = run_fixed("0\n-1\n-2\n1\n", "2");
    EXPECT_EQ(end.err, "Number 3 of the file FOLDER/fix is -2; -1 leaves a vertex free.\n\n");
    EXPECT_EQ(end.out, "");
    EXPECT_EQ(end.status, 0);
}

TEST(Main, as_many_parts_as_32_bits_hold_are_refused_with_a_fix_file)
{
    const Outcome end = run_fixed("-1\n-1\n-1\n-1\n", "2147483647");
    EXPECT_EQ(end.err, "The parts and the free vertices together should number at most "
                       "2147482624.\n\n");
    EXPECT_EQ(end.status, 0);
}

TEST(Main, the_entries_of_a_fix_file_are_kept_and_those_missing_stay_in_part_0)
{
    EXPECT_NE(run_fixed("1\n1\n0\n0\n", "2").out.find("written: 1\n1\n0\n0\n"), std::string::npos);
    EXPECT_NE(run_fixed("1\n1\n", "2").out.find("written: 1\n1\n0\n0\n"), std::string::npos);
    EXPECT_NE(run_fixed("1\n1\nx\n1\n", "2").out.find("written: 1\n1\n0\n0\n"), std::string::npos);
}

TEST(Main, a_fix_file_of_minus_1_in_each_line_is_accepted)
{
    const Outcome end = run_fixed("-1\n-1\n-1\n-1\n", "2");
    EXPECT_NE(end.out.find("With Fixed Vertices"), std::string::npos);
    EXPECT_NE(end.out.find("written: "), std::string::npos);
    EXPECT_EQ(end.err, "");
}
