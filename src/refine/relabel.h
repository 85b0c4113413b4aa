/* SPDX-License-Identifier: MIT */
/* refine/relabel.h: a level's lists in an order that keeps neighbours together (refine/ only). */
#ifndef ZORPEL_REFINE_RELABEL_H
#define ZORPEL_REFINE_RELABEL_H

#include "core/hgraph.h"

/* What does not change of a hyperedge while a bisection is refined. */
struct FmNet {
    int wgt;        // netwgt
    int first, end; // pins are netind[first..end-1]
    int pinxor;     // exclusive or of all pins
};

/* A copy of a level whose vertices and hyperedges are numbered so that neighbours are close in
 * memory.
 *   R1  vertex and label are inverse permutations; netlabel is a permutation too
 *   R2  fixed vertices keep their numbers
 *   R3  lists and incidence of the copy are those of the level under the new numbers, in the same
 *       order within each list
 *   R4  weights are those of the level
 *   R5  nets has weight, place and exclusive or of the pins of each hyperedge of the copy
 */
struct Relabelled {
    HGraph level;  // lists, incidence, weights and nothing else
    int *vertex;   // [ncells] the vertex behind each label; null: no copy was made
    int *label;    // [ncells] the label of each vertex
    int *netlabel; // [nnets] the label of each hyperedge
    FmNet *nets;   // [nnets] of the copy
};

/* Makes the copy, by the level's nearby order, in O(pins). */
void relabel_level(const HGraph *graph, Relabelled *copy);
void free_relabelled(Relabelled *copy);

/* Tests R1 to R5 from scratch. */
bool relabelled_ok(const HGraph *graph, const Relabelled *copy);

#endif
