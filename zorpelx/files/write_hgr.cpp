// SPDX-License-Identifier: MIT
/* zorpelx/files/write_hgr.cpp: the text of hypergraph files, and of files of numbers. */
#include "write_hgr.h"

#include <cstdint>

constexpr size_t LONGEST_NUMBER = 20; // digits and sign of 64 bits

/* Appends the number and one character. */
static void put_number(std::string *text, int64_t number, char behind)
{
    char digits[LONGEST_NUMBER + 1];
    char *const end = digits + sizeof digits, *begin = end;
    *--begin = behind;
    uint64_t left = number < 0 ? 0 - static_cast<uint64_t>(number) : static_cast<uint64_t>(number);
    do {
        *--begin = static_cast<char>('0' + left % 10);
    } while ((left /= 10) > 0);
    if (number < 0) *--begin = '-';
    text->append(begin, end);
}

static void put_net(std::string *text, const Hypergraph &graph, size_t e)
{
    if (graph.netweights) put_number(text, graph.netwgt[e], ' ');
    for (int64_t j = graph.start[e]; j < graph.start[e + 1]; j++)
        put_number(text, int64_t{graph.pins[static_cast<size_t>(j)]} + 1, ' ');
    if (!text->empty() && text->back() == ' ')
        text->back() = '\n';
    else
        *text += '\n';
}

std::string hgr_text(const Hypergraph &graph)
{
    const int code = (graph.vertexweights ? 10 : 0) + (graph.netweights ? 1 : 0);
    std::string text;
    put_number(&text, graph.nnets, ' ');
    put_number(&text, graph.nvertices, code > 0 ? ' ' : '\n');
    if (code > 0) put_number(&text, code, '\n');
    for (size_t e = 0; e + 1 < graph.start.size(); e++) put_net(&text, graph, e);
    if (graph.vertexweights)
        for (const int64_t weight : graph.vertexwgt) put_number(&text, weight, '\n');
    return text;
}

std::string numbers_text(const int *numbers, size_t count)
{
    std::string text;
    for (size_t i = 0; i < count; i++) put_number(&text, numbers[i], '\n');
    return text;
}
