// SPDX-License-Identifier: MIT
/* core/ctrl_ok.cpp: the invariants of the control record and of the generator on it.
 *
 * The fields that have two readings (CType, RType) are not tested: a stage refuses what it does not
 * know. An imbalance that is no number passes, as levels without weight give one.
 */
#include "core/ctrl.h"
#include "core/holds.h"

static bool is_flag(int value)
{
    return value == 0 || value == 1;
}

bool generator_ok(const Generator *generator)
{
    if (!generator->own) return true;
    HOLDS(G1, 0 <= generator->oldest && generator->oldest < NLAGGED);
    unsigned bits = 0;
    for (const unsigned word : generator->lagged) bits |= word;
    HOLDS(G2, (bits & 1) != 0);
    return true;
}

bool ctrl_ok(const PartCtrl *ctrl)
{
    HOLDS(O1, ctrl->CoarsenTo > 0 && ctrl->Nruns > 0 && ctrl->nparts > 0);
    HOLDS(O1, ctrl->maxnetsize >= 0 && ctrl->MaxCellWgt >= 0);
    HOLDS(O2, !(ctrl->ubfactor < 0));
    HOLDS(O2, 0 <= ctrl->splitratio && ctrl->splitratio <= 1);
    HOLDS(O3, is_flag(ctrl->fixed) && is_flag(ctrl->Reconst));
    HOLDS(O3, is_flag(ctrl->heavycells) && is_flag(ctrl->kwayrefine));
    HOLDS(O3, VCYCLE_NO <= ctrl->VCycle && ctrl->VCycle <= VCYCLE_ALL);
    return generator_ok(&ctrl->random);
}
