// SPDX-License-Identifier: MIT
/* core/random.cpp: random numbers, seeding and random permutations.
 *
 * The number and order of draws is part of every result: a routine draws its numbers in pairs,
 * first the one for the left place, then the one for the right.
 *
 * An own generator computes what the GNU C library's rand() does, word for word: each word is the
 * sum of the words 3 and 31 draws ago, modulo 2^32, and a draw drops its lowest bit. The 31 first
 * words come from a multiplicative generator modulo 2^31 - 1; ten rounds of draws are thrown away.
 * Sources: Knuth, The Art of Computer Programming 2, 3.2.2, for the additive generator; Park &
 * Miller, Random number generators: good ones are hard to find, CACM 31(10), 1988, for the other.
 */
#include "core/random.h"

#include <cassert>
#include <cstdlib>
#include <ctime>

#include "core/heavy_assert.h"

constexpr int SHORT_LAG = 3;
constexpr int THROWN_AWAY = 10 * NLAGGED;

static int draw_own(Generator *generator)
{
    assert(generator->oldest >= 0 && generator->oldest < NLAGGED);
    const int i = generator->oldest;
    const int recent = i < SHORT_LAG ? i + NLAGGED - SHORT_LAG : i - SHORT_LAG;
    const unsigned word = generator->lagged[i] += generator->lagged[recent];
    generator->oldest = i + 1 < NLAGGED ? i + 1 : 0;
    return static_cast<int>(word >> 1);
}

/* The 31 first words, of which the first is the seed, or 1 for 0. */
static void spread_seed(unsigned *words, unsigned seed)
{
    constexpr int modulus = 2147483647, factor = 16807;
    constexpr int quotient = modulus / factor, rest = modulus % factor;
    int word = static_cast<int>(seed == 0 ? 1 : seed);
    words[0] = static_cast<unsigned>(word);
    for (int i = 1; i < NLAGGED; i++) {
        word = factor * (word % quotient) - rest * (word / quotient);
        if (word < 0) word += modulus;
        words[i] = static_cast<unsigned>(word);
    }
}

static void seed_own(Generator *generator, unsigned seed)
{
    spread_seed(generator->lagged, seed);
    generator->oldest = SHORT_LAG;
    for (int i = 0; i < THROWN_AWAY; i++) draw_own(generator);
    HEAVY_ASSERT(generator_ok(generator));
}

Generator own_generator(unsigned seed)
{
    Generator generator;
    generator.own = true;
    seed_own(&generator, seed);
    return generator;
}

void seed_generator(Generator *generator, unsigned seed)
{
    if (generator->own)
        seed_own(generator, seed);
    else
        srand(seed);
}

int draw(Generator *generator)
{
    return generator->own ? draw_own(generator) : rand();
}

void InitRandom__(Generator *generator, int seed)
{
    seed_generator(generator, static_cast<unsigned>(seed < 0 ? time(nullptr) : seed));
}

/* A place in 0..range-1, from the high bits of the next draw (a draw is below 2^31). */
template <bool Own> static int random_place(Generator *generator, int range)
{
    const int number = Own ? draw_own(generator) : rand();
    assert(range > 0 && number >= 0);
    return static_cast<int>(static_cast<double>(number) * range * 0x1p-31);
}

static void set_identity(int *p, int n)
{
    for (int i = 0; i < n; i++) p[i] = i;
}

static void exchange(int *p, int i, int j)
{
    assert(i >= 0 && j >= 0);
    const int kept = p[i];
    p[i] = p[j];
    p[j] = kept;
}

template <bool Own> static void exchange_blocks(Generator *generator, int *p, int n)
{
    for (int round = 0; round < n / 16; round++) {
        const int i = random_place<Own>(generator, n - 8);
        const int j = random_place<Own>(generator, n - 8);
        for (int k = 0; k < 4; k++) exchange(p, i + k, j + k);
    }
}

template <bool Own> static void exchange_entries(Generator *generator, int *p, int n)
{
    for (int round = 0; round < n; round++) {
        const int i = random_place<Own>(generator, n);
        const int j = random_place<Own>(generator, n);
        exchange(p, i, j);
    }
}

void RandomPermute__(Generator *generator, int *p, int n, int reset)
{
    if (reset == 1) set_identity(p, n);
    if (n < 16) return;
    if (generator->own)
        exchange_blocks<true>(generator, p, n);
    else
        exchange_blocks<false>(generator, p, n);
}

void RandomPermuteFine__(Generator *generator, int *p, int n, int reset)
{
    if (reset == 1) set_identity(p, n);
    if (generator->own)
        exchange_entries<true>(generator, p, n);
    else
        exchange_entries<false>(generator, p, n);
}

static Generator of_process()
{
    return {};
}

void InitRandom__(int seed)
{
    Generator generator = of_process();
    InitRandom__(&generator, seed);
}

void RandomPermute__(int *p, int n, int reset)
{
    Generator generator = of_process();
    RandomPermute__(&generator, p, n, reset);
}

void RandomPermuteFine__(int *p, int n, int reset)
{
    Generator generator = of_process();
    RandomPermuteFine__(&generator, p, n, reset);
}
