// SPDX-License-Identifier: MIT
/* tests/unit/entry_errors_test.cpp: what the entry points refuse, in which order and words. */
#include <gtest/gtest.h>

#include <climits>

#include "calls.h"

static const Partitioner PARTITIONERS[] = {ZORPEL_PartRecursive, ZORPEL_PartRecursiveInternal};

/* Arguments of a call, each one changeable. */
struct Arguments {
    int nvtxs = 4, nhedges = 3;
    std::vector<int> vwgts = {1, 1, 1, 1}, eptr = {0, 2, 4, 6}, eind = {0, 1, 1, 2, 2, 3};
    std::vector<int> hewgts = {1, 1, 1};
    bool no_eptr = false, no_eind = false, no_options = false, no_part = false, no_cut = false;
    int nparts = 2, ubfactor = 5;
    Options options = quick_options();
    std::vector<int> part = {0, 0, 0, 0};
};

static void call(Partitioner entry, Arguments args)
{
    int cut;
    entry(args.nvtxs, args.nhedges, args.vwgts.data(), args.no_eptr ? nullptr : args.eptr.data(),
          args.no_eind ? nullptr : args.eind.data(), args.hewgts.data(), args.nparts, args.ubfactor,
          args.no_options ? nullptr : args.options.data(),
          args.no_part ? nullptr : args.part.data(), args.no_cut ? nullptr : &cut);
}

static void refine_entry(int nvtxs, int nhedges, const int *vwgts, const int *eptr, const int *eind,
                         const int *hewgts, int, int ubfactor, const int *options, int *part,
                         int *edgecut)
{
    ZORPEL_2WayRefine(nvtxs, nhedges, vwgts, eptr, eind, hewgts, ubfactor, options, part, edgecut);
}

/* The sentence with which the call ends the process, "" if it comes back. */
static std::string refusal_of(Partitioner entry, const Arguments &args)
{
    const Outcome end = run_in_child([&] { call(entry, args); });
    EXPECT_EQ(end.out, "");
    if (end.status == RETURNED) return end.err;
    EXPECT_EQ(end.status, 0);
    EXPECT_GE(end.err.size(), 2u);
    EXPECT_EQ(end.err.substr(end.err.size() - 2), "\n\n");
    return end.err.substr(0, end.err.size() - 2);
}

/* The same from both partitioners, which must agree. */
static std::string refusal(const Arguments &args)
{
    const std::string first = refusal_of(PARTITIONERS[0], args);
    EXPECT_EQ(refusal_of(PARTITIONERS[1], args), first);
    return first;
}

static std::string option_refusal(int slot, int value)
{
    Arguments args;
    args.options = options_with(slot, value);
    return refusal(args);
}

/* The refusal after a change of good arguments. */
template <class Change> static std::string refused(Change change)
{
    Arguments args;
    change(&args);
    return refusal(args);
}

template <class Change> static std::string refine_refused(Change change)
{
    Arguments args;
    change(&args);
    return refusal_of(refine_entry, args);
}

TEST(EntryErrors, good_arguments_are_not_refused)
{
    EXPECT_EQ(refused([](Arguments *) {}), "");
    EXPECT_EQ(refine_refused([](Arguments *) {}), "");
}

TEST(EntryErrors, fewer_than_2_parts_are_refused)
{
    for (int nparts : {1, 0, -1, INT_MIN})
        EXPECT_EQ(refused([=](Arguments *a) { a->nparts = nparts; }),
                  "Nparts should be at least 2.");
}

TEST(EntryErrors, ubfactor_0_and_50_are_refused)
{
    for (int ubfactor : {0, 50, -1, INT_MIN, INT_MAX})
        EXPECT_EQ(refused([=](Arguments *a) { a->ubfactor = ubfactor; }),
                  "UBfactor should be between 1 and 49.");
    for (int ubfactor : {1, 49})
        EXPECT_EQ(refused([=](Arguments *a) { a->ubfactor = ubfactor; }), "");
}

TEST(EntryErrors, each_option_is_refused_on_both_sides_of_its_range)
{
    struct Range {
        int slot, least, most;
        const char *message;
    };
    const Range ranges[] = {
        {ZORPEL_OPT_CTYPE, 1, 5, "Ctype should be between 1 and 5."},
        {ZORPEL_OPT_RTYPE, 1, 3, "Rtype should be between 1 and 3."},
        {ZORPEL_OPT_VCYCLE, 0, 3, "Vcycle should be between 0 and 3."},
        {ZORPEL_OPT_RECONST, 0, 1, "Reconst should be between 0 and 1."},
        {ZORPEL_OPT_FIXED, 0, 1, "Fixed should be between 0 and 1."},
    };
    for (const Range &range : ranges) {
        for (int bad : {range.least - 1, range.most + 1, INT_MIN, INT_MAX})
            EXPECT_EQ(option_refusal(range.slot, bad), range.message) << bad;
        for (int good : {range.least, range.most})
            EXPECT_EQ(option_refusal(range.slot, good), "") << good;
    }
    for (int bad : {0, -1, INT_MIN})
        EXPECT_EQ(option_refusal(ZORPEL_OPT_NRUNS, bad), "Nruns should be at least 1.");
    EXPECT_EQ(option_refusal(ZORPEL_OPT_NRUNS, 1), "");
}

TEST(EntryErrors, seed_and_traces_are_not_checked)
{
    EXPECT_EQ(option_refusal(ZORPEL_OPT_SEED, INT_MIN), "");
    EXPECT_EQ(option_refusal(ZORPEL_OPT_SEED, INT_MAX), "");
    EXPECT_EQ(option_refusal(ZORPEL_OPT_DBGLVL, 64), ""); // a bit without a trace
}

TEST(EntryErrors, the_checks_come_in_their_order_when_everything_is_wrong)
{
    Arguments args;
    args.nparts = 1;
    args.ubfactor = 0;
    args.options = {1, 0, 0, 4, -1, 2, 2, 1, 0};
    args.nvtxs = -1;
    args.nhedges = -1;
    args.eptr[0] = 1;
    args.vwgts[1] = -3;
    args.hewgts[2] = -1;
    args.no_cut = true;
    args.eind = {0, 1, 1, 4, 2, 2};
    EXPECT_EQ(refusal(args), "Nparts should be at least 2.");
    args.nparts = 2;
    EXPECT_EQ(refusal(args), "UBfactor should be between 1 and 49.");
    args.ubfactor = 5;
    EXPECT_EQ(refusal(args), "Nruns should be at least 1.");
    args.options[ZORPEL_OPT_NRUNS] = 1;
    EXPECT_EQ(refusal(args), "Ctype should be between 1 and 5.");
    args.options[ZORPEL_OPT_CTYPE] = 1;
    EXPECT_EQ(refusal(args), "Rtype should be between 1 and 3.");
    args.options[ZORPEL_OPT_RTYPE] = 1;
    EXPECT_EQ(refusal(args), "Vcycle should be between 0 and 3.");
    args.options[ZORPEL_OPT_VCYCLE] = 0;
    EXPECT_EQ(refusal(args), "Reconst should be between 0 and 1.");
    args.options[ZORPEL_OPT_RECONST] = 0;
    EXPECT_EQ(refusal(args), "Fixed should be between 0 and 1.");
    args.options[ZORPEL_OPT_FIXED] = 1;
    EXPECT_EQ(refusal(args), "The number of vertices should not be negative.");
    args.nvtxs = 4;
    EXPECT_EQ(refusal(args), "The number of hyperedges should not be negative.");
    args.nhedges = 3;
    EXPECT_EQ(refusal(args), "The first hyperedge should start at 0.");
    args.eptr[0] = 0;
    EXPECT_EQ(refusal(args), "The weight of vertex 1 should not be negative.");
    args.vwgts[1] = 1;
    EXPECT_EQ(refusal(args), "The weight of hyperedge 2 should not be negative.");
    args.hewgts[2] = 1;
    EXPECT_EQ(refusal(args), "The place for the cut is missing.");
    args.no_cut = false;
    args.part = {-1, 5, 2, 0};
    EXPECT_EQ(refusal(args), "Hyperedge 1 lists vertex 4; there are 4, counted from 0.");
    args.eind[3] = 2;
    EXPECT_EQ(refusal(args), "Hyperedge 2 lists vertex 2 more than once.");
    args.eind[5] = 3;
    EXPECT_EQ(refusal(args), "The part of vertex 1 should be between -1 and 1.");
    args.part = {-1, 1, 1, 0};
    EXPECT_EQ(refusal(args), "");
}

TEST(EntryErrors, missing_arrays_are_refused)
{
    EXPECT_EQ(refused([](Arguments *a) { a->no_options = true; }), "The options array is missing.");
    EXPECT_EQ(refused([](Arguments *a) { a->no_eptr = true; }),
              "The array of hyperedge starts is missing.");
    EXPECT_EQ(refused([](Arguments *a) { a->no_eind = true; }),
              "The array of the hyperedges' vertices is missing.");
    EXPECT_EQ(refused([](Arguments *a) {
                  a->no_eind = true;
                  a->eptr = {0, 0, 1, 1}; // a single entry
              }),
              "The array of the hyperedges' vertices is missing.");
    EXPECT_EQ(refused([](Arguments *a) {
                  a->no_eind = true;
                  a->eptr = {0, 0, 0, 0};
              }),
              "");
    EXPECT_EQ(refused([](Arguments *a) { a->no_part = true; }), "The part array is missing.");
    EXPECT_EQ(refused([](Arguments *a) { a->no_cut = true; }), "The place for the cut is missing.");
}

TEST(EntryErrors, starts_that_fall_are_refused)
{
    EXPECT_EQ(refused([](Arguments *a) { a->eptr[2] = 1; }), "Hyperedge 1 ends before it starts.");
    EXPECT_EQ(refused([](Arguments *a) { a->eptr[1] = -1; }), "Hyperedge 0 ends before it starts.");
    EXPECT_EQ(refused([](Arguments *a) { a->eptr[0] = -2; }),
              "The first hyperedge should start at 0.");
}

TEST(EntryErrors, vertices_outside_their_range_are_refused)
{
    for (int bad : {-1, 4, INT_MIN, INT_MAX}) {
        const auto change = [=](Arguments *a) { a->eind[5] = bad; };
        const std::string sentence =
            "Hyperedge 2 lists vertex " + std::to_string(bad) + "; there are 4, counted from 0.";
        EXPECT_EQ(refused(change), sentence);
        EXPECT_EQ(refine_refused(change), sentence);
    }
    EXPECT_EQ(refused([](Arguments *a) {
                  a->nvtxs = 0;
                  a->vwgts.clear();
                  a->part.clear();
              }),
              "Hyperedge 0 lists vertex 0; there are 0, counted from 0.");
}

TEST(EntryErrors, a_vertex_that_a_hyperedge_lists_again_is_refused)
{
    const auto change = [](Arguments *a) { // 0, 0, 2, 2 in the last one
        a->eptr = {0, 2, 2, 6};
        a->eind = {3, 0, 0, 0, 2, 2};
    };
    EXPECT_EQ(refused(change), "Hyperedge 2 lists vertex 0 more than once.");
    EXPECT_EQ(refine_refused(change), "Hyperedge 2 lists vertex 0 more than once.");
    const auto apart = [](Arguments *a) {
        a->eptr = {0, 0, 3, 6};
        a->eind = {3, 0, 3, 0, 1, 2};
    };
    EXPECT_EQ(refused(apart), "Hyperedge 1 lists vertex 3 more than once.");
    EXPECT_EQ(refine_refused(apart), "Hyperedge 1 lists vertex 3 more than once.");
}

TEST(EntryErrors, counts_that_leave_no_room_for_an_index_behind_them_are_refused)
{
    for (int bad : {INT_MAX, INT_MAX - 1022}) {
        EXPECT_EQ(refused([=](Arguments *a) { a->nvtxs = bad; }),
                  "The number of vertices should be at most 2147482624.");
        EXPECT_EQ(refused([=](Arguments *a) { a->nhedges = bad; }),
                  "The number of hyperedges should be at most 2147482624.");
        EXPECT_EQ(refused([=](Arguments *a) { a->eptr[3] = bad; }),
                  "The number of pins should be at most 2147482624.");
        EXPECT_EQ(refine_refused([=](Arguments *a) { a->nhedges = bad; }),
                  "The number of hyperedges should be at most 2147482624.");
    }
}

TEST(EntryErrors, parts_and_free_vertices_beyond_a_count_are_refused_with_the_fixed_option)
{
    const auto change = [](Arguments *a) {
        a->nparts = INT_MAX - 1025;
        a->part = {-1, -1, 0, -1};
        a->options[ZORPEL_OPT_FIXED] = 1;
    };
    EXPECT_EQ(refused(change),
              "The parts and the free vertices together should number at most 2147482624.");
    EXPECT_EQ(refused([](Arguments *a) {
                  a->nparts = INT_MAX;
                  a->part = {3, 2, 1, 0};
                  a->options[ZORPEL_OPT_FIXED] = 1;
              }),
              "The parts and the free vertices together should number at most 2147482624.");
}

TEST(EntryErrors, negative_weights_are_refused)
{
    EXPECT_EQ(refused([](Arguments *a) { a->vwgts[3] = -1; }),
              "The weight of vertex 3 should not be negative.");
    EXPECT_EQ(refused([](Arguments *a) { a->hewgts[0] = INT_MIN; }),
              "The weight of hyperedge 0 should not be negative.");
}

TEST(EntryErrors, weights_totalling_2147483647_are_refused)
{
    EXPECT_EQ(refused([](Arguments *a) {
                  a->vwgts = {INT_MAX, 0, 0, 0};
              }),
              "The vertex weights should total at most 2147483646.");
    EXPECT_EQ(refused([](Arguments *a) {
                  a->hewgts = {INT_MAX - 2, 1, 1};
              }),
              "The hyperedge weights should total at most 2147483646.");
    EXPECT_EQ(refused([](Arguments *a) {
                  a->vwgts = {INT_MAX, INT_MAX, 2, 0};
              }), // 0 in 32 bits
              "The vertex weights should total at most 2147483646.");
    EXPECT_EQ(refused([](Arguments *a) { a->vwgts = {INT_MAX - 1, 0, 0, 0}; }), "");
    EXPECT_EQ(refused([](Arguments *a) { a->hewgts = {INT_MAX - 3, 1, 1}; }), "");
}

TEST(EntryErrors, pre_assignments_outside_the_parts_are_refused_only_with_the_fixed_option)
{
    for (int bad : {-2, 3, INT_MIN, INT_MAX}) {
        Arguments args;
        args.nparts = 3;
        args.part = {0, -1, bad, 2};
        EXPECT_EQ(refusal(args), "");
        args.options[ZORPEL_OPT_FIXED] = 1;
        EXPECT_EQ(refusal(args), "The part of vertex 2 should be between -1 and 2.");
    }
}

TEST(EntryErrors, a_refused_call_ends_the_process_in_an_orderly_way)
{
    Arguments args;
    args.ubfactor = 0;
    const Outcome end = run_in_child([&] {
        atexit([] { printf("farewell"); });
        call(ZORPEL_PartRecursive, args);
    });
    EXPECT_EQ(end.out, "farewell");
    EXPECT_EQ(end.status, 0);
}

TEST(EntryErrors, refining_makes_the_same_checks_of_the_arrays)
{
    EXPECT_EQ(refine_refused([](Arguments *a) { a->no_options = true; }),
              "The options array is missing.");
    EXPECT_EQ(refine_refused([](Arguments *a) { a->nvtxs = -1; }),
              "The number of vertices should not be negative.");
    EXPECT_EQ(refine_refused([](Arguments *a) { a->nhedges = -1; }),
              "The number of hyperedges should not be negative.");
    EXPECT_EQ(refine_refused([](Arguments *a) { a->eptr[2] = 1; }),
              "Hyperedge 1 ends before it starts.");
    EXPECT_EQ(refine_refused([](Arguments *a) { a->vwgts[3] = -1; }),
              "The weight of vertex 3 should not be negative.");
    EXPECT_EQ(refine_refused([](Arguments *a) {
                  a->hewgts = {INT_MAX, 0, 0};
              }),
              "The hyperedge weights should total at most 2147483646.");
    EXPECT_EQ(refine_refused([](Arguments *a) { a->no_part = true; }),
              "The part array is missing.");
    EXPECT_EQ(refine_refused([](Arguments *a) { a->no_cut = true; }),
              "The place for the cut is missing.");
}

TEST(EntryErrors, refining_refuses_sides_other_than_0_and_1)
{
    for (int bad : {-1, 2})
        EXPECT_EQ(refine_refused([=](Arguments *a) { a->part[1] = bad; }),
                  "The part of vertex 1 should be between 0 and 1.");
}
