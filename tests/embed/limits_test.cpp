// SPDX-License-Identifier: MIT
/* tests/embed/limits_test.cpp: how much weight each part may get. */
#include <cstring>
#include <gtest/gtest.h>

#include "sample.h"

struct PartLimits {
    std::vector<int64_t> least, most;
};

static PartLimits limits_of(int nparts, int ubfactor, int polish, int64_t total)
{
    const size_t n = static_cast<size_t>(nparts);
    PartLimits limits = {std::vector<int64_t>(n), std::vector<int64_t>(n)};
    EXPECT_EQ(ZORPELX_OK, zorpelx_part_limits(nparts, ubfactor, polish, total, limits.least.data(),
                                              limits.most.data()));
    return limits;
}

TEST(Limits, a_bisection_may_miss_its_half_by_the_factor)
{
    const PartLimits limits = limits_of(2, 5, 1, 1000);
    EXPECT_EQ((std::vector<int64_t>{450, 449}), limits.least); // 450 in single precision only
    EXPECT_EQ((std::vector<int64_t>{551, 550}), limits.most);
}

TEST(Limits, the_factor_compounds_over_bisections)
{
    const PartLimits limits = limits_of(4, 10, 0, 1000);
    for (size_t p = 0; p < 4; p++) {
        EXPECT_NEAR(160, static_cast<double>(limits.least[p]), 2);
        EXPECT_NEAR(360, static_cast<double>(limits.most[p]), 2);
    }
}

TEST(Limits, an_odd_number_of_parts_starts_with_the_smaller_share)
{
    const PartLimits limits = limits_of(3, 5, 0, 3000);
    EXPECT_NEAR(850, static_cast<double>(limits.least[0]), 2); // a third, less 5 %
    EXPECT_NEAR(1150, static_cast<double>(limits.most[0]), 2);
    EXPECT_NEAR(832.5, static_cast<double>(limits.least[1]), 2); // 45 % of the least left
    EXPECT_NEAR(1182.5, static_cast<double>(limits.most[2]), 2); // 55 % of the most left
}

TEST(Limits, refinement_at_the_end_makes_the_limits_alike)
{
    const PartLimits limits = limits_of(3, 5, 1, 3000);
    EXPECT_EQ(limits.most[0], limits.most[2]);
    EXPECT_EQ(limits.least[0], limits.least[1]);
    EXPECT_GE(limits.most[0], limits_of(3, 5, 0, 3000).most[2]);
    const PartLimits unpolished = limits_of(65, 5, 0, 100000), many = limits_of(65, 5, 1, 100000);
    EXPECT_EQ(unpolished.most, many.most); // 65 parts and more are not refined
}

TEST(Limits, bad_arguments_are_refused_and_arrays_are_optional)
{
    EXPECT_EQ(ZORPELX_OK, zorpelx_part_limits(4, 5, 1, 100, nullptr, nullptr));
    EXPECT_EQ(ZORPELX_OK, zorpelx_part_limits(4, 5, 1, 0, nullptr, nullptr));
    EXPECT_EQ(ZORPELX_OK, zorpelx_part_limits(1, 5, 1, 10, nullptr, nullptr));
    EXPECT_EQ(ZORPELX_BAD_OPTION, zorpelx_part_limits(0, 5, 1, 100, nullptr, nullptr));
    EXPECT_EQ(ZORPELX_BAD_OPTION, zorpelx_part_limits(4, 50, 1, 100, nullptr, nullptr));
    EXPECT_EQ(ZORPELX_BAD_OPTION, zorpelx_part_limits(4, 0, 1, 100, nullptr, nullptr));
    EXPECT_EQ(ZORPELX_BAD_OPTION, zorpelx_part_limits(4, 5, 2, 100, nullptr, nullptr));
    EXPECT_EQ(ZORPELX_BAD_OPTION, zorpelx_part_limits(4, 5, 1, -1, nullptr, nullptr));
}

TEST(Limits, totals_beyond_the_engines_scale)
{
    const PartLimits small = limits_of(4, 10, 1, 2000000000);
    for (const int64_t scale : {int64_t{2}, int64_t{1000}, int64_t{4000000000}}) {
        const PartLimits large = limits_of(4, 10, 1, 2000000000 * scale);
        for (size_t p = 0; p < 4; p++) {
            const double most = static_cast<double>(large.most[p]);
            EXPECT_NEAR(1, most / static_cast<double>(small.most[p] * scale), 1e-5);
        }
    }
    for (const int nparts : {1, 2, 3, 7, 64, 65, 1000}) {
        for (int ubfactor = 1; ubfactor <= 49; ubfactor++) {
            const PartLimits limits = limits_of(nparts, ubfactor, 1, INT64_MAX);
            for (size_t p = 0; p < limits.most.size(); p++) {
                EXPECT_GE(limits.most[p], INT64_MAX / nparts) << nparts << " " << ubfactor;
                EXPECT_LE(limits.least[p], limits.most[p]);
                EXPECT_GE(limits.least[p], 0);
            }
        }
    }
}

/* A partition is valid exactly if every weight lies within the limits told. */
TEST(Limits, are_what_a_result_is_judged_by)
{
    int nvalid = 0;
    for (unsigned seed = 0; seed < 40; seed++) {
        const zorpelx::Hypergraph h = random_hypergraph(150, 200, seed);
        zorpelx::Options options = options_for(2 + static_cast<int>(seed % 7));
        options.ubfactor = 1 + static_cast<int>(seed % 5);
        options.polish = seed % 2 == 0;
        const zorpelx::Partition partition = zorpelx::partition(h, options);
        const zorpelx::Quality quality = zorpelx::evaluate(h, options.nparts, partition.part);
        const PartLimits limits =
            limits_of(options.nparts, options.ubfactor, options.polish, quality.total_weight);
        bool within = true;
        for (size_t p = 0; p < quality.pwgts.size(); p++)
            within &= quality.pwgts[p] >= limits.least[p] && quality.pwgts[p] <= limits.most[p];
        EXPECT_EQ(within, partition.result.valid != 0) << seed;
        EXPECT_EQ(within, partition.result.message[0] == '\0') << partition.result.message;
        nvalid += within;
    }
    EXPECT_GE(nvalid, 35); // the engine keeps its bounds on nearly all of these
}

TEST(Limits, a_vertex_too_heavy_makes_a_result_invalid_but_no_failure)
{
    zorpelx::Hypergraph h = random_hypergraph(20, 30, 1);
    h.vwgts[7] = 1000;
    const zorpelx::Partition partition = zorpelx::partition(h, options_for(2));
    EXPECT_EQ(ZORPELX_OK, partition.result.status);
    EXPECT_EQ(0, partition.result.valid);
    EXPECT_NE(nullptr, strstr(partition.result.message, "its limits are"))
        << partition.result.message;
}
