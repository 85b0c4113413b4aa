/* SPDX-License-Identifier: MIT */
/* tests/unit/traces.h: what a call prints, and its lines. */
#ifndef ZORPEL_TESTS_TRACES_H
#define ZORPEL_TESTS_TRACES_H

#include <gtest/gtest.h>

#include <functional>
#include <sstream>
#include <string>
#include <vector>

inline std::string printed_by(const std::function<void()> &call)
{
    testing::internal::CaptureStdout();
    call();
    return testing::internal::GetCapturedStdout();
}

/* The lines that begin with prefix. */
inline std::vector<std::string> lines_with(const std::string &text, const std::string &prefix)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        if (line.rfind(prefix, 0) == 0) lines.push_back(line);
    return lines;
}

inline size_t count_lines(const std::string &text, const std::string &prefix)
{
    return lines_with(text, prefix).size();
}

/* The vertices in the order of the moves that the text traces. */
inline std::vector<int> moved_vertices(const std::string &text)
{
    static const std::string prefix = "Gains from moving ";
    std::vector<int> moved;
    for (const std::string &line : lines_with(text, prefix))
        moved.push_back(std::stoi(line.substr(prefix.size())));
    return moved;
}

#endif
