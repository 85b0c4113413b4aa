/* SPDX-License-Identifier: MIT */
/* zorpelx/report/table.h: tables of a page. */
#ifndef ZORPELX_REPORT_TABLE_H
#define ZORPELX_REPORT_TABLE_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/* What stands in a place of a table: markup, and where the JSON answer has the same figure, as a
 * JSON pointer; empty if it has none. */
struct Cell {
    std::string marked;
    bool number;
    std::string pointer;
};

Cell word_cell(const std::string &marked);
Cell number_cell(int64_t number, const std::string &pointer = "");
Cell percent_cell(double percent, const std::string &pointer = ""); // with two decimals

/* The first column names the rows. Columns of numbers are those whose head says so. */
struct Table {
    std::string name, caption; // of its place in the page; what it is, markup
    std::vector<Cell> heads;
    std::vector<std::vector<Cell>> rows;
};

/* In a box that can be scrolled by keyboard if it is wider than the page. */
std::string table_markup(const Table &table);

/* "<b data-figure="/cut">176</b>": a figure in a sentence or a list. */
std::string figure_markup(const std::string &element, const Cell &cell);

#endif
