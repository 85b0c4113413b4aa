/* SPDX-License-Identifier: MIT */
/* search/flow_pierce.h: the nodes that either side of a flow network may take to go on growing. */
#ifndef ZORPEL_SEARCH_FLOW_PIERCE_H
#define ZORPEL_SEARCH_FLOW_PIERCE_H

#include "search/flow_cut.h"

/* Side X takes all that it reaches. */
template <int X> void settle(FlowNet *net, FlowCut *cut);

/* Takes the best candidate out of a chain that side X has room for; -1: none. Those of FREE that
 * the other side reaches change over to OPENING. */
template <int X> int pick(FlowNet *net, FlowCut *cut, FlowChain chain, int64_t room);

/* What the other side no longer reaches goes back to FREE. */
template <int X> void sort_candidates(FlowNet *net, FlowCut *cut);

/* A node to take where the cut has no candidates left: the first in the order of ranks that is
 * settled nowhere; -1: none. */
template <int X> int pick_anywhere(FlowNet *net, FlowCut *cut, int64_t room);

/* Makes u a terminal of side X, which has just settled. */
template <int X> void pierce(FlowNet *net, FlowCut *cut, int u);

#endif
