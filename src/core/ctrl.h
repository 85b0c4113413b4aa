/* SPDX-License-Identifier: MIT */
/* core/ctrl.h: the control record that every partitioning routine takes first.
 *
 * One record lives as long as one call of an entry point. Options and limits are plain fields;
 * stages that change CoarsenTo, CType or RType restore them, while ubfactor, once replaced by the
 * balance that recursive bisection reached, stays replaced on purpose.
 */
#ifndef ZORPEL_CORE_CTRL_H
#define ZORPEL_CORE_CTRL_H

#include <cstdio>

#include "core/random.h"

/* Trace bits of dbglvl. */
enum DebugBit {
    DBG_COARSEN = 1,
    DBG_INIT = 2,
    DBG_PASS = 4,
    DBG_BISECTION = 8,
    DBG_RUN = 16,
    DBG_TIME = 32,
    DBG_DETAIL = 128,
    DBG_MOVE = 256
};

/* Matching schemes; 6 and 7 are for library use only. Restricted coarsening has its own two. */
enum MatchScheme : int {
    CTYPE_HFC = 1,
    CTYPE_FC = 2,
    CTYPE_GFC = 3,
    CTYPE_HEDGE = 4,
    CTYPE_EDGE = 5,
    CTYPE_HEDGE_ONLY = 6,
    CTYPE_HEDGE_EDGE = 7
};
enum RestrictedScheme : int { RESTRICTED_STARS = 0, RESTRICTED_EDGES = 1 };

/* Refinement schemes; 5 and 10 are for library use only. */
enum RefineScheme : int {
    RTYPE_FM = 1,
    RTYPE_ONEWAY = 2,
    RTYPE_EEFM = 3,
    RTYPE_FM2 = 5,
    RTYPE_NONE = 10
};
/* What k-way refinement makes small. */
enum KwayObjective : int { OBJECTIVE_CUT = 1, OBJECTIVE_SOED = 2, OBJECTIVE_NONE = RTYPE_NONE };

enum VCycleMode { VCYCLE_NO = 0, VCYCLE_END = 1, VCYCLE_FORMIN = 2, VCYCLE_ALL = 3 };

/* Timers in the order in which InitTimers__ clears them. */
enum Timer {
    TIME_TOTAL,
    TIME_COARSENING,
    TIME_REFINEMENT,
    TIME_INITIALIZE,
    TIME_ITERATE,
    TIME_WRAPUP,
    TIME_MULTILEVEL,
    TIME_INITPARTITION,
    TIME_PROJECTION, // not reported
    TIME_SPARE,      // not reported, not charged
    TIME_UNCOARSENING,
    TIME_AUX1,
    TIME_AUX2,
    TIME_AUX3,
    TIME_AUX4,
    NTIMERS
};

constexpr int COARSEN_TO = 100;               // coarsest size of an ordinary bisection
constexpr int VCYCLE_COARSEN_TO = 1000;       // and of a V-cycle
constexpr int MAX_NET_SIZE = 50;              // larger hyperedges stay out of coarsening
constexpr int KWAY_POLISH_PARTS = 65;         // from this many parts on there is no k-way polish
constexpr long long MOST_WEIGHT = 2147483646; // total of a kind of weights: 32 bits less one

/*   O1  CoarsenTo, Nruns and nparts are positive, maxnetsize and MaxCellWgt not negative
 *   O2  ubfactor is not negative (no number where nothing has a weight), splitratio from 0 to 1
 *   O3  fixed, Reconst, heavycells and kwayrefine are 0 or 1, VCycle is a VCycleMode
 */
struct PartCtrl {
    int CoarsenTo;          // coarsening stops at about this many vertices
    int CType;              // read by match_scheme() and restricted_scheme()
    int RType;              // read by refine_scheme() and kway_objective()
    int Nruns;              // runs of each bisection, > 0
    int maxnetsize;         // hyperedges with more pins are pruned before coarsening
    float ubfactor;         // allowed imbalance, read by side_slack() and part_ratio()
    int fixed;              // 1 when the part array carries pre-assignments
    int seed;               // negative: seed from the clock
    int dbglvl;             // sum of DebugBits
    int Reconst;            // 1 keeps the pieces of cut hyperedges when splitting
    int VCycle;             // VCycleMode
    int nparts;             // parts wanted
    int heavycells;         // 1 when some vertex outweighs the coarsening limit
    int kwayrefine;         // 1: final k-way polish, and 20 initial trials instead of 10
    float splitratio;       // share of the weight meant for side 0 of the current bisection
    int MaxCellWgt;         // most weight that a merged vertex may reach
    double timers[NTIMERS]; // seconds, charged under DBG_TIME
    Generator random;       // all 0: the process's; of its own if others run beside this call
    FILE *traces;           // where traces go; null: standard output
    struct Crew *crew;      // threads that halves may take; null: none
};

/* Tests O1 to O3. */
bool ctrl_ok(const PartCtrl *ctrl);

/* Three fields have two readings each, one before the other in a call. A stage reads them by the
 * routine that names its own; values that it doesn't know are for it to refuse.
 *
 *   field      in a bisection                     afterwards, or within it
 *   CType      scheme of coarsening               scheme that keeps parts apart, in a V-cycle
 *   RType      scheme of two-way refinement       objective of k-way refinement
 *   ubfactor   what a side may lack of its share  heaviest part over the average, 1 or more
 *              of the weight, as a fraction of all
 */
inline MatchScheme match_scheme(const PartCtrl *ctrl)
{
    return static_cast<MatchScheme>(ctrl->CType);
}

inline RestrictedScheme restricted_scheme(const PartCtrl *ctrl)
{
    return static_cast<RestrictedScheme>(ctrl->CType);
}

inline RefineScheme refine_scheme(const PartCtrl *ctrl)
{
    return static_cast<RefineScheme>(ctrl->RType);
}

inline KwayObjective kway_objective(const PartCtrl *ctrl)
{
    return static_cast<KwayObjective>(ctrl->RType);
}

inline float side_slack(const PartCtrl *ctrl)
{
    return ctrl->ubfactor;
}

inline float part_ratio(const PartCtrl *ctrl)
{
    return ctrl->ubfactor;
}

#endif
