// SPDX-License-Identifier: MIT
/* zorpelx/report/pivots.cpp: first places for a layout, from distances to a few nodes.
 *
 * A pivot is as far from all earlier ones as can be. The squared distances to the pivots, centred
 * both ways, are a matrix of one row a node; its two strongest directions, found by the power
 * iteration on the small square matrix of its columns, are the axes.
 */
#include "pivots.h"

#include <algorithm>
#include <array>
#include <cmath>

constexpr size_t NPIVOTS = 20;
constexpr int32_t FAR = -1; // not reached

using Columns = std::vector<std::vector<double>>; // [pivots][nodes]

Neighbours neighbours_of(size_t nnodes, const std::vector<Link> &links)
{
    Neighbours neighbours = {std::vector<size_t>(nnodes + 1, 0), {}};
    for (const Link &link : links) {
        neighbours.start[static_cast<size_t>(link.from) + 1]++;
        neighbours.start[static_cast<size_t>(link.to) + 1]++;
    }
    for (size_t v = 0; v < nnodes; v++) neighbours.start[v + 1] += neighbours.start[v];
    neighbours.ends.resize(2 * links.size());
    std::vector<size_t> next(neighbours.start.begin(), neighbours.start.end() - 1);
    for (const Link &link : links) {
        neighbours.ends[next[static_cast<size_t>(link.from)]++] = link.to;
        neighbours.ends[next[static_cast<size_t>(link.to)]++] = link.from;
    }
    return neighbours;
}

static std::vector<int32_t> distances_from(const Neighbours &neighbours, size_t pivot)
{
    std::vector<int32_t> distance(neighbours.start.size() - 1, FAR);
    std::vector<size_t> queue = {pivot};
    distance[pivot] = 0;
    for (size_t i = 0; i < queue.size(); i++)
        for (size_t j = neighbours.start[queue[i]]; j < neighbours.start[queue[i] + 1]; j++) {
            const size_t v = static_cast<size_t>(neighbours.ends[j]);
            if (distance[v] != FAR) continue;
            distance[v] = distance[queue[i]] + 1;
            queue.push_back(v);
        }
    return distance;
}

/* What is not reached is as if a little beyond the farthest. */
static void bring_near(std::vector<int32_t> *distance)
{
    const int32_t farthest = *std::max_element(distance->begin(), distance->end());
    for (int32_t &d : *distance)
        if (d == FAR) d = farthest + 2;
}

static Columns distances_to_pivots(const Neighbours &neighbours)
{
    const size_t nnodes = neighbours.start.size() - 1;
    Columns columns;
    std::vector<int32_t> nearest(nnodes, 0);
    size_t pivot = 0;
    for (size_t v = 1; v < nnodes; v++) // of the most neighbours: in the largest piece, mostly
        if (neighbours.start[v + 1] - neighbours.start[v] >
            neighbours.start[pivot + 1] - neighbours.start[pivot])
            pivot = v;
    while (columns.size() < std::min(NPIVOTS, nnodes)) {
        std::vector<int32_t> distance = distances_from(neighbours, pivot);
        bring_near(&distance);
        for (size_t v = 0; v < nnodes; v++)
            nearest[v] = columns.empty() ? distance[v] : std::min(nearest[v], distance[v]);
        columns.emplace_back(distance.begin(), distance.end());
        pivot =
            static_cast<size_t>(std::max_element(nearest.begin(), nearest.end()) - nearest.begin());
    }
    return columns;
}

/* Squares, then rows and columns that sum up to 0. */
static void centre(Columns *columns)
{
    const size_t nnodes = (*columns)[0].size();
    std::vector<double> ofnode(nnodes, 0);
    double all = 0;
    for (std::vector<double> &column : *columns) {
        double mean = 0;
        for (double &d : column) mean += d *= d;
        mean /= static_cast<double>(nnodes);
        for (double &d : column) d -= mean;
        for (size_t v = 0; v < nnodes; v++) ofnode[v] += column[v];
    }
    for (double &mean : ofnode) all += mean /= static_cast<double>(columns->size());
    all /= static_cast<double>(nnodes);
    for (std::vector<double> &column : *columns)
        for (size_t v = 0; v < nnodes; v++) column[v] -= ofnode[v] - all;
}

static double product(const std::vector<double> &a, const std::vector<double> &b)
{
    double sum = 0;
    for (size_t i = 0; i < a.size(); i++) sum += a[i] * b[i];
    return sum;
}

static void normalise(std::vector<double> *axis)
{
    const double length = std::sqrt(product(*axis, *axis));
    for (double &a : *axis) a = length > 0 ? a / length : 0;
}

/* The strongest direction across those before. */
static std::vector<double> strongest(const Columns &square, const Columns &before)
{
    constexpr int STEPS = 200;
    std::vector<double> axis(square.size()), next(square.size());
    for (size_t i = 0; i < axis.size(); i++)
        axis[i] = 1.0 / static_cast<double>(i + 1 + before.size());
    for (int step = 0; step < STEPS; step++) {
        for (size_t i = 0; i < square.size(); i++) next[i] = product(square[i], axis);
        for (const std::vector<double> &other : before) {
            const double along = product(next, other);
            for (size_t i = 0; i < next.size(); i++) next[i] -= along * other[i];
        }
        normalise(&next);
        axis.swap(next);
    }
    return axis;
}

static std::vector<double> along_axis(const Columns &columns, const std::vector<double> &axis)
{
    std::vector<double> place(columns[0].size(), 0);
    for (size_t i = 0; i < columns.size(); i++)
        for (size_t v = 0; v < place.size(); v++) place[v] += columns[i][v] * axis[i];
    return place;
}

std::vector<Spot> place_by_pivots(const Neighbours &neighbours)
{
    if (neighbours.start.size() < 2) return {};
    Columns columns = distances_to_pivots(neighbours);
    centre(&columns);
    Columns square(columns.size(), std::vector<double>(columns.size()));
    for (size_t i = 0; i < columns.size(); i++)
        for (size_t j = 0; j < columns.size(); j++) square[i][j] = product(columns[i], columns[j]);
    const std::vector<double> first = strongest(square, {});
    const std::vector<double> second = strongest(square, {first});
    const std::vector<double> x = along_axis(columns, first), y = along_axis(columns, second);
    std::vector<Spot> places(x.size());
    for (size_t v = 0; v < x.size(); v++) places[v] = {x[v], y[v]};
    return places;
}
