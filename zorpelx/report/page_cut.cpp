// SPDX-License-Identifier: MIT
/* zorpelx/report/page_cut.cpp: sections on the cut: between parts, by parts touched, the costly
 * hyperedges, and how the search got there. */
#include "draw.h"
#include "markup.h"
#include "page.h"
#include "table.h"

constexpr size_t MOST_PAIRS = 300;
constexpr size_t MOST_SHARES = 8; // parts of a hyperedge that are listed
constexpr size_t MOST_IMPROVEMENTS = 200;

static std::string pairs_table(const Account &account)
{
    const std::vector<PairFacts> &pairs = account.facts.pairs;
    Table table = {"pairs-table",
                   "",
                   {{"Parts", false, ""}, {"Hyperedges", true, ""}, {"Weight", true, ""}},
                   {}};
    table.caption = pairs.size() > MOST_PAIRS
                        ? "The " + std::to_string(MOST_PAIRS) + " pairs with the heaviest cut"
                        : "Hyperedges that touch both parts, by weight";
    for (size_t i = 0; i < pairs.size() && i < MOST_PAIRS; i++) {
        const int64_t place = static_cast<int64_t>(i);
        table.rows.push_back(
            {word_cell(std::to_string(pairs[i].first) + " and " + std::to_string(pairs[i].second)),
             number_cell(pairs[i].number, pointer_to("pairs", place, "hyperedges")),
             number_cell(pairs[i].weight, pointer_to("pairs", place, "weight"))});
    }
    return pairs.empty() ? "<p>No two parts have a hyperedge in common.</p>\n"
                         : folded("The same as a table", table_markup(table));
}

static std::string unpaired_text(const Account &account)
{
    if (account.facts.unpaired == 0) return "";
    return "<p>" + with_number(account.facts.unpaired, "hyperedge touches", "hyperedges touch") +
           " more than " + std::to_string(MOST_PAIRED) + " parts and " +
           (account.facts.unpaired == 1 ? "is" : "are") + " left out here.</p>\n";
}

static std::string touched_table(const Account &account)
{
    Table table = {"touched-table",
                   "Hyperedges by the number of parts that they touch",
                   {{"Parts", true, ""}, {"Hyperedges", true, ""}, {"Weight", true, ""}},
                   {}};
    const std::vector<TouchedFacts> &touched = account.facts.touched;
    for (size_t i = 0; i < touched.size() && i < MOST_PAIRS; i++) {
        const int64_t place = static_cast<int64_t>(i);
        table.rows.push_back(
            {number_cell(touched[i].parts, pointer_to("touched", place, "parts")),
             number_cell(touched[i].number, pointer_to("touched", place, "hyperedges")),
             number_cell(touched[i].weight, pointer_to("touched", place, "weight"))});
    }
    return folded("The same as a table", table_markup(table));
}

static Cell shares_cell(const std::vector<PartShare> &shares)
{
    std::string text;
    for (size_t i = 0; i < shares.size() && i < MOST_SHARES; i++)
        text += (i > 0 ? ", " : "") + std::to_string(shares[i].part) + " <small>(" +
                grouped(shares[i].vertices) + ")</small>";
    if (shares.size() > MOST_SHARES)
        text += " and " + std::to_string(shares.size() - MOST_SHARES) + " more";
    return word_cell(text);
}

static std::string costly_table(const Account &account)
{
    Table table = {"costly-table",
                   "Cut hyperedges, those first whose weight times the parts beyond the first is "
                   "greatest",
                   {{"Hyperedge", false, ""},
                    {"Weight", true, ""},
                    {"Vertices", true, ""},
                    {"Parts", true, ""},
                    {"Which (vertices)", false, ""}},
                   {}};
    for (size_t i = 0; i < account.facts.costly.size(); i++) {
        const CostlyNet &net = account.facts.costly[i];
        const int64_t place = static_cast<int64_t>(i);
        Cell name = word_cell(short_markup(net_label(*account.graph, net.net), 100));
        table.rows.push_back({name, number_cell(net.weight, pointer_to("costly", place, "weight")),
                              number_cell(net.size, pointer_to("costly", place, "vertices")),
                              number_cell(static_cast<int64_t>(net.shares.size()),
                                          pointer_to("costly", place, "parts")),
                              shares_cell(net.shares)});
    }
    return table.rows.empty() ? "<p>No hyperedge is cut.</p>\n" : table_markup(table);
}

static std::string history_table(const Account &account)
{
    const std::vector<Improvement> &list = account.history.improvements;
    Table table = {"history-table",
                   "Each better partition",
                   {{"Seconds", true, ""}, {"Value", true, ""}, {"Found by", false, ""}},
                   {}};
    for (size_t i = 0; i < list.size() && i < MOST_IMPROVEMENTS; i++)
        table.rows.push_back(
            {{decimal(list[i].seconds, 2), true,
              pointer_to("history", static_cast<int64_t>(i), "seconds")},
             number_cell(list[i].objective,
                         pointer_to("history", static_cast<int64_t>(i), "objective")),
             word_cell(short_markup(list[i].step, 60))});
    return folded("The same as a table", table_markup(table));
}

std::vector<Section> cut_sections(const Account &account, const std::vector<Picture> &pictures)
{
    std::vector<Section> sections = {
        {"between", "Cut between parts",
         figure_of(pictures, "matrix") + pairs_table(account) + unpaired_text(account)},
        {"graph", "Graph of the parts",
         figure_of(pictures, "parts") +
             "<p>The table of the section before has the same figures.</p>\n"},
        {"spread", "Hyperedges by parts touched",
         figure_of(pictures, "touched") + touched_table(account)},
        {"costly", "The most expensive cut hyperedges", costly_table(account)}};
    if (!account.history.improvements.empty())
        sections.push_back({"search", "History of the search",
                            figure_of(pictures, "history") + history_table(account)});
    return sections;
}
