/* SPDX-License-Identifier: MIT */
/* zorpelx.hpp: a thin C++17 face of libzorpelx, all in this header.
 *
 * Arrays are vectors, faults are exceptions. The rules of zorpelx.h hold: what is safe for
 * threads there is so here.
 *
 *     zorpelx::Hypergraph hypergraph;
 *     hypergraph.nvtxs = 4;
 *     hypergraph.add_hyperedge({0, 1, 2});
 *     hypergraph.add_hyperedge({2, 3});
 *     zorpelx::Options options;
 *     options.nparts = 2;
 *     zorpelx::Partition partition = zorpelx::partition(hypergraph, options);
 */
#ifndef ZORPELX_HPP
#define ZORPELX_HPP

#include <climits>
#include <exception>
#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "zorpelx.h"

namespace zorpelx
{

/* A fault, with the library's sentence; status is one of ZORPELX_*. */
class Error : public std::runtime_error
{
  public:
    Error(int code, const std::string &sentence)
        : std::runtime_error(sentence.empty() ? zorpelx_status_string(code) : sentence),
          status_code(code)
    {
    }
    int status() const noexcept { return status_code; }

  private:
    int status_code;
};

inline void throw_if(int status, const char *message)
{
    if (status != ZORPELX_OK) throw Error(status, message);
}

/* Hyperedges as lists of vertices from 0 to nvtxs - 1. Empty weights: every weight is 1. */
struct Hypergraph {
    int nvtxs = 0;
    std::vector<int> eptr = {0}; // [hyperedges + 1]
    std::vector<int> eind;       // [eptr.back()]
    std::vector<int> vwgts;      // [nvtxs] or empty
    std::vector<int> hewgts;     // [hyperedges] or empty

    void add_hyperedge(const std::vector<int> &vertices)
    {
        if (vertices.size() > static_cast<size_t>(INT_MAX) - eind.size())
            throw Error(ZORPELX_BAD_INPUT, "The hyperedges have more vertices than 32 bits count.");
        eind.insert(eind.end(), vertices.begin(), vertices.end());
        eptr.push_back(static_cast<int>(eind.size()));
    }

    /* The same as the C routines take it; good while this one stays as it is. Throws if the
     * lengths of the arrays disagree. */
    zorpelx_hypergraph view() const
    {
        const size_t nhedges = eptr.empty() ? 0 : eptr.size() - 1;
        check(nhedges < static_cast<size_t>(INT_MAX), "eptr has more offsets than 32 bits count.");
        check(eptr.empty() || (eptr.back() >= 0 && static_cast<size_t>(eptr.back()) == eind.size()),
              "The last offset of eptr is not the length of eind.");
        check(vwgts.empty() || (nvtxs >= 0 && vwgts.size() == static_cast<size_t>(nvtxs)),
              "vwgts should be empty or have a weight for each vertex.");
        check(hewgts.empty() || hewgts.size() == nhedges,
              "hewgts should be empty or have a weight for each hyperedge.");
        return {nvtxs,
                static_cast<int>(nhedges),
                eptr.data(),
                eind.data(),
                vwgts.empty() ? nullptr : vwgts.data(),
                hewgts.empty() ? nullptr : hewgts.data()};
    }

  private:
    static void check(bool right, const char *sentence)
    {
        if (!right) throw Error(ZORPELX_BAD_INPUT, sentence);
    }
};

/* The fields of zorpelx_options, set to their defaults, with vectors and functions for its
 * pointers: those are set from here when the call is made. */
struct Options : zorpelx_options {
    std::vector<int> pre_assigned; // [nvtxs] part of each vertex, -1 for a free one; or empty
    std::vector<double> sizes;     // [nparts] for capacities; or empty: all parts are equal
    std::vector<int> start_part;   // [nvtxs] for start, a partition to improve; or empty
    std::vector<int> together;     // [nvtxs] for groups: equal numbers stay together; or empty

    /* Returns true to cancel. What it throws cancels too, and comes out of partition(). */
    std::function<bool(const zorpelx_progress &)> progress;

    /* Receives the trace of a start, counted from 0; what it throws comes out too. */
    std::function<void(int start, std::string_view text)> traces;

    Options() : zorpelx_options() { zorpelx_options_init(this, sizeof(zorpelx_options)); }
};

/* result.status is ZORPELX_OK, or _TIMEOUT or _CANCELLED if some start had finished before. */
struct Partition {
    std::vector<int> part; // [nvtxs]
    zorpelx_result result;
};

struct Quality : zorpelx_quality {
    std::vector<int64_t> pwgts; // [nparts] weights
    std::vector<int64_t> pcuts; // [nparts] external degrees
};

/* Carries calls from C back to the functions of the options, and keeps what they throw. */
class Callbacks
{
  public:
    Callbacks(const Options &given, zorpelx_options &options) : functions(given)
    {
        options.user = this;
        options.on_progress = functions.progress ? tell_progress : nullptr;
        options.on_trace = functions.traces ? tell_trace : nullptr;
    }
    void rethrow() const
    {
        if (thrown) std::rethrow_exception(thrown);
    }

  private:
    template <class Call> void keep_exception(const Call &call)
    {
        try {
            if (!thrown) call();
        } catch (...) {
            thrown = std::current_exception();
        }
    }
    static int tell_progress(void *user, const zorpelx_progress *progress)
    {
        Callbacks &self = *static_cast<Callbacks *>(user);
        bool cancel = false;
        self.keep_exception([&] { cancel = self.functions.progress(*progress); });
        return cancel || self.thrown;
    }
    static void tell_trace(void *user, int start, const char *text, size_t length)
    {
        Callbacks &self = *static_cast<Callbacks *>(user);
        self.keep_exception([&] { self.functions.traces(start, {text, length}); });
    }

    const Options &functions;
    std::exception_ptr thrown;
};

/* Puts a vector in the place of a pointer of the options, unless it is empty. */
template <class Number>
void take_vector(const std::vector<Number> &numbers, int length, const Number **pointer,
                 const char *sentence)
{
    if (numbers.empty()) return;
    if (length < 0 || numbers.size() != static_cast<size_t>(length))
        throw Error(ZORPELX_BAD_INPUT, sentence);
    *pointer = numbers.data();
}

/* See zorpelx_partition(). Throws Error if there is no partition, and what a callback threw. */
inline Partition partition(const Hypergraph &hypergraph, const Options &options)
{
    const zorpelx_hypergraph view = hypergraph.view();
    zorpelx_options plain = options;
    Callbacks callbacks(options, plain);
    take_vector(options.pre_assigned, view.nvtxs, &plain.fixed,
                "pre_assigned should have a part for each vertex.");
    take_vector(options.sizes, plain.nparts, &plain.capacities,
                "sizes should have a number for each part.");
    take_vector(options.start_part, view.nvtxs, &plain.start,
                "start_part should have a part for each vertex.");
    take_vector(options.together, view.nvtxs, &plain.groups,
                "together should have a number for each vertex.");
    Partition partition = {};
    zorpelx_result_init(&partition.result, sizeof partition.result);
    if (view.nvtxs > 0) partition.part.resize(static_cast<size_t>(view.nvtxs));
    const int status = zorpelx_partition(&view, &plain, partition.part.data(), &partition.result);
    callbacks.rethrow();
    if (partition.result.finished == 0) throw_if(status, partition.result.message);
    return partition;
}

inline void check_length(const zorpelx_hypergraph &view, const std::vector<int> &part)
{
    if (view.nvtxs >= 0 && part.size() != static_cast<size_t>(view.nvtxs))
        throw Error(ZORPELX_BAD_INPUT, "part should have a part for each vertex.");
}

/* See zorpelx_evaluate(). */
inline Quality evaluate(const Hypergraph &hypergraph, int nparts, const std::vector<int> &part)
{
    const zorpelx_hypergraph view = hypergraph.view();
    check_length(view, part);
    char message[ZORPELX_MESSAGE_SIZE];
    Quality quality = {};
    zorpelx_quality_init(&quality, sizeof(zorpelx_quality));
    if (nparts > 0) {
        quality.pwgts.resize(static_cast<size_t>(nparts));
        quality.pcuts.resize(static_cast<size_t>(nparts));
    }
    throw_if(zorpelx_evaluate(&view, nparts, part.data(), &quality, quality.pwgts.data(),
                              quality.pcuts.data(), message),
             message);
    return quality;
}

/* See zorpelx_cut_hyperedges(). */
inline std::vector<int> cut_hyperedges(const Hypergraph &hypergraph, int nparts,
                                       const std::vector<int> &part)
{
    const zorpelx_hypergraph view = hypergraph.view();
    check_length(view, part);
    char message[ZORPELX_MESSAGE_SIZE];
    std::vector<int> hedges(static_cast<size_t>(view.nhedges));
    int count = 0;
    throw_if(zorpelx_cut_hyperedges(&view, nparts, part.data(), hedges.data(), &count, message),
             message);
    hedges.resize(static_cast<size_t>(count));
    return hedges;
}

/* See zorpelx_cut_matrix(); the entry of parts p and q is at [p * nparts + q]. */
inline std::vector<int64_t> cut_matrix(const Hypergraph &hypergraph, int nparts,
                                       const std::vector<int> &part)
{
    const zorpelx_hypergraph view = hypergraph.view();
    check_length(view, part);
    char message[ZORPELX_MESSAGE_SIZE];
    const size_t n = nparts > 0 ? static_cast<size_t>(nparts) : 0;
    std::vector<int64_t> matrix(n * n + 1); // never empty: its data is never null
    throw_if(zorpelx_cut_matrix(&view, nparts, part.data(), matrix.data(), message), message);
    matrix.pop_back();
    return matrix;
}

/* The least and the most that each part may weigh in a search; see zorpelx_part_bounds(). */
struct PartBounds {
    std::vector<int64_t> least, most; // [nparts]
};

inline PartBounds part_bounds(const Options &options, int64_t total)
{
    zorpelx_options plain = options;
    take_vector(options.sizes, plain.nparts, &plain.capacities,
                "sizes should have a number for each part.");
    const size_t n = plain.nparts > 0 ? static_cast<size_t>(plain.nparts) : 0;
    PartBounds bounds = {std::vector<int64_t>(n), std::vector<int64_t>(n)};
    const int status =
        zorpelx_part_bounds(plain.nparts, plain.epsilon, plain.least, plain.capacities, total,
                            bounds.least.data(), bounds.most.data());
    throw_if(status, "nparts, epsilon, least, the sizes or the total is out of its range.");
    return bounds;
}

/* See zorpelx_describe(). */
inline zorpelx_stats describe(const Hypergraph &hypergraph)
{
    const zorpelx_hypergraph view = hypergraph.view();
    char message[ZORPELX_MESSAGE_SIZE];
    zorpelx_stats stats;
    zorpelx_stats_init(&stats, sizeof stats);
    throw_if(zorpelx_describe(&view, &stats, message), message);
    return stats;
}

} // namespace zorpelx

#endif
