/* core/random.h: seeding, random permutations, and the conversions whose rounding decides results.
 * Randomness is the C library's rand(), so equal seeds give equal runs on one system. */
#ifndef ZORPEL_CORE_RANDOM_H
#define ZORPEL_CORE_RANDOM_H

/* Seeds the generator; a negative seed takes the clock. */
void InitRandom__(int seed);

/* Coarse, cheap shuffle of p[0..n-1]: n/16 exchanges of blocks of four, none when n < 16. With
 * reset 1 p is first set to 0..n-1. Draws two numbers an exchange. */
void RandomPermute__(int *p, int n, int reset);

/* n exchanges of single entries; reset as above. Draws two numbers an exchange. */
void RandomPermuteFine__(int *p, int n, int reset);

#endif
