// SPDX-License-Identifier: MIT
/* zorpelx/report/layout.cpp: places for the points of a picture.
 *
 * From the first places on, links pull and nodes push each other. Pushes are exact between nodes in
 * the same and in neighbouring cells of a grid; farther cells push as one, from their centre of
 * mass. No step is longer than a limit that falls to nothing.
 */
#include "layout.h"

#include <algorithm>
#include <cmath>

#include "pivots.h"

constexpr double GOLDEN = 0.6180339887498949; // shares of multiples of it are spread evenly

struct Box {
    double left, top, width, height;
};

/* Nodes of cell c: nodes[start[c]] .. nodes[start[c + 1] - 1]. */
struct Grid {
    size_t side; // cells
    std::vector<size_t> start, nodes, cell;
    std::vector<Spot> centre; // of mass
};

static Box box_of(const std::vector<Spot> &places)
{
    double left = places[0].x, right = left, top = places[0].y, bottom = top;
    for (const Spot &place : places) {
        left = std::min(left, place.x);
        right = std::max(right, place.x);
        top = std::min(top, place.y);
        bottom = std::max(bottom, place.y);
    }
    return {left, top, right - left, bottom - top};
}

static size_t cell_at(double along, double length, size_t side)
{
    if (!(length > 0)) return 0;
    return std::min(static_cast<size_t>(along / length * static_cast<double>(side)), side - 1);
}

static void fill_grid(const std::vector<Spot> &places, Grid *grid)
{
    const Box box = box_of(places);
    const size_t ncells = grid->side * grid->side;
    grid->start.assign(ncells + 1, 0);
    grid->cell.resize(places.size());
    grid->nodes.resize(places.size());
    grid->centre.assign(ncells, {0, 0});
    for (size_t v = 0; v < places.size(); v++) {
        const size_t c = cell_at(places[v].y - box.top, box.height, grid->side) * grid->side +
                         cell_at(places[v].x - box.left, box.width, grid->side);
        grid->cell[v] = c;
        grid->start[c + 1]++;
        grid->centre[c].x += places[v].x;
        grid->centre[c].y += places[v].y;
    }
    for (size_t c = 0; c < ncells; c++) {
        const double number = static_cast<double>(grid->start[c + 1]);
        if (number > 0) grid->centre[c] = {grid->centre[c].x / number, grid->centre[c].y / number};
        grid->start[c + 1] += grid->start[c];
    }
    std::vector<size_t> next(grid->start.begin(), grid->start.end() - 1);
    for (size_t v = 0; v < places.size(); v++) grid->nodes[next[grid->cell[v]]++] = v;
}

/* `many` nodes push the one at `place` away, with spring length 1. */
static void push(const Spot &place, const Spot &other, double many, Spot *force)
{
    constexpr double NEAREST = 1e-4;
    const double dx = place.x - other.x, dy = place.y - other.y;
    const double square = std::max(dx * dx + dy * dy, NEAREST);
    force->x += many * dx / square;
    force->y += many * dy / square;
}

static bool are_near(size_t a, size_t b, size_t side)
{
    const size_t ax = a % side, ay = a / side, bx = b % side, by = b / side;
    return (ax > bx ? ax - bx : bx - ax) <= 1 && (ay > by ? ay - by : by - ay) <= 1;
}

static Spot pushed(const std::vector<Spot> &places, const Grid &grid, size_t v)
{
    Spot force = {0, 0};
    for (size_t c = 0; c + 1 < grid.start.size(); c++) {
        const size_t begin = grid.start[c], end = grid.start[c + 1];
        if (begin == end) continue;
        if (!are_near(grid.cell[v], c, grid.side)) {
            push(places[v], grid.centre[c], static_cast<double>(end - begin), &force);
            continue;
        }
        for (size_t i = begin; i < end; i++)
            if (grid.nodes[i] != v) push(places[v], places[grid.nodes[i]], 1, &force);
    }
    return force;
}

static void pull(const std::vector<Spot> &places, const std::vector<Link> &links,
                 std::vector<Spot> *forces)
{
    for (const Link &link : links) {
        const Spot &a = places[static_cast<size_t>(link.from)];
        const Spot &b = places[static_cast<size_t>(link.to)];
        const double dx = b.x - a.x, dy = b.y - a.y;
        const double strength = link.weight * std::sqrt(dx * dx + dy * dy);
        Spot &from = (*forces)[static_cast<size_t>(link.from)];
        Spot &to = (*forces)[static_cast<size_t>(link.to)];
        from = {from.x + strength * dx, from.y + strength * dy};
        to = {to.x - strength * dx, to.y - strength * dy};
    }
}

/* What nothing joins would fly away. */
static void hold(const std::vector<Spot> &places, double gravity, std::vector<Spot> *forces)
{
    for (size_t v = 0; v < places.size(); v++) {
        (*forces)[v].x -= gravity * places[v].x;
        (*forces)[v].y -= gravity * places[v].y;
    }
}

static void make_step(const std::vector<Spot> &forces, double limit, std::vector<Spot> *places)
{
    for (size_t v = 0; v < places->size(); v++) {
        const double length = std::sqrt(forces[v].x * forces[v].x + forces[v].y * forces[v].y);
        const double share = length > limit ? limit / length : 1;
        (*places)[v].x += share * forces[v].x;
        (*places)[v].y += share * forces[v].y;
    }
}

/* To a square in which every node has a place of its own of about 1 x 1; nodes on one spot are
 * moved apart a little. */
static void spread_out(std::vector<Spot> *places)
{
    const Box box = box_of(*places);
    const double side = std::sqrt(static_cast<double>(places->size()));
    const double longer = std::max(box.width, box.height);
    const double scale = longer > 0 ? side / longer : 0;
    for (size_t v = 0; v < places->size(); v++) {
        const double turn = GOLDEN * static_cast<double>(v), other = GOLDEN * turn;
        Spot &place = (*places)[v];
        place.x = (place.x - box.left - box.width / 2) * scale + turn - std::floor(turn) - 0.5;
        place.y = (place.y - box.top - box.height / 2) * scale + other - std::floor(other) - 0.5;
    }
}

static int steps_for(size_t nnodes)
{
    constexpr size_t WORK = 300000; // nodes x steps
    return static_cast<int>(std::clamp<size_t>(WORK / std::max<size_t>(nnodes, 1), 30, 200));
}

static void relax(const std::vector<Link> &links, std::vector<Spot> *places)
{
    const int steps = steps_for(places->size());
    const double side = std::sqrt(static_cast<double>(places->size()));
    Grid grid = {};
    grid.side = std::clamp<size_t>(static_cast<size_t>(side / 2), 1, 24);
    std::vector<Spot> forces(places->size());
    for (int step = 0; step < steps; step++) {
        fill_grid(*places, &grid);
        for (size_t v = 0; v < places->size(); v++) forces[v] = pushed(*places, grid, v);
        pull(*places, links, &forces);
        hold(*places, 1, &forces);
        make_step(forces, side / 10 * (steps - step) / steps, places);
    }
}

/* Into the rectangle, as large as can be, in the middle. */
static void fit(double width, double height, std::vector<Spot> *places)
{
    const Box box = box_of(*places);
    const double wide = box.width > 0 ? width / box.width : 1e9;
    const double high = box.height > 0 ? height / box.height : 1e9;
    const double scale = std::min(wide, high) < 1e9 ? std::min(wide, high) : 0;
    for (Spot &place : *places) {
        place.x = (place.x - box.left - box.width / 2) * scale + width / 2;
        place.y = (place.y - box.top - box.height / 2) * scale + height / 2;
    }
}

std::vector<Spot> lay_out(size_t nnodes, const std::vector<Link> &links, double width,
                          double height)
{
    if (nnodes == 0) return {};
    std::vector<Spot> places = place_by_pivots(neighbours_of(nnodes, links));
    spread_out(&places);
    relax(links, &places);
    fit(width, height, &places);
    return places;
}
