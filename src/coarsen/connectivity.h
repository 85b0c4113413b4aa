/* SPDX-License-Identifier: MIT */
/* coarsen/connectivity.h: sums of edge weights in a table of ints (coarsen/ only).
 *
 * While partners are searched, the integer table of coarsening holds for each vertex how strongly
 * it is connected to the vertex in search: the bits of a float. Two values are no sum of weights
 * and make a branch superfluous:
 *     UNSEEN  minus zero: any weight can be added to it without a look, and no sum of weights,
 *             which are not negative, gives it
 *     BARRED  minus infinity: it is not unseen, so that the vertex is never listed as a candidate,
 *             and adding leaves it as it is
 */
#ifndef ZORPEL_COARSEN_CONNECTIVITY_H
#define ZORPEL_COARSEN_CONNECTIVITY_H

#include <bit>
#include <limits>

using Connectivity = int; // the bits of a float

constexpr Connectivity UNSEEN = std::bit_cast<Connectivity>(-0.0f);
constexpr Connectivity BARRED =
    std::bit_cast<Connectivity>(-std::numeric_limits<float>::infinity());

inline float strength_of(Connectivity bits)
{
    return std::bit_cast<float>(bits);
}

inline Connectivity strengthened(Connectivity bits, float weight)
{
    return std::bit_cast<Connectivity>(strength_of(bits) + weight);
}

#endif
