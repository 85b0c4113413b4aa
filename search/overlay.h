/* SPDX-License-Identifier: MIT */
/* search/overlay.h: cells of vertices that several partitions keep together. */
#ifndef ZORPEL_SEARCH_OVERLAY_H
#define ZORPEL_SEARCH_OVERLAY_H

/* Splits the cells of label [n], numbered from 0, by partition [n] of nparts parts: afterwards two
 * vertices have the same label if they had before and are in the same part. Returns the number of
 * cells, which are numbered from 0. */
int split_cells(int n, const int *partition, int nparts, int *label);

#endif
