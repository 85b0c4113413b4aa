// SPDX-License-Identifier: MIT
/* bench/flat_hypergraph.cpp: reads a hypergraph file in one sweep over its bytes. */
#include "flat_hypergraph.h"

#include <cstdio>
#include <cstdlib>
#include <string>

// The unread part of a file; the text ends with a NUL.
struct Scan {
    const char *name, *at;
};

[[noreturn]] static void fail(const char *name, const char *what)
{
    fprintf(stderr, "%s: %s\n", name, what);
    exit(2);
}

static std::string read_all(const char *name)
{
    FILE *const file = fopen(name, "r");
    if (file == nullptr) {
        perror(name);
        exit(2);
    }
    fseek(file, 0, SEEK_END);
    std::string text(static_cast<size_t>(ftell(file)), '\0');
    rewind(file);
    if (fread(text.data(), 1, text.size(), file) != text.size()) fail(name, "cannot be read");
    fclose(file);
    return text;
}

static void skip_line(Scan *scan)
{
    while (*scan->at != '\0' && *scan->at != '\n') scan->at++;
    if (*scan->at == '\n') scan->at++;
}

static void skip_comments(Scan *scan)
{
    while (*scan->at == '%') skip_line(scan);
}

/* Takes the next number of this line; false at its end. */
static bool take(Scan *scan, int *number)
{
    const char *at = scan->at;
    while (*at == ' ' || *at == '\t' || *at == '\r') at++;
    int value = 0;
    const char *const first = at;
    for (; *at >= '0' && *at <= '9'; at++) value = 10 * value + (*at - '0');
    scan->at = at;
    *number = value;
    return at > first;
}

static int take_needed(Scan *scan)
{
    int number;
    if (!take(scan, &number)) fail(scan->name, "a number is missing");
    return number;
}

Input read_input(const char *name)
{
    const std::string text = read_all(name);
    Scan scan = {name, text.c_str()};
    skip_comments(&scan);
    Input input;
    input.nhedges = take_needed(&scan);
    input.nvtxs = take_needed(&scan);
    int code = 0;
    take(&scan, &code);
    skip_line(&scan);
    input.eptr.push_back(0);
    for (int e = 0; e < input.nhedges; e++) {
        skip_comments(&scan);
        if (code % 10 > 0) input.hewgts.push_back(take_needed(&scan));
        for (int v; take(&scan, &v);) {
            if (v < 1 || v > input.nvtxs) fail(name, "a vertex is out of range");
            input.eind.push_back(v - 1);
        }
        skip_line(&scan);
        input.eptr.push_back(static_cast<int>(input.eind.size()));
    }
    for (int v = 0; code / 10 > 0 && v < input.nvtxs; v++) {
        skip_comments(&scan);
        input.vwgts.push_back(take_needed(&scan));
        skip_line(&scan);
    }
    input.eind.shrink_to_fit();
    return input;
}
