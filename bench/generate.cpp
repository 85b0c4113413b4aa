// SPDX-License-Identifier: MIT
/* bench/generate.cpp: zorpel-generate, a seeded writer of test hypergraphs of any size.
 *
 * Each family is a routine that walks its hyperedges in order and hands them one at a time to
 * the writer, so memory is O(vertices) at most and the file is written as it is made. The header
 * comes first in the file, so every family fixes its counts before it draws a pin: by formula, or
 * by drawing the sizes once to count them and again to use them (copying a generator rewinds it).
 *
 * What stays true:
 *   G1  the bytes written depend on the arguments alone: integers only, no floating point, no
 *       library distribution, and one random stream for each purpose, so that asking for weights
 *       leaves the hyperedges as they were
 *   G2  a hyperedge holds two or more vertices, none of them twice
 *   G3  the pins written are within 2 % of PINS when PINS is 1000 or more
 *   G4  outside giant and broad no line reaches 128 KiB
 */
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "generator.h"

constexpr int64_t MIN_PINS = 100, MAX_PINS = 1000000000;

struct Family {
    const char *name;
    void (*write)(Writer *out);
    const char *help;
};

static const Family families[] = {
    {"netlist", write_netlist, "circuit-like: nets of 2 to 40 pins, mostly local, a few large"},
    {"mesh", write_mesh, "bricks of a structured mesh, eight nodes each"},
    {"mesh2", write_mesh2, "squares of a structured mesh, four nodes each"},
    {"powerlaw", write_powerlaw, "degrees and sizes by power laws, no locality"},
    {"giant", write_giant, "one hyperedge of PINS/2 pins among small ones (one very long line)"},
    {"broad", write_broad, "one hyperedge over all vertices, small ones without locality"},
    {"hub", write_hub, "one vertex in every hyperedge"},
    {"identical", write_identical, "many copies of sixteen small hyperedges"},
    {"equal", write_equal, "closed grid in which all vertices look alike"},
    {"wide", write_wide, "hyperedges of fifty vertices"},
    {"islands", write_islands, "nine vertices in ten are in no hyperedge"},
    {"heavy", write_heavy, "vertices too heavy to fit; always with vertex weights"},
    {"swing", write_swing, "gains that swing over all buckets; always with hyperedge weights"},
    {"stairs", write_stairs, "two vertices in a row, and three in a row: two rising sequences"},
    {"sums", write_sums, "pairs of vertices whose numbers have one sum"},
};

static void print_usage(FILE *file)
{
    fprintf(file,
            "usage: zorpel-generate FAMILY PINS SEED [--vweights] [--hweights] > file.hgr\n"
            "  PINS  about how many pins to write, %lld to %lld\n"
            "  SEED  any number from 0 to 2^64-1\n",
            static_cast<long long>(MIN_PINS), static_cast<long long>(MAX_PINS));
    for (const Family &family : families) fprintf(file, "  %-9s  %s\n", family.name, family.help);
}

[[noreturn]] static void fail(const char *message, const char *word)
{
    fprintf(stderr, "zorpel-generate: %s: %s\n", message, word);
    print_usage(stderr);
    exit(2);
}

static uint64_t parse_number(const char *word, const char *message)
{
    char *end;
    errno = 0;
    const unsigned long long number = strtoull(word, &end, 10);
    if (word[0] < '0' || word[0] > '9' || *end != '\0' || errno != 0) fail(message, word);
    return number;
}

static const Family *find_family(const char *name)
{
    for (const Family &family : families) {
        if (strcmp(family.name, name) == 0) return &family;
    }
    fail("no such family", name);
}

int main(int argc, char **argv)
{
    if (argc == 2 && strcmp(argv[1], "--help") == 0) {
        print_usage(stdout);
        return 0;
    }
    if (argc < 4) {
        print_usage(stderr);
        return 2;
    }
    static Writer out;
    const Family *family = find_family(argv[1]);
    const uint64_t pins = parse_number(argv[2], "PINS is not a number in range");
    if (pins < MIN_PINS || pins > MAX_PINS) fail("PINS is not a number in range", argv[2]);
    out.family = family->name;
    out.pins = static_cast<int64_t>(pins);
    out.seed = parse_number(argv[3], "SEED is not a number in range");
    out.net_stream = open_stream(out.seed, NET_WEIGHTS);
    for (int i = 4; i < argc; i++) {
        if (strcmp(argv[i], "--vweights") == 0)
            out.vertex_weights = true;
        else if (strcmp(argv[i], "--hweights") == 0)
            out.net_weights = true;
        else
            fail("unknown option", argv[i]);
    }
    family->write(&out);
    flush(&out);
    if (fflush(stdout) != 0 || ferror(stdout)) {
        fprintf(stderr, "zorpel-generate: cannot write the output\n");
        return 1;
    }
    return 0;
}
