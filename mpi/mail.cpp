// SPDX-License-Identifier: MIT
/* mpi/mail.cpp: letters between ranks that never wait for each other. */
#include "mail.h"

#include <algorithm>
#include <cassert>
#include <climits>
#include <set>

constexpr size_t LONGEST = size_t{1} << 28; // bytes of a letter of several

void Mailbox::post(int rank, int kind, std::shared_ptr<const Bytes> text, size_t from, size_t size)
{
    assert(rank >= 0 && kind > 0 && from + size <= text->size() && size <= INT_MAX);
    underway.push_back({std::move(text), MPI_REQUEST_NULL});
    Sent &sent = underway.back();
    sent_bytes += static_cast<int64_t>(size);
    MPI_Isend(sent.text->data() + from, static_cast<int>(size), MPI_BYTE, rank, kind, comm,
              &sent.request);
}

void Mailbox::send(int rank, int kind, Bytes text)
{
    is_delivered();
    const auto shared = std::make_shared<const Bytes>(std::move(text));
    post(rank, kind, shared, 0, shared->size());
}

void Mailbox::send_long(int rank, int kind, const std::shared_ptr<const Bytes> &text)
{
    for (size_t from = 0; from < text->size(); from += LONGEST)
        post(rank, kind, text, from, std::min(LONGEST, text->size() - from));
}

void Mailbox::look_for_letters()
{
    int there = 0, size = 0;
    MPI_Message message;
    MPI_Status status;
    while (MPI_Improbe(MPI_ANY_SOURCE, MPI_ANY_TAG, comm, &there, &message, &status) ==
               MPI_SUCCESS &&
           there) {
        MPI_Get_count(&status, MPI_BYTE, &size);
        assert(size >= 0 && status.MPI_SOURCE >= 0);
        arriving.push_back({{status.MPI_SOURCE, status.MPI_TAG, Bytes(static_cast<size_t>(size))},
                            MPI_REQUEST_NULL});
        Arriving &last = arriving.back();
        if (MPI_Imrecv(last.letter.text.data(), size, MPI_BYTE, &message, &last.request) !=
            MPI_SUCCESS)
            arriving.pop_back();
    }
}

bool Mailbox::receive(Letter *letter)
{
    look_for_letters();
    std::set<int> late; // ranks whose next letter is not all here
    for (auto next = arriving.begin(); next != arriving.end();) {
        int done = 0;
        const int from = next->letter.from;
        if (late.count(from) > 0) {
            next++;
        } else if (MPI_Test(&next->request, &done, MPI_STATUS_IGNORE) != MPI_SUCCESS) {
            next = arriving.erase(next);
        } else if (!done) {
            late.insert(from);
            next++;
        } else {
            *letter = std::move(next->letter);
            arriving.erase(next);
            received_bytes += static_cast<int64_t>(letter->text.size());
            return true;
        }
    }
    return false;
}

bool Mailbox::is_delivered()
{
    underway.remove_if([](Sent &sent) {
        int done = 0;
        return MPI_Test(&sent.request, &done, MPI_STATUS_IGNORE) != MPI_SUCCESS || done;
    });
    return underway.empty();
}
