/* SPDX-License-Identifier: MIT */
/* tests/embed/c11_test.c: the interface from C, and what a child says. */
#include <stdio.h>
#include <string.h>

#include "zorpelx.h"
#include "zorpelx_files.h"

static int failures;

static void expect(int right, const char *what)
{
    if (right) return;
    printf("failed: %s\n", what);
    failures++;
}

int main(void)
{
    static const int eptr[] = {0, 2, 5, 7}, eind[] = {0, 1, 1, 2, 3, 3, 4};
    const zorpelx_hypergraph hypergraph = {5, 3, eptr, eind, NULL, NULL};
    zorpelx_options options;
    zorpelx_result result;
    zorpelx_quality quality;
    int part[5];
    int64_t pwgts[2], pcuts[2];
    char message[ZORPELX_MESSAGE_SIZE];

    zorpelx_options_init(&options, sizeof options);
    zorpelx_result_init(&result, sizeof result);
    zorpelx_quality_init(&quality, sizeof quality);
    options.ubfactor = 10;
    expect(zorpelx_partition(&hypergraph, &options, part, &result) == ZORPELX_OK, result.message);
    expect(result.cut == 1 && result.valid, "a cut of 1, within the limits");
    expect(zorpelx_evaluate(&hypergraph, 2, part, &quality, pwgts, pcuts, message) == ZORPELX_OK,
           message);
    expect(quality.cut == 1 && quality.soed == 2 && pcuts[0] == 1, "figures of the partition");
    expect(pwgts[0] + pwgts[1] == 5, "part weights");
    options.nparts = 1;
    expect(zorpelx_partition(&hypergraph, &options, part, &result) == ZORPELX_BAD_OPTION &&
               strstr(result.message, "nparts is 1") != NULL,
           "a bad option has a sentence");
    return failures;
}
