// SPDX-License-Identifier: MIT
/* zorpelx/files/read_table.cpp: the reader of tables of memberships. */
#include "read_table.h"

#include <algorithm>
#include <cctype>
#include <cstring>

#include "fileerror.h"
#include "known.h"
#include "members.h"
#include "table_rows.h"

struct TableScan {
    TableRows rows;
    std::vector<Role> roles; // [column]
    Members members;
};

static std::string_view first_line(std::string_view bytes)
{
    return bytes.substr(0, std::min(bytes.find('\n'), MOST_LOOKED_AT));
}

static int64_t count_outside_quotes(std::string_view line, char wanted)
{
    int64_t count = 0;
    bool quoted = false;
    for (const char c : line) {
        if (c == '"') quoted = !quoted;
        count += c == wanted && !quoted;
    }
    return count;
}

/* Lines that begin as those of other formats are of tables never, unless a table is asked for. */
static bool may_begin_table(std::string_view bytes)
{
    const bool odd = bytes.empty() || strchr("%{[<#", bytes[0]) != nullptr;
    return !odd && first_line(bytes).find('\0') == std::string_view::npos;
}

Recognised recognise_csv(std::string_view bytes)
{
    if (!may_begin_table(bytes)) return UNLIKE;
    const std::string_view line = first_line(bytes);
    for (const char c : {',', ';', '|'})
        if (count_outside_quotes(line, c) > 0) return LIKE;
    return UNLIKE;
}

Recognised recognise_tsv(std::string_view bytes)
{
    if (!may_begin_table(bytes)) return UNLIKE;
    const std::string_view line = first_line(bytes);
    const bool words =
        std::any_of(line.begin(), line.end(), [](unsigned char c) { return isalpha(c) != 0; });
    return words && count_outside_quotes(line, '\t') > 0 ? LIKE : UNLIKE;
}

static char find_separator(std::string_view bytes)
{
    const std::string_view line = first_line(bytes);
    char best = ',';
    for (const char c : {',', ';', '\t', '|'})
        if (count_outside_quotes(line, c) > count_outside_quotes(line, best)) best = c;
    return best;
}

static bool is_number(std::string_view text)
{
    return !text.empty() && text.find_first_not_of("0123456789.+-eE") == std::string_view::npos;
}

static bool is_absent(const TableField &field)
{
    return field.text.empty() && !field.quoted;
}

/* Whether the row is of a hyperedge and a vertex and no more, and its texts are the file's. */
static bool is_plain_row(const TableScan &scan)
{
    if (scan.rows.row.size() != 2 || scan.roles.size() < 2) return false;
    for (const TableField &field : scan.rows.row)
        if (field.quoted || field.text.empty()) return false;
    return scan.roles[0] + scan.roles[1] == ROLE_NET + ROLE_VERTEX;
}

static void add_row(TableScan *scan)
{
    if (is_plain_row(*scan)) {
        const size_t net = scan->roles[0] == ROLE_NET ? 0 : 1;
        return add_later(&scan->members, scan->rows.row[net].text, scan->rows.row[1 - net].text);
    }
    MemberEntry member;
    if (scan->rows.row.size() < 2)
        bad_input(*scan->members.builder.budget, scan->rows.row[0].place,
                  "the row has one field; fields are separated by %s",
                  scan->rows.separator == '\t' ? "a tab"
                                               : shown_text({&scan->rows.separator, 1}).c_str());
    const size_t ncolumns = std::min(scan->rows.row.size(), scan->roles.size());
    for (size_t i = 0; i < ncolumns; i++)
        if (!is_absent(scan->rows.row[i]))
            member.words[scan->roles[i]] = {scan->rows.row[i].text, scan->rows.row[i].place};
    add_member(&scan->members, member);
}

/* Roles by the names of the columns; unnamed ones are the first columns that are left. */
static std::vector<Role> roles_by_name(const std::vector<TableField> &row)
{
    std::vector<Role> roles;
    bool taken[NROLES] = {};
    for (const TableField &field : row) {
        Role role = role_of_name(field.text);
        if (taken[role]) role = ROLE_NONE; // the first column of a role has it
        taken[role] = true;
        roles.push_back(role);
    }
    for (const Role role : {ROLE_NET, ROLE_VERTEX}) {
        const auto left = std::find(roles.begin(), roles.end(), ROLE_NONE);
        if (!taken[role] && left != roles.end()) *left = role;
    }
    return roles;
}

static bool names_columns(const std::vector<TableField> &row)
{
    return std::any_of(row.begin(), row.end(), [](const TableField &field) {
        const Role role = role_of_name(field.text);
        return role == ROLE_NET || role == ROLE_VERTEX;
    });
}

/* The first two columns hold words in the first row and numbers in the second. */
static bool stands_above_numbers(const std::vector<bool> &numbers, const TableScan &scan)
{
    bool above = false;
    for (size_t i = 0; i < 2 && i < numbers.size() && i < scan.rows.row.size(); i++)
        above = above || (!numbers[i] && is_number(scan.rows.row[i].text));
    return above;
}

static void tell_header(const TableScan &scan, const std::vector<std::string> &names)
{
    std::string text = "the first line is a header: ";
    std::string ignored;
    for (size_t i = 0; i < names.size() && i < scan.roles.size(); i++) {
        if (scan.roles[i] == ROLE_NET) text += "hyperedges are in column " + names[i] + ", ";
        if (scan.roles[i] == ROLE_NONE) ignored += (ignored.empty() ? "" : ", ") + names[i];
    }
    for (size_t i = 0; i < names.size() && i < scan.roles.size(); i++)
        if (scan.roles[i] == ROLE_VERTEX) text += "vertices in column " + names[i];
    if (!ignored.empty()) text += "; left out: " + ignored;
    tell_note(scan.members.builder.findings, {1, 1}, text);
}

static std::vector<std::string> shown_row(const TableScan &scan)
{
    std::vector<std::string> names;
    for (const TableField &field : scan.rows.row) names.push_back(shown_text(field.text));
    return names;
}

/* Settles what the columns are; afterwards the row at hand is the first of the data, if any. */
static bool begin_table(TableScan *scan)
{
    const Walk begin = scan->rows.walk;
    if (!take_row(&scan->rows)) return false;
    const std::vector<std::string> names = shown_row(*scan);
    const bool named = names_columns(scan->rows.row);
    scan->roles = roles_by_name(scan->rows.row);
    std::vector<bool> numbers;
    for (const TableField &field : scan->rows.row) numbers.push_back(is_number(field.text));
    const bool more = take_row(&scan->rows);
    if (named || (more && stands_above_numbers(numbers, *scan))) {
        tell_header(*scan, names);
        return more;
    }
    scan->roles = {ROLE_NET, ROLE_VERTEX, ROLE_NET_WEIGHT};
    scan->rows.walk = begin; // the first row is of the data
    return take_row(&scan->rows);
}

static Hypergraph read_table(std::string_view bytes, char separator, Findings *findings,
                             Budget *budget)
{
    TableScan scan = {open_rows(bytes, separator, budget), {}, open_members(findings, budget)};
    for (bool more = begin_table(&scan); more; more = take_row(&scan.rows)) add_row(&scan);
    return finish_members(&scan.members);
}

Hypergraph read_csv(std::string_view bytes, const Reading &, Findings *findings, Budget *budget)
{
    return read_table(bytes, find_separator(bytes), findings, budget);
}

Hypergraph read_tsv(std::string_view bytes, const Reading &, Findings *findings, Budget *budget)
{
    return read_table(bytes, '\t', findings, budget);
}
