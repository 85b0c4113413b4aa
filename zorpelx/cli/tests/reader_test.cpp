// SPDX-License-Identifier: MIT
/* zorpelx/cli/tests/reader_test.cpp: the program's own reader against zorpel's.
 *
 * Thousands of files with random damage go through both: what zorpel refuses must be an error here
 * (or the finding that it runs out of room), what it accepts must be read as the same hypergraph.
 */
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <random>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "read_hgr.h"
#include "io/read_hgraph.h"

constexpr int ACCEPTED = 77; // status of a child whose file was accepted; refusals end with 0

#ifdef __SANITIZE_ADDRESS__
constexpr int ROUNDS = 250; // every refusal is a process that looks for leaks at its end
#else
constexpr int ROUNDS = 2500;
#endif

/* Everything that is read, as one list of numbers. */
using Numbers = std::vector<int64_t>;

static void put(std::FILE *out, const int *x, int n)
{
    for (int i = 0; i < n; i++) std::fprintf(out, "%d ", x == nullptr ? 1 : x[i]);
}

/* Reads the file as zorpel does and prints what was read; ends the process. */
[[noreturn]] static void read_in_child(const char *file, int pipe)
{
    if (std::freopen("/dev/null", "w", stderr) == nullptr) _exit(1);
    std::FILE *const out = fdopen(pipe, "w");
    const HGraph *const graph = ReadHGraph(file);
    std::fprintf(out, "%d %d ", graph->ncells, graph->nnets);
    put(out, graph->netptr, graph->nnets + 1);
    put(out, graph->netind, graph->netptr[graph->nnets]);
    put(out, graph->netwgt, graph->nnets);
    put(out, graph->cellwgt, graph->ncells);
    std::fclose(out);
    _exit(ACCEPTED);
}

/* False if zorpel refuses the text. */
static bool tool_reads(const std::string &text, Numbers *numbers)
{
    std::string name = testing::TempDir() + "zorpelx_reader_XXXXXX";
    const int file = mkstemp(name.data());
    EXPECT_EQ(write(file, text.data(), text.size()), static_cast<ssize_t>(text.size()));
    close(file);
    int ends[2];
    EXPECT_EQ(pipe(ends), 0);
    const pid_t child = fork();
    if (child == 0) read_in_child(name.c_str(), ends[1]);
    close(ends[1]);
    std::FILE *const in = fdopen(ends[0], "r");
    for (long long number; std::fscanf(in, "%lld", &number) == 1;) numbers->push_back(number);
    std::fclose(in);
    int status = 0;
    waitpid(child, &status, 0);
    unlink(name.c_str());
    EXPECT_TRUE(WIFEXITED(status)) << text;
    return WIFEXITED(status) && WEXITSTATUS(status) == ACCEPTED;
}

static Numbers numbers_of(const Hypergraph &graph)
{
    Numbers numbers = {graph.nvertices, graph.nnets};
    numbers.insert(numbers.end(), graph.start.begin(), graph.start.end());
    numbers.insert(numbers.end(), graph.pins.begin(), graph.pins.end());
    numbers.insert(numbers.end(), graph.netwgt.begin(), graph.netwgt.end());
    numbers.insert(numbers.end(), graph.vertexwgt.begin(), graph.vertexwgt.end());
    return numbers;
}

static Hypergraph scan(const std::string &text, Reading reading, Findings *findings)
{
    Budget budget = make_budget("sample", 0, 0, 0);
    Hypergraph graph = scan_hypergraph(text, reading, findings, &budget);
    EXPECT_TRUE(hypergraph_ok(graph)) << text;
    return graph;
}

/* What zorpel's reader alone refuses: the sums and signs of weights are the engine's business. */
static bool reader_would_refuse(const Findings &findings)
{
    return findings.stops > findings.count[RULE_NEGATIVE_WEIGHT] + findings.count[RULE_SUM];
}

static void compare(const std::string &text)
{
    Findings findings;
    const Hypergraph graph = scan(text, {LINES_PIECES, 1, true}, &findings);
    if (findings.count[RULE_HOLLOW] > 0 || graph.nvertices > 100000) return;
    Numbers tool;
    const bool accepted = tool_reads(text, &tool);
    EXPECT_EQ(accepted, !reader_would_refuse(findings)) << text;
    if (accepted) {
        EXPECT_EQ(tool, numbers_of(graph)) << text;
    }
}

static std::string sample(int code)
{
    std::string text = "% sample\n6 7 " + std::to_string(code) + "\n";
    for (const char *net : {"1 2 3", "3 4", "5 6 7 1", "2 7", "4 5", "1 6"})
        text += (code % 10 ? "3 " : "") + std::string(net) + "\n";
    if (code >= 10)
        for (int v = 1; v <= 7; v++) text += std::to_string(v) + "\n";
    return text;
}

TEST(reader, agrees_with_zorpel_on_damaged_files)
{
    static const char letters[] = "0123456789  --%%\n\n\t.x+\r";
    std::mt19937 random(7);
    for (int round = 0; round < ROUNDS; round++) {
        std::string text = sample(round % 4 / 2 * 10 + round % 2);
        for (unsigned long n = 1 + random() % 3; n > 0; n--) {
            const size_t place = random() % text.size();
            const char letter = letters[random() % (sizeof letters - 1)];
            switch (random() % 4) {
            case 0:
                text[place] = letter;
                break;
            case 1:
                text.insert(place, 1, letter);
                break;
            case 2:
                text.erase(place, 1 + random() % 3);
                break;
            default:
                text.resize(text.size() - random() % 4);
                break;
            }
        }
        compare(text);
    }
}

TEST(reader, agrees_with_zorpel_on_long_lines)
{
    for (const int64_t length : {PIECE - 2, PIECE - 1, PIECE, PIECE + 1, 2 * PIECE + 5})
        for (const char *start : {"1 2 ", "% "}) {
            std::string line = start;
            while (static_cast<int64_t>(line.size()) < length) line += "3 ";
            line.resize(static_cast<size_t>(length));
            compare("3 9\n" + line + "\n1 2\n4 5 6\n");
            compare("1 9\n" + line);
        }
}

TEST(reader, tells_line_and_column)
{
    Findings findings;
    scan("2 3\n% comment\n1 2 4\n  2 x 3\n", {LINES_REFUSE, 1, true}, &findings);
    ASSERT_EQ(findings.listed.size(), 4u); // one vertex too large; rubbish; one left; vertex 3
    EXPECT_EQ(findings.listed[0].rule, RULE_VERTEX_ABOVE);
    EXPECT_EQ(findings.listed[0].place.line, 3);
    EXPECT_EQ(findings.listed[0].place.column, 5);
    EXPECT_EQ(findings.listed[1].rule, RULE_RUBBISH);
    EXPECT_EQ(findings.listed[1].place.line, 4);
    EXPECT_EQ(findings.listed[1].place.column, 5);
    EXPECT_EQ(findings.listed[2].rule, RULE_SINGLE_PIN);
    EXPECT_EQ(findings.listed[3].rule, RULE_ISLANDS);
}

TEST(reader, counts_from_zero_when_told)
{
    Findings findings;
    const Hypergraph graph = scan("2 3\n0 1\n2 0\n", {LINES_REFUSE, 0, true}, &findings);
    EXPECT_EQ(graph.pins, (std::vector<int32_t>{0, 1, 2, 0}));
    EXPECT_EQ(findings.severities[WARNING] + count_errors(findings), 0);
}
