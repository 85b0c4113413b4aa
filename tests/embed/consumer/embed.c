/* SPDX-License-Identifier: MIT */
#include <stdio.h>
#include <zorpelx.h>

int main(void)
{
    const int eptr[] = {0, 3, 6, 8}, eind[] = {0, 1, 2, 3, 4, 5, 2, 3};
    const zorpelx_hypergraph hypergraph = {6, 3, eptr, eind, NULL, NULL};
    zorpelx_options options;
    zorpelx_result result;
    int part[6];

    zorpelx_options_init(&options, sizeof options);
    zorpelx_result_init(&result, sizeof result);
    options.nparts = 2;
    options.starts = 4;   /* seeds 1 to 4, on as many processors; the best is delivered */
    options.timeout = 10; /* seconds */
    if (zorpelx_partition(&hypergraph, &options, part, &result) != ZORPELX_OK) {
        fprintf(stderr, "%s: %s\n", zorpelx_status_string(result.status), result.message);
        return result.status;
    }
    printf("cut %lld, vertices 2 and 3 %s\n", (long long)result.cut,
           part[2] == part[3] ? "together" : "apart");
    return 0;
}
