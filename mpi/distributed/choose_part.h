/* SPDX-License-Identifier: MIT */
/* mpi/distributed/choose_part.h: the part that a vertex would best move to, and how urgently. */
#ifndef ZORPEL_MPI_DISTRIBUTED_CHOOSE_PART_H
#define ZORPEL_MPI_DISTRIBUTED_CHOOSE_PART_H

#include "distributed/division.h"
#include "distributed/tally.h"

constexpr uint32_t WORST_CLASS = 255;

/* A part and the gain of moving there. */
struct Choice {
    int part;
    int64_t gain;
};

/* What a vertex's choice is made from.
 *   roomiest, second  the parts with most room
 */
struct Chooser {
    const Level *level;
    const Goal *goal;
    const Division *division;
    std::vector<int64_t> room; // [nparts]
    int roomiest, second;
};

/* Of the parts as they are. */
Chooser open_chooser(const Level *level, const Goal *goal, const Division *division);

/* The best part for own vertex v that has room for it, part -1: there is none.
 *   tally  in  the shares of all ranks, by part + 1 */
Choice choose_part(const Chooser *chooser, size_t v, const Tally *tally);

/* 0, 1, then two classes to each doubling. */
uint32_t half_octave(uint64_t value);

/* A key of a move: the class first, then a lot. */
uint32_t key_of(uint32_t order, uint64_t seed, int64_t vertex);

/* The class of a gain: the larger, the smaller. */
inline uint32_t class_of_gain(int64_t gain)
{
    return gain >= 0 ? WORST_CLASS / 2 - half_octave(static_cast<uint64_t>(gain))
                     : WORST_CLASS / 2 + half_octave(static_cast<uint64_t>(-gain));
}

#endif
