/* SPDX-License-Identifier: MIT */
/* tests/embed/process.h: what a call may leave behind in its process, and the children of one. */
#ifndef ZORPEL_TESTS_EMBED_PROCESS_H
#define ZORPEL_TESTS_EMBED_PROCESS_H

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <dirent.h>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

inline std::vector<std::string> names_in(const char *folder)
{
    std::vector<std::string> names;
    DIR *const directory = opendir(folder);
    while (const dirent *entry = readdir(directory)) names.push_back(entry->d_name);
    closedir(directory);
    std::sort(names.begin(), names.end());
    return names;
}

inline std::vector<std::string> open_files()
{
    return names_in("/proc/self/fd");
}

/* The value of a line such as "PPid:\t12" in /proc/PID/status, empty if the process is gone. */
inline std::string status_line(pid_t pid, const std::string &name)
{
    std::ifstream file("/proc/" + std::to_string(pid) + "/status");
    for (std::string line; std::getline(file, line);)
        if (line.compare(0, name.size() + 1, name + ":") == 0)
            return line.substr(line.find_first_not_of(" \t", name.size() + 1));
    return "";
}

/* The processes that a process has started and not reaped. */
inline std::vector<pid_t> children_of(pid_t parent)
{
    std::vector<pid_t> children;
    for (const std::string &name : names_in("/proc")) {
        const pid_t pid = atoi(name.c_str());
        if (pid > 0 && status_line(pid, "PPid") == std::to_string(parent)) children.push_back(pid);
    }
    return children;
}

/* Notes the open files; at the end they must be the same again, and no child may be left. */
class LeavesNothing : public testing::Test
{
  protected:
    void SetUp() override { before = open_files(); }
    void TearDown() override { expect_nothing_left(); }
    void expect_nothing_left() const
    {
        EXPECT_EQ(-1, waitpid(-1, nullptr, WNOHANG));
        EXPECT_EQ(ECHILD, errno);
        EXPECT_EQ(before, open_files());
    }

    std::vector<std::string> before;
};

#endif
