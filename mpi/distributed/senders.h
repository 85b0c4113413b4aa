/* SPDX-License-Identifier: MIT */
/* mpi/distributed/senders.h: what several ranks have to say of the same vertices, vertex by vertex.
 *
 * Every sender's records come in the order of their vertices, so a heap of the senders by the next
 * vertex of each brings those of one vertex together, without sorting and without an array as long
 * as the ranks' vertices.
 */
#ifndef ZORPEL_MPI_DISTRIBUTED_SENDERS_H
#define ZORPEL_MPI_DISTRIBUTED_SENDERS_H

#include <functional>
#include <queue>

#include "distributed/ranks.h"

/* Calls take(record) for each record and close(vertex) after the last one of each vertex, vertices
 * rising. T has a field vertex, rising in what each sender sent. */
template <class T, class Take, class Close>
void for_each_vertex(const Mail<T> &mail, Take take, Close close)
{
    using Next = std::pair<int, int>; // vertex, sender
    std::priority_queue<Next, std::vector<Next>, std::greater<Next>> next;
    std::vector<int64_t> at(mail.first.begin(), mail.first.end() - 1);
    for (size_t r = 0; r < at.size(); r++)
        if (at[r] < mail.first[r + 1])
            next.push({mail.records[static_cast<size_t>(at[r])].vertex, static_cast<int>(r)});
    while (!next.empty()) {
        const auto [vertex, sender] = next.top();
        next.pop();
        const size_t r = static_cast<size_t>(sender);
        assert(vertex >= 0);
        while (at[r] < mail.first[r + 1] &&
               mail.records[static_cast<size_t>(at[r])].vertex == vertex)
            take(mail.records[static_cast<size_t>(at[r]++)]);
        if (at[r] < mail.first[r + 1]) {
            assert(mail.records[static_cast<size_t>(at[r])].vertex > vertex); // they rise
            next.push({mail.records[static_cast<size_t>(at[r])].vertex, sender});
        }
        if (next.empty() || next.top().first != vertex) close(vertex);
    }
}

#endif
