// SPDX-License-Identifier: MIT
/* tests/unit/header_cxx.cpp: zorpel.h compiles alone and first as C++17, and links as C++. */
#include "zorpel.h"

int main()
{
    const int eptr[] = {0, 2, 4}, eind[] = {0, 1, 2, 3}, options[ZORPEL_NOPTIONS] = {};
    int part[4], cut = -1;
    ZORPEL_PartRecursive(4, 2, nullptr, eptr, eind, nullptr, 2, 5, options, part, &cut);
    const bool apart = part[0] == part[1] && part[2] == part[3] && part[0] != part[2];
    ZORPEL_2WayRefine(4, 2, nullptr, eptr, eind, nullptr, 5, options, part, &cut);
    return apart && cut == 0 ? 0 : 1;
}
