// SPDX-License-Identifier: MIT
/* bench/traps.cpp: the families of zorpel-generate that set traps: inputs on which a routine that
 * is linear on others might become quadratic. */
#include <algorithm>
#include <cassert>
#include <cstdint>
#include <numeric>

#include "generator.h"

/* One hyperedge over every vertex, PINS/2 of them, among hyperedges of two to four vertices that
 * stand near each other. Its line is as long as it must be.
 */
void write_giant(Writer *out)
{
    const uint32_t nvertices = static_cast<uint32_t>(out->pins / 2);
    const uint32_t nsmall = nvertices / 3; // of three pins on average
    Random random = open_stream(out->seed, PINS_OF_NETS);
    put_header(out, uint64_t{nsmall} + 1, nvertices);
    for (uint32_t e = 0; e < nsmall; e++) {
        const uint32_t size = 2 + e % 3, v = draw_below(&random, nvertices - 12);
        const uint32_t gap = 1 + draw_below(&random, 3);
        const uint32_t pins[4] = {v, v + gap, v + 2 * gap, v + 3 * gap};
        put_net(out, pins, size);
        if (e != nsmall / 2) continue;
        put_net_weight(out);
        for (uint32_t u = 0; u + 1 < nvertices; u++) put_number(out, uint64_t{u} + 1, ' ');
        put_number(out, nvertices, '\n');
    }
    put_vertex_weights(out, nvertices);
}

/* One hyperedge over every vertex, PINS/4 of them, and as many of three vertices, two near each
 * other and one anywhere: nothing holds together, so that vertices move a lot, and each is in the
 * large hyperedge. */
void write_broad(Writer *out)
{
    constexpr uint32_t NEAR = 12;
    const uint32_t nvertices = std::max(2 * NEAR, static_cast<uint32_t>(out->pins / 4));
    Random random = open_stream(out->seed, PINS_OF_NETS);
    Vertices pins, mark(nvertices, 0);
    put_header(out, uint64_t{nvertices} + 1, nvertices);
    for (uint32_t e = 0; e < nvertices; e++) {
        const uint32_t first = draw_below(&random, nvertices - NEAR);
        pins.clear();
        while (pins.size() < 2) add_pin(&pins, &mark, e, first + draw_below(&random, NEAR));
        while (pins.size() < 3) add_pin(&pins, &mark, e, draw_below(&random, nvertices));
        put_net(out, pins.data(), pins.size());
    }
    pins.resize(nvertices);
    std::iota(pins.begin(), pins.end(), 0u);
    put_net(out, pins.data(), pins.size());
    put_vertex_weights(out, nvertices);
}

// One vertex is in every hyperedge, with two others that stand near each other.
void write_hub(Writer *out)
{
    const uint32_t nnets = static_cast<uint32_t>(out->pins / 3), nvertices = nnets / 2 + 20;
    const uint32_t hub = nvertices / 2;
    Random random = open_stream(out->seed, PINS_OF_NETS);
    put_header(out, nnets, nvertices);
    for (uint32_t e = 0; e < nnets; e++) {
        uint32_t u = draw_below(&random, nvertices - 10);
        uint32_t v = u + 1 + draw_below(&random, 8);
        if (u == hub) u--;
        if (v == hub) v++;
        const uint32_t pins[3] = {u, hub, v};
        put_net(out, pins, 3);
    }
    put_vertex_weights(out, nvertices);
}

// Sixteen sets of four vertices, a ring in which neighbours share one, each repeated at random
// and with its pins in any rotation.
void write_identical(Writer *out)
{
    constexpr uint32_t NSETS = 16, SIZE = 4, STEP = 3;
    const uint32_t nnets = static_cast<uint32_t>(out->pins / SIZE);
    Random random = open_stream(out->seed, PINS_OF_NETS);
    put_header(out, nnets, NSETS * STEP);
    for (uint32_t e = 0; e < nnets; e++) {
        const uint32_t set = e < NSETS ? e : draw_below(&random, NSETS);
        const uint32_t turn = draw_below(&random, SIZE);
        uint32_t pins[SIZE];
        for (uint32_t i = 0; i < SIZE; i++) {
            pins[i] = (set * STEP + (i + turn) % SIZE) % (NSETS * STEP);
        }
        put_net(out, pins, SIZE);
    }
    put_vertex_weights(out, NSETS * STEP);
}

// A grid closed in both directions with a hyperedge for each of its lines: every vertex has four
// hyperedges of two pins, so without weights all keys, and all first gains, tie.
void write_equal(Writer *out)
{
    const Box box = best_box(static_cast<uint64_t>(out->pins) / 4, true);
    assert(box.nx >= 3 && box.ny >= 3); // on a ring of two a line would stand twice
    put_header(out, uint64_t{2} * box.nx * box.ny, uint64_t{box.nx} * box.ny);
    for (uint32_t y = 0; y < box.ny; y++) {
        for (uint32_t x = 0; x < box.nx; x++) {
            const uint32_t v = y * box.nx + x;
            const uint32_t right[2] = {v, y * box.nx + (x + 1) % box.nx};
            const uint32_t below[2] = {v, (y + 1) % box.ny * box.nx + x};
            put_net(out, right, 2);
            put_net(out, below, 2);
        }
    }
    put_vertex_weights(out, uint64_t{box.nx} * box.ny);
}

/* Hyperedges of fifty vertices, the largest that coarsening looks at, each drawn from a stretch of
 * two hundred. */
void write_wide(Writer *out)
{
    constexpr uint32_t SIZE = 50, STRETCH = 200, DEGREE = 10;
    const uint32_t nnets = static_cast<uint32_t>(std::max<int64_t>(1, out->pins / SIZE));
    const uint32_t nvertices = std::max(STRETCH, nnets * SIZE / DEGREE);
    Random random = open_stream(out->seed, PINS_OF_NETS);
    Vertices pins, mark(nvertices, 0);
    put_header(out, nnets, nvertices);
    for (uint32_t e = 0; e < nnets; e++) {
        const uint32_t first = draw_below(&random, nvertices - STRETCH + 1);
        pins.clear();
        while (pins.size() < SIZE) add_pin(&pins, &mark, e, first + draw_below(&random, STRETCH));
        put_net(out, pins.data(), pins.size());
    }
    put_vertex_weights(out, nvertices);
}

// One vertex in ten is in hyperedges, of four that stand near each other; the others are in none.
void write_islands(Writer *out)
{
    constexpr uint32_t SIZE = 4, APART = 10, NEAR = 20;
    const uint32_t nnets = static_cast<uint32_t>(out->pins / SIZE), nlinked = nnets + NEAR;
    Random random = open_stream(out->seed, PINS_OF_NETS);
    Vertices pins, mark(nlinked * APART, 0);
    put_header(out, nnets, uint64_t{nlinked} * APART);
    for (uint32_t e = 0; e < nnets; e++) {
        pins.clear();
        while (pins.size() < SIZE)
            add_pin(&pins, &mark, e, (e + draw_below(&random, NEAR)) * APART);
        put_net(out, pins.data(), pins.size());
    }
    put_vertex_weights(out, uint64_t{nlinked} * APART);
}

/* Vertices that often do not fit: weights of one to nine times a large unit, and ten vertices of
 * four per cent of the others' weight, which no coarse vertex may outweigh. Hyperedges of three
 * vertices, two close to each other and one a little farther off. */
void write_heavy(Writer *out)
{
    constexpr uint32_t CLOSE = 12, NEAR = 200, NHEAVY = 10;
    constexpr uint64_t TOTAL = 1200000000, HEAVIEST = TOTAL / 25;
    const uint32_t nnets = static_cast<uint32_t>(out->pins / 3), nvertices = nnets / 2 + 2 * NEAR;
    const uint64_t unit = std::max<uint64_t>(1, TOTAL / 5 / nvertices);
    Random random = open_stream(out->seed, PINS_OF_NETS);
    Vertices pins, mark(nvertices, 0);
    put_header_code(out, nnets, nvertices, out->net_weights ? 11 : 10);
    for (uint32_t e = 0; e < nnets; e++) {
        const uint32_t first = draw_below(&random, nvertices - NEAR);
        pins.clear();
        while (pins.size() < 2) add_pin(&pins, &mark, e, first + draw_below(&random, CLOSE));
        while (pins.size() < 3) add_pin(&pins, &mark, e, first + draw_below(&random, NEAR));
        put_net(out, pins.data(), pins.size());
    }
    random = open_stream(out->seed, VERTEX_WEIGHTS);
    for (uint32_t v = 0; v < nvertices; v++) {
        const uint64_t weight = unit * (1 + draw_below(&random, 9)) + draw_below(&random, 100);
        put_number(out, v % (nvertices / NHEAVY) == 0 ? HEAVIEST : weight, '\n');
    }
}

/* Pairs tied by hyperedges as heavy as buckets can hold, on a ring of light ones: whenever one of a
 * pair moves, the other's gain swings from the lowest bucket to the highest, and back to nothing
 * once it has followed. */
void write_swing(Writer *out)
{
    constexpr uint64_t TOTAL = 2000000000;
    const uint32_t npairs = static_cast<uint32_t>(out->pins / 4);
    const uint64_t weight = std::min<uint64_t>(uint64_t{4} * npairs, TOTAL / npairs);
    put_header_code(out, uint64_t{2} * npairs, uint64_t{2} * npairs, out->vertex_weights ? 11 : 1);
    for (uint32_t i = 0; i < npairs; i++) {
        put_number(out, weight, ' ');
        put_number(out, uint64_t{2} * i + 1, ' ');
        put_number(out, uint64_t{2} * i + 2, '\n');
        put_number(out, 1, ' ');
        put_number(out, uint64_t{2} * i + 2, ' ');
        put_number(out, uint64_t{2} * ((i + 1) % npairs) + 1, '\n');
    }
    put_vertex_weights(out, uint64_t{2} * npairs);
}

/* A hyperedge for each two vertices in a row, and then one for each three: with reconstruction the
 * keys of what a bisection leaves are two rising sequences, one behind the other, which look nearly
 * sorted. */
void write_stairs(Writer *out)
{
    const uint32_t nvertices = std::max(4u, static_cast<uint32_t>(out->pins / 5));
    put_header(out, uint64_t{2} * nvertices - 3, nvertices);
    for (uint32_t v = 0; v + 1 < nvertices; v++) {
        const uint32_t pins[2] = {v, v + 1};
        put_net(out, pins, 2);
    }
    for (uint32_t v = 0; v + 2 < nvertices; v++) {
        const uint32_t pins[3] = {v, v + 1, v + 2};
        put_net(out, pins, 3);
    }
    put_vertex_weights(out, nvertices);
}

/* The first vertex with the last, the second with the last but one, and so on: their numbers have
 * one sum, and so with reconstruction all have one key. */
void write_sums(Writer *out)
{
    const uint32_t npairs = static_cast<uint32_t>(out->pins / 2);
    put_header(out, npairs, uint64_t{2} * npairs);
    for (uint32_t v = 0; v < npairs; v++) {
        const uint32_t pins[2] = {v, 2 * npairs - 1 - v};
        put_net(out, pins, 2);
    }
    put_vertex_weights(out, uint64_t{2} * npairs);
}
