// SPDX-License-Identifier: MIT
/* bench/families.cpp: the families of zorpel-generate that resemble what is partitioned in earnest.
 */
#include <algorithm>
#include <cstdint>

#include "generator.h"

/* ---- family netlist ---------------------------------------------------------------------- */

constexpr uint32_t BLOCK = 256; // vertices of a module, kept together in the file
constexpr uint32_t SMALL_LOW = 2, SMALL_HIGH = 40, LARGE_LOW = 51, LARGE_HIGH = 2000;
constexpr uint32_t LARGE_EVERY = 2048;  // one hyperedge in so many is large
constexpr uint32_t GLOBAL_HIGH = 12000; // most pins of the one that spans everything
constexpr uint32_t STAY = 3254986326;   // 2^32 * 2^-0.4: a Rent exponent of 0.6

/* Draws the sizes of a netlist's hyperedges one by one until the pins are used up. The first one
 * is a clock: a share of all vertices. The last one is cut to what is left, or grown by one.
 */
struct Sizes {
    Random random;
    PowerLaw law;
    uint32_t nvertices;
    int64_t left; // pins still to hand out; never 1
    uint64_t drawn;
};

static uint32_t draw_any_size(Sizes *sizes)
{
    const uint32_t quarter = sizes->nvertices / 4;
    if (sizes->drawn == 0 && quarter > LARGE_LOW) {
        return std::clamp(sizes->nvertices / 16, LARGE_LOW, GLOBAL_HIGH);
    }
    if (draw_below(&sizes->random, LARGE_EVERY) == 0 && quarter > LARGE_LOW) {
        const uint64_t high = std::min(quarter, LARGE_HIGH), x = draw(&sizes->random);
        return static_cast<uint32_t>(LARGE_LOW * high /
                                     (LARGE_LOW + ((x * (high - LARGE_LOW)) >> 32)));
    }
    return draw_size(sizes->law, &sizes->random);
}

// Size of the next hyperedge, or 0 after the last.
static uint32_t next_size(Sizes *sizes)
{
    if (sizes->left <= 0) return 0;
    uint32_t size = draw_any_size(sizes);
    if (size > sizes->left) size = static_cast<uint32_t>(sizes->left);
    if (sizes->left - size == 1) size++;
    sizes->left -= size;
    sizes->drawn++;
    return size;
}

static uint64_t count_sizes(Sizes sizes)
{
    while (next_size(&sizes) != 0) {
    }
    return sizes.drawn;
}

/* First place and length of the region that a hyperedge of this size draws its pins from: an
 * aligned block around its driver, widened from 4 x size by a factor of two while the dice say
 * so. A boundary between blocks of B vertices is then crossed by about B^0.6 hyperedges.
 */
static uint32_t pick_region(Random *random, uint32_t driver, uint32_t size, uint32_t nvertices,
                            uint32_t *first)
{
    uint64_t length = 4;
    while (length < 4 * uint64_t{size}) length *= 2;
    while (length < nvertices && draw(random) < STAY) length *= 2;
    *first = static_cast<uint32_t>(driver - driver % length);
    const uint32_t end = static_cast<uint32_t>(std::min<uint64_t>(nvertices, *first + length));
    if (end - *first >= 2 * size) return end - *first;
    *first = 0; // the last block is too short
    return nvertices;
}

/* Every vertex drives a hyperedge in turn, as a gate drives its output; its other pins are
 * drawn from a region around it, whose size gives the whole a circuit's locality.
 */
void write_netlist(Writer *out)
{
    const uint32_t nvertices = static_cast<uint32_t>(std::max<int64_t>(80, out->pins / 4));
    Sizes sizes = {open_stream(out->seed, SIZES), power_law(SMALL_LOW, SMALL_HIGH), nvertices,
                   out->pins, 0};
    put_header(out, count_sizes(sizes), nvertices);
    const Vertices number = shuffled_numbers(nvertices, BLOCK, out->seed);
    Random random = open_stream(out->seed, PINS_OF_NETS);
    Vertices pins, mark(nvertices, 0);
    for (uint32_t e = 0, size; (size = next_size(&sizes)) != 0; e++) {
        const uint32_t driver = e % nvertices;
        uint32_t first, length = pick_region(&random, driver, size, nvertices, &first);
        if (e == 0 && size >= LARGE_LOW) first = 0, length = nvertices;
        pins.clear();
        add_pin(&pins, &mark, e, driver);
        while (pins.size() < size) add_pin(&pins, &mark, e, first + draw_below(&random, length));
        put_renumbered(out, &pins, number);
    }
    put_vertex_weights(out, nvertices);
}

/* ---- family powerlaw --------------------------------------------------------------------- */

/* Place i is drawn with a density falling as i^(-2/3), by the cube of a uniform number, so that
 * degrees follow a power law of exponent 2.5, like the sizes. Some vertices are never drawn.
 */
static uint32_t draw_place(Random *random, uint32_t count)
{
    const uint64_t x = draw(random), cube = (((x * x) >> 32) * x) >> 32;
    return static_cast<uint32_t>((cube * count) >> 32);
}

void write_powerlaw(Writer *out)
{
    const uint32_t nvertices = static_cast<uint32_t>(std::max<int64_t>(64, out->pins / 5));
    Sizes sizes = {open_stream(out->seed, SIZES),
                   power_law(SMALL_LOW, std::min(LARGE_HIGH, nvertices / 8)), 0, out->pins, 0};
    put_header(out, count_sizes(sizes), nvertices);
    const Vertices number = shuffled_numbers(nvertices, nvertices, out->seed);
    Random random = open_stream(out->seed, PINS_OF_NETS);
    Vertices pins, mark(nvertices, 0);
    for (uint32_t e = 0, size; (size = next_size(&sizes)) != 0; e++) {
        pins.clear();
        while (pins.size() < size) add_pin(&pins, &mark, e, draw_place(&random, nvertices));
        put_renumbered(out, &pins, number);
    }
    put_vertex_weights(out, nvertices);
}

/* ---- families mesh and mesh2 ------------------------------------------------------------- */

/* Structured mesh: a vertex for each node, a hyperedge for each element over its corners, eight
 * for a brick and four for a square. The seed chooses the weights only.
 */
static void write_grid(Writer *out, bool flat)
{
    const Box box = best_box(static_cast<uint64_t>(out->pins) / (flat ? 4 : 8), flat);
    const uint32_t row = box.nx + 1, layer = row * (box.ny + 1);
    const uint64_t nvertices = uint64_t{layer} * (flat ? 1 : box.nz + 1);
    put_header(out, uint64_t{box.nx} * box.ny * box.nz, nvertices);
    for (uint32_t z = 0; z < box.nz; z++) {
        for (uint32_t y = 0; y < box.ny; y++) {
            for (uint32_t x = 0; x < box.nx; x++) {
                const uint32_t a = z * layer + y * row + x, b = a + layer;
                const uint32_t corners[8] = {a, a + 1, a + row + 1, a + row,
                                             b, b + 1, b + row + 1, b + row};
                put_net(out, corners, flat ? 4 : 8);
            }
        }
    }
    put_vertex_weights(out, nvertices);
}

void write_mesh(Writer *out)
{
    write_grid(out, false);
}

void write_mesh2(Writer *out)
{
    write_grid(out, true);
}
