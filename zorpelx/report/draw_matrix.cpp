// SPDX-License-Identifier: MIT
/* zorpelx/report/draw_matrix.cpp: pictures of matrices: the cut between parts, vertices moved. */
#include <algorithm>
#include <cmath>

#include "draw.h"
#include "markup.h"

constexpr double WIDTH = 720, LEFT = 84, TOP = 52, WIDEST = 56;
constexpr size_t WRITTEN = 12; // columns that leave room for figures

/* Numbers of parts along both sides, and the values between them, below 0 for no value. */
struct Squares {
    std::vector<int64_t> rows, columns;
    std::vector<std::vector<int64_t>> values;
    std::string rowname, columnname;
};

/* "12,345" or "1.2M" if that is too wide. */
static std::string short_number(int64_t number)
{
    constexpr int64_t LONGEST = 99999;
    if (number <= LONGEST) return grouped(number);
    const char *const units[] = {"k", "M", "G", "T", "P"};
    double rest = static_cast<double>(number) / 1000;
    size_t unit = 0;
    for (; rest >= 1000 && unit < 4; unit++) rest /= 1000;
    return decimal(rest, rest < 10 ? 1 : 0) + units[unit];
}

/* Roots, so that small values are seen beside large ones. */
static double strength(int64_t value, int64_t most)
{
    return std::sqrt(static_cast<double>(value) / static_cast<double>(most));
}

static std::string square(double x, double y, double side, int64_t value, int64_t most,
                          bool written)
{
    if (value < 0) return rect("ink band", x, y, side - 1, side - 1);
    const double share = most > 0 && value > 0 ? strength(value, most) : 0;
    constexpr double DARK_ENOUGH = 0.6; // for figures in the colour of the ground
    std::string out = rect("heat", x, y, side - 1, side - 1,
                           " fill-opacity=\"" + decimal(0.03 + 0.97 * share, 2) + '"');
    if (written && value > 0)
        out += text(share > DARK_ENOUGH ? "onheat mid" : "ink mid", x + side / 2, y + side / 2 + 4,
                    short_number(value));
    return out;
}

/* Every how many rows have their number written. */
static size_t label_step(double side)
{
    return side >= 15 ? 1 : 2;
}

static std::string labels(const Squares &squares, double side)
{
    std::string out =
        text("dim", LEFT, 14, squares.columnname) + text("dim", 0, TOP - 8, squares.rowname);
    for (size_t i = 0; i < squares.columns.size(); i += label_step(side))
        out += text("ink mid", LEFT + side * (static_cast<double>(i) + 0.5), TOP - 8,
                    std::to_string(squares.columns[i]));
    for (size_t i = 0; i < squares.rows.size(); i += label_step(side))
        out += text("ink end", LEFT - 10, TOP + side * (static_cast<double>(i) + 0.5) + 4,
                    std::to_string(squares.rows[i]));
    return out;
}

static std::string draw_squares(const Squares &squares, double *height)
{
    const double side =
        std::min(WIDEST, (WIDTH - LEFT - 8) / static_cast<double>(squares.columns.size()));
    int64_t most = 0;
    for (const auto &row : squares.values)
        for (const int64_t value : row) most = std::max(most, value);
    std::string body = labels(squares, side);
    for (size_t i = 0; i < squares.rows.size(); i++)
        for (size_t j = 0; j < squares.columns.size(); j++)
            body +=
                square(LEFT + side * static_cast<double>(j), TOP + side * static_cast<double>(i),
                       side, squares.values[i][j], most, squares.columns.size() <= WRITTEN);
    *height = TOP + side * static_cast<double>(squares.rows.size()) + 8;
    return body;
}

/* The place of a part among those shown; as many as there are if it is not. */
static size_t place_of(const std::vector<int64_t> &parts, int64_t part)
{
    const auto place = std::lower_bound(parts.begin(), parts.end(), part);
    return place != parts.end() && *place == part ? static_cast<size_t>(place - parts.begin())
                                                  : parts.size();
}

Picture draw_matrix(const Account &account)
{
    const std::vector<int64_t> parts = shown_parts(account.figures[0], MOST_SQUARES);
    Squares squares = {parts, parts, {}, "part", "part"};
    squares.values.assign(parts.size(), std::vector<int64_t>(parts.size(), 0));
    for (size_t i = 0; i < parts.size(); i++) squares.values[i][i] = -1;
    for (const PairFacts &pair : account.facts.pairs) {
        const size_t i = place_of(parts, pair.first), j = place_of(parts, pair.second);
        if (i == parts.size() || j == parts.size()) continue;
        squares.values[i][j] = squares.values[j][i] = pair.weight;
    }
    double height = 0;
    const std::string body = draw_squares(squares, &height);
    std::string said = "Weight of the hyperedges that touch both parts.";
    if (!account.facts.pairs.empty()) {
        const PairFacts &most = account.facts.pairs[0];
        said += " Parts " + std::to_string(most.first) + " and " + std::to_string(most.second) +
                " share most: " + grouped(most.weight) + '.';
    }
    if (parts.size() < account.facts.parts.size())
        said += " The " + std::to_string(parts.size()) + " heaviest parts are shown.";
    return {"matrix", "Cut between each two parts", said, WIDTH, height, body};
}

Picture draw_moves(const Account &account, size_t i)
{
    const Likeness &likeness = account.agreements[i - 1];
    Squares squares = {shown_parts(account.figures[0], MOST_SQUARES),
                       shown_parts(account.figures[i], MOST_SQUARES),
                       {},
                       "first",
                       "partition " + std::to_string(i + 1)};
    squares.values.assign(squares.rows.size(), std::vector<int64_t>(squares.columns.size(), 0));
    for (const Overlap &flow : likeness.flows) {
        const size_t row = place_of(squares.rows, flow.a);
        const size_t column = place_of(squares.columns, flow.b);
        if (row < squares.rows.size() && column < squares.columns.size())
            squares.values[row][column] = flow.vertices;
    }
    double height = 0;
    const std::string body = draw_squares(squares, &height);
    return {"moves" + std::to_string(i + 1),
            "Where the vertices of the first partition are in partition " + std::to_string(i + 1),
            with_number(likeness.parts.moved_vertices, "vertex has", "vertices have") + " moved.",
            WIDTH,
            height,
            body};
}
