// SPDX-License-Identifier: MIT
/* tests/golden/partition_driver.cpp: calls the library's entry points and measures what they give.
 *
 *   partition_driver HGR FOLDER <JOBS >TABLE
 * A job is a line: ENTRY NPARTS UBFACTOR NRUNS CTYPE RTYPE VCYCLE RECONST SEED FIX, with ENTRY
 * recursive, internal or refine and FIX the name of a fix file or -. Its answer is a line of
 *   edgecut,cut,soed,lightest,heaviest,checksum
 * where edgecut is what the library returned and all else is counted here, with a reader of this
 * file's own. The partition goes to FOLDER/N, N counting the jobs from 1.
 */
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "job.h"
#include "zorpel.h"

struct Hypergraph {
    int nvtxs = 0, nhedges = 0;
    std::vector<int> eptr, eind;    // as the library takes them
    std::vector<int> vwgts, hewgts; // empty: all 1
};

struct Figures {
    long long cut, soed, lightest, heaviest;
};

[[noreturn]] static void fail(const std::string &what)
{
    std::cerr << "partition_driver: " << what << '\n';
    exit(1);
}

static std::istringstream next_line(std::ifstream &file)
{
    std::string line;
    do {
        if (!std::getline(file, line)) fail("the hypergraph file ends too early");
    } while (!line.empty() && line[0] == '%');
    return std::istringstream(line);
}

static int take_weight(std::istringstream &line)
{
    int weight;
    if (!(line >> weight)) fail("a weight is missing");
    return weight;
}

static Hypergraph read_hypergraph(const char *name)
{
    std::ifstream file(name);
    Hypergraph graph;
    int code = 0;
    std::istringstream header = next_line(file);
    header >> graph.nhedges >> graph.nvtxs;
    if (!header) fail("the header has no two numbers");
    header >> code;
    graph.eptr.push_back(0);
    for (int e = 0; e < graph.nhedges; e++) {
        std::istringstream line = next_line(file);
        if (code % 10 > 0) graph.hewgts.push_back(take_weight(line));
        for (int v; line >> v;) graph.eind.push_back(v - 1);
        graph.eptr.push_back(static_cast<int>(graph.eind.size()));
    }
    for (int v = 0; code / 10 > 0 && v < graph.nvtxs; v++) {
        std::istringstream line = next_line(file);
        graph.vwgts.push_back(take_weight(line));
    }
    return graph;
}

/* What part holds before the call: the fix file, else alternate sides for a refinement. */
static std::vector<int> starting_parts(const Hypergraph &graph, const Job &job)
{
    std::vector<int> part(static_cast<size_t>(graph.nvtxs), 0);
    if (job.entry == "refine")
        for (size_t v = 0; v < part.size(); v++) part[v] = v % 2;
    if (job.fix == "-") return part;
    std::ifstream file(job.fix);
    for (int &p : part)
        if (!(file >> p)) fail("the fix file is short");
    return part;
}

static int call_library(const Hypergraph &graph, const Job &job, int *part)
{
    const int *const vwgts = graph.vwgts.empty() ? nullptr : graph.vwgts.data();
    const int *const hewgts = graph.hewgts.empty() ? nullptr : graph.hewgts.data();
    const int *const eptr = graph.eptr.data(), *const eind = graph.eind.data();
    int edgecut = -1;
    if (job.entry == "refine") {
        srand(static_cast<unsigned>(job.options[ZORPEL_OPT_SEED]));
        ZORPEL_2WayRefine(graph.nvtxs, graph.nhedges, vwgts, eptr, eind, hewgts, job.ubfactor,
                          job.options, part, &edgecut);
    } else {
        const auto entry =
            job.entry == "internal" ? ZORPEL_PartRecursiveInternal : ZORPEL_PartRecursive;
        entry(graph.nvtxs, graph.nhedges, vwgts, eptr, eind, hewgts, job.nparts, job.ubfactor,
              job.options, part, &edgecut);
    }
    return edgecut;
}

static Figures measure(const Hypergraph &graph, int nparts, const std::vector<int> &part)
{
    Figures figures = {0, 0, 0, 0};
    std::vector<long long> weight(static_cast<size_t>(nparts), 0);
    for (size_t v = 0; v < part.size(); v++)
        weight.at(static_cast<size_t>(part[v])) += graph.vwgts.empty() ? 1 : graph.vwgts[v];
    for (size_t e = 0; e + 1 < graph.eptr.size(); e++) {
        std::set<int> touched;
        for (int j = graph.eptr[e]; j < graph.eptr[e + 1]; j++)
            touched.insert(part[static_cast<size_t>(graph.eind[static_cast<size_t>(j)])]);
        if (touched.size() < 2) continue;
        const int hewgt = graph.hewgts.empty() ? 1 : graph.hewgts[e];
        figures.cut += hewgt;
        figures.soed += static_cast<long long>(touched.size()) * hewgt;
    }
    figures.lightest = *std::min_element(weight.begin(), weight.end());
    figures.heaviest = *std::max_element(weight.begin(), weight.end());
    return figures;
}

/* Fowler, Noll and Vo's hash (1a, 64 bits). */
static uint64_t checksum(const std::string &bytes)
{
    uint64_t hash = 0xcbf29ce484222325;
    for (const char c : bytes) hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3;
    return hash;
}

int main(int argc, char **argv)
{
    if (argc != 3) fail("two words are needed, a hypergraph file and a folder");
    const Hypergraph graph = read_hypergraph(argv[1]);
    Job job;
    for (int number = 1; take_job(&job); number++) {
        std::vector<int> part = starting_parts(graph, job);
        const int edgecut = call_library(graph, job, part.data());
        const Figures figures = measure(graph, job.nparts, part);
        std::string lines;
        for (const int p : part) lines += std::to_string(p) + '\n';
        std::ofstream(std::filesystem::path(argv[2]) / std::to_string(number)) << lines;
        printf("%d,%lld,%lld,%lld,%lld,%016llx\n", edgecut, figures.cut, figures.soed,
               figures.lightest, figures.heaviest,
               static_cast<unsigned long long>(checksum(lines)));
    }
    return 0;
}
