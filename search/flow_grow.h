/* SPDX-License-Identifier: MIT */
/* search/flow_grow.h: what either side of a flow network reaches, and maximum flow.
 *
 * Growing the sink is growing the source of the network with all flow turned round, so that one
 * template serves both sides: X is SOURCE or SINK.
 */
#ifndef ZORPEL_SEARCH_FLOW_GROW_H
#define ZORPEL_SEARCH_FLOW_GROW_H

#include "search/flow_cut.h"

template <int X> inline bool is_settled(const FlowNet *net, int u)
{
    return net->nodes[u].level[X] == SETTLED;
}

/* Whether the search has to end before it has found anything. */
bool gives_up(const FlowNet *net, FlowCut *cut);

/* Makes the flow maximum, as far as limit: beyond it nothing is looked for, nor once the search has
 * to end. */
template <int X> void exhaust(FlowNet *net, FlowCut *cut, int64_t limit);

/* Finds again what side X reaches, after the flow has changed. */
template <int X> void refresh(FlowNet *net, FlowCut *cut);

#endif
