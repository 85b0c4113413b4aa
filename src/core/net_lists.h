/* core/net_lists.h: hyperedges as bare lists, outside a level. */
#ifndef ZORPEL_CORE_NET_LISTS_H
#define ZORPEL_CORE_NET_LISTS_H

struct NetLists {
    int nnets;
    int *netptr; // [nnets + 1] starts at 0, never falls
    int *netind; // [netptr[nnets]]
    int *netwgt; // [nnets]
};

#endif
