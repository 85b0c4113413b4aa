/* zorpelx/lib/channel.h: the jobs of a search shared over a socket: the messages, and the side of
 * the search.
 *
 * The search asks, whoever is at the other end answers:
 *   OPEN   a batch begins: job is its first, n how many
 *   WANT   a thread has nothing to do; answered by TAKE, MAKE, OVER or STOP before it asks again
 *   MADE   a result, followed by its parts; not answered
 * Both ends are processes of one machine and of one version.
 */
#ifndef ZORPELX_LIB_CHANNEL_H
#define ZORPELX_LIB_CHANNEL_H

#include <cstddef>
#include <cstdint>

enum class Say : int32_t { OPEN = 1, WANT, MADE, TAKE, MAKE, OVER, STOP };

/* What parts follow: each a number of so few bytes that it holds the largest. */
struct Message {
    Say say;
    int32_t job, n;    // n: jobs of OPEN; otherwise 0
    int32_t nclusters; // of OPEN, MADE, TAKE
    int64_t objective, excess;
    int64_t size; // bytes that follow
};

/* Whole messages; false when the other end is gone. */
bool send_all(int socket, const void *data, size_t size);
bool receive_all(int socket, void *data, size_t size);

struct Fleet;

/* The fleet at the other end of a socket, until close_channel(). */
struct Channel;
Channel *open_channel(int socket, int nparts);
Fleet fleet_of(Channel *channel);
void close_channel(Channel *channel);

#endif
