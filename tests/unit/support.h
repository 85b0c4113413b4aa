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

#include "core/hgraph.h"
#include "core/memory.h"
#include "core/ctrl.h"

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

using PinLists = std::vector<std::vector<int>>;

/* A copy of x in an array of malloc's, as records own them; null when x is empty. */
inline int *new_array(const std::vector<int> &x)
{
    int *const array = imalloc__(x.size(), "test array");
    for (size_t i = 0; i < x.size(); i++) array[i] = x[i];
    return array;
}

/* The n entries of x. */
inline std::vector<int> entries(int n, const int *x)
{
    return std::vector<int>(x, x + n);
}

struct FreeHGraphAndLabel {
    void operator()(HGraph *graph) const
    {
        free(graph->label);
        FreeHGraph__(graph);
    }
};
using HGraphPtr = std::unique_ptr<HGraph, FreeHGraphAndLabel>;

/* A hypergraph of the given hyperedges; weights left out are 1. nfixed 0, no incidence. */
inline HGraphPtr make_hgraph(int ncells, const PinLists &nets, std::vector<int> netwgt = {},
                             std::vector<int> cellwgt = {})
{
    HGraphPtr graph(CreateHGraph__());
    graph->ncells = ncells;
    graph->nnets = static_cast<int>(nets.size());
    graph->nfixed = 0;
    std::vector<int> netptr = {0}, netind;
    for (const std::vector<int> &net : nets) {
        netind.insert(netind.end(), net.begin(), net.end());
        netptr.push_back(static_cast<int>(netind.size()));
    }
    if (netwgt.empty()) netwgt.assign(nets.size(), 1);
    if (cellwgt.empty()) cellwgt.assign(static_cast<size_t>(ncells), 1);
    graph->netptr = new_array(netptr);
    graph->netind = new_array(netind);
    graph->netwgt = new_array(netwgt);
    graph->cellwgt = new_array(cellwgt);
    return graph;
}

/* The same with incidence. */
inline HGraphPtr make_incident(int ncells, const PinLists &nets, std::vector<int> netwgt = {},
                               std::vector<int> cellwgt = {})
{
    HGraphPtr graph = make_hgraph(ncells, nets, std::move(netwgt), std::move(cellwgt));
    CreateIncidentHGraph__(graph.get());
    return graph;
}

/* The pin lists of a record, hyperedge by hyperedge. */
inline PinLists pins_of(const HGraph *graph)
{
    PinLists nets;
    for (int e = 0; e < graph->nnets; e++)
        nets.emplace_back(graph->netind + graph->netptr[e], graph->netind + graph->netptr[e + 1]);
    return nets;
}

/* nnets hyperedges of 2 to maxsize distinct vertices of 0..ncells-1, by a generator of its own. */
inline PinLists random_nets(unsigned seed, int ncells, int nnets, int maxsize)
{
    std::minstd_rand random(seed);
    PinLists nets(static_cast<size_t>(nnets));
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
inline long long cut_of(const PinLists &nets, const std::vector<int> &netwgt,
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

/* The control record of the defaults, ready for one bisection in halves; one run, a fixed seed. */
inline PartCtrl default_ctrl()
{
    PartCtrl ctrl = {};
    ctrl.CoarsenTo = COARSEN_TO;
    ctrl.CType = CTYPE_HFC;
    ctrl.RType = RTYPE_FM;
    ctrl.Nruns = 1;
    ctrl.maxnetsize = MAX_NET_SIZE;
    ctrl.ubfactor = 0.05f;
    ctrl.seed = 1;
    ctrl.VCycle = VCYCLE_NO;
    ctrl.nparts = 2;
    ctrl.splitratio = 0.5f;
    ctrl.MaxCellWgt = 1 << 29; // above any that a bisection computes, and twice it fits
    return ctrl;
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
