// SPDX-License-Identifier: MIT
/* zorpelx/files/whole_weights.cpp: weights of files that have real ones, as whole numbers. */
#include "whole_weights.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <numeric>

#include "fileerror.h"
#include "told.h"

constexpr double LARGEST_TOTAL = 2147483646;
constexpr double EXACT = 9007199254740992; // 2^53: whole numbers up to it are exact

/* Whether a number of a file is whole once it is multiplied, but for the error of its binary
 * form. */
static bool is_whole_times(double weight, double factor)
{
    const double product = weight * factor;
    return std::fabs(product - std::round(product)) <= 1e-9 * std::max(1.0, product);
}

/* The least power of ten up to 1000 that makes all whole; 1000 if none does. */
static double decimal_factor(const std::vector<double> &real)
{
    constexpr double MOST_FACTOR = 1000;
    double factor = 1;
    while (factor < MOST_FACTOR && !std::all_of(real.begin(), real.end(), [factor](double weight) {
               return is_whole_times(weight, factor);
           }))
        factor *= 10;
    return factor;
}

/* The greatest common divisor of weights that the factor makes whole; 1 if one is too large. */
static double common_divisor(const std::vector<double> &real, double factor)
{
    int64_t divisor = 0;
    for (const double weight : real) {
        if (weight * factor > EXACT) return 1;
        divisor = std::gcd(divisor, static_cast<int64_t>(std::llround(weight * factor)));
    }
    return divisor > 0 ? static_cast<double>(divisor) : 1;
}

static double total_times(const std::vector<double> &real, double factor)
{
    double total = 0;
    for (const double weight : real) total += std::round(weight * factor);
    return total;
}

static void tell_factor(const char *what, double factor, bool rounded, Findings *findings)
{
    const std::string by = factor >= 1 ? text_of("multiplied by %.15g", factor)
                                       : text_of("divided by %.15g", 1 / factor);
    tell_note(findings, {0, 0},
              text_of("%s are %s%s, so as to be whole numbers within 32 bits", what, by.c_str(),
                      rounded ? " and rounded" : ""));
}

/* The number by which all are multiplied: 1 if it can be, else a power of ten, else over their
 * divisor, else so much less that the total fits. */
static double factor_for(const std::vector<double> &real)
{
    double factor = decimal_factor(real);
    if (total_times(real, factor) > LARGEST_TOTAL) factor /= common_divisor(real, factor);
    const double total = total_times(real, factor);
    if (total > LARGEST_TOTAL) factor *= (LARGEST_TOTAL - static_cast<double>(real.size())) / total;
    return std::max(factor, 0.0);
}

std::vector<int64_t> whole_weights(const std::vector<double> &real, const char *what,
                                   Findings *findings)
{
    const double factor = factor_for(real);
    bool rounded = false;
    std::vector<int64_t> whole;
    whole.reserve(real.size());
    for (const double weight : real) {
        assert(weight >= 0 && std::isfinite(weight));
        rounded = rounded || !is_whole_times(weight, factor);
        whole.push_back(std::llround(weight * factor));
    }
    if (factor != 1 || rounded) tell_factor(what, factor, rounded, findings);
    return whole;
}
