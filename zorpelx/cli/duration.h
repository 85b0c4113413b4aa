/* SPDX-License-Identifier: MIT */
/* zorpelx/cli/duration.h: how long the presets of a search take, roughly. */
#ifndef ZORPELX_CLI_DURATION_H
#define ZORPELX_CLI_DURATION_H

#include <cstdint>

#include "options.h"

/* Seconds on one processor of the machine that docs/SEARCH.md names, right within a factor of
 * about three. */
double expected_seconds(PresetNumber preset, int64_t pins, int64_t nparts);

/* The preset to take where nothing else is said: the best that takes about a minute at most, and
 * fast if default takes more than ten. */
PresetNumber advised_preset(int64_t pins, int64_t nparts);

#endif
