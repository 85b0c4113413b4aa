// SPDX-License-Identifier: MIT
// Reading by the library: statuses, messages, findings, caps, and what is written.
#include <cstdlib>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

#include <gtest/gtest.h>

#include "zorpelx_files.h"

namespace
{

const char *const TEXT = "3 4 11\n2 1 2 3\n7 3 4\n1 1 4\n5\n6\n7\n8\n";

std::string store(const std::string &text)
{
    std::string name = testing::TempDir() + "zorpelx_files_XXXXXX";
    const int file = mkstemp(name.data());
    EXPECT_EQ(write(file, text.data(), text.size()), static_cast<ssize_t>(text.size()));
    close(file);
    return name;
}

zorpelx_read_options defaults()
{
    zorpelx_read_options options;
    EXPECT_EQ(zorpelx_read_options_init(&options, sizeof options), ZORPELX_OK);
    return options;
}

std::string message_of(const std::string &text, const zorpelx_read_options &options)
{
    char message[ZORPELX_MESSAGE_SIZE] = "unset";
    zorpelx_file *file = nullptr;
    const std::string name = store(text);
    const int status = zorpelx_read_hypergraph(name.c_str(), &options, &file, message);
    EXPECT_EQ(status == ZORPELX_OK, file != nullptr);
    zorpelx_file_free(file);
    unlink(name.c_str());
    const std::string said = message;
    return said.substr(0, name.size()) == name ? said.substr(name.size()) : said;
}

std::string name_at(const zorpelx_file *file, int of, int64_t i)
{
    const int64_t *start = nullptr;
    const char *const text = zorpelx_file_names(file, of, &start);
    return text == nullptr ? "none" : std::string(text + start[i], text + start[i + 1]);
}

TEST(files, names_and_what_is_fixed_come_with_a_format_that_has_them)
{
    const std::string name = store("hyperedge,vertex,fixed,group\nclk,u1,1,\nclk,u2,,4\nd,u2,,4\n");
    zorpelx_file *file = nullptr;
    ASSERT_EQ(zorpelx_read_hypergraph(name.c_str(), nullptr, &file, nullptr), ZORPELX_OK);
    EXPECT_STREQ(zorpelx_file_format(file), "csv");
    EXPECT_EQ(name_at(file, ZORPELX_OF_VERTICES, 1), "u2");
    EXPECT_EQ(name_at(file, ZORPELX_OF_HYPEREDGES, 0), "clk");
    EXPECT_EQ(name_at(file, 2, 0), "none");
    EXPECT_EQ(zorpelx_file_fixed(file)[0], 1);
    EXPECT_EQ(zorpelx_file_fixed(file)[1], -1);
    EXPECT_EQ(zorpelx_file_groups(file)[1], 4);
    zorpelx_file_free(file);
    unlink(name.c_str());
}

TEST(files, format_and_model_are_chosen)
{
    const std::string name = store("%%MatrixMarket matrix coordinate pattern general\n2 3 3\n1 1\n"
                                   "1 2\n2 3\n");
    zorpelx_read_options options = defaults();
    options.model = "column-net";
    zorpelx_file *file = nullptr;
    ASSERT_EQ(zorpelx_read_hypergraph(name.c_str(), &options, &file, nullptr), ZORPELX_OK);
    EXPECT_EQ(zorpelx_file_hypergraph(file)->nvtxs, 2);
    EXPECT_EQ(zorpelx_file_fixed(file), nullptr);
    zorpelx_file_free(file);
    options.format = "dot";
    char message[ZORPELX_MESSAGE_SIZE];
    EXPECT_EQ(zorpelx_read_hypergraph(name.c_str(), &options, &file, message), ZORPELX_BAD_OPTION);
    EXPECT_STREQ(message, "format is 'dot', which is none that is read.");
    unlink(name.c_str());
}

TEST(files, a_hypergraph_is_read_and_partitioned)
{
    const std::string name = store(TEXT);
    char message[ZORPELX_MESSAGE_SIZE];
    zorpelx_file *file = nullptr;
    ASSERT_EQ(zorpelx_read_hypergraph(name.c_str(), nullptr, &file, message), ZORPELX_OK);
    EXPECT_STREQ(message, "");
    const zorpelx_hypergraph *const h = zorpelx_file_hypergraph(file);
    ASSERT_NE(h, nullptr);
    EXPECT_EQ(h->nvtxs, 4);
    EXPECT_EQ(h->nhedges, 3);
    EXPECT_EQ(h->eptr[3], 7);
    EXPECT_EQ(h->eind[3], 2);
    EXPECT_EQ(h->vwgts[3], 8);
    EXPECT_EQ(h->hewgts[1], 7);
    EXPECT_EQ(zorpelx_check(h, nullptr, message), ZORPELX_BAD_OPTION); // for want of options alone
    char *text = nullptr;
    size_t size = 0;
    ASSERT_EQ(zorpelx_hypergraph_text(h, &text, &size, message), ZORPELX_OK);
    EXPECT_EQ(std::string(text, size), TEXT);
    zorpelx_text_free(text);
    zorpelx_file_free(file);
    unlink(name.c_str());
}

TEST(files, faults_have_a_status_and_their_place)
{
    zorpelx_read_options options = defaults();
    EXPECT_EQ(message_of("2 3\n1 2\n2 4\n", options),
              ":3:3: error H09 vertex-above: vertex 4 of 3");
    EXPECT_EQ(message_of("1 3\n1 2.5\n", options),
              ":2:4: error H14 rubbish: '2.5' is not a whole number");
    options.force = 1;
    EXPECT_EQ(message_of("1 3\n1 2.5\n", options), "");
    options.strict = 1;
    EXPECT_NE(message_of("1 3\n1 2 1\n", options), "");
    zorpelx_file *file = nullptr;
    EXPECT_EQ(zorpelx_read_hypergraph("/nowhere/at/all", nullptr, &file, nullptr), ZORPELX_SYSTEM);
    EXPECT_EQ(zorpelx_read_hypergraph(nullptr, nullptr, &file, nullptr), ZORPELX_BAD_OPTION);
    EXPECT_EQ(zorpelx_read_hypergraph("x", nullptr, nullptr, nullptr), ZORPELX_BAD_OPTION);
    options.size--;
    EXPECT_EQ(zorpelx_read_hypergraph("x", &options, &file, nullptr), ZORPELX_BAD_OPTION);
    EXPECT_EQ(file, nullptr);
    zorpelx_file_free(nullptr);
    EXPECT_EQ(zorpelx_file_hypergraph(nullptr), nullptr);
}

TEST(files, lint_lists_every_finding_in_the_order_of_the_file)
{
    const std::string name = store("2 4\n1 2 0 3\n1 1 4\n");
    zorpelx_file *file = nullptr;
    ASSERT_EQ(zorpelx_lint_hypergraph(name.c_str(), nullptr, &file, nullptr), ZORPELX_OK);
    size_t count = 0;
    const zorpelx_finding *const found = zorpelx_file_findings(file, &count);
    ASSERT_EQ(count, 3u);
    EXPECT_STREQ(found[1].rule, "H12");
    EXPECT_STREQ(found[1].name, "list-ended");
    EXPECT_EQ(found[1].severity, ZORPELX_LOSS);
    EXPECT_EQ(found[1].line, 2);
    EXPECT_EQ(found[1].column, 5);
    EXPECT_EQ(zorpelx_file_count(file, ZORPELX_LOSS), 1);
    EXPECT_EQ(zorpelx_file_count(file, ZORPELX_NOTE), 3);
    EXPECT_EQ(zorpelx_file_suits_zorpel(file), 1);
    zorpelx_file_free(file);
    unlink(name.c_str());
}

TEST(files, numbers_are_read_and_written)
{
    const std::string name = store("0\n1\n-1\n");
    zorpelx_file *file = nullptr;
    char message[ZORPELX_MESSAGE_SIZE];
    size_t count = 0;
    ASSERT_EQ(zorpelx_read_fixed(name.c_str(), 3, 2, nullptr, &file, message), ZORPELX_OK);
    const int *const numbers = zorpelx_file_numbers(file, &count);
    ASSERT_EQ(count, 3u);
    EXPECT_EQ(numbers[2], -1);
    char *text = nullptr;
    size_t size = 0;
    ASSERT_EQ(zorpelx_numbers_text(numbers, count, &text, &size, message), ZORPELX_OK);
    EXPECT_EQ(std::string(text, size), "0\n1\n-1\n");
    zorpelx_text_free(text);
    zorpelx_file_free(file);
    EXPECT_EQ(zorpelx_read_fixed(name.c_str(), 4, 2, nullptr, &file, message), ZORPELX_BAD_INPUT);
    EXPECT_EQ(zorpelx_read_partition(name.c_str(), 3, nullptr, &file, message), ZORPELX_BAD_INPUT);
    EXPECT_NE(std::string(message).find(":3:1: -1 is not between 0 and"), std::string::npos);
    EXPECT_EQ(zorpelx_read_numbers(name.c_str(), nullptr, &file, message), ZORPELX_OK);
    zorpelx_file_free(file);
    unlink(name.c_str());
}

/* What a table of names and parts says of vertices called a, "b,c" and d: the parts, or what is
 * wrong without the name of the file. */
std::string named_parts(const std::string &text,
                        decltype(&zorpelx_read_named_partition) read = zorpelx_read_named_partition)
{
    const std::string name = store(text);
    zorpelx_file *file = nullptr;
    char message[ZORPELX_MESSAGE_SIZE];
    const int64_t start[] = {0, 1, 4, 5};
    const int status = read(name.c_str(), 3, "ab,cd", start, nullptr, &file, message);
    unlink(name.c_str());
    if (status != ZORPELX_OK) return std::string(message).substr(name.size());
    size_t count = 0;
    const int *const numbers = zorpelx_file_numbers(file, &count);
    std::string parts;
    for (size_t i = 0; i < count; i++) parts += std::to_string(numbers[i]) + " ";
    zorpelx_file_free(file);
    return parts;
}

TEST(files, partitions_are_read_by_names)
{
    EXPECT_EQ(named_parts("0\n2\n1\n"), "0 2 1 ");
    EXPECT_EQ(named_parts("vertex,part\na,0\n\"b,c\",2\nd,1\n"), "0 2 1 ");
    EXPECT_EQ(named_parts("\xef\xbb\xbfvertex\tpart\r\nd\t1\r\n\r\nb,c\t2\r\na\t0"), "0 2 1 ");
    EXPECT_EQ(named_parts("vertex,part\na,0\nd,1\n"), ": vertex 'b,c' has no row");
    EXPECT_EQ(named_parts("vertex,part\na,0\nx,1\n"), ":3:1: no vertex is called 'x'");
    EXPECT_EQ(named_parts("vertex,part\na,0\na,1\n"), ":3:1: vertex 'a' has a part already");
    EXPECT_EQ(named_parts("vertex,part\na,-1\n"), ":2:3: part -1 is not between 0 and 2147483646");
    EXPECT_EQ(named_parts("vertex,part\na,1.5\n"), ":2:3: '1.5' is not a part number");
    EXPECT_EQ(named_parts("vertex,part\na,0,1\n"), ":2:5: a row of more than a name and a part");
    EXPECT_EQ(named_parts("vertex,part\na\n"), ":2:1: a row without a part");
    EXPECT_EQ(named_parts("vertex,part\n\"a,0\n"), ":2:1: a quoted field has no closing quote");
    EXPECT_EQ(named_parts("vertex,part\n\"a\"b,0\n"), ":2:4: 'b,0' behind a closing quote");
}

TEST(files, vertices_without_a_row_are_free_where_that_is_allowed)
{
    const auto numbers = [](const std::string &text) {
        return named_parts(text, zorpelx_read_named_numbers);
    };
    EXPECT_EQ(numbers("vertex,part\nd,1\n"), "-1 -1 1 ");
    EXPECT_EQ(numbers("vertex,part\n"), "-1 -1 -1 ");
    EXPECT_EQ(numbers("vertex\tpart\nb,c\t-1\na\t2\n"), "2 -1 -1 ");
    EXPECT_EQ(numbers("7\n-5\n"), "7 -5 ");
    EXPECT_EQ(numbers("vertex,part\na,-1\na,0\n"), ":3:1: vertex 'a' has a part already");
    EXPECT_EQ(numbers("vertex,part\na,-2\n"), ":2:3: part -2 is not between -1 and 2147483646");
}

TEST(files, names_of_vertices_are_checked_before_they_are_used)
{
    const std::string name = store("vertex,part\n2,1\n1,0\n");
    zorpelx_file *file = nullptr;
    const int64_t falling[] = {0, 2, 1};
    const auto read = [&](int nvtxs, const char *names, const int64_t *start) {
        zorpelx_file_free(file);
        return zorpelx_read_named_partition(name.c_str(), nvtxs, names, start, nullptr, &file,
                                            nullptr);
    };
    EXPECT_EQ(read(2, nullptr, nullptr), ZORPELX_OK);
    EXPECT_EQ(read(-1, nullptr, nullptr), ZORPELX_BAD_OPTION);
    EXPECT_EQ(read(2, "ab", nullptr), ZORPELX_BAD_OPTION);
    EXPECT_EQ(read(2, "ab", falling), ZORPELX_BAD_OPTION);
    EXPECT_EQ(file, nullptr);
    unlink(name.c_str());
}

TEST(files, caps_and_the_cancel_flag_hold_on_a_pipe)
{
    const std::string name = testing::TempDir() + "zorpelx_pipe_" + std::to_string(getpid());
    ASSERT_EQ(mkfifo(name.c_str(), 0600), 0);
    zorpelx_read_options options = defaults();
    zorpelx_file *file = nullptr;
    options.timeout = 0.1;
    EXPECT_EQ(zorpelx_read_hypergraph(name.c_str(), &options, &file, nullptr), ZORPELX_TIMEOUT);
    static volatile int cancel = 0;
    options.timeout = 0;
    options.cancel = &cancel;
    std::thread other([] {
        usleep(100000);
        cancel = 1;
    });
    EXPECT_EQ(zorpelx_read_hypergraph(name.c_str(), &options, &file, nullptr), ZORPELX_CANCELLED);
    other.join();
    unlink(name.c_str());
    options.cancel = nullptr;
    options.memory = size_t{1} << 20;
    EXPECT_NE(message_of("1 2\n1 2\n%" + std::string(2 << 20, ' ') + "\n", options), "");
}

} // namespace
