/* SPDX-License-Identifier: MIT */
/* zorpelx/cli/jobserver.h: the near end of the channels to the searches of this process. */
#ifndef ZORPELX_CLI_JOBSERVER_H
#define ZORPELX_CLI_JOBSERVER_H

#include <functional>
#include <mutex>
#include <vector>

#include "lib/transfer.h"

class JobServer
{
  public:
    using Heard =
        std::function<void(int client, const Message &message, std::vector<unsigned char> parts)>;
    using Gone = std::function<void(int client)>;

    ~JobServer();
    /* A socket for one more search, the far end; -1: the system refuses. Any thread may call. */
    int connect();
    /* Hears what searches have to say, after so many milliseconds at the latest. */
    void poll(int milliseconds, const Heard &heard, const Gone &gone);
    /* A search that is gone hears nothing. */
    void send(int client, const Message &message, const unsigned char *parts);

  private:
    struct Line {
        int client, socket;
    };

    void hear(const Line &line, const Heard &heard, const Gone &gone);

    std::mutex connecting;
    std::vector<Line> lines; // under connecting
    int nclients = 0;
};

/* What zorpelx_options.channel takes: user is a JobServer. */
int connect_to_server(void *user);

#endif
