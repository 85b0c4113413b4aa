/* SPDX-License-Identifier: MIT */
/* refine/fm_pass.h: what a refiner knows of its pass: bounds, steps and the best point.
 *
 * A pass makes moves one after the other and ends at the best point that it has reached: after its
 * last step of the best cut, within the bounds. Steps after that are taken back.
 */
#ifndef ZORPEL_REFINE_FM_PASS_H
#define ZORPEL_REFINE_FM_PASS_H

#include <cassert>
#include <cstdlib>

#include "core/ctrl.h"
#include "core/memory.h"
#include "core/numbers.h"
#include "refine/open_bisection.h"

/* The arrays live as long as the call, the rest as long as a pass. */
struct FmPass {
    int *swaps;       // [ncells] the vertex of each step
    int *startgain;   // [ncells] FM: gains at the start; null until the first pass
    bool restarted;   // FM: counts and gains are those of the best point of the last pass
    int nswaps;       // steps so far
    int minpwgts[2];  // lower bound of each side's weight
    int initcut;      // at the start
    int initpwgts[2]; // weight of each side at the start
    int mincut;       // at the best point
    int mincutorder;  // step that reached it, -1: the start
    int mindiff;      // difference of the sides' weights there
};

inline void open_pass(FmPass *pass, int ncells)
{
    assert(ncells >= 0);
    *pass = {};
    pass->swaps = imalloc__(static_cast<size_t>(ncells), "FM_Refine: swaps");
}

inline void close_pass(FmPass *pass)
{
    QXfree__(&pass->swaps, &pass->startgain, LTERM);
}

/* Lower bounds of the two sides' weights. The precisions differ on purpose. */
inline void set_weight_bounds(const PartCtrl *ctrl, const int pwgts[2], int minpwgts[2])
{
    const int total = pwgts[0] + pwgts[1];
    assert(pwgts[0] >= 0 && pwgts[1] >= 0 && 0 <= ctrl->splitratio && ctrl->splitratio <= 1);
    minpwgts[0] = trunc_int((ctrl->splitratio - side_slack(ctrl)) * static_cast<float>(total));
    minpwgts[1] = trunc_int(
        (1.0 - static_cast<double>(ctrl->splitratio) - static_cast<double>(side_slack(ctrl))) *
        total);
}

inline bool within_bounds(const int pwgts[2], const int minpwgts[2])
{
    assert(pwgts != minpwgts);
    return pwgts[0] >= minpwgts[0] && pwgts[1] >= minpwgts[1];
}

/* How far a side is above its bound; saturates. */
inline int room_of(int pwgt, int minpwgt)
{
    return clamp_int(static_cast<long long>(pwgt) - minpwgt);
}

inline int weight_difference(const int pwgts[2])
{
    assert(pwgts[0] >= 0 && pwgts[1] >= 0);
    return abs(pwgts[0] - pwgts[1]);
}

/* Makes the present bisection the start of the pass and its best point. */
template <class Queue> inline void begin_pass(FmPass *pass, const OpenBisection<Queue> *b)
{
    pass->initcut = pass->mincut = b->cut;
    pass->initpwgts[0] = b->pwgts[0];
    pass->initpwgts[1] = b->pwgts[1];
    pass->mindiff = weight_difference(b->pwgts);
    pass->mincutorder = -1;
    pass->nswaps = 0;
}

/* Notes v as the vertex of the next step. */
inline void note_step(FmPass *pass, int v, [[maybe_unused]] int ncells)
{
    assert(pass->nswaps < ncells);
    pass->swaps[pass->nswaps++] = v;
}

/* Records the point that the last step reached if it is the best: within bounds and a smaller cut
 * or, with BalanceBreaksTies, an equal cut and better balance. */
template <bool BalanceBreaksTies, class Queue>
inline void note_best(FmPass *pass, const OpenBisection<Queue> *b)
{
    assert(pass->nswaps > 0);
    if (b->cut > pass->mincut || !within_bounds(b->pwgts, pass->minpwgts)) return;
    const int diff = weight_difference(b->pwgts);
    if (b->cut == pass->mincut && (!BalanceBreaksTies || diff >= pass->mindiff)) return;
    pass->mincut = b->cut;
    pass->mincutorder = pass->nswaps - 1;
    pass->mindiff = diff;
}

#endif
