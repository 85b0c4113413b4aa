// SPDX-License-Identifier: MIT
/* tests/unit/errors_test.cpp: the fatal exit and checked file opening. */
#include "core/errors.h"

#include <gtest/gtest.h>

#include "support.h"

TEST(Errors, a_fatal_message_goes_to_the_error_stream_with_a_newline_and_status_0)
{
    const Outcome end = run_in_child([] { errexit__("no vertex %d in %s\n", 7, "g"); });
    EXPECT_EQ(end.err, "no vertex 7 in g\n\n");
    EXPECT_EQ(end.out, "");
    EXPECT_EQ(end.status, 0);
}

TEST(Errors, the_newline_is_added_to_a_message_that_has_none)
{
    const Outcome end = run_in_child([] { errexit__("Out of netind memory!"); });
    EXPECT_EQ(end.err, "Out of netind memory!\n");
}

TEST(Errors, output_pending_at_a_fatal_exit_is_not_lost)
{
    const Outcome end = run_in_child([] {
        printf("so far");
        errexit__("stop");
    });
    EXPECT_EQ(end.out, "so far");
}

TEST(Errors, a_file_that_cannot_be_opened_is_reported_with_the_system_reason_and_status_0)
{
    const TempFolder folder;
    const std::string name = folder.file("absent");
    const Outcome end =
        run_in_child([&] { QXfopen__(name.c_str(), "r", "Can't open input file"); });
    EXPECT_EQ(end.err, "Can't open input file: No such file or directory\n");
    EXPECT_EQ(end.out, "");
    EXPECT_EQ(end.status, 0);
}

TEST(Errors, a_name_longer_than_any_buffer_is_reported_like_any_other)
{
    const std::string name(5000, 'n');
    const Outcome end = run_in_child([&] { QXfopen__(name.c_str(), "r", "ReadPartition"); });
    EXPECT_EQ(end.err, "ReadPartition: File name too long\n");
    EXPECT_EQ(end.status, 0);
}

TEST(Errors, a_folder_cannot_be_opened_for_writing)
{
    const TempFolder folder;
    const Outcome end = run_in_child([&] { QXfopen__(folder.path.c_str(), "w", "partfile"); });
    EXPECT_EQ(end.err, "partfile: Is a directory\n");
    EXPECT_EQ(end.status, 0);
}

TEST(Errors, an_opened_file_is_written_and_closed)
{
    const TempFolder folder;
    const std::string name = folder.file("f");
    FILE *const file = QXfopen__(name.c_str(), "w", "f");
    fputs("text", file);
    QXfclose__(file);
    EXPECT_EQ(read_file(name), "text");
}
