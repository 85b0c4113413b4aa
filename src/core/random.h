/* SPDX-License-Identifier: MIT */
/* core/random.h: random numbers, seeding and random permutations.
 *
 * The numbers are those of the C library's rand(), so equal seeds give equal runs on one system.
 * A call that shares its process with others takes them from a generator of its own, which gives
 * the same numbers for the same seed.
 */
#ifndef ZORPEL_CORE_RANDOM_H
#define ZORPEL_CORE_RANDOM_H

constexpr int NLAGGED = 31;

/* Where random numbers come from. All 0, as in a fresh PartCtrl, is rand() with the state that the
 * whole process shares.
 *   G1  own: 0 <= oldest < NLAGGED
 *   G2  own: some lagged word is odd (else every word would stay even)
 */
struct Generator {
    bool own;                 // the state is here
    int oldest;               // own: which word was drawn longest ago
    unsigned lagged[NLAGGED]; // own: the last 31 words, before their lowest bit is dropped
};
bool generator_ok(const Generator *generator);

/* A generator of its own, after srand(seed). */
Generator own_generator(unsigned seed);

/* What srand(seed) does, on this generator. */
void seed_generator(Generator *generator, unsigned seed);

/* What rand() gives: the next number, 0 to 2^31 - 1. */
int draw(Generator *generator);

/* Seeds the generator; a negative seed takes the clock. */
void InitRandom__(Generator *generator, int seed);

/* Coarse, cheap shuffle of p[0..n-1]: n/16 exchanges of blocks of four, none when n < 16. With
 * reset 1 p is first set to 0..n-1. Draws two numbers an exchange. */
void RandomPermute__(Generator *generator, int *p, int n, int reset);

/* n exchanges of single entries; reset as above. Draws two numbers an exchange. */
void RandomPermuteFine__(Generator *generator, int *p, int n, int reset);

/* The same three with the numbers of the process. */
void InitRandom__(int seed);
void RandomPermute__(int *p, int n, int reset);
void RandomPermuteFine__(int *p, int n, int reset);

#endif
