/* SPDX-License-Identifier: MIT */
/* mpi/distributed/level.h: one level of a hypergraph that is spread over ranks.
 *
 * Vertices have global numbers and are owned in blocks of them. A hyperedge is owned by one rank,
 * whichever; its pins are numbers of that rank's list of ghosts, the vertices that its hyperedges
 * touch, so that a pin takes four bytes whatever the size of the whole. Values of vertices (a
 * cluster, a part) are kept by the owner and mirrored to the ghosts after each change; what
 * hyperedges have to say of their pins is summed by the ghosts' rank and sent to the owner.
 *
 *      rank 0                          rank 1
 *      own vertices  0 .. 7            own vertices  8 .. 15
 *      ghosts        1 2 5 | 9 12      ghosts        5 | 8 9 14
 *                          \________________________/
 *      mirror of rank 0: [itself: 1 2 5] [rank 1: 5]
 */
#ifndef ZORPEL_MPI_DISTRIBUTED_LEVEL_H
#define ZORPEL_MPI_DISTRIBUTED_LEVEL_H

#include <algorithm>

#include "distributed/ranks.h"

/*   D1  own vertices are begin .. end-1 = share_begin() of this rank and the next
 *   D2  netptr rises by two or more: no hyperedge is empty or has one pin only
 *   D3  netind[i] is in 0..nghosts-1, no vertex is twice in a hyperedge
 *   D4  ghost rises; those that rank r owns stand at ghostfirst[r] .. ghostfirst[r+1]-1
 *   D5  mirror, from mirrorfirst[r], lists the own vertices that are ghosts of rank r, in order
 *   D6  incident[v] is the weight of all hyperedges of v, over all ranks
 *   D7  weights of vertices are not negative, those of hyperedges positive
 *   D8  totalweight is the weight of all vertices of all ranks; nnets and npins count over all
 */
struct Level {
    int64_t nvertices, nnets, npins; // of all ranks
    int64_t totalweight, heaviest;
    int64_t begin, end;

    std::vector<int64_t> weight;   // [end - begin] own vertices
    std::vector<int> fixed;        // [end - begin] part or -1; empty: all of all ranks are free
    std::vector<int64_t> incident; // [end - begin]

    std::vector<int> netptr;        // [own hyperedges + 1]
    std::vector<int> netind;        // [netptr.back()] ghosts
    std::vector<int64_t> netweight; // [own hyperedges]

    std::vector<int64_t> ghost;                   // [nghosts] global numbers
    std::vector<int64_t> ghostfirst, mirrorfirst; // [nranks + 1]
    std::vector<int> mirror;                      // [mirrorfirst[nranks]] own vertices, from 0

    std::vector<int64_t> coarse; // [end - begin] vertex of the next level; empty: there is none
};

inline int nown_of(const Level *level)
{
    return static_cast<int>(level->end - level->begin);
}
inline int nnets_of(const Level *level)
{
    return static_cast<int>(level->netptr.size()) - 1;
}
inline int nghosts_of(const Level *level)
{
    return static_cast<int>(level->ghost.size());
}

/* Whether own vertex v may lie in any part. */
inline bool is_free(const Level *level, size_t v)
{
    assert(v < level->weight.size());
    return level->fixed.empty() || level->fixed[v] < 0;
}

/* The rank that owns a ghost. */
inline int ghost_owner(const Ranks *ranks, const Level *level, int g)
{
    assert(g >= 0 && g < nghosts_of(level));
    return share_owner(ranks, level->nvertices, level->ghost[static_cast<size_t>(g)]);
}

/* A hypergraph as it comes in, or out of a contraction: pins by global number. */
struct LooseNets {
    std::vector<int64_t> ptr = {0}; // [nets + 1]
    std::vector<int64_t> pins;      // no vertex twice in a net
    std::vector<int64_t> weight;    // [nets]
};

/* Makes ghosts, mirrors and totals of a level of which nvertices, weight and fixed are set; nets is
 * used up. Hyperedges of fewer than two pins or of no weight are left out.
 * Cost  O(pins log pins) on each rank; two exchanges of ghosts. */
void open_level(Ranks *ranks, Level *level, LooseNets *nets);

/* Brings the values of own vertices to their ghosts.
 *   own    in   [end - begin]
 *   ghost  out  [nghosts] */
template <class T>
void mirror_values(Ranks *ranks, const Level *level, const std::vector<T> &own,
                   std::vector<T> *ghost)
{
    assert(own.size() == static_cast<size_t>(nown_of(level)));
    Mail<T> mail;
    mail.first = level->mirrorfirst;
    mail.records.resize(level->mirror.size());
    for (size_t i = 0; i < level->mirror.size(); i++)
        mail.records[i] = own[static_cast<size_t>(level->mirror[i])];
    exchange(ranks, &mail);
    assert(mail.first == level->ghostfirst);
    *ghost = std::move(mail.records); // senders in order, each its ghosts in order: as D4 has them
}

/* A value and the place of its ghost among those of one owner. */
template <class T> struct Change {
    int place;
    T value;
};

/* The same for vertices that are marked, which are few.
 *   changed  in      [end - begin]
 *   ghost    in/out  [nghosts] */
template <class T>
void mirror_changes(Ranks *ranks, const Level *level, const std::vector<char> &changed,
                    const std::vector<T> &own, std::vector<T> *ghost)
{
    assert(changed.size() == own.size() && ghost->size() == level->ghost.size());
    Mail<Change<T>> mail;
    begin_mail(ranks, &mail);
    for (int pass = 0; pass < 2; pass++) {
        if (pass == 1) open_mail(&mail);
        for (int r = 0; r < ranks->nranks; r++) {
            const int64_t first = level->mirrorfirst[static_cast<size_t>(r)];
            for (int64_t i = first; i < level->mirrorfirst[static_cast<size_t>(r) + 1]; i++) {
                const size_t v = static_cast<size_t>(level->mirror[static_cast<size_t>(i)]);
                if (!changed[v]) continue;
                if (pass == 0)
                    count_mail(&mail, r);
                else
                    add_mail(&mail, r, {static_cast<int>(i - first), own[v]});
            }
        }
    }
    exchange(ranks, &mail);
    for (int r = 0; r < ranks->nranks; r++) {
        const int64_t base = level->ghostfirst[static_cast<size_t>(r)];
        for (int64_t i = mail.first[static_cast<size_t>(r)];
             i < mail.first[static_cast<size_t>(r) + 1]; i++) {
            const Change<T> &change = mail.records[static_cast<size_t>(i)];
            assert(change.place >= 0 &&
                   base + change.place < level->ghostfirst[static_cast<size_t>(r) + 1]);
            (*ghost)[static_cast<size_t>(base + change.place)] = change.value;
        }
    }
}

/* Tests D1 to D8 from scratch; all ranks call it together, false on each that finds a fault. */
bool level_ok(Ranks *ranks, const Level *level);

#endif
