/* core/random.cpp: seeding and random permutations.
 *
 * The number and order of draws is part of every result: a routine draws its numbers in pairs,
 * first the one for the left place, then the one for the right.
 */
#include "core/random.h"

#include <cstdlib>
#include <ctime>

void InitRandom__(int seed)
{
    srand(seed < 0 ? static_cast<unsigned>(time(nullptr)) : static_cast<unsigned>(seed));
}

/* A place in 0..range-1, from the high bits of the next draw (a draw is below 2^31). */
static int random_place(int range)
{
    return static_cast<int>(static_cast<double>(rand()) * range * 0x1p-31);
}

static void set_identity(int *p, int n)
{
    for (int i = 0; i < n; i++) p[i] = i;
}

static void exchange(int *p, int i, int j)
{
    const int kept = p[i];
    p[i] = p[j];
    p[j] = kept;
}

void RandomPermute__(int *p, int n, int reset)
{
    if (reset == 1) set_identity(p, n);
    if (n < 16) return;
    for (int round = 0; round < n / 16; round++) {
        const int i = random_place(n - 8);
        const int j = random_place(n - 8);
        for (int k = 0; k < 4; k++) exchange(p, i + k, j + k);
    }
}

void RandomPermuteFine__(int *p, int n, int reset)
{
    if (reset == 1) set_identity(p, n);
    for (int round = 0; round < n; round++) {
        const int i = random_place(n);
        const int j = random_place(n);
        exchange(p, i, j);
    }
}
