// SPDX-License-Identifier: MIT
/* zorpelx/cli/jobserver.cpp: the near end of the channels to the searches of this process. */
#include "jobserver.h"

#include <algorithm>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

JobServer::~JobServer()
{
    for (const Line &line : lines) close(line.socket);
}

int JobServer::connect()
{
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) return -1;
    const std::lock_guard lock(connecting);
    lines.push_back({nclients++, ends[0]});
    return ends[1];
}

int connect_to_server(void *user)
{
    return static_cast<JobServer *>(user)->connect();
}

void JobServer::hear(const Line &line, const Heard &heard, const Gone &gone)
{
    Message message;
    std::vector<unsigned char> parts;
    bool there = receive_all(line.socket, &message, sizeof message);
    if (there && message.size > 0) {
        parts.resize(static_cast<size_t>(message.size));
        there = receive_all(line.socket, parts.data(), parts.size());
    }
    if (there) {
        heard(line.client, message, std::move(parts));
        return;
    }
    {
        const std::lock_guard lock(connecting);
        close(line.socket);
        std::erase_if(lines, [&](const Line &other) { return other.client == line.client; });
    }
    gone(line.client);
}

void JobServer::poll(int milliseconds, const Heard &heard, const Gone &gone)
{
    std::vector<Line> now;
    {
        const std::lock_guard lock(connecting);
        now = lines;
    }
    std::vector<pollfd> polled;
    for (const Line &line : now) polled.push_back({line.socket, POLLIN, 0});
    if (::poll(polled.data(), polled.size(), milliseconds) <= 0) return;
    for (size_t i = 0; i < polled.size(); i++)
        if (polled[i].revents != 0) hear(now[i], heard, gone);
}

void JobServer::send(int client, const Message &message, const unsigned char *parts)
{
    int socket = -1;
    {
        const std::lock_guard lock(connecting);
        for (const Line &line : lines)
            if (line.client == client) socket = line.socket;
    }
    if (socket < 0 || !send_all(socket, &message, sizeof message)) return;
    send_all(socket, parts, static_cast<size_t>(message.size));
}
