/* SPDX-License-Identifier: MIT */
/* zorpelx.h: the public interface of libzorpelx, the safe way to partition hypergraphs from inside
 * another program.
 *
 * Every argument is checked before anything is done, and nothing ends the caller's process: a
 * routine returns a status, and a sentence naming the place at fault. The work runs in child
 * processes, so the caller's heap, random generator, standard streams and signal handlers stay as
 * they are, whatever happens to the engine.
 *
 * Use:
 *     zorpelx_options options;
 *     zorpelx_result result;
 *     zorpelx_options_init(&options, sizeof options);
 *     zorpelx_result_init(&result, sizeof result);
 *     options.nparts = 4;
 *     if (zorpelx_partition(&hypergraph, &options, part, &result) != ZORPELX_OK)
 *         fprintf(stderr, "%s\n", result.message);
 *
 * Callbacks run in the thread that called zorpelx_partition(), before it returns. One may also not
 * return: by an exception of C++, which comes out of zorpelx_partition(), by pthread_exit(), or by
 * longjmp(). The children are then ended and all that the call held is released; part is untouched,
 * and the result says ZORPELX_CANCELLED. (Of the C libraries, glibc makes that so for jumps; and
 * exceptions need callers compiled with unwind tables, as C++ is.) The same holds when the calling
 * thread is cancelled by pthread_cancel(), if that is deferred, as it is unless changed. A signal
 * handler may jump out of the call too; the call's heap memory is then lost, children and files are
 * not.
 *
 * Threads: every routine may be called from any number of threads at once, as long as no two calls
 * write to the same arrays. The arrays of a running call must not change.
 *
 * Processes: zorpelx_partition() calls fork() in the calling thread, so handlers registered with
 * pthread_atfork() run. Children are waited for by their ids. A program that reaps all children by
 * wait(), or ignores SIGCHLD, is served too, but the reason why a child died may then be lost. A
 * child has no signal handler of the caller, ignores what the caller ignores and the terminal's
 * interrupt, keeps none of the caller's files open, and dies with the calling thread. A system that
 * runs out of memory takes children before the caller. The routine must not be called from a signal
 * handler. Where the heap is not the system's and a fork leaves its locks as they are (the
 * address sanitizer of gcc 12), a child may wait for ever for one that another thread was holding:
 * set a deadline there.
 *
 * Files: zorpelx_files.h reads hypergraph, partition and fix files, plain or compressed, and
 * zorpelx_output.h writes files whole, together, and never over what is read, both as the program
 * zorpelx does.
 *
 * Records start with their size, set by their init routine: later versions add fields at the end
 * and go on serving programs built with this header.
 */
#ifndef ZORPELX_H
#define ZORPELX_H

#include <stddef.h>
#include <stdint.h>

#include "zorpel.h" /* ZORPEL_CTYPE_*, ZORPEL_RTYPE_*, ZORPEL_VCYCLE_*, ZORPEL_DBG_* */

#ifdef __cplusplus
extern "C" {
#endif

#if defined(__GNUC__)
#define ZORPELX_API __attribute__((visibility("default")))
#else
#define ZORPELX_API
#endif

/* What a routine returns. The zorpelx program ends with the same numbers (and with 4 for a
 * partition outside its limits, which is a success here: see zorpelx_result.valid). */
enum {
    ZORPELX_OK = 0,
    ZORPELX_FAILED = 1,      /* no start gave a result: the engine stopped or was killed */
    ZORPELX_BAD_OPTION = 2,  /* an option, a missing array or a wrong record size */
    ZORPELX_BAD_INPUT = 3,   /* the hypergraph, the pre-assignments or the partition to evaluate */
    ZORPELX_SYSTEM = 5,      /* the system refused a process, a mapping or a file */
    ZORPELX_NO_MEMORY = 6,   /* memory ran out, or the cap was reached */
    ZORPELX_TIMEOUT = 124,   /* the deadline came first; the best finished start is delivered */
    ZORPELX_CANCELLED = 130, /* cancelled; the best finished start is delivered */

    ZORPELX_CUT = 0,  /* objective: weight of the hyperedges cut */
    ZORPELX_KM1 = 1,  /* weight x (parts touched - 1) */
    ZORPELX_SOED = 2, /* weight x parts touched, of the hyperedges cut */

    ZORPELX_FAST = 0, /* preset: a good partition soon */
    ZORPELX_DEFAULT = 1,
    ZORPELX_BEST = 2, /* the best in several times the time */

    ZORPELX_MESSAGE_SIZE = 512 /* bytes of a message, its end included; longer ones are cut */
};

/* A hypergraph as flat arrays, read only. Vertices and hyperedges are numbered from 0. */
typedef struct zorpelx_hypergraph {
    int nvtxs;         /* vertices */
    int nhedges;       /* hyperedges */
    const int *eptr;   /* [nhedges + 1] start of each hyperedge in eind; eptr[0] is 0 */
    const int *eind;   /* [eptr[nhedges]] vertices of each hyperedge, each at most once in it */
    const int *vwgts;  /* [nvtxs] vertex weights, 0 or more; or NULL: every weight is 1 */
    const int *hewgts; /* [nhedges] hyperedge weights, 0 or more; or NULL: every weight is 1 */
} zorpelx_hypergraph;

/* How far the work is. Counts of runs, levels and the cut of the last run are drawn from the
 * engine's traces; they stay at their first values when traces are requested for the caller. */
typedef struct zorpelx_progress {
    size_t size;     /* bytes of this record */
    int starts;      /* wanted */
    int running;     /* at work now */
    int finished;    /* ended with a partition */
    int failed;      /* ended without */
    int64_t runs;    /* runs of bisections made, over all starts */
    int64_t allruns; /* and in all: starts x (nparts - 1) x nruns */
    int64_t levels;  /* levels of coarsening made, over all starts */
    int level_vtxs;  /* vertices of the last of them, or -1 */
    int run_cut;     /* cut of the last run, of its bisection alone, or -1 */
    int64_t cut;     /* cut of the best start so far, or -1 */
    double seconds;  /* since the call began */

    int64_t objective; /* of the best partition that a search has, or -1 */
    int jobs, alljobs; /* of the searches at work: done, and in all; alljobs -1 without an end */
    const char
        *step; /* what found it: "packing", "start", "member", "combination", "exact"; or "" */
} zorpelx_progress;

/* Returns 0 to go on, anything else to cancel. */
typedef int (*zorpelx_progress_fn)(void *user, const zorpelx_progress *progress);

/* Receives the whole trace of one start when it ends; start counts from 0. The text [length] has
 * no 0 byte at its end and is gone when the callback returns. */
typedef void (*zorpelx_trace_fn)(void *user, int start, const char *text, size_t length);

/* Returns a socket; negative: there is none, and the start fails. */
typedef int (*zorpelx_channel_fn)(void *user);

/* What to do. Set every field by zorpelx_options_init(), then change what is to differ. The
 * default is in parentheses. */
typedef struct zorpelx_options {
    size_t size;  /* bytes of this record, set by zorpelx_options_init() */
    int nparts;   /* parts wanted, 2 to 1000000, or to as many as there are vertices (2) */
    int ubfactor; /* percent, 1 to 49: a side of a bisection may miss its share by it (5) */
    int nruns;    /* runs of each bisection, at least 1 (10) */
    int ctype;    /* matching scheme, ZORPEL_CTYPE_* (HFC) */
    int rtype;    /* refinement scheme, ZORPEL_RTYPE_* (FM) */
    int vcycle;   /* V-cycles, ZORPEL_VCYCLE_* (END) */
    int reconst;  /* 1 keeps the pieces of cut hyperedges when splitting (0) */
    int polish;   /* 1: k-way refinement at the end if 2 < nparts < 65; 0: none (1) */
    int trace;    /* sum of ZORPEL_DBG_*, for on_trace (0) */

    int seed; /* of the first start, then seed + 1 and so on; -1: drawn by chance, and given in the
               * result (1). 0 and 1 give the same random numbers, so 0 is for one start only. */
    int starts; /* independent starts, at least 1; the best is delivered (1) */
    int jobs;   /* starts at work at once; 0: one for each processor; more than two for each are
                 * as two for each (0) */

    double timeout; /* seconds for the whole call, its checks included; 0: no deadline (0) */
    size_t memory;  /* most bytes that the call may take in the caller's process, and together with
                     * a start's own in the process of that start; 0: no cap (0) */

    const int *fixed; /* [nvtxs] part of each pre-assigned vertex, -1 for a free one; or NULL */

    const volatile int *cancel; /* polled: the call ends soon after it is not 0; or NULL. May be set
                                 * by another thread or a signal handler. */

    zorpelx_progress_fn on_progress; /* a few times a second and after each start; or NULL */
    zorpelx_trace_fn on_trace;       /* or NULL: no trace is kept */
    void *user;                      /* handed to both */

    int threads; /* of each start; 0: all processors divided by the jobs; more than two for each
                  * processor are as two for each. They change nothing but the time (0) */

    /* With epsilon 0 and more a start is a search: many partitions, of which the best are combined
     * and refined within bounds on the end result. ubfactor to polish and trace above are the
     * engine's own and are then not used. */
    double epsilon; /* percent that a part may weigh more than the average, rounded up; negative:
                     * the engine alone, within ubfactor (-1) */
    double least;   /* percent that a part may weigh less than the average; negative: no part is
                     * empty where that can be (-1) */
    const double *capacities; /* [nparts] sizes of the parts as shares of their sum, above 0: the
                               * average of a part is its share of the weight; NULL: all equal */
    int objective;    /* ZORPELX_CUT, _KM1 or _SOED; of several starts the best by it is delivered,
                       * also of the engine's (CUT) */
    int preset;       /* ZORPELX_FAST, _DEFAULT or _BEST: how much a search does (DEFAULT) */
    double time;      /* seconds; a search goes on until they are over, and that is a success; 0: as
                       * much as the preset says, the same on every machine (0) */
    const int *start; /* [nvtxs] a partition to improve, within bounds or not; or NULL */
    int keep_price;   /* price of moving a unit of weight out of its part in start (0) */
    const int *groups; /* [nvtxs] vertices of equal numbers from 0 to nvtxs - 1 stay in one part,
                        * -1: in no group; or NULL */

    int shared; /* 1: the starts are one search, which begins with so many partitions and combines
                 * the best of all; 0: each is a search of its own (0) */
    zorpelx_channel_fn channel; /* with one start, or shared ones: asked whenever a process of the
                                 * search begins. It returns a socket over which programs of this
                                 * package share the jobs; the call closes it. Not for others; or
                                 * NULL */
    void *channel_user;         /* handed to it */
} zorpelx_options;

/* What the steps of one kind did in a search. */
typedef struct zorpelx_step {
    int made;       /* partitions */
    int better;     /* of which were better than all before, in the order of the jobs */
    int64_t gained; /* by which these lowered the objective, once the bounds were kept */
    double seconds; /* spent on them, the threads' together */
} zorpelx_step;

enum { ZORPELX_NSTEPS = 5 };

/* What came out. */
typedef struct zorpelx_result {
    size_t size;      /* bytes of this record, set by zorpelx_result_init() */
    int status;       /* what zorpelx_partition() returned */
    int finished;     /* starts that gave a partition; 0: the fields down to imbalance are unset */
    int failed;       /* starts that gave none; those cut off by a deadline count as neither */
    int seed;         /* of the start delivered; options with it and one start give it again */
    int valid;        /* 1: pre-assignments kept, every part within zorpelx_part_limits(), or a
                       * search's within zorpelx_part_bounds() */
    int dropped;      /* hyperedges of less than two vertices, kept from the engine */
    int64_t cut;      /* total weight of the hyperedges cut */
    int64_t soed;     /* sum of external degrees */
    double imbalance; /* heaviest part over the average part, less 1 */
    double seconds;   /* time of the whole call */
    char message[ZORPELX_MESSAGE_SIZE]; /* empty; or why the status is not OK, the result is not
                                         * valid or some start failed (the first one, by seed) */
    int64_t connectivity;               /* connectivity minus one */
    int64_t moved;         /* weight of the vertices that are not in their part of options.start */
    int jobs, alljobs;     /* of the search delivered: done, and in all (-1 with options.time) */
    int pool, generations; /* of it: partitions that it kept, and batches of combinations */
    zorpelx_step steps[ZORPELX_NSTEPS]; /* of it: packing, start, member, combination, exact */
} zorpelx_result;

/* Quality of a partition; every sum is exact in 64 bits. A hyperedge that touches d > 1 parts is
 * cut. */
typedef struct zorpelx_quality {
    size_t size;           /* bytes of this record, set by zorpelx_quality_init() */
    int cut_hedges;        /* hyperedges cut */
    int empty_parts;       /* parts without a vertex */
    int64_t cut;           /* their weight */
    int64_t soed;          /* sum of external degrees: weight x d over the hyperedges cut */
    int64_t connectivity;  /* connectivity minus one: weight x (d - 1) over the hyperedges cut */
    int64_t total_weight;  /* of the vertices */
    int64_t lightest_part; /* weight of the lightest part */
    int64_t heaviest_part; /* and of the heaviest */
    double absorption;     /* (pins - d) / (pins - 1) summed over the hyperedges, weights aside; one
                            * of less than two vertices counts 1 */
    double scaled_cost;    /* external degree / weight summed over the parts, divided by
                            * nvtxs x (nparts - 1); 0/0 counts 0, a weightless part with an
                            * external degree makes it infinite, nparts = 1 or no vertices 0 */
    double imbalance;      /* heaviest part over the average part, less 1; 0 without weight */
} zorpelx_quality;

/* How many numbers lie in least to most. */
typedef struct zorpelx_bin {
    int64_t least, most, count;
} zorpelx_bin;

enum { ZORPELX_MOST_BINS = 40 };

/* How numbers are spread: in bins of 0, 1, 2, 3, 4, 5 to 8, 9 to 16, and so on. */
typedef struct zorpelx_spread {
    int64_t least, most;
    double average;
    int nbins; /* up to the last that is not empty */
    zorpelx_bin bins[ZORPELX_MOST_BINS];
} zorpelx_spread;

/* What a hypergraph is like. */
typedef struct zorpelx_stats {
    size_t size;                      /* bytes of this record, set by zorpelx_stats_init() */
    int64_t pins;                     /* places of vertices in hyperedges */
    int64_t vertex_weight;            /* of all vertices */
    int64_t hyperedge_weight;         /* of all hyperedges */
    int64_t components;               /* that hyperedges join, vertices in none included */
    int64_t largest_component;        /* vertices of the largest */
    int64_t islands;                  /* vertices in no hyperedge */
    int64_t parked;                   /* vertices in no hyperedge of 2 to 50 vertices */
    int64_t large_hyperedges;         /* of more than 50 vertices */
    int64_t single_vertex_hyperedges; /* never cut */
    int64_t memory;                   /* bytes that one start takes, estimated */
    zorpelx_spread sizes;             /* of the hyperedges */
    zorpelx_spread degrees;           /* of the vertices: hyperedges that each is in */
} zorpelx_stats;

/* The library's version, such as "1.0.0". */
ZORPELX_API const char *zorpelx_version(void);

/* A few words on a status, such as "deadline reached"; never NULL. */
ZORPELX_API const char *zorpelx_status_string(int status);

/* Set a record to its defaults. size is its sizeof where the caller was compiled; returns
 * ZORPELX_BAD_OPTION, and does nothing, for a null record or a size that this library does not
 * know. */
ZORPELX_API int zorpelx_options_init(zorpelx_options *options, size_t size);
ZORPELX_API int zorpelx_result_init(zorpelx_result *result, size_t size);
ZORPELX_API int zorpelx_quality_init(zorpelx_quality *quality, size_t size);
ZORPELX_API int zorpelx_stats_init(zorpelx_stats *stats, size_t size);

/* Checks everything that zorpelx_partition() checks, in O(nvtxs + pins): records, null pointers,
 * options, sizes, offsets, vertex numbers, repeated vertices, weights and their totals (each kind
 * at most 2147483646), pre-assignments. Deadline, cancel flag and memory cap of the options hold.
 *   message  [ZORPELX_MESSAGE_SIZE] out: the first fault found, empty if none; or NULL
 * Returns ZORPELX_OK, _BAD_OPTION, _BAD_INPUT, _NO_MEMORY, _TIMEOUT or _CANCELLED.
 */
ZORPELX_API int zorpelx_check(const zorpelx_hypergraph *hypergraph, const zorpelx_options *options,
                              char *message);

/* Partitions a hypergraph, see ZORPEL_PartRecursive(): with one start and a seed, the same
 * partition, but that hyperedges of less than two vertices, which no partition can cut, are kept
 * from the engine.
 *   part    [nvtxs] out: the part of every vertex, 0 to nparts - 1; untouched if no start finished
 *   result  in: its size; out: the rest
 * Of several starts the best is delivered: a valid one before the others, then the least weight
 * outside a search's bounds, the least objective, the least cut, the least sum of external degrees,
 * the least imbalance, the least seed. A search that a deadline or a cancellation cuts off delivers
 * the best partition that it has found. Every start
 * is made and compared, so neither jobs nor threads nor timing changes the result, unless the
 * deadline or a cancellation cuts some off, or some fail for want of memory.
 * Cost    each job takes the engine's memory in a process of its own and nvtxs ints in this one;
 *         with a cap there are no more jobs than fit below it here.
 * Returns any status. With ZORPELX_TIMEOUT and ZORPELX_CANCELLED a partition is delivered if
 *         result->finished is not 0; with every other failure none is.
 */
ZORPELX_API int zorpelx_partition(const zorpelx_hypergraph *hypergraph,
                                  const zorpelx_options *options, int *part,
                                  zorpelx_result *result);

/* Evaluate a partition of any origin. The hypergraph is checked as zorpelx_check() does, but that
 * totals of weights may exceed 32 bits.
 *   nparts   parts, 1 to 1000000, or to as many as there are vertices
 *   part     [nvtxs] the part of every vertex, 0 to nparts - 1
 *   message  [ZORPELX_MESSAGE_SIZE] out: the first fault found, empty if none; or NULL
 * Return ZORPELX_OK, _BAD_OPTION, _BAD_INPUT or _NO_MEMORY; on a fault nothing else is written.
 */

/*   quality  in: its size; out: the rest
 *   pwgts    [nparts] out: weight of each part; or NULL
 *   pcuts    [nparts] out: external degree of each part, the weight of the cut hyperedges that
 *            touch it; or NULL */
ZORPELX_API int zorpelx_evaluate(const zorpelx_hypergraph *hypergraph, int nparts, const int *part,
                                 zorpelx_quality *quality, int64_t *pwgts, int64_t *pcuts,
                                 char *message);

/*   hedges   [nhedges] out: the hyperedges cut, increasing
 *   count    out: how many they are */
ZORPELX_API int zorpelx_cut_hyperedges(const zorpelx_hypergraph *hypergraph, int nparts,
                                       const int *part, int *hedges, int *count, char *message);

/*   matrix   [nparts x nparts] out: at [p x nparts + q] the weight of the hyperedges that touch
 *            both p and q, at [p x nparts + p] of those that lie within p */
ZORPELX_API int zorpelx_cut_matrix(const zorpelx_hypergraph *hypergraph, int nparts,
                                   const int *part, int64_t *matrix, char *message);

/* What a hypergraph is like, in O(pins) nearly; it is checked as for the evaluations.
 *   stats    in: its size; out: the rest
 *   message  [ZORPELX_MESSAGE_SIZE] out: the first fault found, empty if none; or NULL
 * Returns ZORPELX_OK, _BAD_OPTION, _BAD_INPUT or _NO_MEMORY. */
ZORPELX_API int zorpelx_describe(const zorpelx_hypergraph *hypergraph, zorpelx_stats *stats,
                                 char *message);

/* The weights that recursive bisection allows each part: the factor compounds over the bisections,
 * rounded as the engine rounds, and the final refinement may spread what they leave evenly.
 *   ubfactor, polish  as in zorpelx_options
 *   total             weight of all vertices, 0 or more; beyond 2147483646, where no engine runs,
 *                     what its rules come to
 *   least, most       [nparts] out: the limits of each part; either may be NULL
 * A single heavy vertex, or pre-assignments, can make it impossible to keep them.
 * Returns ZORPELX_OK, ZORPELX_BAD_OPTION or ZORPELX_NO_MEMORY.
 */
ZORPELX_API int zorpelx_part_limits(int nparts, int ubfactor, int polish, int64_t total,
                                    int64_t *least, int64_t *most);

/* The bounds of a search's parts: the average of a part is the total, or its capacity's share of
 * it, rounded up; no part weighs more than (1 + epsilon / 100) times that.
 *   epsilon, least, capacities  as in zorpelx_options, epsilon at least 0
 *   total                       weight of all vertices, 0 or more
 *   low, high                   [nparts] out: the bounds of each part; either may be NULL
 * Without least no part is empty, if there is weight for all; where vertices cannot fill them all,
 * zorpelx_partition() lets parts be empty.
 * Returns ZORPELX_OK, ZORPELX_BAD_OPTION or ZORPELX_NO_MEMORY.
 */
ZORPELX_API int zorpelx_part_bounds(int nparts, double epsilon, double least,
                                    const double *capacities, int64_t total, int64_t *low,
                                    int64_t *high);

/* Whether random numbers are here what they are elsewhere: the 10,000th that a generator gives.
 *   searching  0: the engine's; 1: the search's
 *   seed       of a start, 0 or more
 *   number     out
 * Returns ZORPELX_OK or ZORPELX_BAD_OPTION.
 */
ZORPELX_API int zorpelx_generator_check(int searching, int seed, uint64_t *number);

#ifdef __cplusplus
}
#endif

#endif
