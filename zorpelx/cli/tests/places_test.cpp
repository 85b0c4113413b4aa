// SPDX-License-Identifier: MIT
/* zorpelx/cli/tests/places_test.cpp: names as messages show them, places, slips of the pen. */
#include <gtest/gtest.h>

#include "escaped.h"
#include "place.h"
#include "suggest.h"
#include "zorpelx_output.h"

TEST(Escaped, text_of_any_language_stays)
{
    for (const char *text : {"", "g.hgr", "a b\\c", "h\xc3\xbcgel", "\xe4\xb8\xad\xe6\x96\x87",
                             "\xf0\x9f\x8c\xb3", "\xc2\xa0"})
        EXPECT_EQ(escaped(text), text);
}

TEST(Escaped, what_a_terminal_obeys_is_shown)
{
    EXPECT_EQ(escaped("a\x1b[2Jb"), "a\\x1b[2Jb");
    EXPECT_EQ(escaped("a\nb\tc\rd\x7f"), "a\\nb\\tc\\rd\\x7f");
    EXPECT_EQ(escaped("\xc2\x9b"), "\\xc2\\x9b");          // one byte's escape in two
    EXPECT_EQ(escaped("\xe2\x80\xae"), "\\xe2\\x80\\xae"); // from right to left
    EXPECT_EQ(escaped("\xe2\x80\xa8"), "\\xe2\\x80\\xa8"); // a line of its own
    EXPECT_EQ(escaped(std::string("\0", 1)), "\\x00");
}

TEST(Escaped, bytes_that_are_no_text_are_shown)
{
    EXPECT_EQ(escaped("\xff"), "\\xff");
    EXPECT_EQ(escaped("\xc3("), "\\xc3(");
    EXPECT_EQ(escaped("\xc3"), "\\xc3");
    EXPECT_EQ(escaped("\xc0\x9b"), "\\xc0\\x9b"); // longer than need be
    EXPECT_EQ(escaped("\xe0\x82\x9b"), "\\xe0\\x82\\x9b");
    EXPECT_EQ(escaped("\xed\xa0\x80"), "\\xed\\xa0\\x80");          // half a pair
    EXPECT_EQ(escaped("\xf4\x90\x80\x80"), "\\xf4\\x90\\x80\\x80"); // past the last
}

TEST(Escaped, twice_is_once_and_what_is_kept_stays)
{
    EXPECT_EQ(escaped(escaped("a\x1b\n\xff")), escaped("a\x1b\n\xff"));
    EXPECT_EQ(escaped("a\n\x1b", "\n"), "a\n\\x1b");
}

static struct stat owned_by(uid_t owner, mode_t mode)
{
    struct stat status = {};
    status.st_uid = owner;
    status.st_mode = mode;
    return status;
}

TEST(Links, in_a_shared_folder_only_ones_own_and_its_owners_are_followed)
{
    const struct stat shared = owned_by(1, S_IFDIR | 01777), sticky = owned_by(1, S_IFDIR | 01755),
                      open = owned_by(1, S_IFDIR | 0777);
    for (const uid_t follower : {1u, 2u, 3u})
        for (const uid_t owner : {1u, 2u, 3u}) {
            const struct stat link = owned_by(owner, S_IFLNK | 0777);
            EXPECT_EQ(link_is_trusted(shared, link, follower), owner == 1 || owner == follower);
            EXPECT_TRUE(link_is_trusted(sticky, link, follower));
            EXPECT_TRUE(link_is_trusted(open, link, follower));
        }
}

TEST(Suggestions, the_four_slips_are_one_step_each)
{
    EXPECT_EQ(edit_distance("", ""), 0);
    EXPECT_EQ(edit_distance("seed", "seeds"), 1);
    EXPECT_EQ(edit_distance("seed", "see"), 1);
    EXPECT_EQ(edit_distance("seed", "send"), 1);
    EXPECT_EQ(edit_distance("seed", "sede"), 1);
    EXPECT_EQ(edit_distance("", "seed"), 4);
    EXPECT_EQ(edit_distance("partitoin", "partition"), 1);
    EXPECT_EQ(edit_distance("abcd", "badc"), 2);
}

TEST(Suggestions, the_nearest_word_if_it_is_near)
{
    const std::vector<std::string> words = {"partition", "verify", "lint", "stats"};
    EXPECT_EQ(suggestion("partitoin", words), "; did you mean 'partition'?");
    EXPECT_EQ(suggestion("stat", words), "; did you mean 'stats'?");
    EXPECT_EQ(suggestion("part", words), "; did you mean 'partition'?");
    EXPECT_EQ(suggestion("lnit", words), "; did you mean 'lint'?");
    EXPECT_EQ(suggestion("zebra", words), "");
    EXPECT_EQ(suggestion("", words), "");
    EXPECT_EQ(suggestion(std::string(1000000, 'x'), words), "");
}

static std::string message_of(const char *const *names, int count, const char *const *inputs,
                              int ninputs, int status)
{
    zorpelx_outputs *outputs = nullptr;
    char message[ZORPELX_MESSAGE_SIZE];
    EXPECT_EQ(zorpelx_outputs_open(&outputs, names, count, inputs, ninputs, message), status);
    EXPECT_EQ(outputs == nullptr, status != ZORPELX_OK);
    zorpelx_outputs_close(outputs);
    return message;
}

TEST(OutputsInC, arguments_are_checked)
{
    const char *const names[] = {"", nullptr}, *const good[] = {"/dev/null"};
    EXPECT_EQ(zorpelx_outputs_open(nullptr, good, 1, nullptr, 0, nullptr), ZORPELX_BAD_OPTION);
    EXPECT_EQ(message_of(names, 1, nullptr, 0, ZORPELX_BAD_OPTION), "names has an empty name");
    EXPECT_EQ(message_of(names + 1, 1, nullptr, 0, ZORPELX_BAD_OPTION), "names has an empty name");
    EXPECT_EQ(message_of(nullptr, 1, nullptr, 0, ZORPELX_BAD_OPTION), "names is null");
    EXPECT_EQ(message_of(good, -1, nullptr, 0, ZORPELX_BAD_OPTION),
              "the number of names is negative");
    EXPECT_EQ(message_of(good, 1, nullptr, 1, ZORPELX_BAD_OPTION), "inputs is null");
    EXPECT_EQ(message_of(good, 1, nullptr, 0, ZORPELX_OK), "");
    EXPECT_EQ(message_of(nullptr, 0, nullptr, 0, ZORPELX_OK), "");
    EXPECT_EQ(zorpelx_outputs_write(nullptr, nullptr, nullptr, nullptr), ZORPELX_BAD_OPTION);
}

TEST(OutputsInC, a_long_message_is_cut)
{
    const std::string name = std::string(4000, 'n');
    const char *const names[] = {name.c_str()};
    const std::string message = message_of(names, 1, nullptr, 0, ZORPELX_SYSTEM);
    EXPECT_EQ(message.size(), static_cast<size_t>(ZORPELX_MESSAGE_SIZE) - 1);
}
