// SPDX-License-Identifier: MIT
/* mpi/letters.cpp: what the ranks of a shared search write to each other. */
#include "letters.h"

#include <algorithm>
#include <cassert>

#include "version.h"

Bytes bytes_of(const Saying &saying)
{
    assert(saying.client >= 0 && (saying.message.size == 0 || saying.parts != nullptr));
    const size_t size = static_cast<size_t>(saying.message.size);
    Bytes text(sizeof saying.client + sizeof saying.message + size);
    memcpy(text.data(), &saying.client, sizeof saying.client);
    memcpy(text.data() + sizeof saying.client, &saying.message, sizeof saying.message);
    std::copy_n(saying.parts, size, text.data() + sizeof saying.client + sizeof saying.message);
    return text;
}

Saying saying_in(const Bytes &text)
{
    Saying saying;
    assert(text.size() >= sizeof saying.client + sizeof saying.message);
    memcpy(&saying.client, text.data(), sizeof saying.client);
    memcpy(&saying.message, text.data() + sizeof saying.client, sizeof saying.message);
    assert(text.size() ==
           sizeof saying.client + sizeof saying.message + static_cast<size_t>(saying.message.size));
    saying.parts = text.data() + sizeof saying.client + sizeof saying.message;
    return saying;
}

template <class Number> static void append(const std::vector<Number> &numbers, Bytes *text)
{
    const uint64_t n = numbers.size();
    const auto *const count = reinterpret_cast<const unsigned char *>(&n);
    const auto *const from = reinterpret_cast<const unsigned char *>(numbers.data());
    text->insert(text->end(), count, count + sizeof n);
    text->insert(text->end(), from, from + n * sizeof(Number));
}

template <class Number> static std::vector<Number> next_in(const Bytes &text, size_t *at)
{
    uint64_t n;
    assert(*at + sizeof n <= text.size());
    memcpy(&n, text.data() + *at, sizeof n);
    *at += sizeof n;
    assert(n <= (text.size() - *at) / sizeof(Number));
    std::vector<Number> numbers(n);
    if (n > 0) memcpy(numbers.data(), text.data() + *at, n * sizeof(Number));
    *at += n * sizeof(Number);
    return numbers;
}

Bytes bytes_of(const Assignment &assignment)
{
    const Problem &problem = assignment.problem;
    Bytes text;
    append(std::vector<uint64_t>{static_cast<uint64_t>(assignment.seed), assignment.digest}, &text);
    for (const std::vector<int> *numbers :
         {&problem.eptr, &problem.graph.pins, &problem.vwgts, &problem.hewgts, &problem.fixed,
          &problem.start, &problem.groups})
        append(*numbers, &text);
    append(problem.capacities, &text);
    return text;
}

Assignment assignment_in(const Bytes &text)
{
    Assignment assignment = {};
    Problem &problem = assignment.problem;
    size_t at = 0;
    const std::vector<uint64_t> head = next_in<uint64_t>(text, &at);
    assert(head.size() == 2);
    assignment.seed = static_cast<int64_t>(head[0]);
    assignment.digest = head[1];
    for (std::vector<int> *numbers :
         {&problem.eptr, &problem.graph.pins, &problem.vwgts, &problem.hewgts, &problem.fixed,
          &problem.start, &problem.groups})
        *numbers = next_in<int>(text, &at);
    problem.capacities = next_in<double>(text, &at);
    assert(at == text.size() && problem.eptr.size() == problem.hewgts.size() + 1);
    problem.began = std::chrono::steady_clock::now();
    Hypergraph &graph = problem.graph;
    graph.nvertices = static_cast<int64_t>(problem.vwgts.size());
    graph.nnets = static_cast<int64_t>(problem.hewgts.size());
    graph.start.assign(problem.eptr.begin(), problem.eptr.end());
    graph.vertexwgt.assign(problem.vwgts.begin(), problem.vwgts.end());
    graph.netwgt.assign(problem.hewgts.begin(), problem.hewgts.end());
    return assignment;
}

#ifndef ZORPEL_MPI_VERSION
#define ZORPEL_MPI_VERSION ZORPELX_CLI_VERSION
#endif

std::string greeting(const Settings &settings)
{
    std::string text = ZORPEL_MPI_VERSION;
    for (const std::string &word : settings.words) text += '\n' + word;
    return text;
}
