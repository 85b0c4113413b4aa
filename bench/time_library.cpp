// SPDX-License-Identifier: MIT
/* bench/time_library.cpp: zorpel-time, which calls an entry point of a library and tells its cost.
 *
 * Prints one line of CSV: CPU seconds and wall seconds of the call, the most memory it added (kB),
 * the cut, a checksum of the partition and then, if asked for, NAME=VALUE for each size, stage and
 * count. Reading the file is no part of the figures. The library is any that exports the functions
 * of zorpel.h; an error in the call ends the process, as the library has it, without a line.
 */
#include <dlfcn.h>
#include <malloc.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>
#include <vector>

#include "flat_hypergraph.h"
#include "stages.h"
#include "zorpel.h"

struct Request {
    const char *engine, *file, *entry;
    bool sizes, stages, counts;
    int nparts, ubfactor;
    int options[ZORPEL_NOPTIONS];
};

struct Cost {
    double cpu, wall;
    long kilobytes; // -1 where the system does not tell
    int cut;
    std::string printed; // what the call wrote to standard output
};

[[noreturn]] static void print_usage()
{
    fputs("usage: zorpel-time [--entry recursive|internal|refine] [--sizes] [--stages] [--counts]\n"
          "           LIBRARY FILE NPARTS UBFACTOR NRUNS CTYPE RTYPE VCYCLE RECONST SEED\n"
          "prints CPU seconds, wall seconds, memory added (kB), cut, checksum of the partition,\n"
          "  --sizes   vertices, hyperedges and pins\n"
          "  --stages  seconds of each stage\n"
          "  --counts  exact counts of the work, from a library that has them\n",
          stderr);
    exit(2);
}

static Request parse_words(int nwords, char **words)
{
    Request request = {nullptr, nullptr, "recursive", false, false, false, 0, 0, {}};
    int i = 1;
    for (; i < nwords && words[i][0] == '-'; i++) {
        if (strcmp(words[i], "--sizes") == 0)
            request.sizes = true;
        else if (strcmp(words[i], "--stages") == 0)
            request.stages = true;
        else if (strcmp(words[i], "--counts") == 0)
            request.counts = true;
        else if (strcmp(words[i], "--entry") == 0 && i + 1 < nwords)
            request.entry = words[++i];
        else
            print_usage();
    }
    if (nwords - i != 10) print_usage();
    request.engine = words[i];
    request.file = words[i + 1];
    request.nparts = atoi(words[i + 2]);
    request.ubfactor = atoi(words[i + 3]);
    int *const options = request.options;
    options[ZORPEL_OPT_USE] = 1;
    for (int slot = ZORPEL_OPT_NRUNS; slot <= ZORPEL_OPT_RECONST; slot++)
        options[slot] = atoi(words[i + 3 + slot]);
    options[ZORPEL_OPT_SEED] = atoi(words[i + 9]);
    options[ZORPEL_OPT_DBGLVL] = request.stages ? ZORPEL_DBG_TIME : 0;
    return request;
}

static double read_clock(clockid_t clock)
{
    timespec time;
    clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

/* A figure of this process in kB, such as VmRSS; -1 where there is none. */
static long status_kilobytes(const char *field)
{
    FILE *const file = fopen("/proc/self/status", "r");
    if (file == nullptr) return -1;
    const size_t length = strlen(field);
    char line[256];
    long value = -1;
    while (value < 0 && fgets(line, sizeof line, file) != nullptr)
        if (strncmp(line, field, length) == 0) sscanf(line + length, ": %ld", &value);
    fclose(file);
    return value;
}

/* Gives back what reading left over, lets the peak start here and returns what is in use. */
static long start_peak()
{
    malloc_trim(0);
    FILE *const file = fopen("/proc/self/clear_refs", "w");
    if (file == nullptr) return -1;
    const bool reset = fputs("5", file) >= 0;
    return fclose(file) == 0 && reset ? status_kilobytes("VmRSS") : -1;
}

static void *symbol_of(void *library, const char *name)
{
    void *const symbol = dlsym(library, name);
    if (symbol != nullptr) return symbol;
    fprintf(stderr, "%s\n", dlerror());
    exit(2);
}

static void call_entry(void *library, const Request *request, const Input *input, int *part,
                       int *cut)
{
    const int *const vwgts = input->vwgts.empty() ? nullptr : input->vwgts.data();
    const int *const hewgts = input->hewgts.empty() ? nullptr : input->hewgts.data();
    const int *const eptr = input->eptr.data(), *const eind = input->eind.data();
    if (strcmp(request->entry, "refine") == 0) {
        const auto refine =
            reinterpret_cast<decltype(&ZORPEL_2WayRefine)>(symbol_of(library, "ZORPEL_2WayRefine"));
        refine(input->nvtxs, input->nhedges, vwgts, eptr, eind, hewgts, request->ubfactor,
               request->options, part, cut);
        return;
    }
    const char *const name = strcmp(request->entry, "internal") == 0
                                 ? "ZORPEL_PartRecursiveInternal"
                                 : "ZORPEL_PartRecursive";
    const auto partition =
        reinterpret_cast<decltype(&ZORPEL_PartRecursive)>(symbol_of(library, name));
    partition(input->nvtxs, input->nhedges, vwgts, eptr, eind, hewgts, request->nparts,
              request->ubfactor, request->options, part, cut);
}

/* Everything that FILE got since it was opened. */
static std::string contents(FILE *file)
{
    std::string text(static_cast<size_t>(ftell(file)), '\0');
    rewind(file);
    text.resize(fread(text.data(), 1, text.size(), file));
    return text;
}

/* Standard output goes to a file while the library works; refinement starts from alternate sides.
 */
static Cost measure(void *library, const Request *request, const Input *input,
                    std::vector<int> *part)
{
    Cost cost = {};
    FILE *const aside = tmpfile();
    const int out = dup(STDOUT_FILENO);
    if (aside == nullptr || out < 0 || dup2(fileno(aside), STDOUT_FILENO) < 0) {
        perror("zorpel-time");
        exit(2);
    }
    if (strcmp(request->entry, "refine") == 0)
        for (size_t v = 0; v < part->size(); v++) (*part)[v] = v % 2;
    srand(static_cast<unsigned>(request->options[ZORPEL_OPT_SEED]));
    const long before = start_peak();
    cost.cpu = -read_clock(CLOCK_PROCESS_CPUTIME_ID);
    cost.wall = -read_clock(CLOCK_MONOTONIC);
    call_entry(library, request, input, part->data(), &cost.cut);
    cost.cpu += read_clock(CLOCK_PROCESS_CPUTIME_ID);
    cost.wall += read_clock(CLOCK_MONOTONIC);
    cost.kilobytes = before < 0 ? -1 : status_kilobytes("VmHWM") - before;
    fflush(stdout);
    fseek(aside, 0, SEEK_END);
    cost.printed = contents(aside);
    dup2(out, STDOUT_FILENO);
    close(out);
    fclose(aside);
    return cost;
}

/* FNV-1a over the little-endian bytes of the parts. */
static uint64_t checksum(const std::vector<int> &part)
{
    uint64_t sum = 1469598103934665603u;
    for (const int p : part)
        for (unsigned byte = 0; byte < 4; byte++) {
            sum ^= static_cast<unsigned>(p) >> (8 * byte) & 255u;
            sum *= 1099511628211u;
        }
    return sum;
}

static void print_counts(void *library)
{
    const auto counts_of = reinterpret_cast<int (*)(const long long **, const char *const **)>(
        symbol_of(library, "zorpel_work_counts"));
    const long long *counts;
    const char *const *names;
    const int n = counts_of(&counts, &names);
    for (int i = 0; i < n; i++) printf(",%s=%lld", names[i], counts[i]);
}

int main(int nwords, char **words)
{
    const Request request = parse_words(nwords, words);
    void *const library = dlopen(request.engine, RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        fprintf(stderr, "%s\n", dlerror());
        return 2;
    }
    const Input input = read_input(request.file);
    std::vector<int> part(static_cast<size_t>(input.nvtxs));
    const Cost cost = measure(library, &request, &input, &part);
    printf("%.4f,%.4f,%ld,%d,%016llx", cost.cpu, cost.wall, cost.kilobytes, cost.cut,
           static_cast<unsigned long long>(checksum(part)));
    if (request.sizes)
        printf(",vertices=%d,hyperedges=%d,pins=%zu", input.nvtxs, input.nhedges,
               input.eind.size());
    if (request.stages) print_stages(library, cost.printed.c_str());
    if (request.counts) print_counts(library);
    putchar('\n');
    return 0;
}
