// SPDX-License-Identifier: MIT
/* zorpelx/cli/pictures.cpp: pictures as files, SVG and PNG. */
#include "pictures.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "escaped.h"
#include "failure.h"

constexpr const char *CONVERTER = "rsvg-convert";

std::string find_converter()
{
    const char *const path = getenv("PATH");
    std::string folders = path == nullptr ? "/usr/bin:/bin" : path;
    folders += ':';
    for (size_t colon; (colon = folders.find(':')) != std::string::npos;
         folders.erase(0, colon + 1)) {
        const std::string name = folders.substr(0, colon) + '/' + CONVERTER;
        if (colon > 0 && access(name.c_str(), X_OK) == 0) return name;
    }
    return "";
}

/* A file without a name, closed at the end. */
struct MemoryFile {
    int file = memfd_create("picture", MFD_CLOEXEC);
    ~MemoryFile()
    {
        if (file >= 0) close(file);
    }
};

static bool write_all(int file, const std::string &bytes)
{
    for (size_t done = 0; done < bytes.size();) {
        const ssize_t now =
            pwrite(file, bytes.data() + done, bytes.size() - done, static_cast<off_t>(done));
        if (now <= 0) return false;
        done += static_cast<size_t>(now);
    }
    return true;
}

static std::string read_all(int file)
{
    struct stat status = {};
    if (fstat(file, &status) != 0) return "";
    std::string bytes(static_cast<size_t>(status.st_size), '\0');
    const ssize_t got = pread(file, bytes.data(), bytes.size(), 0);
    return got == status.st_size ? bytes : "";
}

/* Twice as many points as the picture has units: sharp on today's screens. */
static bool run_converter(const std::string &converter, int input, int output)
{
    const char *const words[] = {CONVERTER, "--zoom=2", "--format=png", nullptr};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    pid_t child = 0;
    const int failed = posix_spawn(&child, converter.c_str(), &actions, nullptr,
                                   const_cast<char *const *>(words), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (failed != 0) return false;
    int status = 0;
    while (waitpid(child, &status, 0) < 0)
        if (errno != EINTR) return false;
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

std::string png_of(const std::string &converter, const std::string &svg)
{
    const MemoryFile input, output;
    if (input.file < 0 || output.file < 0 || !write_all(input.file, svg)) return "";
    return run_converter(converter, input.file, output.file) ? read_all(output.file) : "";
}

void make_folder(const std::string &name)
{
    struct stat status = {};
    if (mkdir(name.c_str(), 0777) == 0) return;
    if (errno == EEXIST && stat(name.c_str(), &status) == 0 && S_ISDIR(status.st_mode)) return;
    fail(STATUS_IO, "cannot make the folder %s: %s", escaped(name).c_str(), strerror(errno));
}
