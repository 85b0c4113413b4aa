// SPDX-License-Identifier: MIT
/* zorpelx/lib/channel.cpp: the side of the search.
 *
 * Threads that want a job take turns in waiting for an answer. What was made is sent past them.
 * Without the other end there is no use in going on: the process leaves. The buffers are as large
 * as they get before threads begin, so that no thread runs out of memory here.
 */
#include "channel.h"

#include <mutex>
#include <unistd.h>
#include <vector>

#include "search/fleet.h"
#include "transfer.h"

struct Channel {
    int socket;
    size_t width, nclusters;             // width: bytes of a part's number
    std::vector<unsigned char> sent;     // parts on their way out, under asking
    std::vector<unsigned char> received; // parts on their way in, under answering
    std::mutex asking, answering;
};

static void leave_unless(bool done)
{
    if (!done) _exit(0);
}

static void send_message(const Channel *channel, const Message &message, const void *parts)
{
    leave_unless(send_all(channel->socket, &message, sizeof message) &&
                 send_all(channel->socket, parts, static_cast<size_t>(message.size)));
}

static void open_batch(void *place, int first, int n, bool independent, int nclusters)
{
    Channel *const channel = static_cast<Channel *>(place);
    channel->nclusters = static_cast<size_t>(nclusters);
    channel->sent.resize(channel->nclusters * channel->width);
    channel->received.resize(channel->nclusters * channel->width);
    send_message(channel, {Say::OPEN, first, n, nclusters, independent, 0, 0, 0}, nullptr);
}

static void pack_parts(Channel *channel, const int *part)
{
    unsigned char *at = channel->sent.data();
    for (size_t c = 0; c < channel->nclusters; c++)
        for (size_t i = 0; i < channel->width; i++)
            *at++ = static_cast<unsigned char>(part[c] >> (8 * i));
}

static void unpack_parts(const Channel *channel, int *part)
{
    const unsigned char *at = channel->received.data();
    for (size_t c = 0; c < channel->nclusters; c++) {
        unsigned p = 0;
        for (size_t i = 0; i < channel->width; i++) p |= unsigned{*at++} << (8 * i);
        part[c] = static_cast<int>(p);
    }
}

static void take_result(Channel *channel, const Message &message, JobResult *result)
{
    leave_unless(message.size == static_cast<int64_t>(channel->received.size()) &&
                 receive_all(channel->socket, channel->received.data(), channel->received.size()));
    unpack_parts(channel, result->part);
    result->objective = message.objective;
    result->excess = message.excess;
}

static FleetTurn next_turn(void *place, JobResult *result)
{
    Channel *const channel = static_cast<Channel *>(place);
    const std::lock_guard turn(channel->answering);
    {
        const std::lock_guard lock(channel->asking);
        send_message(channel, {Say::WANT, 0, 0, 0, 0, 0, 0, 0}, nullptr);
    }
    Message message;
    leave_unless(receive_all(channel->socket, &message, sizeof message));
    result->job = message.job;
    if (message.say == Say::TAKE) take_result(channel, message, result);
    return message.say == Say::MAKE   ? FLEET_MAKE
           : message.say == Say::TAKE ? FLEET_TAKE
           : message.say == Say::OVER ? FLEET_OVER
                                      : FLEET_STOP;
}

static void tell_made(void *place, const JobResult *result)
{
    Channel *const channel = static_cast<Channel *>(place);
    const std::lock_guard lock(channel->asking);
    pack_parts(channel, result->part);
    send_message(channel,
                 {Say::MADE, result->job, 0, static_cast<int32_t>(channel->nclusters), 0,
                  result->objective, result->excess, static_cast<int64_t>(channel->sent.size())},
                 channel->sent.data());
}

Channel *open_channel(int socket, int nparts)
{
    Channel *const channel = new Channel;
    channel->socket = socket;
    channel->width = nparts <= 1 << 8 ? 1 : nparts <= 1 << 16 ? 2 : 4;
    channel->nclusters = 0;
    return channel;
}

Fleet fleet_of(Channel *channel)
{
    return {channel, open_batch, next_turn, tell_made};
}

void close_channel(Channel *channel)
{
    delete channel;
}
