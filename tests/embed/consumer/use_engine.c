/* SPDX-License-Identifier: MIT */
#include <stdio.h>
#include <zorpel.h>

int main(void)
{
    const int eptr[] = {0, 2, 4}, eind[] = {0, 1, 2, 3};
    const int options[ZORPEL_NOPTIONS] = {0};
    int part[4], cut;
    ZORPEL_PartRecursive(4, 2, NULL, eptr, eind, NULL, 2, 5, options, part, &cut);
    printf("cut %d\n", cut);
    return cut;
}
