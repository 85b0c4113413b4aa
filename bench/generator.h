/* SPDX-License-Identifier: MIT */
/* bench/generator.h: what the families of zorpel-generate draw from and write to. */
#ifndef ZORPEL_BENCH_GENERATOR_H
#define ZORPEL_BENCH_GENERATOR_H

#include <cstddef>
#include <cstdint>
#include <vector>

using Vertices = std::vector<uint32_t>;

/* ---- random numbers ---------------------------------------------------------------------- */

// State of an xorshift64* generator; never 0.
struct Random {
    uint64_t state;
};

// The purposes that draw numbers, each from a stream of its own.
enum Stream : uint64_t { SIZES = 1, PINS_OF_NETS, NUMBERING, NET_WEIGHTS, VERTEX_WEIGHTS };

Random open_stream(uint64_t seed, Stream purpose);
uint32_t draw(Random *random);
uint32_t draw_below(Random *random, uint32_t bound); // 0 .. bound-1; bound must be positive

/* Numbers low .. high drawn with P(s) proportional to s^-2.5. above[i] is the chance, in units of
 * 2^-32, that the number exceeds low + i.
 */
struct PowerLaw {
    uint32_t low;
    std::vector<uint32_t> above;
};

PowerLaw power_law(uint32_t low, uint32_t high);
uint32_t draw_size(const PowerLaw &law, Random *random);

/* ---- the writer -------------------------------------------------------------------------- */

constexpr size_t FLUSH_AT = size_t{1} << 16, ROOM = 64;

// Output file and request. Writing never fails half-way unnoticed: close_writer tells.
struct Writer {
    const char *family;
    int64_t pins; // asked for
    uint64_t seed;
    bool net_weights, vertex_weights;
    Random net_stream; // hyperedge weights
    size_t used;       // bytes waiting in buffer, at most FLUSH_AT + ROOM
    char buffer[FLUSH_AT + ROOM];
};

void flush(Writer *out);
void put_number(Writer *out, uint64_t number, char after); // after: the character that follows

/* The header, with a format code by the weights asked for or with one of the family's own. */
void put_header(Writer *out, uint64_t nnets, uint64_t nvertices);
void put_header_code(Writer *out, uint64_t nnets, uint64_t nvertices, unsigned code);

/* If hyperedge weights were asked for, that of the hyperedge whose pins follow: 1 to 10. */
void put_net_weight(Writer *out);

/* A hyperedge of the vertices pins[0..count-1], numbered from 0, with its weight. */
void put_net(Writer *out, const uint32_t *pins, size_t count);

/* If vertex weights were asked for, all of them, which end the file; like cell areas most are small
 * and a few are large. */
void put_vertex_weights(Writer *out, uint64_t nvertices);

/* ---- shared steps ------------------------------------------------------------------------ */

/* A renumbering of 0 .. count-1: blocks of vertices change places and each block is shuffled, so
 * that neighbours keep near numbers, as in a file written module by module, but the order of
 * the file gives no partition away. One block of count vertices shuffles everything.
 */
Vertices shuffled_numbers(uint32_t count, uint32_t block, uint64_t seed);

// Appends v to the pins of hyperedge e unless it is there; mark[v] is 1 + the last such e.
void add_pin(Vertices *pins, Vertices *mark, uint32_t e, uint32_t v);

// Turns the pins from places in the model into vertex numbers and writes them.
void put_renumbered(Writer *out, Vertices *pins, const Vertices &number);

/* Sides of a box of about `cells` cells, at least 12, near a cube or, if flat, near a square. No
 * side of a cube is below 2, none of a square below 3.
 */
struct Box {
    uint32_t nx, ny, nz;
};

Box best_box(uint64_t cells, bool flat);

/* ---- the families ------------------------------------------------------------------------ */

/* Each writes a whole file of about out->pins pins. */
void write_netlist(Writer *out);
void write_mesh(Writer *out);
void write_mesh2(Writer *out);
void write_powerlaw(Writer *out);
void write_giant(Writer *out);
void write_broad(Writer *out);
void write_hub(Writer *out);
void write_identical(Writer *out);
void write_equal(Writer *out);
void write_wide(Writer *out);
void write_islands(Writer *out);
void write_heavy(Writer *out);
void write_swing(Writer *out);
void write_stairs(Writer *out);
void write_sums(Writer *out);

#endif
