// SPDX-License-Identifier: MIT
/* zorpelx/report/page_kinds.cpp: the section that depends on what the hypergraph is made from. */
#include <algorithm>

#include "markup.h"
#include "page.h"
#include "table.h"

static Section netlist_section(const Account &account)
{
    Table table = {"wires-table",
                   "Wires that leave each part, and pins that the part has on them",
                   {{"Part", true, ""}, {"Wires", true, ""}, {"Pins", true, ""}},
                   {}};
    for (const int64_t p : shown_parts(account.figures[0], MOST_ROWS)) {
        const PartFacts &part = account.facts.parts[static_cast<size_t>(p)];
        table.rows.push_back({number_cell(p),
                              number_cell(part.cutnets, pointer_to("parts", p, "cut_hyperedges")),
                              number_cell(part.cutpins, pointer_to("parts", p, "cut_pins"))});
    }
    return {"wires", "Wires and pins that leave each part", table_markup(table)};
}

static int64_t most_of(const std::vector<int64_t> &list)
{
    return *std::max_element(list.begin(), list.end());
}

static Section matrix_section(const Account &account)
{
    const Words &words = account.words;
    Table table = {"words-table",
                   "Words that each part sends and receives in one product",
                   {{"Part", true, ""}, {"Sent", true, ""}, {"Received", true, ""}},
                   {}};
    for (const int64_t p : shown_parts(account.figures[0], MOST_ROWS))
        table.rows.push_back({number_cell(p),
                              number_cell(words.sent[static_cast<size_t>(p)],
                                          "/words/parts/" + std::to_string(p) + "/sent"),
                              number_cell(words.received[static_cast<size_t>(p)],
                                          "/words/parts/" + std::to_string(p) + "/received")});
    return {"words", "Words sent for a product of matrix and vector",
            "<p>In all " + figure_markup("b", number_cell(words.total, "/words/total")) +
                (words.total == 1 ? " word" : " words") + ". No part sends more than " +
                figure_markup("b", number_cell(most_of(words.sent), "/words/most_sent")) +
                ", none receives more than " +
                figure_markup("b", number_cell(most_of(words.received), "/words/most_received")) +
                ".</p>\n" + table_markup(table)};
}

static Section formula_section(const Account &account)
{
    const SharedVariables &variables = account.variables;
    Table table = {"variables-table",
                   "Shared variables of each part",
                   {{"Part", true, ""}, {"Shared variables", true, ""}},
                   {}};
    for (const int64_t p : shown_parts(account.figures[0], MOST_ROWS))
        table.rows.push_back(
            {number_cell(p), number_cell(variables.shared[static_cast<size_t>(p)],
                                         "/shared_variables/parts/" + std::to_string(p))});
    return {"variables", "Variables that parts share",
            "<p>" + figure_markup("b", number_cell(variables.number, "/shared_variables/number")) +
                (variables.number == 1 ? " variable is" : " variables are") +
                " shared by several parts.</p>\n" + table_markup(table)};
}

static Section memberships_section(const Account &account)
{
    const int64_t all = account.graph->nnets, single = all - account.figures[0].ncut;
    const double percent =
        all == 0 ? 100 : 100 * static_cast<double>(single) / static_cast<double>(all);
    return {"transactions", "Transactions within one part",
            "<p>" + figure_markup("b", number_cell(single, "/transactions/single_part")) + " of " +
                with_number(all, "transaction", "transactions") + ", " +
                figure_markup("b", percent_cell(percent, "/transactions/single_part_percent")) +
                (single == 1 ? ", needs one part only; " : ", need one part only; ") +
                with_number(account.figures[0].ncut, "needs", "need") + " several.</p>\n"};
}

std::vector<Section> kind_sections(const Account &account)
{
    switch (account.origin) {
    case FROM_NETLIST:
        return {netlist_section(account)};
    case FROM_MATRIX:
        return {matrix_section(account)};
    case FROM_FORMULA:
        return {formula_section(account)};
    case FROM_MEMBERSHIPS:
        return {memberships_section(account)};
    default:
        return {};
    }
}
