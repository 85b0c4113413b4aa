/* SPDX-License-Identifier: MIT */
/* zorpelx/lib/channel.h: the jobs of a search shared over a socket: the side of the search. */
#ifndef ZORPELX_LIB_CHANNEL_H
#define ZORPELX_LIB_CHANNEL_H

struct Fleet;

/* The fleet at the other end of a socket, until close_channel(). */
struct Channel;
Channel *open_channel(int socket, int nparts);
Fleet fleet_of(Channel *channel);
void close_channel(Channel *channel);

#endif
