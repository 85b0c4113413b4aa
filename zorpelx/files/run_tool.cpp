// SPDX-License-Identifier: MIT
/* zorpelx/files/run_tool.cpp: another program, given a text and giving one back.
 *
 * Both streams are served at once by poll(), so neither side waits for the other. The input goes
 * through a socket, as writing to one that is closed can be told not to raise SIGPIPE.
 */
#include "run_tool.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>

#include "fileerror.h"
#include "zorpelx.h"

extern char **environ;

constexpr int NONE = -1;

/* Ends that are still open are closed, and a child that still runs is killed and waited for. */
struct ToolRun {
    int input[2] = {NONE, NONE}, output[2] = {NONE, NONE}, errors[2] = {NONE, NONE}; // ours first
    pid_t child = NONE;
    ToolRun() = default;
    ToolRun(const ToolRun &) = delete;
    ToolRun &operator=(const ToolRun &) = delete;
    ~ToolRun();
};

static void close_end(int *end)
{
    if (*end != NONE) close(*end);
    *end = NONE;
}

static int wait_for(pid_t *child)
{
    int status = 0;
    while (waitpid(*child, &status, 0) < 0 && errno == EINTR) {
    }
    *child = NONE;
    constexpr int SIGNALLED = 128;
    return WIFEXITED(status) ? WEXITSTATUS(status) : SIGNALLED + WTERMSIG(status);
}

ToolRun::~ToolRun()
{
    for (int *const ends : {input, output, errors}) {
        close_end(&ends[0]);
        close_end(&ends[1]);
    }
    if (child == NONE) return;
    kill(child, SIGKILL);
    wait_for(&child);
}

static void make_ends(int *ends, const Budget &budget)
{
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0)
        file_error(ZORPELX_SYSTEM, "%s: no pipe could be made: %s", budget.name.c_str(),
                   strerror(errno));
    fcntl(ends[0], F_SETFL, fcntl(ends[0], F_GETFL) | O_NONBLOCK);
}

/* Signals as a new program expects them, whatever the caller does with its own. */
static void set_signals(posix_spawnattr_t *attributes)
{
    sigset_t none, defaults;
    sigemptyset(&none);
    sigemptyset(&defaults);
    for (const int signal : {SIGINT, SIGTERM, SIGPIPE, SIGHUP}) sigaddset(&defaults, signal);
    posix_spawnattr_setsigmask(attributes, &none);
    posix_spawnattr_setsigdefault(attributes, &defaults);
    posix_spawnattr_setflags(attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
}

/* The error number of the attempt. */
static int spawn(ToolRun *run, const std::vector<std::string> &words, const std::string &folder)
{
    std::vector<char *> argv;
    for (const std::string &word : words) argv.push_back(const_cast<char *>(word.c_str()));
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;
    posix_spawn_file_actions_init(&actions);
    posix_spawnattr_init(&attributes);
    set_signals(&attributes);
    posix_spawn_file_actions_adddup2(&actions, run->input[1], STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, run->output[1], STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, run->errors[1], STDERR_FILENO);
    if (!folder.empty()) posix_spawn_file_actions_addchdir_np(&actions, folder.c_str());
    const int error =
        posix_spawnp(&run->child, argv[0], &actions, &attributes, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
    if (error != 0) run->child = NONE;
    return error;
}

/* Sends what the program takes now; closes the input at its end or when nobody reads it. */
static void feed(ToolRun *run, std::string_view *input)
{
    while (!input->empty()) {
        const ssize_t sent = send(run->input[0], input->data(), input->size(), MSG_NOSIGNAL);
        if (sent < 0 && errno == EINTR) continue;
        if (sent < 0 && errno == EAGAIN) return;
        if (sent < 0) break;
        input->remove_prefix(static_cast<size_t>(sent));
    }
    close_end(&run->input[0]);
}

/* Takes what is there; closes the end at the end of the stream. */
static void drain(int *end, std::string *text, size_t most, Budget *budget)
{
    char buffer[1 << 16];
    const ssize_t count = read(*end, buffer, sizeof buffer);
    if (count < 0 && (errno == EINTR || errno == EAGAIN)) return;
    if (count <= 0) return close_end(end);
    const size_t taken = std::min(static_cast<size_t>(count), most - std::min(most, text->size()));
    charge(budget, taken);
    text->append(buffer, taken);
}

static void serve(ToolRun *run, std::string_view input, ToolResult *result, Budget *budget)
{
    constexpr size_t MOST_ERRORS = size_t{1} << 16;
    constexpr int LOOK_AGAIN = 100; // milliseconds between looks at the clock
    if (input.empty()) close_end(&run->input[0]);
    while (run->output[0] != NONE || run->errors[0] != NONE) {
        pollfd ends[] = {
            {run->input[0], POLLOUT, 0}, {run->output[0], POLLIN, 0}, {run->errors[0], POLLIN, 0}};
        check_time(*budget);
        if (poll(ends, 3, LOOK_AGAIN) <= 0) continue;
        if (ends[0].revents != 0) feed(run, &input);
        if (ends[1].revents != 0) drain(&run->output[0], &result->output, SIZE_MAX, budget);
        if (ends[2].revents != 0) drain(&run->errors[0], &result->errors, MOST_ERRORS, budget);
    }
}

ToolResult run_tool(const std::vector<std::string> &words, const std::string &folder,
                    std::string_view input, Budget *budget)
{
    ToolRun run;
    ToolResult result = {false, 0, "", ""};
    for (int *const ends : {run.input, run.output, run.errors}) make_ends(ends, *budget);
    const int error = spawn(&run, words, folder);
    if (error == ENOENT || error == EACCES || error == ENOTDIR) return result;
    if (error != 0)
        file_error(ZORPELX_SYSTEM, "%s: %s could not be started: %s", budget->name.c_str(),
                   words[0].c_str(), strerror(error));
    result.started = true;
    for (int *const ends : {run.input, run.output, run.errors}) close_end(&ends[1]);
    serve(&run, input, &result, budget);
    result.status = wait_for(&run.child);
    return result;
}
