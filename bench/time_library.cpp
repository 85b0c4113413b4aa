/* bench/time_library.cpp: calls one entry point of a shared library and prints what it cost.
 *
 * usage: zorpel-time LIBRARY FILE NPARTS UBFACTOR NRUNS CTYPE RTYPE VCYCLE RECONST SEED
 * Prints one line of CSV: CPU seconds of the call, peak memory that the call added (kB), cut and a
 * checksum of the partition. Reading the file is not part of the figures.
 */
#include <dlfcn.h>
#include <sys/resource.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "zorpel.h"

struct Input {
    int nvtxs, nhedges;
    std::vector<int> eptr, eind, vwgts, hewgts;
};

/* The whole file; ends the program when it cannot be read. */
static std::string read_all(const char *name)
{
    FILE *const file = fopen(name, "r");
    if (file == nullptr) {
        perror(name);
        exit(2);
    }
    std::string text;
    char block[1 << 16];
    for (size_t got; (got = fread(block, 1, sizeof block, file)) > 0;) text.append(block, got);
    fclose(file);
    return text;
}

/* The numbers of the next line that is not a comment. */
static std::vector<int> next_numbers(const char **at)
{
    std::vector<int> numbers;
    while (**at == '%') {
        while (**at != '\0' && **at != '\n') ++*at;
        if (**at == '\n') ++*at;
    }
    while (**at != '\0' && **at != '\n') {
        if (**at < '0' || **at > '9') {
            ++*at;
            continue;
        }
        int number = 0;
        for (; **at >= '0' && **at <= '9'; ++*at) number = 10 * number + (**at - '0');
        numbers.push_back(number);
    }
    if (**at == '\n') ++*at;
    return numbers;
}

static Input read_input(const char *name)
{
    const std::string text = read_all(name);
    const char *at = text.c_str();
    const std::vector<int> header = next_numbers(&at);
    if (header.size() < 2) {
        fprintf(stderr, "%s: no header\n", name);
        exit(2);
    }
    Input input = {header[1], header[0], {0}, {}, {}, {}};
    const int code = header.size() > 2 ? header[2] : 0;
    for (int e = 0; e < input.nhedges; e++) {
        const std::vector<int> numbers = next_numbers(&at);
        size_t i = 0;
        if (code % 10 > 0) input.hewgts.push_back(numbers.at(i++));
        for (; i < numbers.size(); i++) input.eind.push_back(numbers[i] - 1);
        input.eptr.push_back(static_cast<int>(input.eind.size()));
    }
    if (code / 10 > 0)
        for (int v = 0; v < input.nvtxs; v++) input.vwgts.push_back(next_numbers(&at).at(0));
    return input;
}

static double cpu_seconds()
{
    rusage usage;
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
           static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) * 1e-6;
}

static long peak_kilobytes()
{
    rusage usage;
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
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

int main(int argc, char **argv)
{
    if (argc != 11) {
        fprintf(stderr,
                "usage: %s LIBRARY FILE NPARTS UBFACTOR NRUNS CTYPE RTYPE VCYCLE RECONST "
                "SEED\n",
                argv[0]);
        return 2;
    }
    void *const library = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        fprintf(stderr, "%s\n", dlerror());
        return 2;
    }
    const auto partition =
        reinterpret_cast<decltype(&ZORPEL_PartRecursive)>(dlsym(library, "ZORPEL_PartRecursive"));
    if (partition == nullptr) return 2;
    const Input input = read_input(argv[2]);
    const int options[ZORPEL_NOPTIONS] = {1,
                                          atoi(argv[5]),
                                          atoi(argv[6]),
                                          atoi(argv[7]),
                                          atoi(argv[8]),
                                          atoi(argv[9]),
                                          0,
                                          atoi(argv[10]),
                                          0};
    std::vector<int> part(static_cast<size_t>(input.nvtxs));
    int cut = 0;
    const long before = peak_kilobytes();
    const double start = cpu_seconds();
    partition(input.nvtxs, input.nhedges, input.vwgts.empty() ? nullptr : input.vwgts.data(),
              input.eptr.data(), input.eind.data(),
              input.hewgts.empty() ? nullptr : input.hewgts.data(), atoi(argv[3]), atoi(argv[4]),
              options, part.data(), &cut);
    const double seconds = cpu_seconds() - start;
    printf("%.4f,%ld,%d,%016llx\n", seconds, peak_kilobytes() - before, cut,
           static_cast<unsigned long long>(checksum(part)));
    return 0;
}
