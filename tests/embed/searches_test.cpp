// SPDX-License-Identifier: MIT
/* tests/embed/searches_test.cpp: searches through libzorpelx: bounds, objectives, constraints,
 * starts to improve, time. Every partition is evaluated anew. */
#include <chrono>
#include <climits>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <gtest/gtest.h>
#include <numeric>
#include <tuple>

#include "process.h"
#include "sample.h"

static zorpelx::Options search_for(int nparts, double epsilon = 3, int preset = ZORPELX_FAST)
{
    zorpelx::Options options = options_for(nparts);
    options.epsilon = epsilon;
    options.preset = preset;
    options.threads = 1;
    return options;
}

static int64_t total_of(const zorpelx::Hypergraph &h)
{
    return std::accumulate(h.vwgts.begin(), h.vwgts.end(), int64_t{0});
}

static int64_t value_of(const zorpelx_options &options, const zorpelx::Quality &quality)
{
    return options.objective == ZORPELX_CUT   ? quality.cut
           : options.objective == ZORPELX_KM1 ? quality.connectivity
                                              : quality.soed;
}

/* The partition of a search, after a check of its bounds and figures. */
static zorpelx::Partition checked(const zorpelx::Hypergraph &h, const zorpelx::Options &options)
{
    const zorpelx::Partition found = zorpelx::partition(h, options);
    const zorpelx::Quality quality = zorpelx::evaluate(h, options.nparts, found.part);
    const zorpelx::PartBounds bounds = zorpelx::part_bounds(options, total_of(h));
    for (size_t p = 0; p < quality.pwgts.size(); p++) {
        EXPECT_LE(bounds.least[p], quality.pwgts[p]) << p;
        EXPECT_GE(bounds.most[p], quality.pwgts[p]) << p;
    }
    EXPECT_EQ(1, found.result.valid) << found.result.message;
    EXPECT_STREQ("", found.result.message);
    EXPECT_EQ(quality.cut, found.result.cut);
    EXPECT_EQ(quality.soed, found.result.soed);
    EXPECT_EQ(quality.connectivity, found.result.connectivity);
    EXPECT_EQ(quality.imbalance, found.result.imbalance);
    return found;
}

/* Hyperedges of two: a path of so many vertices of weight 1. */
static zorpelx::Hypergraph path_of(int nvtxs)
{
    zorpelx::Hypergraph h;
    h.nvtxs = nvtxs;
    for (int v = 0; v + 1 < nvtxs; v++) h.add_hyperedge({v, v + 1});
    h.vwgts.assign(static_cast<size_t>(nvtxs), 1);
    return h;
}

static std::string refusal(const zorpelx::Hypergraph &h, const zorpelx::Options &options)
{
    try {
        zorpelx::partition(h, options);
    } catch (const zorpelx::Error &error) {
        return error.what();
    }
    return "";
}

TEST(Searches, keep_bounds_and_tell_the_figures_of_evaluation)
{
    int sample = 0;
    for (const int nparts : {2, 3, 8, 17})
        for (const double epsilon : {0.0, 0.5, 3.0, 30.0}) {
            const zorpelx::Hypergraph h =
                random_hypergraph(300, 500, static_cast<unsigned>(++sample));
            checked(h, search_for(nparts, epsilon));
        }
}

TEST(Searches, bounds_are_the_average_rounded_up_and_the_percentage_on_top)
{
    zorpelx::Options options = search_for(3, 10);
    zorpelx::PartBounds bounds = zorpelx::part_bounds(options, 149); // 50 rounded up; 55
    EXPECT_EQ(std::vector<int64_t>(3, 55), bounds.most);
    EXPECT_EQ(std::vector<int64_t>(3, 1), bounds.least);
    options.least = 10; // of 49.67
    bounds = zorpelx::part_bounds(options, 149);
    EXPECT_EQ(std::vector<int64_t>(3, 45), bounds.least);
    options.sizes = {3, 3, 2};
    options.epsilon = 0;
    options.least = -1;
    EXPECT_EQ((std::vector<int64_t>{300, 300, 200}), zorpelx::part_bounds(options, 800).most);
    options.sizes = {1, 1e308, 1e308};
    EXPECT_THROW(zorpelx::part_bounds(options, 800), zorpelx::Error);
}

TEST(Searches, capacities_and_least_are_kept)
{
    for (unsigned sample = 0; sample < 6; sample++) {
        const zorpelx::Hypergraph h = random_hypergraph(400, 600, sample);
        zorpelx::Options options = search_for(3, 2);
        options.sizes = {3, 3, 2};
        const zorpelx::Partition found = checked(h, options);
        const zorpelx::Quality quality = zorpelx::evaluate(h, 3, found.part);
        EXPECT_LT(quality.pwgts[2], quality.pwgts[0]);
        options = search_for(5, 40);
        options.least = 4;
        checked(h, options);
    }
}

TEST(Searches, each_objective_is_made_least)
{
    int64_t sums[3][3] = {}; // [asked][figure]
    for (unsigned sample = 0; sample < 16; sample++) {
        const zorpelx::Hypergraph h = random_hypergraph(200, 150, sample, 4);
        for (int objective = ZORPELX_CUT; objective <= ZORPELX_SOED; objective++) {
            zorpelx::Options options = search_for(6, 5, ZORPELX_DEFAULT);
            options.objective = objective;
            const zorpelx_result result = checked(h, options).result;
            sums[objective][0] += result.cut;
            sums[objective][1] += result.connectivity;
            sums[objective][2] += result.soed;
        }
    }
    // the sum of external degrees lies between the two others: near to both, a percent is chance
    for (int asked = 0; asked < 3; asked++)
        for (int other = 0; other < 3; other++) {
            if (other == asked) continue;
            const bool near = asked == ZORPELX_SOED || other == ZORPELX_SOED;
            EXPECT_LT(static_cast<double>(sums[asked][asked]),
                      (near ? 1.01 : 1.0) * static_cast<double>(sums[other][asked]))
                << asked << " beside " << other;
        }
}

TEST(Searches, the_best_start_by_the_objective_wins)
{
    const zorpelx::Hypergraph h = random_hypergraph(150, 200, 3, 4);
    for (const double epsilon : {-1.0, 4.0})
        for (int objective = ZORPELX_CUT; objective <= ZORPELX_SOED; objective++) {
            zorpelx::Options options = search_for(5, epsilon);
            options.objective = objective;
            int64_t best = INT64_MAX;
            for (options.seed = 1; options.seed <= 4; options.seed++) {
                const zorpelx::Partition one = zorpelx::partition(h, options);
                if (one.result.valid)
                    best = std::min(best, value_of(options, zorpelx::evaluate(h, 5, one.part)));
            }
            options.seed = 1;
            options.starts = 4;
            options.jobs = 2;
            const zorpelx::Partition all = zorpelx::partition(h, options);
            EXPECT_EQ(best, value_of(options, zorpelx::evaluate(h, 5, all.part)));
        }
}

TEST(Searches, fixed_vertices_and_groups_are_kept)
{
    for (unsigned sample = 0; sample < 6; sample++) {
        const zorpelx::Hypergraph h = random_hypergraph(300, 450, sample);
        zorpelx::Options options = search_for(4, 5);
        options.pre_assigned.assign(300, -1);
        options.together.assign(300, -1);
        for (size_t v = 0; v < 300; v += 7) options.pre_assigned[v] = static_cast<int>(v % 4);
        for (size_t v = 1; v < 300; v += 5)
            if (v % 7 != 0) options.together[v] = static_cast<int>(v % 40);
        options.pre_assigned[2] = 3;
        options.together[2] = options.together[3] = 299; // fixed by its group
        const zorpelx::Partition found = checked(h, options);
        std::vector<int> part_of_group(300, -1);
        for (size_t v = 0; v < 300; v++) {
            const int asked = options.pre_assigned[v];
            EXPECT_TRUE(asked < 0 || asked == found.part[v]) << v;
            if (options.together[v] < 0) continue;
            int &part = part_of_group[static_cast<size_t>(options.together[v])];
            if (part < 0) part = found.part[v];
            EXPECT_EQ(part, found.part[v]) << v;
        }
        EXPECT_EQ(3, found.part[3]);
    }
}

TEST(Searches, groups_fixed_in_two_parts_are_refused)
{
    zorpelx::Options options = search_for(2);
    options.pre_assigned = {-1, 0, -1, 1, -1, -1};
    options.together = {-1, 4, -1, 4, -1, -1};
    EXPECT_EQ("Vertices 1 and 3 are in one group and fixed in parts 0 and 1.",
              refusal(path_of(6), options));
}

TEST(Searches, parts_stay_empty_where_vertices_cannot_fill_them)
{
    zorpelx::Options options = search_for(3, 400);
    options.pre_assigned.assign(8, 1);
    zorpelx::Partition found = zorpelx::partition(path_of(8), options);
    EXPECT_EQ(1, found.result.valid) << found.result.message;
    EXPECT_EQ(options.pre_assigned, found.part);
    options.pre_assigned.clear();
    options.together = {0, 0, 0, 0, 0, 3, 3, 3}; // two things for three parts
    found = zorpelx::partition(path_of(8), options);
    EXPECT_EQ(1, found.result.valid) << found.result.message;
    options.together = {0, 0, 0, 0, 0, 3, 3, -1}; // three
    found = zorpelx::partition(path_of(8), options);
    EXPECT_EQ(1, found.result.valid) << found.result.message;
    EXPECT_EQ(0, zorpelx::evaluate(path_of(8), 3, found.part).empty_parts);
}

TEST(Searches, messages_name_who_is_to_blame)
{
    zorpelx::Hypergraph h = path_of(8);
    h.vwgts[5] = 50;
    zorpelx::Options options = search_for(2, 3);
    zorpelx::Partition found = zorpelx::partition(h, options);
    EXPECT_EQ(0, found.result.valid);
    EXPECT_EQ(ZORPELX_OK, found.result.status);
    EXPECT_STREQ("Vertex 5 (counted from 0) weighs 50, and no part may weigh more than 29.",
                 found.result.message);

    options.pre_assigned = {0, 0, 0, 0, 0, -1, -1, -1};
    found = zorpelx::partition(path_of(8), options);
    EXPECT_STREQ("The vertices fixed in part 0 weigh 5; it may weigh at most 4.",
                 found.result.message);

    options.pre_assigned.clear();
    options.together = {2, 2, 2, -1, -1, 2, -1, 2};
    found = zorpelx::partition(path_of(8), options);
    EXPECT_STREQ("The vertices in the group of vertex 7 (counted from 0) weigh more than 4, which "
                 "is the most that a "
                 "part may weigh.",
                 found.result.message);

    options = search_for(4, 0); // five of weight 3 in four parts of 4
    h = path_of(5);
    h.vwgts.assign(5, 3);
    found = zorpelx::partition(h, options);
    EXPECT_EQ(0, found.result.valid);
    EXPECT_NE(nullptr,
              strstr(found.result.message, "weighs 6; its limits are 1 and 4. Its heaviest "
                                           "vertex is "))
        << found.result.message;
}

TEST(Searches, a_start_is_never_made_worse)
{
    for (unsigned sample = 0; sample < 8; sample++) {
        const zorpelx::Hypergraph h = random_hypergraph(300, 450, sample);
        zorpelx::Options options = search_for(4, 3, ZORPELX_BEST);
        options.objective = static_cast<int>(sample % 3);
        const zorpelx::Partition good = checked(h, options);
        options.preset = ZORPELX_FAST;
        options.seed = 5;
        options.start_part = good.part;
        const zorpelx::Partition again = checked(h, options);
        EXPECT_LE(value_of(options, zorpelx::evaluate(h, 4, again.part)),
                  value_of(options, zorpelx::evaluate(h, 4, good.part)));
        options.start_part.assign(300, 2); // out of bounds
        checked(h, options);
    }
}

TEST(Searches, a_price_keeps_vertices_in_place)
{
    for (int objective = ZORPELX_CUT; objective <= ZORPELX_SOED; objective++) {
        const zorpelx::Hypergraph h = random_hypergraph(300, 450, 7);
        zorpelx::Options options = search_for(4, 10);
        options.objective = objective;
        options.start_part.resize(300);
        for (size_t v = 0; v < 300; v++) options.start_part[v] = static_cast<int>(v * 4 / 300);
        options.keep_price = 1000;
        zorpelx::Partition found = checked(h, options);
        EXPECT_EQ(0, found.result.moved);
        EXPECT_EQ(options.start_part, found.part);

        options.start_part[3] = 2; // a stray one: it comes home for a low price only
        options.keep_price = 0;
        found = checked(h, options);
        int64_t moved = 0;
        for (size_t v = 0; v < 300; v++)
            if (found.part[v] != options.start_part[v]) moved += h.vwgts[v];
        EXPECT_EQ(moved, found.result.moved);
        EXPECT_GT(moved, 0);
    }
}

TEST(Searches, prices_are_exact_in_the_sum_of_external_degrees)
{
    zorpelx::Hypergraph h; // moving three vertices saves 4 and costs 3
    h.nvtxs = 5;
    h.vwgts.assign(5, 1);
    h.add_hyperedge({0, 1, 2, 3});
    h.hewgts = {2};
    zorpelx::Options options = search_for(2, 60);
    options.objective = ZORPELX_SOED;
    options.start_part = {0, 1, 1, 1, 1};
    options.pre_assigned = {0, -1, -1, -1, 1};
    options.keep_price = 1;
    EXPECT_EQ(0, checked(h, options).result.soed);
    options.keep_price = 2;
    EXPECT_EQ(4, checked(h, options).result.soed);
}

TEST(Searches, neither_threads_nor_jobs_change_the_result)
{
    const zorpelx::Hypergraph h = random_hypergraph(3000, 4500, 11);
    for (const int nparts : {2, 7}) {
        zorpelx::Options options = search_for(nparts, 3, ZORPELX_DEFAULT);
        const zorpelx::Partition one = checked(h, options);
        for (const int threads : {2, 4}) {
            options.threads = threads;
            EXPECT_EQ(one.part, zorpelx::partition(h, options).part) << threads;
        }
        options.preset = ZORPELX_FAST;
        options.starts = 3;
        options.jobs = 1;
        const zorpelx::Partition first = zorpelx::partition(h, options);
        options.jobs = 3;
        EXPECT_EQ(first.part, zorpelx::partition(h, options).part);
    }
}

class SearchesInTime : public LeavesNothing
{
  protected:
    const zorpelx::Hypergraph h = random_hypergraph(20000, 30000, 5);
    zorpelx::Options options = search_for(8, 3, ZORPELX_BEST);

    void expect_whole(const zorpelx::Partition &found, int status) const
    {
        const zorpelx::Quality quality = zorpelx::evaluate(h, 8, found.part);
        EXPECT_EQ(status, found.result.status);
        EXPECT_EQ(1, found.result.finished);
        EXPECT_EQ(1, found.result.valid) << found.result.message;
        EXPECT_EQ(quality.cut, found.result.cut);
        EXPECT_EQ(0, quality.empty_parts);
    }
};

TEST_F(SearchesInTime, a_deadline_delivers_the_best_so_far)
{
    options.timeout = SANITIZED ? 20 : 3;
    options.starts = 1;
    options.time = 1000;
    const zorpelx::Partition found = zorpelx::partition(h, options);
    expect_whole(found, ZORPELX_TIMEOUT);
    EXPECT_STREQ("The deadline came first; the best partition found by then is kept.",
                 found.result.message);
    EXPECT_LT(found.result.seconds, options.timeout + 5);
}

TEST_F(SearchesInTime, a_cancellation_delivers_the_best_so_far)
{
    int64_t last = INT64_MAX;
    options.time = 1000;
    options.progress = [&](const zorpelx_progress &progress) {
        if (progress.objective >= 0) {
            EXPECT_LE(progress.objective, last);
            last = progress.objective;
            EXPECT_STRNE("", progress.step);
        }
        EXPECT_EQ(progress.alljobs, progress.jobs > 0 ? -1 : progress.alljobs);
        return progress.objective >= 0 && progress.jobs >= 2;
    };
    const zorpelx::Partition found = zorpelx::partition(h, options);
    expect_whole(found, ZORPELX_CANCELLED);
    EXPECT_LE(found.result.cut, last);
}

TEST_F(SearchesInTime, the_end_of_its_time_is_a_success)
{
    options.time = SANITIZED ? 20 : 2;
    const zorpelx::Partition found = zorpelx::partition(h, options);
    expect_whole(found, ZORPELX_OK);
    EXPECT_STREQ("", found.result.message);
    EXPECT_GE(found.result.seconds, options.time - 0.1);
    EXPECT_LT(found.result.seconds, options.time + 5);
    EXPECT_EQ(-1, found.result.alljobs);
    options.time = 1e-9; // even then there is one
    expect_whole(zorpelx::partition(h, options), ZORPELX_OK);
}

TEST_F(SearchesInTime, a_cap_on_memory_is_heeded)
{
    options.memory = size_t{1} << 20;
    zorpelx_result result = new_result();
    std::vector<int> part(static_cast<size_t>(h.nvtxs), -7);
    const zorpelx_hypergraph view = h.view();
    EXPECT_EQ(ZORPELX_NO_MEMORY, zorpelx_partition(&view, &options, part.data(), &result));
    EXPECT_EQ(std::vector<int>(part.size(), -7), part);
    if (SANITIZED) return; // its own heap takes more
    options.preset = ZORPELX_FAST;
    options.memory = size_t{400} << 20;
    expect_whole(zorpelx::partition(h, options), ZORPELX_OK);
}

/* Each cap lets the search come further than the one before, from nothing to the end. */
TEST_F(SearchesInTime, what_was_found_before_memory_ran_out_is_delivered)
{
    if (SANITIZED) GTEST_SKIP() << "its own heap takes more";
    options.preset = ZORPELX_DEFAULT;
    const zorpelx_hypergraph view = h.view();
    int salvaged = 0, status = ZORPELX_NO_MEMORY;
    for (size_t cap = size_t{4} << 20; cap < size_t{400} << 20; cap += cap / 32) {
        options.memory = cap;
        zorpelx_result result = new_result();
        std::vector<int> part(static_cast<size_t>(h.nvtxs), -7);
        const int now = zorpelx_partition(&view, &options, part.data(), &result);
        ASSERT_TRUE(now == ZORPELX_OK || status == ZORPELX_NO_MEMORY) << cap;
        status = now;
        if (status != ZORPELX_OK) continue;
        EXPECT_EQ(1, result.valid);
        EXPECT_EQ(result.cut, zorpelx::evaluate(h, 8, part).cut);
        if (result.message[0] == '\0') break;
        EXPECT_STREQ("Memory ran out in the start with seed 1; the best partition that it had "
                     "found by then counts.",
                     result.message);
        EXPECT_LT(result.jobs, result.alljobs);
        salvaged++;
    }
    EXPECT_EQ(ZORPELX_OK, status);
    EXPECT_GT(salvaged, 0);
}

TEST(Searches, the_result_tells_how_it_came_about)
{
    const zorpelx::Hypergraph h = random_hypergraph(300, 500, 3);
    zorpelx::Options options = search_for(3, 3, ZORPELX_DEFAULT);
    const zorpelx_result plain = zorpelx::partition(h, options).result;
    EXPECT_EQ(1, plain.steps[0].made);
    EXPECT_EQ(0, plain.steps[1].made);
    EXPECT_EQ(plain.jobs, plain.steps[2].made + plain.steps[3].made);
    EXPECT_GT(plain.steps[2].gained, 0);
    EXPECT_GT(plain.steps[2].seconds, 0);
    EXPECT_GT(plain.pool, 1);
    EXPECT_GT(plain.generations, 0);
    const std::vector<int> start = zorpelx::partition(h, options).part;
    options.start = start.data();
    const zorpelx_result again = zorpelx::partition(h, options).result;
    EXPECT_EQ(1, again.steps[1].made);
    const zorpelx_result engine = zorpelx::partition(h, options_for(3)).result;
    for (const zorpelx_step &step : engine.steps) EXPECT_EQ(0, step.made);
    EXPECT_EQ(0, engine.pool + engine.generations);
}

TEST(Searches, options_that_contradict_each_other_are_refused)
{
    const zorpelx::Hypergraph h = path_of(6);
    const double sizes[] = {1, 2};
    const int numbers[6] = {};
    const char *const for_searches = " is for searches; epsilon should be at least 0 with it.";
    const auto engine = [&](auto change) {
        zorpelx::Options options = options_for(2);
        change(&options);
        return refusal(h, options);
    };
    using O = zorpelx_options;
    EXPECT_EQ(std::string("capacities") + for_searches,
              engine([&](O *o) { o->capacities = sizes; }));
    EXPECT_EQ(std::string("start") + for_searches, engine([&](O *o) { o->start = numbers; }));
    EXPECT_EQ(std::string("groups") + for_searches, engine([&](O *o) { o->groups = numbers; }));
    EXPECT_EQ(std::string("time") + for_searches, engine([&](O *o) { o->time = 1; }));
    EXPECT_EQ(std::string("least") + for_searches, engine([&](O *o) { o->least = 1; }));
    EXPECT_EQ(std::string("keep_price") + for_searches, engine([&](O *o) { o->keep_price = 1; }));
    const auto search = [&](auto change) {
        return engine([&](O *o) {
            o->epsilon = 3;
            change(o);
        });
    };
    EXPECT_EQ("keep_price is 2; it needs a start.", search([](O *o) { o->keep_price = 2; }));
    EXPECT_EQ("keep_price is -1; it should be at least 0.",
              search([](O *o) { o->keep_price = -1; }));
    EXPECT_EQ("objective is 3; it should be between 0 and 2.",
              search([](O *o) { o->objective = 3; }));
    EXPECT_EQ("preset is -1; it should be between 0 and 2.", search([](O *o) { o->preset = -1; }));
    EXPECT_EQ("least is 101; it should be at most 100 percent.",
              search([](O *o) { o->least = 101; }));
    EXPECT_EQ("epsilon is inf; it should be a number of percent.",
              search([](O *o) { o->epsilon = INFINITY; }));
    EXPECT_EQ("time is -1; it should be 0 or more seconds.", search([](O *o) { o->time = -1; }));
    const double odd[][2] = {{1, 0}, {1, -1}, {1, NAN}, {1e308, 1e308}};
    for (const auto &pair : odd)
        EXPECT_NE(std::string::npos,
                  search([&](O *o) { o->capacities = pair; }).find("capacities[1] is"));
    const int parts[] = {0, 1, 2, 0, 0, 0}, groups[] = {0, 5, 6, 0, 0, 0};
    EXPECT_EQ("start[2] is 2; it should be between 0 and 1.",
              search([&](O *o) { o->start = parts; }));
    EXPECT_EQ("groups[2] is 6; it should be between -1 and 5.",
              search([&](O *o) { o->groups = groups; }));
    EXPECT_NE(std::string::npos, search([&](O *o) {
                                     o->start = numbers;
                                     o->keep_price = INT_MAX;
                                 }).find("the prices total more than 2147483646"));
    zorpelx::Options lengths = search_for(2);
    lengths.sizes = {1, 2, 3};
    EXPECT_EQ("sizes should have a number for each part.", refusal(h, lengths));
    lengths.sizes.clear();
    lengths.start_part = {1};
    EXPECT_EQ("start_part should have a part for each vertex.", refusal(h, lengths));
    lengths.start_part.clear();
    lengths.together = {1};
    EXPECT_EQ("together should have a number for each vertex.", refusal(h, lengths));
}

/* Records as an older header declares them: shorter, and what lies behind them is not theirs. */
TEST(Searches, programs_with_an_older_header_get_the_engine_alone)
{
    const zorpelx::Hypergraph h = random_hypergraph(200, 300, 9);
    const zorpelx_hypergraph view = h.view();
    const std::vector<int> expected = zorpelx::partition(h, options_for(4)).part;
    for (const size_t size :
         {offsetof(zorpelx_options, threads), offsetof(zorpelx_options, epsilon)}) {
        zorpelx_options options;
        zorpelx_result result;
        memset(static_cast<void *>(&options), 0x5a, sizeof options);
        memset(static_cast<void *>(&result), 0x5a, sizeof result);
        const size_t result_size = offsetof(zorpelx_result, connectivity);
        ASSERT_EQ(ZORPELX_OK, zorpelx_options_init(&options, size));
        ASSERT_EQ(ZORPELX_OK, zorpelx_result_init(&result, result_size));
        options.nparts = 4;
        options.nruns = 2;
        options.jobs = 1;
        std::vector<int> part(200);
        ASSERT_EQ(ZORPELX_OK, zorpelx_partition(&view, &options, part.data(), &result));
        EXPECT_EQ(expected, part);
        for (size_t i = size; i < sizeof options; i++)
            ASSERT_EQ(0x5a, reinterpret_cast<const char *>(&options)[i]) << i;
        for (size_t i = result_size; i < sizeof result; i++)
            ASSERT_EQ(0x5a, reinterpret_cast<const char *>(&result)[i]) << i;
    }
}

TEST(Searches, a_solved_hypergraph_takes_no_more_time)
{
    zorpelx::Options options = search_for(3, 0);
    options.time = 1000;
    const zorpelx::Hypergraph h = path_of(12);
    const zorpelx::Partition found = checked(h, options);
    EXPECT_EQ(2, found.result.cut);
    EXPECT_LT(found.result.seconds, 20);
}

TEST(Searches, tiny_hypergraphs_are_no_trouble)
{
    for (int nvtxs = 0; nvtxs < 5; nvtxs++)
        for (const int nparts : {2, 3, 9}) {
            zorpelx::Hypergraph h = path_of(nvtxs);
            zorpelx::Options options = search_for(nparts, 0, ZORPELX_DEFAULT);
            zorpelx::Partition found = zorpelx::partition(h, options);
            EXPECT_EQ(1, found.result.valid) << nvtxs << ' ' << found.result.message;
            h.vwgts.assign(h.vwgts.size(), 0); // no weight at all
            found = zorpelx::partition(h, options);
            EXPECT_EQ(1, found.result.valid) << nvtxs << ' ' << found.result.message;
        }
}
