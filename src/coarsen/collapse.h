/* coarsen/collapse.h: merging of identical hyperedges in bare lists. */
#ifndef ZORPEL_COARSEN_COLLAPSE_H
#define ZORPEL_COARSEN_COLLAPSE_H

/* Merges hyperedges of equal pins into one of their summed weight.
 *   netptr [nnets + 1], netwgt [nnets]  in
 *   netind [netptr[nnets]]              in/out: each hyperedge's pins are sorted
 *   out_*                               out: new arrays, owned by the caller */
void CollapseSameHEdges__(int nnets, const int *netptr, int *netind, const int *netwgt,
                          int *out_nnets, int **out_netptr, int **out_netind, int **out_netwgt);

#endif
