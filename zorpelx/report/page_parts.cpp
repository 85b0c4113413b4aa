// SPDX-License-Identifier: MIT
/* zorpelx/report/page_parts.cpp: sections on the parts: sizes, contents, graph, drawing. */
#include <algorithm>

#include "markup.h"
#include "page.h"
#include "table.h"

/* "32 to 40", "at most 40", "at least 32". */
static std::string allowed_text(const Allowed &allowed, size_t p)
{
    if (allowed.least[p] <= 0) return "at most " + grouped(allowed.most[p]);
    return grouped(allowed.least[p]) + " to " + grouped(allowed.most[p]);
}

static std::vector<Cell> size_row(const Account &account, int64_t p)
{
    const size_t i = static_cast<size_t>(p);
    const Figures &figures = account.figures[0];
    const PartFacts &part = account.facts.parts[i];
    std::vector<Cell> row = {number_cell(p, pointer_to("parts", p, "part")),
                             number_cell(figures.vertices[i], pointer_to("parts", p, "vertices")),
                             number_cell(figures.weight[i], pointer_to("parts", p, "weight"))};
    if (!account.allowed.most.empty()) row.push_back(word_cell(allowed_text(account.allowed, i)));
    row.push_back(number_cell(figures.external[i], pointer_to("parts", p, "external_degree")));
    row.push_back(number_cell(part.boundary, pointer_to("parts", p, "boundary_vertices")));
    row.push_back(number_cell(part.inner, pointer_to("parts", p, "inner_hyperedges")));
    return row;
}

static std::string sizes_table(const Account &account)
{
    Table table = {"sizes-table", "", {}, {}};
    const std::vector<int64_t> parts = shown_parts(account.figures[0], MOST_ROWS);
    table.caption = parts.size() < account.facts.parts.size()
                        ? "The " + std::to_string(parts.size()) + " heaviest parts"
                        : "Each part";
    table.heads = {{"Part", true, ""}, {"Vertices", true, ""}, {"Weight", true, ""}};
    if (!account.allowed.most.empty()) table.heads.push_back({"Allowed", false, ""});
    for (const char *head : {"External degree", "Vertices at the cut", "Hyperedges inside"})
        table.heads.push_back({head, true, ""});
    for (const int64_t p : parts) table.rows.push_back(size_row(account, p));
    return table_markup(table) +
           "<p>The external degree of a part is the weight of the cut hyperedges that it touches. "
           "A vertex at the cut is in one of them; a hyperedge inside touches no other part.</p>\n";
}

static std::string empty_parts_text(const Figures &figures)
{
    const int64_t empty = std::count(figures.vertices.begin(), figures.vertices.end(), 0);
    return empty == 0 ? ""
                      : "<p>" + with_number(empty, "part is empty.", "parts are empty.") + "</p>\n";
}

static Cell groups_cell(const PartContents &part)
{
    std::string text;
    for (const GroupFacts &group : part.groups)
        text += (text.empty() ? "" : ", ") +
                ("<span class=\"nobreak\">" + short_markup(group.name, 40)) + " <small>" +
                grouped(group.vertices) + "</small></span>";
    if (part.nothers > 0)
        text += ", " + with_number(part.nothers, "other", "others") + " <small>" +
                grouped(part.vertices) + "</small>";
    return word_cell(text.empty() ? "nothing" : text);
}

static std::string contents_table(const Account &account, const std::vector<PartContents> &contents,
                                  const std::string &name, const std::string &what)
{
    if (contents.empty()) return "";
    Table table = {name,
                   what + ", the heaviest first, with their numbers of vertices",
                   {{"Part", true, ""}, {what, false, ""}},
                   {}};
    for (const int64_t p : shown_parts(account.figures[0], MOST_BARS))
        table.rows.push_back({number_cell(p), groups_cell(contents[static_cast<size_t>(p)])});
    return table_markup(table);
}

std::vector<Section> part_sections(const Account &account, const std::vector<Picture> &pictures)
{
    std::vector<Section> sections = {
        {"sizes", "Sizes of the parts",
         figure_of(pictures, "sizes") + empty_parts_text(account.figures[0]) +
             sizes_table(account)},
        {"drawing", "The hypergraph", figure_of(pictures, "hypergraph")}};
    const std::string contents =
        contents_table(account, account.kinds, "kinds-table", "Kinds of cells") +
        contents_table(account, account.prefixes, "prefixes-table", "Beginnings of names");
    if (!contents.empty()) sections.push_back({"contents", "What lies in each part", contents});
    return sections;
}
