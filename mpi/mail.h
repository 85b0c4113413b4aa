/* SPDX-License-Identifier: MIT */
/* mpi/mail.h: letters between ranks that never wait for each other.
 *
 * No collective call is made: a rank that is dead must not hold up the others. Letters from one
 * rank to another arrive in order.
 */
#ifndef ZORPEL_MPI_MAIL_H
#define ZORPEL_MPI_MAIL_H

#include <list>
#include <memory>
#include <vector>

#include <mpi.h>

using Bytes = std::vector<unsigned char>;

struct Letter {
    int from, kind;
    Bytes text;
};

class Mailbox
{
  public:
    explicit Mailbox(MPI_Comm ranks) : comm(ranks) {}

    /* Hands a letter over; its text lives until it is delivered. */
    void send(int rank, int kind, Bytes text);
    /* A text for several ranks, in letters of a size that MPI can count. */
    void send_long(int rank, int kind, const std::shared_ptr<const Bytes> &text);
    /* The next letter that has arrived as a whole, if there is one. */
    bool receive(Letter *letter);
    /* Whether all that was sent is delivered. */
    bool is_delivered();

    int64_t sent_bytes = 0, received_bytes = 0;

  private:
    struct Sent {
        std::shared_ptr<const Bytes> text;
        MPI_Request request;
    };

    /* A letter whose sender may be gone before all of it is here. */
    struct Arriving {
        Letter letter;
        MPI_Request request;
    };

    void look_for_letters();
    void post(int rank, int kind, std::shared_ptr<const Bytes> text, size_t from, size_t size);

    MPI_Comm comm;
    std::list<Sent> underway;
    std::list<Arriving> arriving; // those of one rank in order
};

#endif
