/* SPDX-License-Identifier: MIT */
/* zorpelx/lib/transfer.h: the jobs of a search shared over a socket: the messages.
 *
 * The search asks, whoever is at the other end answers:
 *   OPEN   a batch begins: job is its first, n how many
 *   WANT   a thread has nothing to do; answered by TAKE, MAKE, OVER or STOP before it asks again
 *   MADE   a result, followed by its parts; not answered
 * Both ends are processes of one machine and of one version.
 */
#ifndef ZORPELX_LIB_TRANSFER_H
#define ZORPELX_LIB_TRANSFER_H

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <sys/socket.h>

enum class Say : int32_t { OPEN = 1, WANT, MADE, TAKE, MAKE, OVER, STOP };

/* What parts follow: each a number of so few bytes that it holds the largest. */
struct Message {
    Say say;
    int32_t job, n;      // n: jobs of OPEN; otherwise 0
    int32_t nclusters;   // of OPEN, MADE, TAKE
    int64_t independent; // of OPEN: the batch needs nothing of those before
    int64_t objective, excess;
    int64_t size; // bytes that follow
};

/* Both move all of it; false if the other end is gone. */
inline bool send_all(int socket, const void *data, size_t size)
{
    const char *at = static_cast<const char *>(data);
    while (size > 0) {
        const ssize_t sent = send(socket, at, size, MSG_NOSIGNAL);
        if (sent < 0 && errno == EINTR) continue;
        if (sent <= 0) return false;
        at += sent;
        size -= static_cast<size_t>(sent);
    }
    return true;
}

inline bool receive_all(int socket, void *data, size_t size)
{
    char *at = static_cast<char *>(data);
    while (size > 0) {
        const ssize_t got = recv(socket, at, size, MSG_WAITALL);
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) return false;
        at += got;
        size -= static_cast<size_t>(got);
    }
    return true;
}

#endif
