/* SPDX-License-Identifier: MIT */
/* refine/oneway.h: FM passes that move vertices in one direction. */
#ifndef ZORPEL_REFINE_ONEWAY_H
#define ZORPEL_REFINE_ONEWAY_H

#include "core/hgraph.h"
#include "core/ctrl.h"

/* Refinement whose passes move vertices off one side only, first off the heavier one (side 0 when
 * equal), then in turn; stops after a return pass that left its cut as it was. Arguments and needs
 * as Refine_FM__; gain and ndeg are exact on return. */
void Refine_OneWayFM__(PartCtrl *ctrl, HGraph *graph, int npasses);

#endif
