/* bench/generate.cpp: zorpel-generate, a seeded writer of test hypergraphs of any size.
 *
 * Each family is a routine that walks its hyperedges in order and hands them one at a time to
 * the writer, so memory is O(vertices) at most and the file is written as it is made. The header
 * comes first in the file, so every family fixes its counts before it draws a pin: by formula, or
 * by drawing the sizes once to count them and again to use them (copying a generator rewinds it).
 *
 * What stays true:
 *   G1  the bytes written depend on the arguments alone: integers only, no floating point, no
 *       library distribution, and one random stream for each purpose, so that asking for weights
 *       leaves the hyperedges as they were
 *   G2  a hyperedge holds two or more vertices, none of them twice
 *   G3  the pins written are within 2 % of PINS when PINS is 1000 or more
 *   G4  outside giant no line reaches 128 KiB
 */
#include <algorithm>
#include <cassert>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <numeric>
#include <vector>

using Vertices = std::vector<uint32_t>;

constexpr int64_t MIN_PINS = 100, MAX_PINS = 1000000000;

/* ---- random numbers ---------------------------------------------------------------------- */

// State of an xorshift64* generator; never 0.
struct Random {
    uint64_t state;
};

// The purposes that draw numbers, each from a stream of its own.
enum Stream : uint64_t { SIZES = 1, PINS_OF_NETS, NUMBERING, NET_WEIGHTS, VERTEX_WEIGHTS };

static uint64_t splitmix(uint64_t x)
{
    x += 0x9E3779B97F4A7C15u;
    x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9u;
    x = (x ^ (x >> 27)) * 0x94D049BB133111EBu;
    return x ^ (x >> 31);
}

static Random open_stream(uint64_t seed, Stream purpose)
{
    const uint64_t state = splitmix(splitmix(seed) + purpose);
    return {state != 0 ? state : 1};
}

static uint32_t draw(Random *random)
{
    uint64_t x = random->state;
    x ^= x >> 12;
    x ^= x << 25;
    x ^= x >> 27;
    random->state = x;
    return static_cast<uint32_t>((x * 0x2545F4914F6CDD1Du) >> 32);
}

// A number of 0 .. bound-1; bound must be positive.
static uint32_t draw_below(Random *random, uint32_t bound)
{
    return static_cast<uint32_t>((static_cast<uint64_t>(draw(random)) * bound) >> 32);
}

/* Numbers low .. high drawn with P(s) proportional to s^-2.5. above[i] is the chance, in units of
 * 2^-32, that the number exceeds low + i.
 */
struct PowerLaw {
    uint32_t low;
    std::vector<uint32_t> above;
};

static uint64_t integer_root(uint64_t x)
{
    uint64_t root = 0;
    for (uint64_t bit = uint64_t{1} << 31; bit != 0; bit >>= 1) {
        if ((root + bit) * (root + bit) <= x) root += bit;
    }
    return root;
}

static PowerLaw power_law(uint32_t low, uint32_t high)
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

static uint32_t draw_size(const PowerLaw &law, Random *random)
{
    const uint32_t x = draw(random);
    uint32_t i = 0;
    while (x < law.above[i]) i++; // above ends with 0
    return law.low + i;
}

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

static void flush(Writer *out)
{
    fwrite(out->buffer, 1, out->used, stdout);
    out->used = 0;
}

// Appends a number and the character that follows it.
static void put_number(Writer *out, uint64_t number, char after)
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

static void put_header(Writer *out, uint64_t nnets, uint64_t nvertices)
{
    const int code = (out->vertex_weights ? 10 : 0) + (out->net_weights ? 1 : 0);
    flush(out);
    printf("%% zorpel-generate %s %lld %llu%s%s\n", out->family, static_cast<long long>(out->pins),
           static_cast<unsigned long long>(out->seed), out->vertex_weights ? " --vweights" : "",
           out->net_weights ? " --hweights" : "");
    put_number(out, nnets, ' ');
    put_number(out, nvertices, code != 0 ? ' ' : '\n');
    if (code != 0) put_number(out, static_cast<uint64_t>(code), '\n');
}

// Writes the weight, 1 to 10, of the hyperedge whose pins follow.
static void put_net_weight(Writer *out)
{
    if (out->net_weights) put_number(out, 1 + draw_below(&out->net_stream, 10), ' ');
}

// Writes a hyperedge of the vertices pins[0..count-1], numbered from 0.
static void put_net(Writer *out, const uint32_t *pins, size_t count)
{
    put_net_weight(out);
    for (size_t i = 0; i + 1 < count; i++) put_number(out, uint64_t{pins[i]} + 1, ' ');
    put_number(out, uint64_t{pins[count - 1]} + 1, '\n');
}

// The vertex weights end every file; like cell areas most are small and a few are large.
static void put_vertex_weights(Writer *out, uint64_t nvertices)
{
    if (!out->vertex_weights) return;
    Random random = open_stream(out->seed, VERTEX_WEIGHTS);
    const PowerLaw law = power_law(2, 100);
    for (uint64_t v = 0; v < nvertices; v++) put_number(out, draw_size(law, &random) - 1, '\n');
}

/* ---- shared steps of the families -------------------------------------------------------- */

/* A renumbering of 0 .. count-1: blocks of vertices change places and each block is shuffled, so
 * that neighbours keep near numbers, as in a file written module by module, but the order of
 * the file gives no partition away. One block of count vertices shuffles everything.
 */
static Vertices shuffled_numbers(uint32_t count, uint32_t block, uint64_t seed)
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

// Appends v to the pins of hyperedge e unless it is there; mark[v] is 1 + the last such e.
static void add_pin(Vertices *pins, Vertices *mark, uint32_t e, uint32_t v)
{
    if ((*mark)[v] == e + 1) return;
    (*mark)[v] = e + 1;
    pins->push_back(v);
}

// Turns the pins from places in the model into vertex numbers and writes them.
static void put_renumbered(Writer *out, Vertices *pins, const Vertices &number)
{
    for (uint32_t &v : *pins) v = number[v];
    put_net(out, pins->data(), pins->size());
}

/* Sides of a box of about `cells` cells, at least 12, near a cube or, if flat, near a square. No
 * side of a cube is below 2, none of a square below 3.
 */
struct Box {
    uint32_t nx, ny, nz;
};

static uint64_t distance(uint64_t x, uint64_t y)
{
    return x > y ? x - y : y - x;
}

static Box best_box(uint64_t cells, bool flat)
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
static void write_netlist(Writer *out)
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

static void write_powerlaw(Writer *out)
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

static void write_mesh(Writer *out)
{
    write_grid(out, false);
}

static void write_mesh2(Writer *out)
{
    write_grid(out, true);
}

/* ---- families that set traps ------------------------------------------------------------- */

/* One hyperedge over every vertex, PINS/2 of them, among hyperedges of two to four vertices that
 * stand near each other. Its line is as long as it must be.
 */
static void write_giant(Writer *out)
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

// One vertex is in every hyperedge, with two others that stand near each other.
static void write_hub(Writer *out)
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
static void write_identical(Writer *out)
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
static void write_equal(Writer *out)
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

/* ---- the program ------------------------------------------------------------------------- */

struct Family {
    const char *name;
    void (*write)(Writer *out);
    const char *help;
};

static const Family families[] = {
    {"netlist", write_netlist, "circuit-like: nets of 2 to 40 pins, mostly local, a few large"},
    {"mesh", write_mesh, "bricks of a structured mesh, eight nodes each"},
    {"mesh2", write_mesh2, "squares of a structured mesh, four nodes each"},
    {"powerlaw", write_powerlaw, "degrees and sizes by power laws, no locality"},
    {"giant", write_giant, "one hyperedge of PINS/2 pins among small ones (one very long line)"},
    {"hub", write_hub, "one vertex in every hyperedge"},
    {"identical", write_identical, "many copies of sixteen small hyperedges"},
    {"equal", write_equal, "closed grid in which all vertices look alike"},
};

static void print_usage(FILE *file)
{
    fprintf(file,
            "usage: zorpel-generate FAMILY PINS SEED [--vweights] [--hweights] > file.hgr\n"
            "  PINS  about how many pins to write, %lld to %lld\n"
            "  SEED  any number from 0 to 2^64-1\n",
            static_cast<long long>(MIN_PINS), static_cast<long long>(MAX_PINS));
    for (const Family &family : families) fprintf(file, "  %-9s  %s\n", family.name, family.help);
}

[[noreturn]] static void fail(const char *message, const char *word)
{
    fprintf(stderr, "zorpel-generate: %s: %s\n", message, word);
    print_usage(stderr);
    exit(2);
}

static uint64_t parse_number(const char *word, const char *message)
{
    char *end;
    errno = 0;
    const unsigned long long number = strtoull(word, &end, 10);
    if (word[0] < '0' || word[0] > '9' || *end != '\0' || errno != 0) fail(message, word);
    return number;
}

static const Family *find_family(const char *name)
{
    for (const Family &family : families) {
        if (strcmp(family.name, name) == 0) return &family;
    }
    fail("no such family", name);
}

int main(int argc, char **argv)
{
    if (argc == 2 && strcmp(argv[1], "--help") == 0) {
        print_usage(stdout);
        return 0;
    }
    if (argc < 4) {
        print_usage(stderr);
        return 2;
    }
    static Writer out;
    const Family *family = find_family(argv[1]);
    const uint64_t pins = parse_number(argv[2], "PINS is not a number in range");
    if (pins < MIN_PINS || pins > MAX_PINS) fail("PINS is not a number in range", argv[2]);
    out.family = family->name;
    out.pins = static_cast<int64_t>(pins);
    out.seed = parse_number(argv[3], "SEED is not a number in range");
    out.net_stream = open_stream(out.seed, NET_WEIGHTS);
    for (int i = 4; i < argc; i++) {
        if (strcmp(argv[i], "--vweights") == 0)
            out.vertex_weights = true;
        else if (strcmp(argv[i], "--hweights") == 0)
            out.net_weights = true;
        else
            fail("unknown option", argv[i]);
    }
    family->write(&out);
    flush(&out);
    if (fflush(stdout) != 0 || ferror(stdout)) {
        fprintf(stderr, "zorpel-generate: cannot write the output\n");
        return 1;
    }
    return 0;
}
