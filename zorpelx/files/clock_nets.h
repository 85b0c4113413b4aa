/* SPDX-License-Identifier: MIT */
/* zorpelx/files/clock_nets.h: which nets of a netlist look like clocks and resets.
 *
 * A net is one by the ports that it meets: CLK, CK, RST and names like them on a cell of any type,
 * the letters C, R and S only on cells whose type looks like that of a flip-flop or latch.
 */
#ifndef ZORPELX_FILES_CLOCK_NETS_H
#define ZORPELX_FILES_CLOCK_NETS_H

#include <vector>

#include "netlist.h"

enum NetUse : unsigned char { USE_PLAIN = 0, USE_CLOCK = 1, USE_RESET = 2 };

/* What ports and types are by their names. */
struct NetUses {
    std::vector<unsigned char> anywhere;   // of a port on any cell
    std::vector<unsigned char> sequential; // of a port on a flip-flop or latch
    std::vector<bool> flipflop;            // of a type
};
NetUses uses_of(const NetDesign &design);

inline unsigned char use_of(const NetUses &uses, int32_t type, int32_t port)
{
    const size_t p = static_cast<size_t>(port);
    return uses.flipflop[static_cast<size_t>(type)] ? uses.sequential[p] : uses.anywhere[p];
}

/* Tells the clocks and resets among the hyperedges with their sizes.
 *   use  [nnets] what each meets, as a sum */
void tell_clock_nets(const Hypergraph &graph, const std::vector<unsigned char> &use,
                     Findings *findings);

#endif
