// SPDX-License-Identifier: MIT
/* zorpelx/report/draw_parts.cpp: the graph of parts: how much each two have in common.
 *
 * Parts stand on a circle, in an order that keeps those with much in common near each other: each
 * next one is the one with the strongest link to the last, and exchanges of two follow as long as
 * they make the weighted links shorter.
 */
#include <algorithm>
#include <cmath>

#include "draw.h"
#include "markup.h"

constexpr double WIDTH = 720, HEIGHT = 460, RADIUS = 180, LARGEST = 26, SMALLEST = 5;
constexpr size_t MOST_LINKS = 300;

using Weights = std::vector<std::vector<double>>; // [shown][shown]

static Weights weights_between(const Account &account, const std::vector<int64_t> &parts)
{
    Weights weights(parts.size(), std::vector<double>(parts.size(), 0));
    std::vector<size_t> place(account.facts.parts.size(), parts.size());
    for (size_t i = 0; i < parts.size(); i++) place[static_cast<size_t>(parts[i])] = i;
    for (const PairFacts &pair : account.facts.pairs) {
        const size_t i = place[static_cast<size_t>(pair.first)];
        const size_t j = place[static_cast<size_t>(pair.second)];
        if (i == parts.size() || j == parts.size()) continue;
        weights[i][j] = weights[j][i] = static_cast<double>(pair.weight);
    }
    return weights;
}

static std::vector<size_t> chained(const Weights &weights)
{
    std::vector<size_t> order = {0};
    std::vector<bool> taken(weights.size(), false);
    taken[0] = true;
    while (order.size() < weights.size()) {
        size_t next = weights.size();
        for (size_t j = 0; j < weights.size(); j++)
            if (!taken[j] &&
                (next == weights.size() || weights[order.back()][j] > weights[order.back()][next]))
                next = j;
        taken[next] = true;
        order.push_back(next);
    }
    return order;
}

/* Steps along the circle from one place to another. */
static double steps_between(size_t a, size_t b, size_t places)
{
    const size_t gap = a > b ? a - b : b - a;
    return static_cast<double>(std::min(gap, places - gap));
}

static double cost_of(const Weights &weights, const std::vector<size_t> &order, size_t at)
{
    double cost = 0;
    for (size_t i = 0; i < order.size(); i++)
        cost += weights[order[at]][order[i]] * steps_between(at, i, order.size());
    return cost;
}

static std::vector<size_t> circle_order(const Weights &weights)
{
    constexpr int ROUNDS = 20;
    std::vector<size_t> order = chained(weights);
    for (int round = 0; round < ROUNDS; round++) {
        bool changed = false;
        for (size_t i = 0; i < order.size(); i++)
            for (size_t j = i + 1; j < order.size(); j++) {
                const double before = cost_of(weights, order, i) + cost_of(weights, order, j);
                std::swap(order[i], order[j]);
                const double after = cost_of(weights, order, i) + cost_of(weights, order, j);
                if (after < before * (1 - 1e-9))
                    changed = true;
                else
                    std::swap(order[i], order[j]);
            }
        if (!changed) break;
    }
    return order;
}

/* The circle from its top on, clockwise. */
static std::vector<Spot> circle_places(const std::vector<size_t> &order)
{
    constexpr double TURN = 6.283185307179586;
    std::vector<Spot> places(order.size());
    for (size_t i = 0; i < order.size(); i++) {
        const double begin = order.size() == 2 ? 0.25 : 0; // two stand side by side
        const double angle =
            TURN * (begin + static_cast<double>(i) / static_cast<double>(order.size()));
        places[order[i]] = {WIDTH / 2 + RADIUS * std::sin(angle),
                            HEIGHT / 2 - RADIUS * std::cos(angle)};
    }
    return places;
}

struct Drawn {
    size_t from, to;
    double weight;
};

static std::vector<Drawn> strongest_links(const Weights &weights)
{
    std::vector<Drawn> links;
    for (size_t i = 0; i < weights.size(); i++)
        for (size_t j = i + 1; j < weights.size(); j++)
            if (weights[i][j] > 0) links.push_back({i, j, weights[i][j]});
    std::stable_sort(links.begin(), links.end(),
                     [](const Drawn &a, const Drawn &b) { return a.weight > b.weight; });
    if (links.size() > MOST_LINKS) links.resize(MOST_LINKS);
    std::reverse(links.begin(), links.end()); // the strongest above the others
    return links;
}

static std::string draw_links(const Weights &weights, const std::vector<Spot> &places)
{
    constexpr double THICKEST = 14;
    const std::vector<Drawn> links = strongest_links(weights);
    std::string body;
    for (const Drawn &link : links) {
        const double share = link.weight / links.back().weight;
        const Spot &from = places[link.from], &to = places[link.to];
        body += "<path class=\"wire open\" d=\"M" + length(from.x) + ' ' + length(from.y) + 'L' +
                length(to.x) + ' ' + length(to.y) + "\" stroke-width=\"" +
                length(std::max(0.6, THICKEST * share)) + "\" stroke-opacity=\"" +
                decimal(0.25 + 0.55 * share, 2) + "\"/>\n";
    }
    return body;
}

static std::string disc(const Spot &place, double radius, int64_t part)
{
    const std::string number = std::to_string(part);
    const bool inside = radius > 12;
    return "<circle class=\"" + part_class(part) + "\" cx=\"" + length(place.x) + "\" cy=\"" +
           length(place.y) + "\" r=\"" + length(radius) + "\"/>\n" +
           text("ink mid label halo", place.x, place.y + (inside ? 4.5 : -radius - 4), number);
}

Picture draw_parts(const Account &account)
{
    const Figures &figures = account.figures[0];
    const std::vector<int64_t> parts = shown_parts(figures, MOST_BARS);
    const Weights weights = weights_between(account, parts);
    const std::vector<Spot> places = circle_places(circle_order(weights));
    const double most = static_cast<double>(
        std::max<int64_t>(*std::max_element(figures.weight.begin(), figures.weight.end()), 1));
    const double largest = std::min(LARGEST, 500.0 / static_cast<double>(parts.size()));
    std::string body = draw_links(weights, places);
    for (size_t i = 0; i < parts.size(); i++) {
        const double weight = static_cast<double>(figures.weight[static_cast<size_t>(parts[i])]);
        body += disc(places[i], std::max(SMALLEST, largest * std::sqrt(weight / most)), parts[i]);
    }
    std::string said = "A disc for each part, its area by the part's weight; a line between two "
                       "parts is as thick as the hyperedges that touch both are heavy.";
    if (parts.size() < account.facts.parts.size())
        said += " The " + std::to_string(parts.size()) + " heaviest parts are shown.";
    return {"parts", "Graph of the parts", said, WIDTH, HEIGHT, body, true};
}
