/* SPDX-License-Identifier: MIT */
/* mpi/distributed/ask.h: questions about vertices to their owners. */
#ifndef ZORPEL_MPI_DISTRIBUTED_ASK_H
#define ZORPEL_MPI_DISTRIBUTED_ASK_H

#include "distributed/ranks.h"

/* What the owners have, of n vertices in blocks, for each vertex of a list.
 *   asked    in   global numbers; -1: nothing is asked
 *   own      in   [own vertices] what this rank has
 *   answers  out  [asked.size()] of those that are -1: as before */
template <class T>
void ask_owners(Ranks *ranks, int64_t n, const std::vector<int64_t> &asked,
                const std::vector<T> &own, std::vector<T> *answers)
{
    Mail<int> questions;
    begin_mail(ranks, &questions);
    for (const int64_t v : asked)
        if (v >= 0) count_mail(&questions, share_owner(ranks, n, v));
    open_mail(&questions);
    const std::vector<int64_t> first = questions.first;
    for (const int64_t v : asked) {
        if (v < 0) continue;
        const int owner = share_owner(ranks, n, v);
        add_mail(&questions, owner, static_cast<int>(v - share_begin(ranks, n, owner)));
    }
    exchange(ranks, &questions);
    Mail<T> mail;
    mail.first = questions.first;
    mail.records.resize(questions.records.size());
    for (size_t i = 0; i < mail.records.size(); i++) {
        assert(questions.records[i] >= 0 && static_cast<size_t>(questions.records[i]) < own.size());
        mail.records[i] = own[static_cast<size_t>(questions.records[i])];
    }
    assert(own.size() == static_cast<size_t>(share_begin(ranks, n, ranks->rank + 1) -
                                             share_begin(ranks, n, ranks->rank)));
    questions = Mail<int>();
    exchange(ranks, &mail); // back in the order in which they were asked
    assert(mail.first == first);
    std::vector<int64_t> at = first;
    answers->resize(asked.size());
    for (size_t i = 0; i < asked.size(); i++)
        if (asked[i] >= 0)
            (*answers)[i] = mail.records[static_cast<size_t>(
                at[static_cast<size_t>(share_owner(ranks, n, asked[i]))]++)];
}

#endif
