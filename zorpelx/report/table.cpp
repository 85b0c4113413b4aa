// SPDX-License-Identifier: MIT
/* zorpelx/report/table.cpp: tables of a page. */
#include "table.h"

#include "markup.h"

Cell word_cell(const std::string &marked)
{
    return {marked, false, ""};
}

Cell number_cell(int64_t number, const std::string &pointer)
{
    return {grouped(number), true, pointer};
}

Cell percent_cell(double percent, const std::string &pointer)
{
    return {decimal(percent, 2) + " %", true, pointer};
}

static std::string attributes_of(const Cell &cell)
{
    std::string text = cell.number ? " class=\"n\"" : "";
    if (!cell.pointer.empty()) text += " data-figure=\"" + cell.pointer + '"';
    return text;
}

std::string figure_markup(const std::string &element, const Cell &cell)
{
    const std::string pointer = cell.pointer.empty() ? "" : " data-figure=\"" + cell.pointer + '"';
    return '<' + element + pointer + '>' + cell.marked + "</" + element + '>';
}

static std::string row_markup(const std::vector<Cell> &row)
{
    std::string out = "<tr>";
    for (size_t i = 0; i < row.size(); i++)
        out += (i == 0 ? "<th scope=\"row\"" : "<td") + attributes_of(row[i]) + '>' +
               row[i].marked + (i == 0 ? "</th>" : "</td>");
    return out + "</tr>\n";
}

std::string table_markup(const Table &table)
{
    std::string out = "<div class=\"scroll\" role=\"region\" tabindex=\"0\" aria-labelledby=\"" +
                      table.name + "-caption\">\n<table><caption id=\"" + table.name +
                      "-caption\">" + table.caption + "</caption>\n<thead><tr>";
    for (const Cell &head : table.heads)
        out += "<th scope=\"col\"" + attributes_of(head) + '>' + head.marked + "</th>";
    out += "</tr></thead>\n<tbody>\n";
    for (const std::vector<Cell> &row : table.rows) out += row_markup(row);
    return out + "</tbody></table></div>\n";
}
