// SPDX-License-Identifier: MIT
/* zorpelx/report/page_compare.cpp: the section that compares partitions with the first one. */
#include <algorithm>

#include "markup.h"
#include "page.h"
#include "table.h"

static std::string pointer_of(const char *list, size_t i, const std::string &field)
{
    return pointer_to(list, static_cast<int64_t>(i), field.c_str());
}

/* The least of a figure over all partitions, which is the best. */
template <class Take> static int64_t least_of(const Account &account, const Take &take)
{
    int64_t least = take(account.figures[0]);
    for (const Figures &figures : account.figures) least = std::min<int64_t>(least, take(figures));
    return least;
}

static Cell best_marked(Cell cell, bool best)
{
    if (best) cell.marked = "<strong>" + cell.marked + "</strong>";
    return cell;
}

static std::vector<Cell> figures_row(const Account &account, size_t i)
{
    const Figures &figures = account.figures[i];
    const auto cut = [](const Figures &one) { return one.cut; };
    const auto km1 = [](const Figures &one) { return one.km1; };
    const auto soed = [](const Figures &one) { return one.soed; };
    return {
        word_cell(std::to_string(i + 1) + " " + short_markup(account.divisions[i].name, 60)),
        number_cell(figures.nparts, pointer_of("partitions", i, "nparts")),
        best_marked(number_cell(figures.cut, pointer_of("partitions", i, "cut")),
                    figures.cut == least_of(account, cut)),
        best_marked(number_cell(figures.km1, pointer_of("partitions", i, "connectivity")),
                    figures.km1 == least_of(account, km1)),
        best_marked(number_cell(figures.soed, pointer_of("partitions", i, "soed")),
                    figures.soed == least_of(account, soed)),
        percent_cell(imbalance_percent(figures), pointer_of("partitions", i, "imbalance_percent"))};
}

static std::string figures_table(const Account &account)
{
    Table table = {"partitions-table",
                   "Figures of each partition, the least in bold",
                   {{"Partition", false, ""},
                    {"Parts", true, ""},
                    {"Cut", true, ""},
                    {"Connectivity", true, ""},
                    {"External degrees", true, ""},
                    {"Heaviest part", true, ""}},
                   {}};
    for (size_t i = 0; i < account.divisions.size(); i++)
        table.rows.push_back(figures_row(account, i));
    return table_markup(table);
}

static std::string verdict(const Account &account, size_t i)
{
    const int64_t before = account.figures[0].cut, now = account.figures[i].cut;
    if (before == now) return "Both cut " + grouped(now) + '.';
    const std::string percent =
        before == 0
            ? ""
            : " (" +
                  decimal(100.0 * static_cast<double>(now > before ? now - before : before - now) /
                              static_cast<double>(before),
                          1) +
                  "\u00a0%)";
    return "It cuts " + grouped(now > before ? now - before : before - now) + percent +
           (now > before ? " more" : " less") + " than the first.";
}

static std::string agreement_text(const Account &account, size_t i)
{
    const Likeness &likeness = account.agreements[i - 1];
    const int64_t all = account.graph->nvertices;
    const double same = all == 0 ? 100
                                 : 100 * static_cast<double>(all - likeness.parts.moved_vertices) /
                                       static_cast<double>(all);
    const auto at = [&](const char *field) { return pointer_of("comparisons", i - 1, field); };
    return "<p>" + verdict(account, i) + " With parts matched " +
           (likeness.parts.exact ? "in the best way" : "one after another") + ", " +
           figure_markup("b", percent_cell(same, at("agreement_percent"))) +
           " of the vertices are in the same part; " +
           figure_markup("b", number_cell(likeness.parts.moved_vertices, at("moved_vertices"))) +
           (likeness.parts.moved_vertices == 1 ? " has moved, of weight "
                                               : " have moved, of weight ") +
           figure_markup("b", number_cell(likeness.parts.moved_weight, at("moved_weight"))) +
           ". The adjusted Rand index is " +
           figure_markup("b",
                         {decimal(likeness.parts.adjusted_rand, 4), true, at("adjusted_rand")}) +
           " (1: the same, 0: as by chance).</p>\n";
}

static int64_t external_of(const Figures &figures, int64_t part)
{
    return part < 0 ? 0 : figures.external[static_cast<size_t>(part)];
}

static std::string signed_number(int64_t number)
{
    return (number > 0 ? "+" : number < 0 ? "\u2212" : "") + grouped(number < 0 ? -number : number);
}

static std::string gains_table(const Account &account, size_t i)
{
    const Likeness &likeness = account.agreements[i - 1];
    const Figures &first = account.figures[0], &now = account.figures[i];
    Table table = {
        "gains-table" + std::to_string(i + 1),
        "Who gained: external degree of each part and of its twin in the first partition",
        {{"Part", true, ""},
         {"Twin", true, ""},
         {"In the first", true, ""},
         {"Now", true, ""},
         {"Change", true, ""}},
        {}};
    for (const int64_t q : shown_parts(now, MOST_BARS)) {
        const int64_t p = likeness.parts.twin[static_cast<size_t>(q)];
        const std::string list =
            "/comparisons/" + std::to_string(i - 1) + "/parts/" + std::to_string(q);
        const int64_t before = external_of(first, p), after = external_of(now, q);
        table.rows.push_back({number_cell(q),
                              p < 0 ? word_cell("none") : number_cell(p, list + "/twin"),
                              number_cell(before, list + "/external_degree_first"),
                              number_cell(after, list + "/external_degree"),
                              {signed_number(after - before), true, ""}});
    }
    return table_markup(table);
}

static std::string changed_list(const Account &account, const std::vector<ChangedNet> &list)
{
    std::string text;
    for (const ChangedNet &changed : list)
        text += (text.empty() ? "" : ", ") +
                short_markup(net_label(*account.graph, changed.net), 80) + " <small>(" +
                grouped(changed.weight) + ")</small>";
    return text;
}

static std::string changes_text(const Account &account, size_t i)
{
    const Likeness &likeness = account.agreements[i - 1];
    const auto at = [&](const char *field) { return pointer_of("comparisons", i - 1, field); };
    std::string text =
        "<p>" + figure_markup("b", number_cell(likeness.nmend, at("no_longer_cut/hyperedges"))) +
        (likeness.nmend == 1 ? " hyperedge of weight " : " hyperedges of weight ") +
        figure_markup("b", number_cell(likeness.mendwgt, at("no_longer_cut/weight"))) +
        (likeness.nmend == 1 ? " is no longer cut, " : " are no longer cut, ") +
        figure_markup("b", number_cell(likeness.ncut, at("newly_cut/hyperedges"))) + " of weight " +
        figure_markup("b", number_cell(likeness.cutwgt, at("newly_cut/weight"))) +
        (likeness.ncut == 1 ? " is newly cut.</p>\n" : " are newly cut.</p>\n");
    if (!likeness.mended.empty())
        text +=
            "<p>No longer cut, the heaviest (weight): " + changed_list(account, likeness.mended) +
            "</p>\n";
    if (!likeness.cut.empty())
        text += "<p>Newly cut, the heaviest (weight): " + changed_list(account, likeness.cut) +
                "</p>\n";
    return text;
}

static std::string flows_table(const Account &account, size_t i)
{
    constexpr size_t MOST_FLOWS = 300;
    Table table = {"flows-table" + std::to_string(i + 1),
                   "Vertices by their parts in both partitions, the heaviest first",
                   {{"Part in the first", true, ""},
                    {"Part now", true, ""},
                    {"Vertices", true, ""},
                    {"Weight", true, ""}},
                   {}};
    const std::vector<Overlap> &flows = account.agreements[i - 1].flows;
    for (size_t j = 0; j < flows.size() && j < MOST_FLOWS; j++)
        table.rows.push_back({number_cell(flows[j].a), number_cell(flows[j].b),
                              number_cell(flows[j].vertices), number_cell(flows[j].weight)});
    return folded("The same as a table", table_markup(table));
}

static std::string one_comparison(const Account &account, const std::vector<Picture> &pictures,
                                  size_t i)
{
    const std::string number = std::to_string(i + 1);
    return "<h3>Partition " + number + ": " + short_markup(account.divisions[i].name, 60) +
           "</h3>\n" + agreement_text(account, i) + changes_text(account, i) +
           gains_table(account, i) + figure_of(pictures, "moves" + number) +
           flows_table(account, i);
}

std::vector<Section> comparison_sections(const Account &account,
                                         const std::vector<Picture> &pictures)
{
    if (account.divisions.size() < 2) return {};
    std::string content = figures_table(account);
    for (size_t i = 1; i < account.divisions.size(); i++)
        content += one_comparison(account, pictures, i);
    return {{"comparison", "Partitions compared", content}};
}
