/* SPDX-License-Identifier: MIT */
/* mpi/mail.cpp: letters between ranks that never wait for each other. */
#include "mail.h"

#include <algorithm>

constexpr size_t LONGEST = size_t{1} << 28; // bytes of a letter of several

void Mailbox::post(int rank, int kind, std::shared_ptr<const Bytes> text, size_t from, size_t size)
{
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

bool Mailbox::receive(Letter *letter)
{
    int there = 0, size = 0;
    MPI_Status status;
    if (MPI_Iprobe(MPI_ANY_SOURCE, MPI_ANY_TAG, comm, &there, &status) != MPI_SUCCESS || !there)
        return false;
    MPI_Get_count(&status, MPI_BYTE, &size);
    letter->from = status.MPI_SOURCE;
    letter->kind = status.MPI_TAG;
    letter->text.resize(static_cast<size_t>(size));
    received_bytes += size;
    return MPI_Recv(letter->text.data(), size, MPI_BYTE, status.MPI_SOURCE, status.MPI_TAG, comm,
                    MPI_STATUS_IGNORE) == MPI_SUCCESS;
}

bool Mailbox::is_delivered()
{
    underway.remove_if([](Sent &sent) {
        int done = 0;
        return MPI_Test(&sent.request, &done, MPI_STATUS_IGNORE) != MPI_SUCCESS || done;
    });
    return underway.empty();
}
