// SPDX-License-Identifier: MIT
/* bench/generator.cpp: random numbers, writing and numbering for the families of zorpel-generate.
 */
#include "generator.h"

#include <algorithm>
#include <cstdio>
#include <numeric>

/* ---- random numbers ---------------------------------------------------------------------- */

static uint64_t splitmix(uint64_t x)
{
    x += 0x9E3779B97F4A7C15u;
    x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9u;
    x = (x ^ (x >> 27)) * 0x94D049BB133111EBu;
    return x ^ (x >> 31);
}

Random open_stream(uint64_t seed, Stream purpose)
{
    const uint64_t state = splitmix(splitmix(seed) + purpose);
    return {state != 0 ? state : 1};
}

uint32_t draw(Random *random)
{
    uint64_t x = random->state;
    x ^= x >> 12;
    x ^= x << 25;
    x ^= x >> 27;
    random->state = x;
    return static_cast<uint32_t>((x * 0x2545F4914F6CDD1Du) >> 32);
}

uint32_t draw_below(Random *random, uint32_t bound)
{
    return static_cast<uint32_t>((static_cast<uint64_t>(draw(random)) * bound) >> 32);
}

static uint64_t integer_root(uint64_t x)
{
    uint64_t root = 0;
    for (uint64_t bit = uint64_t{1} << 31; bit != 0; bit >>= 1) {
        if ((root + bit) * (root + bit) <= x) root += bit;
    }
    return root;
}

PowerLaw power_law(uint32_t low, uint32_t high)
{
    std::vector<uint64_t> tail(high - low + 2, 0); // weight of the numbers from low + i up
    for (uint64_t s = high; s >= low; s--) {
        tail[s - low] = tail[s - low + 1] + (uint64_t{1} << 52) / (s * s * integer_root(s << 20));
    }
    PowerLaw law = {low, {}};
    for (size_t i = 1; i < tail.size(); i++) {
        law.above.push_back(static_cast<uint32_t>((tail[i] << 20) / (tail[0] >> 12)));
    }
    return law;
}

uint32_t draw_size(const PowerLaw &law, Random *random)
{
    const uint32_t x = draw(random);
    uint32_t i = 0;
    while (x < law.above[i]) i++; // above ends with 0
    return law.low + i;
}

/* ---- the writer -------------------------------------------------------------------------- */

void flush(Writer *out)
{
    fwrite(out->buffer, 1, out->used, stdout);
    out->used = 0;
}

void put_number(Writer *out, uint64_t number, char after)
{
    char digits[20];
    size_t count = 0;
    do {
        digits[count++] = static_cast<char>('0' + number % 10);
        number /= 10;
    } while (number != 0);
    while (count > 0) out->buffer[out->used++] = digits[--count];
    out->buffer[out->used++] = after;
    if (out->used >= FLUSH_AT) flush(out);
}

void put_header_code(Writer *out, uint64_t nnets, uint64_t nvertices, unsigned code)
{
    flush(out);
    printf("%% zorpel-generate %s %lld %llu%s%s\n", out->family, static_cast<long long>(out->pins),
           static_cast<unsigned long long>(out->seed), out->vertex_weights ? " --vweights" : "",
           out->net_weights ? " --hweights" : "");
    put_number(out, nnets, ' ');
    put_number(out, nvertices, code != 0 ? ' ' : '\n');
    if (code != 0) put_number(out, code, '\n');
}

void put_header(Writer *out, uint64_t nnets, uint64_t nvertices)
{
    const unsigned vertex_code = out->vertex_weights ? 10 : 0, net_code = out->net_weights ? 1 : 0;
    put_header_code(out, nnets, nvertices, vertex_code + net_code);
}

void put_net_weight(Writer *out)
{
    if (out->net_weights) put_number(out, 1 + draw_below(&out->net_stream, 10), ' ');
}

void put_net(Writer *out, const uint32_t *pins, size_t count)
{
    put_net_weight(out);
    for (size_t i = 0; i + 1 < count; i++) put_number(out, uint64_t{pins[i]} + 1, ' ');
    put_number(out, uint64_t{pins[count - 1]} + 1, '\n');
}

void put_vertex_weights(Writer *out, uint64_t nvertices)
{
    if (!out->vertex_weights) return;
    Random random = open_stream(out->seed, VERTEX_WEIGHTS);
    const PowerLaw law = power_law(2, 100);
    for (uint64_t v = 0; v < nvertices; v++) put_number(out, draw_size(law, &random) - 1, '\n');
}

/* ---- shared steps of the families -------------------------------------------------------- */

Vertices shuffled_numbers(uint32_t count, uint32_t block, uint64_t seed)
{
    Random random = open_stream(seed, NUMBERING);
    const uint32_t nblocks = (count + block - 1) / block;
    Vertices order(nblocks), number(count);
    std::iota(order.begin(), order.end(), 0u);
    for (uint32_t i = nblocks; i > 1; i--) {
        std::swap(order[i - 1], order[draw_below(&random, i)]);
    }
    uint32_t next = 0;
    for (const uint32_t chosen : order) {
        const uint32_t begin = chosen * block, end = std::min(count, begin + block);
        for (uint32_t v = begin; v < end; v++) number[v] = next++;
        for (uint32_t i = end - begin; i > 1; i--) {
            std::swap(number[begin + i - 1], number[begin + draw_below(&random, i)]);
        }
    }
    return number;
}

void add_pin(Vertices *pins, Vertices *mark, uint32_t e, uint32_t v)
{
    if ((*mark)[v] == e + 1) return;
    (*mark)[v] = e + 1;
    pins->push_back(v);
}

void put_renumbered(Writer *out, Vertices *pins, const Vertices &number)
{
    for (uint32_t &v : *pins) v = number[v];
    put_net(out, pins->data(), pins->size());
}

static uint64_t distance(uint64_t x, uint64_t y)
{
    return x > y ? x - y : y - x;
}

Box best_box(uint64_t cells, bool flat)
{
    uint32_t side = 1;
    while (flat ? uint64_t{side + 1} * (side + 1) <= cells
                : uint64_t{side + 1} * (side + 1) * (side + 1) <= cells)
        side++;
    Box best = {side, side, flat ? 1 : side};
    uint64_t error = distance(cells, uint64_t{best.nx} * best.ny * best.nz);
    for (uint32_t x = std::max(flat ? 3u : 2u, side - std::min(side, 4u)); x <= side + 4; x++) {
        for (uint32_t y = x; y <= (flat ? x : side + 4); y++) {
            const uint64_t layer = flat ? x : uint64_t{x} * y;
            const uint32_t last =
                static_cast<uint32_t>(std::max(uint64_t{2}, (cells + layer / 2) / layer));
            if (distance(cells, layer * last) >= error) continue;
            error = distance(cells, layer * last);
            best = flat ? Box{x, last, 1} : Box{x, y, last};
        }
    }
    return best;
}
