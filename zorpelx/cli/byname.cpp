// SPDX-License-Identifier: MIT
/* zorpelx/cli/byname.cpp: vertices chosen on the command line by patterns of their names. */
#include "byname.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <unistd.h>

#include "escaped.h"
#include "input.h"

struct NamePattern {
    std::string pattern;
    int64_t number;
    bool fitted; // a vertex
};

bool is_pattern_list(const std::string &word)
{
    return word.find('=') != std::string::npos && access(word.c_str(), F_OK) != 0;
}

/* The words between commas that have no backslash before them. */
static std::vector<std::string> split_list(const std::string &list)
{
    std::vector<std::string> words(1);
    for (size_t i = 0; i < list.size(); i++) {
        if (list[i] == ',') {
            words.emplace_back();
            continue;
        }
        words.back() += list[i];
        if (list[i] == '\\' && i + 1 < list.size()) words.back() += list[++i];
    }
    return words;
}

/* "PATTERN=NUMBER"; names may hold a = themselves. */
static NamePattern pattern_of(const std::string &word, const char *option, int64_t least,
                              int64_t most)
{
    const size_t equals = word.rfind('=');
    const std::string digits = equals == std::string::npos ? "" : word.substr(equals + 1);
    char *end = nullptr;
    const long long number = strtoll(digits.c_str(), &end, 10);
    if (equals == std::string::npos || equals == 0 || digits.empty() || *end != '\0')
        fail(STATUS_USAGE, "%s: '%s' is not PATTERN=NUMBER", option, escaped(word).c_str());
    if (number < least || number >= most)
        fail(STATUS_USAGE, "%s: '%s': the number should be between %lld and %lld", option,
             escaped(word).c_str(), static_cast<long long>(least),
             static_cast<long long>(most - 1));
    return {word.substr(0, equals), number, false};
}

std::vector<int64_t> numbers_by_name(const std::string &list, const char *option,
                                     const Hypergraph &graph, int64_t first, int64_t least,
                                     int64_t most, int64_t otherwise)
{
    std::vector<NamePattern> patterns;
    for (const std::string &word : split_list(list))
        patterns.push_back(pattern_of(word, option, least, most));
    std::vector<int64_t> numbers(static_cast<size_t>(graph.nvertices), otherwise);
    for (int64_t v = 0; v < graph.nvertices; v++) {
        const std::string name = vertex_label(graph, v, first);
        for (NamePattern &pattern : patterns) {
            if (!name_fits(name, pattern.pattern)) continue;
            numbers[static_cast<size_t>(v)] = pattern.number;
            pattern.fitted = true;
        }
    }
    for (const NamePattern &pattern : patterns)
        if (!pattern.fitted)
            fail(STATUS_USAGE, "%s: no vertex has a name like '%s'", option,
                 escaped(pattern.pattern).c_str());
    return numbers;
}

/* What the file itself says. */
static std::vector<int64_t> own_entries(const std::vector<int32_t> &entries)
{
    const bool any =
        std::any_of(entries.begin(), entries.end(), [](int32_t entry) { return entry >= 0; });
    return any ? std::vector<int64_t>(entries.begin(), entries.end()) : std::vector<int64_t>();
}

std::vector<int64_t> fixed_vertices(const Settings &settings, const Hypergraph &graph,
                                    int64_t nparts)
{
    if (is_pattern_list(settings.fix))
        return numbers_by_name(settings.fix, "--fix", graph, first_vertex(settings), -1, nparts,
                               -1);
    if (!settings.fix.empty()) return read_fix(settings, graph, nparts);
    const std::vector<int64_t> fixed = own_entries(graph.fixed);
    const auto above =
        std::find_if(fixed.begin(), fixed.end(), [=](int64_t part) { return part >= nparts; });
    if (above != fixed.end())
        fail(STATUS_BAD_INPUT, "%s: vertex %s is fixed to part %lld of %lld",
             shown_name(settings.hypergraph).c_str(),
             escaped(vertex_label(graph, above - fixed.begin(), 1)).c_str(),
             static_cast<long long>(*above), static_cast<long long>(nparts));
    return fixed;
}

std::vector<int64_t> vertex_groups(const Settings &settings, const Hypergraph &graph)
{
    if (is_pattern_list(settings.together))
        return numbers_by_name(settings.together, "--together", graph, first_vertex(settings), -1,
                               INT_MAX, -1);
    if (!settings.together.empty())
        return read_vertex_numbers(settings, settings.together, graph, -1, INT_MAX);
    return own_entries(graph.group);
}
