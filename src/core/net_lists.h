/* SPDX-License-Identifier: MIT */
/* core/net_lists.h: hyperedges as bare lists, outside a level. */
#ifndef ZORPEL_CORE_NET_LISTS_H
#define ZORPEL_CORE_NET_LISTS_H

/*   N1  netptr starts at 0 and never falls
 *   N2  pins are vertices; in merged lists they increase within each hyperedge
 */
struct NetLists {
    int nnets;
    int *netptr; // [nnets + 1]
    int *netind; // [netptr[nnets]]
    int *netwgt; // [nnets]
};

/* Tests N1 and N2 for merged lists. */
bool net_lists_ok(const NetLists *nets);

#endif
