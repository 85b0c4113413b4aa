// SPDX-License-Identifier: MIT
/* zorpelx/report/contents.cpp: what lies in each part: kinds of cells, or beginnings of names. */
#include "contents.h"

#include <algorithm>
#include <map>
#include <unordered_map>

constexpr const char *NAMELESS = "(none)";
constexpr int DEEPEST = 6;

static bool ends_level(char c)
{
    return c == '/' || c == '.';
}

/* "data[12]", "n_34" without what counts at the end. */
static std::string_view without_number(std::string_view name)
{
    const size_t last = name.find_last_not_of("0123456789[]_:$");
    return last == std::string_view::npos ? std::string_view() : name.substr(0, last + 1);
}

std::string_view name_prefix(std::string_view name, int depth)
{
    size_t end = 0;
    for (int level = 0; level < depth; level++) {
        size_t next = end;
        while (next < name.size() && !(ends_level(name[next]) && next > end)) next++;
        if (next == name.size()) return level == 0 ? without_number(name) : name.substr(0, end);
        end = next;
    }
    return name.substr(0, end);
}

VertexGrouping group_by_kind(const Hypergraph &graph)
{
    VertexGrouping grouping = {};
    if (graph.kind.empty()) return grouping;
    for (int64_t i = 0; i < count_names(graph.kindnames); i++)
        grouping.names.emplace_back(name_of(graph.kindnames, i));
    const int32_t none = static_cast<int32_t>(grouping.names.size());
    grouping.names.push_back(NAMELESS);
    for (const int32_t kind : graph.kind) grouping.group.push_back(kind < 0 ? none : kind);
    return grouping;
}

static VertexGrouping group_at(const Hypergraph &graph, int depth)
{
    VertexGrouping grouping = {};
    std::unordered_map<std::string_view, int32_t> numbers;
    for (int64_t v = 0; v < graph.nvertices; v++) {
        const std::string_view prefix = name_prefix(name_of(graph.vertexnames, v), depth);
        const auto [place, is_new] =
            numbers.try_emplace(prefix, static_cast<int32_t>(grouping.names.size()));
        if (is_new) grouping.names.emplace_back(prefix.empty() ? NAMELESS : prefix);
        grouping.group.push_back(place->second);
    }
    return grouping;
}

VertexGrouping group_by_prefix(const Hypergraph &graph, int64_t nparts)
{
    if (graph.vertexnames.start.empty()) return {};
    VertexGrouping grouping = group_at(graph, 1);
    for (int depth = 2; depth <= DEEPEST; depth++) {
        if (static_cast<int64_t>(grouping.names.size()) > nparts) break;
        VertexGrouping deeper = group_at(graph, depth);
        if (deeper.names.size() == grouping.names.size()) break;
        grouping = std::move(deeper);
    }
    return grouping;
}

static PartContents largest_groups(std::vector<GroupFacts> groups, size_t most)
{
    std::sort(groups.begin(), groups.end(), [](const GroupFacts &a, const GroupFacts &b) {
        if (a.weight != b.weight) return a.weight > b.weight;
        return a.vertices != b.vertices ? a.vertices > b.vertices : a.name < b.name;
    });
    PartContents contents = {{}, 0, 0, 0};
    for (size_t i = most; i < groups.size(); i++) {
        contents.nothers++;
        contents.vertices += groups[i].vertices;
        contents.weight += groups[i].weight;
    }
    if (groups.size() > most)
        groups.erase(groups.begin() + static_cast<ptrdiff_t>(most), groups.end());
    contents.groups = std::move(groups);
    return contents;
}

std::vector<PartContents> contents_of(const Hypergraph &graph, const NamedPartition &division,
                                      const VertexGrouping &grouping, size_t most)
{
    if (grouping.group.empty()) return {};
    std::vector<std::map<int32_t, GroupFacts>> parts(static_cast<size_t>(division.nparts));
    for (size_t v = 0; v < grouping.group.size(); v++) {
        const int32_t g = grouping.group[v];
        GroupFacts &group = parts[static_cast<size_t>(division.part[v])][g];
        if (group.vertices == 0) group.name = grouping.names[static_cast<size_t>(g)];
        group.vertices++;
        group.weight += graph.vertexwgt[v];
    }
    std::vector<PartContents> contents;
    for (const auto &part : parts) {
        std::vector<GroupFacts> groups;
        for (const auto &[g, group] : part) groups.push_back(group);
        contents.push_back(largest_groups(std::move(groups), most));
    }
    return contents;
}
