/* SPDX-License-Identifier: MIT */
/* tests/unit/support.h: what the unit tests share: small hypergraphs, captured output, calls in a
 * child process (for what ends the process), and a folder of one's own.
 */
#ifndef ZORPEL_TESTS_UNIT_SUPPORT_H
#define ZORPEL_TESTS_UNIT_SUPPORT_H

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "hypergraphs.h"

#if defined(__SANITIZE_ADDRESS__)
#define ZORPEL_TEST_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define ZORPEL_TEST_ASAN 1
#endif
#endif
#ifdef ZORPEL_TEST_ASAN
#include <sanitizer/lsan_interface.h>
#endif

struct FreeHGraphAndLabel {
    void operator()(HGraph *graph) const
    {
        free(graph->label);
        FreeHGraph__(graph);
    }
};
using HGraphPtr = std::unique_ptr<HGraph, FreeHGraphAndLabel>;

/* A hypergraph of the given hyperedges; weights left out are 1. nfixed 0, no incidence. */
inline HGraphPtr make_hgraph(int ncells, const Nets &nets, const Ints &netwgt = {},
                             const Ints &cellwgt = {})
{
    return HGraphPtr(build_hgraph(ncells, nets, netwgt, cellwgt));
}

/* The same with incidence. */
inline HGraphPtr make_incident(int ncells, const Nets &nets, const Ints &netwgt = {},
                               const Ints &cellwgt = {})
{
    HGraphPtr graph = make_hgraph(ncells, nets, netwgt, cellwgt);
    CreateIncidentHGraph__(graph.get());
    return graph;
}

/* The pin lists of a record, hyperedge by hyperedge. */
inline Nets pins_of(const HGraph *graph)
{
    Nets nets;
    for (int e = 0; e < graph->nnets; e++) nets.push_back(net_pins(graph, e));
    return nets;
}

/* nnets hyperedges of 2 to maxsize distinct vertices of 0..ncells-1, by a generator of its own. */
inline Nets random_nets(unsigned seed, int ncells, int nnets, int maxsize)
{
    std::minstd_rand random(seed);
    Nets nets(static_cast<size_t>(nnets));
    std::vector<int> last(static_cast<size_t>(ncells), -1);
    for (int e = 0; e < nnets; e++) {
        const unsigned size =
            2 + static_cast<unsigned>(random() % static_cast<unsigned>(maxsize - 1));
        std::vector<int> &net = nets[static_cast<size_t>(e)];
        while (net.size() < size) {
            const int v = static_cast<int>(random() % static_cast<unsigned>(ncells));
            if (last[static_cast<size_t>(v)] == e) continue;
            last[static_cast<size_t>(v)] = e;
            net.push_back(v);
        }
    }
    return nets;
}

/* n numbers of least..most, by a generator of its own. */
inline std::vector<int> random_ints(unsigned seed, int n, int least, int most)
{
    std::minstd_rand random(seed);
    std::vector<int> x(static_cast<size_t>(n));
    const unsigned range = static_cast<unsigned>(most - least) + 1;
    for (int &value : x) value = least + static_cast<int>(random() % range);
    return x;
}

/* Total weight of the hyperedges with vertices in several parts, counted afresh. */
inline long long cut_of(const Nets &nets, const std::vector<int> &netwgt,
                        const std::vector<int> &part)
{
    long long cut = 0;
    for (size_t e = 0; e < nets.size(); e++) {
        bool several = false;
        for (int v : nets[e])
            several = several ||
                      part[static_cast<size_t>(v)] != part[static_cast<size_t>(nets[e].front())];
        if (several) cut += netwgt.empty() ? 1 : netwgt[e];
    }
    return cut;
}

inline std::string read_file(const std::string &path)
{
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

inline void write_file(const std::string &path, const std::string &text)
{
    std::ofstream(path, std::ios::binary) << text;
}

/* A new folder, removed with its contents at the end of the scope. */
struct TempFolder {
    std::string path;
    TempFolder() : path((std::filesystem::temp_directory_path() / "zorpel_XXXXXX").string())
    {
        if (mkdtemp(path.data()) == nullptr) abort();
    }
    ~TempFolder() { std::filesystem::remove_all(path); }
    TempFolder(const TempFolder &) = delete;
    TempFolder &operator=(const TempFolder &) = delete;
    std::string file(const std::string &name) const { return path + "/" + name; }
    std::string file(const std::string &name, const std::string &text) const
    {
        write_file(file(name), text);
        return file(name);
    }
};

/* A stream's descriptor turned to a file for a while. */
struct Redirection {
    FILE *stream, *file;
    int kept;
};

inline Redirection redirect(FILE *stream)
{
    fflush(stream);
    const Redirection way = {stream, tmpfile(), dup(fileno(stream))};
    if (way.file == nullptr || way.kept < 0) abort();
    dup2(fileno(way.file), fileno(stream));
    return way;
}

/* Turns the stream back; returns what was written meanwhile. */
inline std::string restore(const Redirection &way)
{
    fflush(way.stream);
    dup2(way.kept, fileno(way.stream));
    close(way.kept);
    std::string text;
    rewind(way.file);
    char block[4096];
    for (size_t got; (got = fread(block, 1, sizeof block, way.file)) > 0;) text.append(block, got);
    fclose(way.file);
    return text;
}

/* What the call writes to standard output. */
template <class Call> std::string capture_stdout(Call call)
{
    const Redirection way = redirect(stdout);
    call();
    return restore(way);
}

/* What came of a call in a child process. */
struct Outcome {
    std::string out, err;
    int status; // exit status, RETURNED if the call came back, 128 + signal if it was killed
};
constexpr int RETURNED = 99;

/* Makes the call in a child process. Memory that the child holds when it ends is not a leak. */
template <class Call> Outcome run_in_child(Call call)
{
    const Redirection out = redirect(stdout), err = redirect(stderr);
    const pid_t child = fork();
    if (child == 0) {
#ifdef ZORPEL_TEST_ASAN
        __lsan_disable();
#endif
        call();
        exit(RETURNED);
    }
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child) abort();
    Outcome outcome = {"", restore(err), 0};
    outcome.out = restore(out);
    outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return outcome;
}

inline int count_lines_with(const std::string &text, const std::string &wanted)
{
    int count = 0;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);)
        count += line.find(wanted) != std::string::npos;
    return count;
}

#endif
