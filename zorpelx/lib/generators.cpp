// SPDX-License-Identifier: MIT
/* zorpelx/lib/generators.cpp: a number by which the generators of two machines can be compared. */
#include "zorpelx.h"

#include "core/random.h"
#include "search/search_random.h"

constexpr int DRAWS = 10000;

static uint64_t engine_number(int seed)
{
    Generator generator = own_generator(static_cast<unsigned>(seed));
    for (int i = 1; i < DRAWS; i++) draw(&generator);
    return static_cast<uint64_t>(draw(&generator));
}

static uint64_t search_number(int seed)
{
    Random random = random_for(static_cast<uint64_t>(seed), 0);
    for (int i = 1; i < DRAWS; i++) next_random(&random);
    return next_random(&random);
}

int zorpelx_generator_check(int searching, int seed, uint64_t *number)
{
    if (searching < 0 || searching > 1 || seed < 0 || number == nullptr) return ZORPELX_BAD_OPTION;
    *number = searching != 0 ? search_number(seed) : engine_number(seed);
    return ZORPELX_OK;
}
