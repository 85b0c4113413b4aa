// SPDX-License-Identifier: MIT
/* zorpelx/files/read_cnf.cpp: the reader of DIMACS CNF files, plain and weighted (WCNF).
 *
 * Weighted formulas have either a header, "p wcnf VARIABLES CLAUSES TOP", where clauses that weigh
 * TOP or more are hard, or none, and an h where the weight of a hard clause would stand. A soft
 * clause gives its hyperedge its weight, a hard one that of the heaviest soft clause: none counts
 * more than a hard one, and sums stay small.
 *
 * Clauses end with 0, not with their line. Lines that begin with c are comments wherever they
 * stand; a line that begins with % ends the formula, as in files of some collections.
 */
#include "read_cnf.h"

#include <algorithm>

#include "builder.h"
#include "casts.h"
#include "expand.h"
#include "fileerror.h"
#include "known.h"
#include "told.h"
#include "walk.h"

enum CnfModel { CNF_PRIMAL, CNF_DUAL, CNF_LITERAL };
enum CnfForm { CNF_PLAIN, CNF_WITH_TOP, CNF_WITHOUT_HEADER };

struct CnfScan {
    Walk walk;
    Builder builder;
    CnfModel model;
    int64_t nvariables, nclauses; // of the header
    int64_t clauses;              // finished ones
    int64_t highest;              // variable met
    int64_t nempty;               // clauses without a literal
    int64_t most;                 // highest variable that a file of this length bears out
    CnfForm form = CNF_PLAIN;
    int64_t top = INT64_MAX;        // weight from which on a clause is hard
    int64_t heaviest = 1;           // of the soft clauses
    std::vector<int32_t> hard = {}; // clauses
};

/* To the next line that is neither blank nor a comment; false at the end of the text. */
static bool skip_comments(Walk *walk)
{
    for (;;) {
        skip_space(walk);
        if (text_ended(*walk)) return false;
        const char *const next = walk->at + 1;
        const bool word = next == walk->end || *next == '\n' || is_walk_blank(*next);
        if (*walk->at != 'c' || (!word && walk->at != walk->begin)) return true;
        next_line(walk);
    }
}

/* Whether the line is of whole numbers, perhaps behind an h, and ends with 0. */
static bool is_clause_line(Walk walk)
{
    if (*walk.at == 'h') walk.at++;
    int64_t number = -1;
    int count = 0;
    for (skip_blanks(&walk); !line_ended(walk); skip_blanks(&walk), count++) {
        if (*walk.at == '-') walk.at++;
        if (!take_whole(&walk, &number)) return false;
    }
    return count > 1 && number == 0;
}

static bool is_hard_mark(const Walk &walk)
{
    return walk.end - walk.at > 1 && walk.at[0] == 'h' && is_walk_blank(walk.at[1]);
}

/* Without a header an h tells; numbers alone may be of any format. */
Recognised recognise_cnf(std::string_view bytes)
{
    Walk walk = walk_over(bytes.substr(0, MOST_LOOKED_AT));
    if (!skip_comments(&walk)) return UNLIKE;
    if (is_clause_line(walk)) return is_hard_mark(walk) ? CERTAIN : OPEN;
    if (take_text(&walk) != "p") return UNLIKE;
    skip_blanks(&walk);
    const std::string_view kind = take_text(&walk);
    return kind == "cnf" || kind == "wcnf" ? CERTAIN : UNLIKE;
}

[[noreturn]] static void not_here(const CnfScan &scan, const char *what)
{
    Walk walk = scan.walk;
    skip_blanks(&walk);
    bad_input(*scan.builder.budget, place_of(walk), "%s where %s should be",
              shown_here(walk).c_str(), what);
}

static int64_t take_count(CnfScan *scan, const char *what)
{
    int64_t count = 0;
    skip_blanks(&scan->walk);
    if (!take_whole(&scan->walk, &count)) not_here(*scan, what);
    return count;
}

static void read_header(CnfScan *scan)
{
    Walk *const walk = &scan->walk;
    if (!skip_comments(walk))
        bad_input(*scan->builder.budget, place_of(*walk), "the line 'p cnf' is missing");
    const Walk before = *walk;
    if (*walk->at != 'p' && scan->form == CNF_WITHOUT_HEADER) return;
    const bool problem = take_text(walk) == "p";
    skip_blanks(walk);
    const std::string_view kind = take_text(walk);
    if (!problem || (kind != "cnf" && kind != "wcnf")) {
        scan->walk = before;
        not_here(*scan, "'p cnf', variables and clauses");
    }
    scan->form = kind == "wcnf" ? CNF_WITH_TOP : CNF_PLAIN;
    scan->nvariables = take_count(scan, "the number of variables");
    scan->nclauses = take_count(scan, "the number of clauses");
    skip_blanks(walk);
    if (scan->form == CNF_WITH_TOP && !line_ended(*walk))
        scan->top = take_count(scan, "the weight of hard clauses");
    skip_blanks(walk);
    if (!line_ended(*walk)) not_here(*scan, "the end of the line");
}

/* Memory is taken only as far as the length of the file bears it out. */
static int64_t most_variables(std::string_view bytes)
{
    constexpr int64_t MOST_A_BYTE = 16, FREE = 1000000, MOST = (int64_t{1} << 30) - 1;
    return std::min(std::max(FREE, MOST_A_BYTE * static_cast<int64_t>(bytes.size())), MOST);
}

[[noreturn]] static void too_many(const CnfScan &scan, int64_t variable)
{
    bad_input(*scan.builder.budget, place_of(scan.walk),
              "%lld variables, and a file of this length can have %lld at most", ll(variable),
              ll(scan.most));
}

/* A literal of clause number scan->clauses. */
static void add_literal(CnfScan *scan, int64_t variable, bool negative)
{
    Builder *const builder = &scan->builder;
    if (variable > scan->most) too_many(*scan, variable);
    scan->highest = std::max(scan->highest, variable);
    const int64_t clause = scan->clauses;
    if (scan->model == CNF_DUAL) {
        need_nets(builder, variable);
        need_vertices(builder, clause + 1);
        add_pin(builder, static_cast<int32_t>(variable - 1), static_cast<int32_t>(clause));
        return;
    }
    const bool literal = scan->model == CNF_LITERAL;
    const int64_t v = literal ? 2 * (variable - 1) + (negative ? 1 : 0) : variable - 1;
    need_nets(builder, clause + 1);
    need_vertices(builder, literal ? 2 * variable : variable);
    add_pin(builder, static_cast<int32_t>(clause), static_cast<int32_t>(v));
}

/* What the header announces and no clause mentions is there as well. */
static void need_announced(CnfScan *scan)
{
    if (scan->nvariables > scan->most) too_many(*scan, scan->nvariables);
    Builder *const builder = &scan->builder;
    if (scan->model == CNF_DUAL) return need_nets(builder, scan->nvariables);
    need_vertices(builder, scan->model == CNF_LITERAL ? 2 * scan->nvariables : scan->nvariables);
}

static void end_clause(CnfScan *scan, int64_t nliterals)
{
    if (nliterals == 0) scan->nempty++;
    scan->clauses++;
    if (scan->model == CNF_DUAL)
        need_vertices(&scan->builder, scan->clauses);
    else
        need_nets(&scan->builder, scan->clauses);
}

/* What stands before the literals of a weighted clause. */
static void take_clause_weight(CnfScan *scan)
{
    Walk *const walk = &scan->walk;
    const bool hard = scan->form == CNF_WITHOUT_HEADER && is_hard_mark(*walk);
    int64_t weight = 0;
    if (hard)
        walk->at++;
    else
        weight = take_count(scan, "the weight of a clause, a whole number from 0,");
    Builder *const builder = &scan->builder;
    if (scan->model == CNF_DUAL) return;
    need_nets(builder, scan->clauses + 1);
    const int32_t clause = static_cast<int32_t>(scan->clauses);
    if (hard || weight >= scan->top) return push_charged(builder->budget, &scan->hard, clause);
    scan->heaviest = std::max(scan->heaviest, weight);
    set_net_weight(builder, clause, weight);
}

static void weigh_hard_clauses(CnfScan *scan)
{
    for (const int32_t clause : scan->hard) set_net_weight(&scan->builder, clause, scan->heaviest);
    if (!scan->hard.empty())
        tell_note(scan->builder.findings, {0, 0},
                  counted(static_cast<int64_t>(scan->hard.size()), "hard clause counts ",
                          "hard clauses count ") +
                      std::to_string(scan->heaviest) + ", like the heaviest soft one");
}

/* A number with its sign; false for anything else. */
static bool take_literal(Walk *walk, int64_t *number, bool *negative)
{
    *negative = *walk->at == '-';
    if (*negative) walk->at++;
    return take_whole(walk, number);
}

static void read_clauses(CnfScan *scan)
{
    Walk *const walk = &scan->walk;
    int64_t nliterals = 0; // of the clause at hand
    bool within = false;   // a clause whose weight is read
    while (skip_comments(walk) && *walk->at != '%') {
        if (*walk->at == '\0') { // some tools end files so
            walk->at++;
            continue;
        }
        if (scan->form != CNF_PLAIN && !within) {
            take_clause_weight(scan);
            within = true;
            continue;
        }
        const Walk before = *walk;
        int64_t number = 0;
        bool negative = false;
        if (!take_literal(walk, &number, &negative)) {
            scan->walk = before;
            not_here(*scan, "a literal or the 0 behind a clause");
        }
        if (number > 0) {
            add_literal(scan, number, negative);
            nliterals++;
        } else {
            end_clause(scan, nliterals);
            nliterals = 0;
            within = false;
            if ((scan->clauses & 0xffff) == 0) check_time(*scan->builder.budget);
        }
    }
    if (nliterals == 0 && !within) return;
    tell_warning(scan->builder.findings, place_of(*walk), "the last clause does not end with 0");
    end_clause(scan, nliterals);
}

static void tell_counts(const CnfScan &scan)
{
    Findings *const findings = scan.builder.findings;
    const bool counts = scan.form != CNF_WITHOUT_HEADER;
    const int64_t missing = counts ? scan.nclauses - scan.clauses : 0;
    if (missing != 0)
        tell_warning(
            findings, place_of(scan.walk),
            counted(missing > 0 ? missing : -missing, "clause", "clauses") +
                (missing > 0 ? " less than the header says" : " more than the header says"));
    if (counts && scan.highest > scan.nvariables)
        tell_warning(findings, {0, 0},
                     text_of("variable %lld is used, and the header says %lld", ll(scan.highest),
                             ll(scan.nvariables)));
    if (scan.nempty > 0)
        tell_note(findings, {0, 0},
                  counted(scan.nempty, "clause is empty", "clauses are empty") +
                      (scan.form == CNF_PLAIN ? ": the formula cannot be satisfied" : ""));
}

static CnfModel model_of(const std::string &name)
{
    if (name == "dual") return CNF_DUAL;
    return name == "literal" ? CNF_LITERAL : CNF_PRIMAL;
}

/* A weighted formula without a header begins with an h, or with a number in a file that is called
 * so. */
static bool may_lack_header(std::string_view bytes, const Reading &reading)
{
    Walk walk = walk_over(bytes);
    if (!skip_comments(&walk)) return false;
    const std::string name = small_letters(plain_name(reading.path));
    constexpr std::string_view ENDING = ".wcnf";
    return is_hard_mark(walk) ||
           (name.size() >= ENDING.size() &&
            name.compare(name.size() - ENDING.size(), ENDING.size(), ENDING) == 0);
}

Hypergraph read_cnf(std::string_view bytes, const Reading &reading, Findings *findings,
                    Budget *budget)
{
    CnfScan scan = {walk_over(bytes),
                    open_builder(findings, budget),
                    model_of(reading.model),
                    0,
                    0,
                    0,
                    0,
                    0,
                    most_variables(bytes)};
    if (may_lack_header(bytes, reading)) scan.form = CNF_WITHOUT_HEADER;
    read_header(&scan);
    need_announced(&scan);
    read_clauses(&scan);
    weigh_hard_clauses(&scan);
    tell_counts(scan);
    int64_t nrepeated = 0;
    Hypergraph graph = finish_hypergraph(&scan.builder, &nrepeated);
    if (nrepeated > 0)
        tell_note(findings, {0, 0},
                  text_of("literals that stand in their clause twice%s, counted once: %lld",
                          scan.model == CNF_LITERAL ? "" : ", with any sign", ll(nrepeated)));
    graph.provenance.nrows = std::max(scan.nvariables, scan.highest);
    graph.provenance.ncolumns = scan.clauses;
    return graph;
}
