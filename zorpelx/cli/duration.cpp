// SPDX-License-Identifier: MIT
/* zorpelx/cli/duration.cpp: how long the presets of a search take, roughly. */
#include "duration.h"

#include <cmath>

/* Microseconds a pin for two parts, and the power of the number of parts that they grow with:
 * fitted to the times in docs/SEARCH.md. */
struct Cost {
    double microseconds, power;
};

static const Cost COSTS[NPRESETS] = {{2.5, 0.7}, {4.5, 0.9}, {28, 0.95}};

double expected_seconds(PresetNumber preset, int64_t pins, int64_t nparts)
{
    const Cost &cost = COSTS[preset];
    const double growth = std::pow(static_cast<double>(nparts) / 2, cost.power);
    return 1e-6 * cost.microseconds * static_cast<double>(pins) * growth;
}

PresetNumber advised_preset(int64_t pins, int64_t nparts)
{
    constexpr double MINUTE = 60;
    if (expected_seconds(PRESET_BEST, pins, nparts) <= MINUTE) return PRESET_BEST;
    return expected_seconds(PRESET_DEFAULT, pins, nparts) <= 10 * MINUTE ? PRESET_DEFAULT
                                                                         : PRESET_FAST;
}
