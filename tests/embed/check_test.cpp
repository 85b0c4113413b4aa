// SPDX-License-Identifier: MIT
/* tests/embed/check_test.cpp: every fault of a call has a status and a sentence naming the place.
 */
#include <climits>
#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <limits>

#include "sample.h"

/* A sound call, for faults to be put into. */
struct SoundCall {
    std::vector<int> eptr = {0, 3, 5, 5}, eind = {0, 1, 2, 2, 3};
    std::vector<int> vwgts = {1, 2, 3, 4}, hewgts = {5, 6, 7}, fixed = {-1, 0, 1, -1};
    std::vector<int> part = {0, 0, 1, 1};
    zorpelx_hypergraph h = {4, 3, eptr.data(), eind.data(), vwgts.data(), hewgts.data()};
    zorpelx::Options o;

    SoundCall() { o.fixed = fixed.data(); }
};

struct FaultCase {
    const char *name;
    std::function<void(SoundCall &)> put;
    int status;
    const char *sentence;
};

static void PrintTo(const FaultCase &fault, std::ostream *stream)
{
    *stream << fault.name;
}

class EveryFault : public testing::TestWithParam<FaultCase>
{
};

static constexpr int TOP = 2147483647;

static const FaultCase option_faults[] = {
    {"nparts", [](SoundCall &c) { c.o.nparts = 1; }, 2, "nparts is 1; it should be at least 2."},
    {"absurd_nparts", [](SoundCall &c) { c.o.nparts = 1000001; }, 2,
     "nparts is 1000001; with 4 vertices it should be at most 1000000."},
    {"negative_seed", [](SoundCall &c) { c.o.seed = -2; }, 2,
     "seed is -2; it should be -1, for one drawn by chance, or at least 0."},
    {"seed_twice_the_same", [](SoundCall &c) { c.o.seed = 0, c.o.starts = 2; }, 2,
     "seed is 0, which gives the same random numbers as 1; with 2 starts it should be at least 1."},
    {"small_ubfactor", [](SoundCall &c) { c.o.ubfactor = 0; }, 2,
     "ubfactor is 0; it should be between 1 and 49."},
    {"large_ubfactor", [](SoundCall &c) { c.o.ubfactor = 50; }, 2,
     "ubfactor is 50; it should be between 1 and 49."},
    {"nruns", [](SoundCall &c) { c.o.nruns = 0; }, 2, "nruns is 0; it should be at least 1."},
    {"ctype", [](SoundCall &c) { c.o.ctype = 6; }, 2, "ctype is 6; it should be between 1 and 5."},
    {"rtype", [](SoundCall &c) { c.o.rtype = 0; }, 2, "rtype is 0; it should be between 1 and 3."},
    {"vcycle", [](SoundCall &c) { c.o.vcycle = 4; }, 2,
     "vcycle is 4; it should be between 0 and 3."},
    {"reconst", [](SoundCall &c) { c.o.reconst = 2; }, 2,
     "reconst is 2; it should be between 0 and 1."},
    {"polish", [](SoundCall &c) { c.o.polish = -1; }, 2,
     "polish is -1; it should be between 0 and 1."},
    {"starts", [](SoundCall &c) { c.o.starts = 0; }, 2, "starts is 0; it should be at least 1."},
    {"jobs", [](SoundCall &c) { c.o.jobs = -2; }, 2, "jobs is -2; it should be at least 0."},
    {"trace", [](SoundCall &c) { c.o.trace = 64; }, 2,
     "trace is 64; it should be a sum of ZORPEL_DBG_* values."},
    {"seed", [](SoundCall &c) { c.o.seed = TOP - 1, c.o.starts = 3; }, 2,
     "seed is 2147483646; with 3 starts it should be at most 2147483645."},
    {"negative_timeout", [](SoundCall &c) { c.o.timeout = -1.5; }, 2,
     "timeout is -1.5; it should be 0 or more seconds."},
    {"timeout_no_number",
     [](SoundCall &c) { c.o.timeout = std::numeric_limits<double>::quiet_NaN(); }, 2,
     "timeout is nan; it should be 0 or more seconds."},
    {"options_not_set", [](SoundCall &c) { c.o.size = 3; }, 2,
     "The size of the options is 3 instead of "},
};

static const FaultCase input_faults[] = {
    {"nvtxs", [](SoundCall &c) { c.h.nvtxs = -1; }, 3,
     "nvtxs is -1; it should be between 0 and 2147483646."},
    {"nvtxs_without_room", [](SoundCall &c) { c.h.nvtxs = TOP; }, 3,
     "nvtxs is 2147483647; it should be between 0 and 2147483646."},
    {"nhedges", [](SoundCall &c) { c.h.nhedges = -7; }, 3,
     "nhedges is -7; it should be between 0 and 2147483646."},
    {"nhedges_without_room", [](SoundCall &c) { c.h.nhedges = TOP; }, 3,
     "nhedges is 2147483647; it should be between 0 and 2147483646."},
    {"no_eptr", [](SoundCall &c) { c.h.eptr = nullptr; }, 2,
     "eptr is null; it should hold nhedges + 1 offsets."},
    {"no_eind", [](SoundCall &c) { c.h.eind = nullptr; }, 2,
     "eind is null; it should hold 5 vertices."},
    {"first_offset", [](SoundCall &c) { c.eptr[0] = 1; }, 3,
     "eptr[0] is 1; the first hyperedge starts at 0."},
    {"falling_offset", [](SoundCall &c) { c.eptr[2] = 2; }, 3,
     "eptr[2] is 2, less than eptr[1], which is 3: hyperedge 1 ends before it starts."},
    {"negative_vertex", [](SoundCall &c) { c.eind[3] = -1; }, 3,
     "eind[3] is -1, in hyperedge 1; the vertices are numbered from 0 to 3."},
    {"vertex_too_large", [](SoundCall &c) { c.eind[2] = 4; }, 3,
     "eind[2] is 4, in hyperedge 0; the vertices are numbered from 0 to 3."},
    {"repeated_vertex", [](SoundCall &c) { c.eind[2] = 0; }, 3,
     "Hyperedge 0 lists vertex 0 twice, at eind[0] and eind[2]."},
    {"vertex_weight", [](SoundCall &c) { c.vwgts[3] = -2; }, 3,
     "vwgts[3] is -2; weights are not negative."},
    {"hyperedge_weight", [](SoundCall &c) { c.hewgts[1] = -9; }, 3,
     "hewgts[1] is -9; weights are not negative."},
    {"vertex_total",
     [](SoundCall &c) {
         c.vwgts = {TOP, 0, 0, 0}, c.h.vwgts = c.vwgts.data();
     },
     3, "The weights of the vertices total more than 2147483646 from vwgts[0] on."},
    {"hyperedge_total",
     [](SoundCall &c) {
         c.hewgts = {TOP - 2, 1, 1}, c.h.hewgts = c.hewgts.data();
     },
     3, "The weights of the hyperedges total more than 2147483646 from hewgts[2] on."},
    {"fixed_below", [](SoundCall &c) { c.fixed[2] = -2; }, 3,
     "fixed[2] is -2; it should be between -1 and 1."},
    {"fixed_above", [](SoundCall &c) { c.fixed[3] = 2; }, 3,
     "fixed[3] is 2; it should be between -1 and 1."},
};

TEST_P(EveryFault, is_found_by_check_and_by_partition)
{
    SoundCall call;
    char message[ZORPELX_MESSAGE_SIZE];
    ASSERT_EQ(ZORPELX_OK, zorpelx_check(&call.h, &call.o, message)) << message;
    ASSERT_STREQ("", message);
    GetParam().put(call);
    EXPECT_EQ(GetParam().status, zorpelx_check(&call.h, &call.o, message));
    EXPECT_EQ(0u, std::string(message).find(GetParam().sentence)) << message;
    EXPECT_EQ(GetParam().status, zorpelx_check(&call.h, &call.o, nullptr));

    zorpelx_result result = new_result();
    EXPECT_EQ(GetParam().status, zorpelx_partition(&call.h, &call.o, call.part.data(), &result));
    EXPECT_EQ(GetParam().status, result.status);
    EXPECT_STREQ(message, result.message);
    EXPECT_EQ(0, result.finished);
    EXPECT_EQ((std::vector<int>{0, 0, 1, 1}), call.part);
}

static std::string name_of(const testing::TestParamInfo<FaultCase> &info)
{
    return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(Options, EveryFault, testing::ValuesIn(option_faults), name_of);
INSTANTIATE_TEST_SUITE_P(Input, EveryFault, testing::ValuesIn(input_faults), name_of);

TEST(Check, missing_records_are_faults)
{
    SoundCall call;
    char message[ZORPELX_MESSAGE_SIZE];
    EXPECT_EQ(ZORPELX_BAD_OPTION, zorpelx_check(nullptr, &call.o, message));
    EXPECT_STREQ("The hypergraph is null.", message);
    EXPECT_EQ(ZORPELX_BAD_OPTION, zorpelx_check(&call.h, nullptr, message));
    EXPECT_STREQ("The options are null.", message);
}

TEST(Check, partition_needs_a_result_of_known_size_and_a_part_array)
{
    SoundCall call;
    zorpelx_result result = new_result();
    EXPECT_EQ(ZORPELX_BAD_OPTION, zorpelx_partition(&call.h, &call.o, call.part.data(), nullptr));
    EXPECT_EQ(ZORPELX_BAD_OPTION, zorpelx_partition(&call.h, &call.o, nullptr, &result));
    EXPECT_STREQ("part is null; it should have room for 4 vertices.", result.message);
    result.size = 1;
    EXPECT_EQ(ZORPELX_BAD_OPTION, zorpelx_partition(&call.h, &call.o, call.part.data(), &result));
}

TEST(Check, the_largest_totals_pass)
{
    SoundCall call;
    call.vwgts = {TOP - 1, 0, 0, 0};
    call.hewgts = {0, TOP - 1, 0};
    call.h.vwgts = call.vwgts.data();
    call.h.hewgts = call.hewgts.data();
    EXPECT_EQ(ZORPELX_OK, zorpelx_check(&call.h, &call.o, nullptr));
}

TEST(Check, weights_and_fixed_may_be_missing)
{
    SoundCall call;
    call.h.vwgts = call.h.hewgts = call.o.fixed = nullptr;
    EXPECT_EQ(ZORPELX_OK, zorpelx_check(&call.h, &call.o, nullptr));
}

TEST(Check, the_last_seed_may_be_the_largest_number)
{
    SoundCall call;
    call.o.seed = TOP - 2;
    call.o.starts = 3;
    EXPECT_EQ(ZORPELX_OK, zorpelx_check(&call.h, &call.o, nullptr));
}

TEST(Records, init_knows_its_sizes_only)
{
    zorpelx_options options;
    zorpelx_result result;
    zorpelx_quality quality;
    EXPECT_EQ(ZORPELX_OK, zorpelx_options_init(&options, sizeof options));
    EXPECT_EQ(ZORPELX_OK, zorpelx_result_init(&result, sizeof result));
    EXPECT_EQ(ZORPELX_OK, zorpelx_quality_init(&quality, sizeof quality));
    EXPECT_EQ(ZORPELX_BAD_OPTION, zorpelx_options_init(&options, sizeof options + 1));
    EXPECT_EQ(ZORPELX_BAD_OPTION, zorpelx_result_init(&result, 0));
    EXPECT_EQ(ZORPELX_BAD_OPTION, zorpelx_quality_init(nullptr, sizeof quality));
}

TEST(Records, defaults_are_those_of_the_engine)
{
    const zorpelx::Options o;
    EXPECT_EQ(sizeof(zorpelx_options), o.size);
    EXPECT_EQ((std::vector<int>{2, 5, 10, 1, 1, 1, 0, 1, 0, 1, 1, 0}),
              (std::vector<int>{o.nparts, o.ubfactor, o.nruns, o.ctype, o.rtype, o.vcycle,
                                o.reconst, o.polish, o.trace, o.seed, o.starts, o.jobs}));
    EXPECT_EQ(0, o.timeout);
    EXPECT_EQ(0u, o.memory);
    EXPECT_TRUE(o.fixed == nullptr && o.cancel == nullptr);
}

TEST(Records, every_status_has_words)
{
    for (const int status : {0, 1, 2, 3, 5, 6, 124, 130})
        EXPECT_STRNE("unknown status", zorpelx_status_string(status)) << status;
    EXPECT_STREQ("unknown status", zorpelx_status_string(77));
    EXPECT_STREQ(PROJECT_VERSION, zorpelx_version());
}
