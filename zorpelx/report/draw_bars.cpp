// SPDX-License-Identifier: MIT
/* zorpelx/report/draw_bars.cpp: pictures of bars: sizes of parts, hyperedges by parts touched. */
#include <algorithm>

#include "draw.h"
#include "markup.h"

constexpr double WIDTH = 720, LEFT = 64, RIGHT = 150; // of the picture, of its margins
constexpr double ROW = 24, BAR = 15, TOP = 30;
constexpr int64_t SINGLE_ROWS = 12; // numbers of parts that have a row of their own

static double along(double value, double most)
{
    return most > 0 ? value / most * (WIDTH - LEFT - RIGHT) : 0;
}

/* The length of a bar, which is seen if there is anything. */
static double bar_width(double share)
{
    return std::max(along(share, 1), share > 0 ? 1.0 : 0.0);
}

/* A row of bars: what it is called, the bar, and its figure at x. */
static std::string bar_row(size_t row, const std::string &name, double share, const char *colour,
                           const std::string &figure, double x)
{
    const double y = TOP + ROW * static_cast<double>(row);
    return text("ink end", LEFT - 10, y + BAR - 3, name) +
           rect(colour, LEFT, y, bar_width(share), BAR, " rx=\"1.5\"") +
           text("ink", x, y + BAR - 3, figure);
}

static std::string mark(double share, const char *words, double bottom)
{
    const double x = LEFT + along(share, 1);
    return line(words, x, TOP - 6, x, bottom);
}

/* What every part may weigh if that is the same for all. */
static bool has_equal_bounds(const Allowed &allowed)
{
    const auto equal = [](const std::vector<int64_t> &list) {
        return std::adjacent_find(list.begin(), list.end(), std::not_equal_to<>()) == list.end();
    };
    return !allowed.most.empty() && equal(allowed.least) && equal(allowed.most);
}

static std::string bounds_of_row(const Allowed &allowed, size_t p, size_t row, double most)
{
    const double y = TOP + ROW * static_cast<double>(row) - 3;
    std::string out;
    for (const int64_t bound : {allowed.least[p], allowed.most[p]}) {
        const double x = LEFT + along(static_cast<double>(bound), most);
        if (bound > 0) out += line("pen", x, y, x, y + BAR + 6);
    }
    return out;
}

static std::string shown_size(int64_t weight, double average)
{
    if (!(average > 0)) return grouped(weight);
    const double percent = 100 * (static_cast<double>(weight) / average - 1);
    return grouped(weight) + " (" + (percent > 0 ? "+" : "") + decimal(percent, 1) + " %)";
}

static std::string sizes_text(const Account &account, size_t nshown)
{
    const Figures &figures = account.figures[0];
    const auto [least, most] = std::minmax_element(figures.weight.begin(), figures.weight.end());
    std::string text =
        "The lightest part weighs " + grouped(*least) + ", the heaviest " + grouped(*most) + '.';
    if (nshown < figures.weight.size())
        text += " The " + std::to_string(nshown) + " heaviest parts of " + grouped(figures.nparts) +
                " are shown.";
    return text;
}

Picture draw_sizes(const Account &account)
{
    const Figures &figures = account.figures[0];
    const std::vector<int64_t> parts = shown_parts(figures, MOST_BARS);
    const double average =
        static_cast<double>(total_weight(figures.weight)) / static_cast<double>(figures.nparts);
    int64_t most = *std::max_element(figures.weight.begin(), figures.weight.end());
    for (const int64_t bound : account.allowed.most) most = std::max(most, bound);
    const double scale = std::max(static_cast<double>(most), 1.0);
    const double bottom = TOP + ROW * static_cast<double>(parts.size());
    std::string body;
    for (size_t row = 0; row < parts.size(); row++) {
        const size_t p = static_cast<size_t>(parts[row]);
        body +=
            bar_row(row, "part " + std::to_string(p),
                    static_cast<double>(figures.weight[p]) / scale, part_class(parts[row]).c_str(),
                    shown_size(figures.weight[p], average), WIDTH - RIGHT + 14);
        if (!account.allowed.most.empty() && !has_equal_bounds(account.allowed))
            body += bounds_of_row(account.allowed, p, row, scale);
    }
    body += mark(average / scale, "pen dash", bottom) +
            text("dim mid", LEFT + along(average / scale, 1), TOP - 12, "average");
    if (has_equal_bounds(account.allowed)) {
        const double x = static_cast<double>(account.allowed.most[0]) / scale;
        body += mark(x, "pen", bottom) + text("dim end", LEFT + along(x, 1), bottom + 12,
                                              "at most " + grouped(account.allowed.most[0]));
    }
    return {"sizes", "Weight of each part", sizes_text(account, parts.size()),
            WIDTH,   bottom + 20,           body};
}

std::vector<TouchedBin> touched_bins(const Facts &facts)
{
    std::vector<TouchedBin> bins;
    for (const TouchedFacts &row : facts.touched) {
        if (row.parts <= SINGLE_ROWS) {
            bins.push_back({row.parts, row.parts, row.number, row.weight});
            continue;
        }
        int64_t least = SINGLE_ROWS + 1, most = 2 * SINGLE_ROWS;
        while (row.parts > most) {
            least = most + 1;
            most *= 2;
        }
        if (bins.empty() || bins.back().least != least) bins.push_back({least, most, 0, 0});
        bins.back().number += row.number;
        bins.back().weight += row.weight;
    }
    return bins;
}

static std::string bin_name(const TouchedBin &bin)
{
    if (bin.least == bin.most) return with_number(bin.least, "part", "parts");
    return grouped(bin.least) + " to " + grouped(bin.most);
}

/* Those in one part are so many that the others would not be seen beside them. */
Picture draw_touched(const Account &account)
{
    const std::vector<TouchedBin> bins = touched_bins(account.facts);
    int64_t most = 1, uncut = 0;
    for (const TouchedBin &bin : bins) {
        if (bin.least > 1)
            most = std::max(most, bin.number);
        else
            uncut += bin.number;
    }
    std::string body;
    size_t row = 0;
    for (const TouchedBin &bin : bins) {
        if (bin.least < 2) continue;
        const double share = static_cast<double>(bin.number) / static_cast<double>(most);
        body += bar_row(row++, bin_name(bin), share, "heat",
                        grouped(bin.number) + ", weight " + grouped(bin.weight),
                        LEFT + bar_width(share) + 8);
    }
    if (row == 0) body += text("ink", LEFT, TOP + 12, "No hyperedge is cut.");
    body += text("dim", LEFT, TOP - 12,
                 "Cut hyperedges; " + with_number(uncut, "more touches", "more touch") +
                     " one part or none");
    return {"touched",
            "Hyperedges by the number of parts that they touch",
            with_number(account.figures[0].ncut, "hyperedge is cut.", "hyperedges are cut."),
            WIDTH,
            TOP + ROW * static_cast<double>(std::max<size_t>(row, 1)) + 4,
            body};
}
