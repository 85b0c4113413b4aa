/* SPDX-License-Identifier: MIT */
/* zorpel.h: the public interface of libzorpel, hypergraph partitioning by multilevel recursive
 * bisection.
 *
 * A hypergraph of nvtxs vertices and nhedges hyperedges arrives as flat arrays:
 *   eptr     [nhedges + 1] start of each hyperedge's vertices in eind; eptr[0] is 0, never falling
 *   eind     [eptr[nhedges]] the vertices of each hyperedge, 0 to nvtxs - 1, each at most once
 *   vwgts    [nvtxs] vertex weights, or NULL: every weight is 1
 *   hewgts   [nhedges] hyperedge weights, or NULL: every weight is 1
 * Weights are not negative and each kind totals at most 2147483646; vertices, hyperedges and pins
 * number at most 2147482624 each. All of this is checked, every entry of every array, before any
 * work is done: a caller vouches for the sizes of the arrays only. The arrays are copied, never
 * kept or changed; only part and edgecut are written.
 *
 * Options are ZORPEL_NOPTIONS ints (slots below); slot 0 = 0 takes the defaults for all others.
 * With a non-negative seed the same call gives the same result on every run.
 *
 * Errors: an invalid argument or a failed allocation prints one sentence on standard error, which
 * counts vertices and hyperedges from 0, and ends the process with status 0. zorpel(3) lists the
 * sentences. The routines draw from the C library's rand(), reseed it (all
 * but ZORPEL_2WayRefine) and are not meant for several threads at once.
 */
#ifndef ZORPEL_H
#define ZORPEL_H

#ifdef __cplusplus
extern "C" {
#endif

#if defined(__GNUC__)
#define ZORPEL_API __attribute__((visibility("default")))
#else
#define ZORPEL_API
#endif

/* Slots of the options array, with the default in parentheses. */
enum {
    ZORPEL_OPT_USE = 0,     /* 0: take every default; other: take slots 1 to 8 as passed */
    ZORPEL_OPT_NRUNS = 1,   /* independent runs of each bisection, at least 1 (10) */
    ZORPEL_OPT_CTYPE = 2,   /* matching scheme, ZORPEL_CTYPE_* (HFC) */
    ZORPEL_OPT_RTYPE = 3,   /* refinement scheme, ZORPEL_RTYPE_* (FM) */
    ZORPEL_OPT_VCYCLE = 4,  /* V-cycles, ZORPEL_VCYCLE_* (END) */
    ZORPEL_OPT_RECONST = 5, /* 1 keeps the pieces of cut hyperedges when splitting (0) */
    ZORPEL_OPT_FIXED = 6,   /* 1: part holds pre-assignments on entry (0) */
    ZORPEL_OPT_SEED = 7,    /* seed of the random generator; negative: from the clock (-1) */
    ZORPEL_OPT_DBGLVL = 8,  /* sum of ZORPEL_DBG_* traces on standard output (0) */
    ZORPEL_NOPTIONS = 9
};

/* Matching schemes of coarsening. */
enum {
    ZORPEL_CTYPE_HFC = 1,   /* hybrid first choice: GFC for four levels then FC; runs alternate */
    ZORPEL_CTYPE_FC = 2,    /* first choice, visiting vertices by degree */
    ZORPEL_CTYPE_GFC = 3,   /* first choice, visiting the strongest connections first */
    ZORPEL_CTYPE_HEDGE = 4, /* whole hyperedges, then parts of hyperedges, then pairs */
    ZORPEL_CTYPE_EDGE = 5   /* pairs of vertices by heaviest connectivity */
};

/* Refinement schemes of uncoarsening. */
enum {
    ZORPEL_RTYPE_FM = 1,     /* Fiduccia-Mattheyses passes over all vertices */
    ZORPEL_RTYPE_1WAYFM = 2, /* one-directional passes first, then FM */
    ZORPEL_RTYPE_EEFM = 3    /* FM that leaves a pass early on the finer levels */
};

/* V-cycles: coarsen again without crossing the cut, and refine again; each time until two cycles in
 * a row bring nothing, at most 10. */
enum {
    ZORPEL_VCYCLE_NO = 0,
    ZORPEL_VCYCLE_END = 1,    /* on the best runs, once all runs are made */
    ZORPEL_VCYCLE_FORMIN = 2, /* on every run that is the best so far */
    ZORPEL_VCYCLE_ALL = 3     /* on every run that is not far from the best */
};

/* Trace bits of the debug level. */
enum {
    ZORPEL_DBG_COARSEN = 1,   /* a line for each coarsening level */
    ZORPEL_DBG_INIT = 2,      /* trials of the initial bisection */
    ZORPEL_DBG_PASS = 4,      /* refinement passes */
    ZORPEL_DBG_BISECTION = 8, /* header and summary of each bisection */
    ZORPEL_DBG_RUN = 16,      /* a line for each run */
    ZORPEL_DBG_TIME = 32,     /* timers, printed at the end */
    ZORPEL_DBG_DETAIL = 128,  /* the cut after each stage of every run and V-cycle */
    ZORPEL_DBG_MOVE = 256     /* a line for each move of a refinement */
};

/* Partitions a hypergraph into nparts parts by recursive bisection; for 2 < nparts < 65 the result
 * is then polished by greedy k-way refinement.
 *   nparts    parts wanted, at least 2
 *   ubfactor  percent, 1 to 49: each side of a bisection may miss its share of the weight by it
 *   options   [ZORPEL_NOPTIONS] see above
 *   part      [nvtxs] in (only with the fixed option): part of each pre-assigned vertex, -1 for a
 *             free one; out: the part of every vertex, 0 to nparts - 1
 *   edgecut   out: total weight of the hyperedges with vertices in more than one part (with the
 *             reconst option and no polish: the sum of the cuts of all bisections, at most
 *             2147483647)
 */
ZORPEL_API void ZORPEL_PartRecursive(int nvtxs, int nhedges, const int *vwgts, const int *eptr,
                                     const int *eind, const int *hewgts, int nparts, int ubfactor,
                                     const int *options, int *part, int *edgecut);

/* The same without the final k-way polish, and with 10 instead of 20 trials for each initial
 * bisection when nparts is below 65. */
ZORPEL_API void ZORPEL_PartRecursiveInternal(int nvtxs, int nhedges, const int *vwgts,
                                             const int *eptr, const int *eind, const int *hewgts,
                                             int nparts, int ubfactor, const int *options,
                                             int *part, int *edgecut);

/* Refines a bisection by at most 10 passes of FM on the hypergraph as it stands.
 *   ubfactor  percent: each side may miss half of the weight by it
 *   options   only slots 0 and 8 matter; the generator is used as the caller seeded it
 *   part      [nvtxs] in/out: side of each vertex, 0 or 1
 *   edgecut   out: cut of the refined bisection
 */
ZORPEL_API void ZORPEL_2WayRefine(int nvtxs, int nhedges, const int *vwgts, const int *eptr,
                                  const int *eind, const int *hewgts, int ubfactor,
                                  const int *options, int *part, int *edgecut);

#ifdef __cplusplus
}
#endif

#endif
