// SPDX-License-Identifier: MIT
/* tests/unit/bisection_ok_test.cpp: each invariant of an open bisection and of its queues, broken
 * once by hand, is named by its number.
 */
#include "broken.h"
#include "core/random.h"
#include "levels.h"
#include "refine/move_vertex.h"

/* An open bisection of a level with two-pin hyperedges, larger ones, one of two fixed vertices and
 * one with too many pins to be packed; both queues have vertices. */
template <class Queue> struct Opened {
    Level level;
    OpenBisection<Queue> b = {};

    Opened()
    {
        Nets nets = path_nets(12);
        nets.push_back({0, 3, 7});
        nets.push_back({2, 5, 8, 11});
        nets.push_back({0, 1});
        nets.push_back({});
        for (int v = 0; v < 140; v++) nets.back().push_back(v);
        level = make_level(140, nets, {}, {}, 2);
        Ints sides(140);
        for (int v = 0; v < 140; v++) sides[at(v)] = v % 3 == 0;
        set_sides(level.get(), sides);
        const bool both[2] = {true, true};
        open_bisection(&b, level.get(), 20);
        load_bisection(&b);
        Generator random = own_generator(1);
        fill_queues(&random, &b, both);
    }
    ~Opened() { close_bisection(&b); }

    std::string broken(MoveRules rules = QUEUED_GAINS)
    {
        return broken_rule([&] { return bisection_ok(&b, rules); });
    }
    template <typename Field, typename Value> std::string with(Field &field, Value value)
    {
        return broken_by(field, value, [&] { return bisection_ok(&b, QUEUED_GAINS); });
    }
};

template <class Queue> class BisectionOk : public testing::Test
{
};
using Forms = testing::Types<BucketQueue, HeapQueue>;
TYPED_TEST_SUITE(BisectionOk, Forms);

TYPED_TEST(BisectionOk, a_loaded_bisection_is_whole)
{
    Opened<TypeParam> opened;
    EXPECT_EQ(opened.broken(), "");
    EXPECT_EQ(opened.broken(ALL_GAINS), "");
}

TYPED_TEST(BisectionOk, sides_and_weights_are_B1)
{
    Opened<TypeParam> opened;
    EXPECT_EQ(opened.with(opened.b.side[5], 2), "B1");
    EXPECT_EQ(opened.with(opened.b.pwgts[0], opened.b.pwgts[0] + 1), "B1");
    EXPECT_EQ(opened.with(opened.b.pwgts[1], -1), "B1");
}

TYPED_TEST(BisectionOk, counts_are_B2_B3_and_B5)
{
    Opened<TypeParam> opened;
    const int large = opened.level->nnets - 1;
    ASSERT_TRUE(is_large(opened.b.counts[large]));
    for (const int e : {0, 11, large}) {
        const PackedCounts kept = opened.b.counts[e];
        NetCounts *const list = is_large(kept) ? &opened.b.large[low_word(kept)] : nullptr;
        const NetCounts counts = net_counts(&opened.b, e);
        const auto change = [&](NetCounts wrong) {
            if (list != nullptr) *list = wrong;
            if (list == nullptr) opened.b.counts[e] = (kept & PACKED_FIXED) | pack_counts(&wrong);
            const std::string rule = opened.broken();
            opened.b.counts[e] = kept;
            if (list != nullptr) *list = counts;
            return rule;
        };
        NetCounts wrong = counts;
        std::swap(wrong.npins[0], wrong.npins[1]);
        if (wrong.npins[0] == wrong.npins[1]) wrong.npins[0]++;
        EXPECT_EQ(change(wrong), "B2") << e;
        wrong = counts;
        wrong.xor0 ^= 4;
        EXPECT_EQ(change(wrong), "B3") << e;
        wrong = counts;
        wrong.nqueued += wrong.nqueued > 0 ? -1 : 1;
        EXPECT_EQ(change(wrong), "B5") << e;
    }
}

TYPED_TEST(BisectionOk, exact_rules_do_without_B5)
{
    Opened<TypeParam> opened;
    opened.b.counts[5] -= packed_byte(1, NQUEUED_SHIFT);
    EXPECT_EQ(opened.broken(ALL_GAINS), "");
    EXPECT_EQ(opened.broken(QUEUED_GAINS), "B5");
}

TYPED_TEST(BisectionOk, what_stays_of_hyperedges_is_B4)
{
    Opened<TypeParam> opened;
    FmNet *const net = &opened.b.nets[11];
    EXPECT_EQ(opened.with(net->pinxor, net->pinxor ^ 1), "B4");
    EXPECT_EQ(opened.with(net->wgt, net->wgt + 1), "B4");
    EXPECT_EQ(opened.with(net->first, net->first + 1), "B4");
    EXPECT_EQ(opened.with(net->end, net->end - 1), "B4");
}

TYPED_TEST(BisectionOk, gains_are_B6)
{
    Opened<TypeParam> opened;
    gain_of(&opened.b, 0)++; // fixed, so that only exact rules keep it
    EXPECT_EQ(opened.broken(QUEUED_GAINS), "");
    EXPECT_EQ(opened.broken(ALL_GAINS), "B6");
    gain_of(&opened.b, 0)--;
    opened.b.level = opened.level.get();
    const int v = 4, gain = gain_of(&opened.b, v);
    queue_update(&opened.b.queues[side_of(&opened.b, v)], v, gain, gain + 1);
    gain_of(&opened.b, v)++; // the entry follows
    EXPECT_EQ(opened.broken(), "B6");
}

TYPED_TEST(BisectionOk, places_in_queues_are_B7)
{
    Opened<TypeParam> opened;
    const int v = 4, side = side_of(&opened.b, v), gain = gain_of(&opened.b, v);
    gain_of(&opened.b, v)++;
    EXPECT_EQ(opened.broken(), "B7") << "not under its gain";
    EXPECT_EQ(opened.broken(ALL_GAINS_UNQUEUED), "B6") << "where entries need not follow";
    gain_of(&opened.b, v)--;
    queue_insert(&opened.b.queues[side_of(&opened.b, 1)], 1, gain_of(&opened.b, 1));
    EXPECT_EQ(opened.broken(ALL_GAINS), "B7") << "a fixed vertex";
    queue_delete(&opened.b.queues[side_of(&opened.b, 1)], 1);
    EXPECT_EQ(opened.broken(), "");
    queue_delete(&opened.b.queues[side], v);
    queue_insert(&opened.b.queues[1 - side], v, gain);
    EXPECT_EQ(opened.broken(ALL_GAINS), "B7") << "in the queue of the other side";
}

TYPED_TEST(BisectionOk, the_cut_is_B8)
{
    Opened<TypeParam> opened;
    EXPECT_EQ(opened.with(opened.b.cut, opened.b.cut + 1), "B8");
    opened.b.single = true; // drifts
    EXPECT_EQ(opened.with(opened.b.cut, opened.b.cut + 1), "");
}

TYPED_TEST(BisectionOk, marks_and_places_of_hyperedges_are_B9)
{
    Opened<TypeParam> opened;
    const int large = opened.level->nnets - 1;
    PackedCounts *const counts = opened.b.counts;
    EXPECT_EQ(opened.with(counts[11], counts[11] ^ PACKED_FIXED), "B9") << "has a fixed pin";
    EXPECT_EQ(opened.with(counts[5], counts[5] ^ PACKED_FIXED), "B9") << "has none";
    EXPECT_EQ(opened.with(counts[large], counts[large] + 1), "B9");
}

/* Moves and undoing them keep every invariant, under each of the rules. */
TYPED_TEST(BisectionOk, moves_keep_the_bisection_whole)
{
    Opened<TypeParam> exact, queued;
    Ints moved;
    for (const int v : {4, 9, 2, 7, 3, 11}) {
        queue_delete(&exact.b.queues[side_of(&exact.b, v)], v);
        move_vertex<ALL_GAINS>(&exact.b, v);
        EXPECT_EQ(exact.broken(ALL_GAINS), "");
        queue_delete(&queued.b.queues[side_of(&queued.b, v)], v);
        move_vertex<QUEUED_GAINS>(&queued.b, v);
        EXPECT_EQ(queued.broken(), "");
        moved.push_back(v);
    }
    empty_queues(&exact.b);
    const int cut = exact.b.cut;
    for (; !moved.empty(); moved.pop_back()) undo_vertex(&exact.b, moved.back());
    EXPECT_EQ(exact.broken(ALL_GAINS), "");
    EXPECT_NE(exact.b.cut, cut);
    Opened<TypeParam> fresh;
    EXPECT_EQ(exact.b.cut, fresh.b.cut);
    for (int v = 0; v < 140; v++) EXPECT_EQ(gain_of(&exact.b, v), gain_of(&fresh.b, v)) << v;
}

/* ---- the queues alone ---- */

struct Buckets {
    BucketQueue queue = {};
    Buckets()
    {
        open_queues(&queue, 1, 10, 30);
        for (const int v : {1, 2, 3, 4}) queue_insert(&queue, v, v < 3 ? 9 : v);
    }
    ~Buckets() { close_queues(&queue, 1); }
    template <typename Field, typename Value> std::string with(Field &field, Value value)
    {
        return broken_by(field, value, [&] { return queue_ok(&queue); });
    }
};

TEST(QueueOk, buckets_name_the_broken_rule)
{
    Buckets buckets;
    BucketQueue *const queue = &buckets.queue;
    ASSERT_EQ(broken_rule([&] { return queue_ok(queue); }), "");
    EXPECT_EQ(buckets.with(queue->nnodes, -1), "Q1");
    EXPECT_EQ(buckets.with(queue->nnodes, 11), "Q1");
    EXPECT_EQ(buckets.with(queue->nodes[1].slot, 0), "Q2");
    EXPECT_EQ(buckets.with(queue->nodes[2].next, place_of(3)), "Q2");
    EXPECT_EQ(buckets.with(queue->nodes[1].next, 7), "Q2");
    EXPECT_EQ(buckets.with(queue->nnodes, 3), "Q3");
    EXPECT_EQ(buckets.with(queue->nnodes, 5), "Q3");
    EXPECT_EQ(buckets.with(queue->maxgain, 8), "Q4");
    EXPECT_EQ(buckets.with(queue->nextgain, 3), "Q5");
    EXPECT_EQ(buckets.with(queue->nextgain, 10), "Q5");
}

struct Heap {
    HeapQueue queue = {};
    Heap()
    {
        open_queues(&queue, 1, 10, 1000);
        for (const int v : {1, 2, 3, 4}) queue_insert(&queue, v, v < 3 ? 900 : v);
    }
    ~Heap() { close_queues(&queue, 1); }
    template <typename Field, typename Value> std::string with(Field &field, Value value)
    {
        return broken_by(field, value, [&] { return queue_ok(&queue); });
    }
};

TEST(QueueOk, a_heap_names_the_broken_rule)
{
    Heap heap;
    HeapQueue *const queue = &heap.queue;
    ASSERT_EQ(broken_rule([&] { return queue_ok(queue); }), "");
    EXPECT_EQ(heap.with(queue->nnodes, -1), "P1");
    EXPECT_EQ(heap.with(queue->nnodes, 11), "P1");
    EXPECT_EQ(heap.with(queue->heap[1].key, 901), "P2");
    EXPECT_EQ(heap.with(queue->locator[3], 1), "P3");
    EXPECT_EQ(heap.with(queue->heap[2].val, 10), "P3");
    EXPECT_EQ(heap.with(queue->locator[7], 2), "P4");
    EXPECT_EQ(heap.with(queue->nnodes, 3), "P4");
}

/* ---- asserts of the inline operations, which release builds do without ---- */

#ifndef NDEBUG
TEST(QueueAsserts, what_callers_must_not_do_ends_the_process)
{
    Buckets buckets;
    EXPECT_DEATH(queue_insert(&buckets.queue, 1, 9), "queue_holds") << "twice";
    EXPECT_DEATH(queue_insert(&buckets.queue, 5, 31), "is_gain_of");
    EXPECT_DEATH(queue_insert(&buckets.queue, 10, 0), "is_vertex_of");
    EXPECT_DEATH(queue_delete(&buckets.queue, 5), "queue_holds");
    EXPECT_DEATH(bucket_unlink(&buckets.queue, 5), "queue_holds");
    EXPECT_DEATH(queue_update(&buckets.queue, 5, 1, 2), "queue_holds");
    Heap heap;
    EXPECT_DEATH(queue_insert(&heap.queue, 1, 9), "queue_holds");
    EXPECT_DEATH(queue_delete(&heap.queue, 5), "queue_holds");
    EXPECT_DEATH(queue_update(&heap.queue, 3, 4, 5), "oldgain");
}

TEST(BisectionAsserts, a_queued_or_fixed_vertex_must_not_move)
{
    Opened<BucketQueue> opened;
    EXPECT_DEATH(move_vertex<ALL_GAINS>(&opened.b, 4), "queue_holds");
    EXPECT_DEATH(undo_vertex(&opened.b, 1), "nfixed");
}
#endif
