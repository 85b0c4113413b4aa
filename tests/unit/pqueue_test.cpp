// SPDX-License-Identifier: MIT
/* tests/unit/pqueue_test.cpp: the gain queue, in both its forms. */
#include "spare/pqueue.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <climits>

#include "support.h"

/* A queue that is freed at the end of the scope. */
struct OwnedQueue : PQueue {
    OwnedQueue(int vertices, int span) { PQueueInit__(this, vertices, span); }
    ~OwnedQueue() { PQueueFree__(this); }
    OwnedQueue(const OwnedQueue &) = delete;
    OwnedQueue &operator=(const OwnedQueue &) = delete;
};

constexpr int VERTICES = 10;
constexpr int BUCKET_SPAN = 3 * VERTICES;   // the widest span of the bucket form
constexpr int HEAP_SPAN = 3 * VERTICES + 1; // the narrowest of the heap form

static const std::vector<int> SPANS = {BUCKET_SPAN, HEAP_SPAN};

static void fill(PQueue *queue, const std::vector<int> &gains)
{
    for (size_t v = 0; v < gains.size(); v++) PQueueInsert__(queue, static_cast<int>(v), gains[v]);
}

static int size_of(const PQueue *queue)
{
    return queue->type == PQ_BUCKETS ? queue->bucket.nnodes : queue->tree.nnodes;
}

/* Takes every vertex out. */
static std::vector<int> drain(PQueue *queue)
{
    std::vector<int> order;
    for (int v; (v = PQueueGetMax__(queue)) != -1;) {
        order.push_back(v);
        EXPECT_TRUE(pqueue_ok(queue));
    }
    return order;
}

TEST(PQueue, a_gain_span_of_three_times_the_vertices_gives_buckets_and_one_more_a_heap)
{
    OwnedQueue buckets(VERTICES, BUCKET_SPAN), heap(VERTICES, HEAP_SPAN);
    EXPECT_EQ(buckets.type, PQ_BUCKETS);
    EXPECT_EQ(heap.type, PQ_HEAP);
    EXPECT_EQ(buckets.bucket.maxgain, -BUCKET_SPAN);
    EXPECT_EQ(buckets.bucket.maxnodes, VERTICES);
    EXPECT_EQ(heap.tree.maxnodes, VERTICES);
    EXPECT_EQ(size_of(&buckets), 0);
    EXPECT_EQ(size_of(&heap), 0);
}

TEST(PQueue, three_times_the_vertices_is_not_wrapped)
{
#ifdef ZORPEL_TEST_ASAN
    GTEST_SKIP() << "the sanitizer needs the address space that this test takes away";
#endif
    const Outcome end = run_in_child([] { // refused memory tells the form
        const rlimit limit = {size_t{1} << 30, size_t{1} << 30};
        setrlimit(RLIMIT_AS, &limit);
        PQueue queue; // 3 x 715827883 is negative in 32 bits
        PQueueInit__(&queue, 715827883, 3);
    });
    EXPECT_NE(end.err.find("PQueueInit: queue->"), std::string::npos) << end.err;
    EXPECT_EQ(end.err.find("heap"), std::string::npos) << end.err;
}

TEST(PQueue, more_vertices_than_32_bits_can_refer_to_are_refused)
{
    PQueue queue;
    EXPECT_EXIT(PQueueInit__(&queue, 1 << 30, 5), testing::ExitedWithCode(0),
                "Too many vertices for the gain queue: 1073741824");
}

TEST(PQueue, a_queue_for_no_vertices_is_empty_and_can_be_freed)
{
    for (int span : {0, 5}) {
        PQueue queue;
        PQueueInit__(&queue, 0, span);
        EXPECT_EQ(PQueueGetMax__(&queue), -1);
        EXPECT_TRUE(pqueue_ok(&queue));
        PQueueReset__(&queue);
        PQueueFree__(&queue);
        EXPECT_EQ(queue.bucket.maxnodes + queue.tree.maxnodes, 0);
    }
}

TEST(PQueue, span_0_has_one_bucket_and_maxgain_stays_0)
{
    OwnedQueue queue(4, 0);
    EXPECT_EQ(queue.type, PQ_BUCKETS);
    fill(&queue, {0, 0, 0});
    EXPECT_EQ(queue.bucket.maxgain, 0);
    EXPECT_EQ(PQueueGetMax__(&queue), 2);
    EXPECT_EQ(queue.bucket.maxgain, 0);
    EXPECT_EQ(drain(&queue), (std::vector<int>{1, 0}));
    EXPECT_EQ(queue.bucket.maxgain, 0);
}

TEST(PQueue, equal_gains_leave_last_in_first)
{
    OwnedQueue queue(VERTICES, BUCKET_SPAN);
    fill(&queue, {5, 5, 5});
    EXPECT_EQ(drain(&queue), (std::vector<int>{2, 1, 0}));
}

TEST(PQueue, an_update_to_the_same_gain_changes_no_order)
{
    OwnedQueue queue(VERTICES, BUCKET_SPAN);
    fill(&queue, {5, 5, 5});
    EXPECT_EQ(PQueueUpdate__(&queue, 0, 5, 5), 0);
    EXPECT_EQ(drain(&queue), (std::vector<int>{2, 1, 0}));
}

TEST(PQueue, a_reset_takes_out_the_vertices_that_are_left)
{
    OwnedQueue queue(VERTICES, BUCKET_SPAN);
    fill(&queue, {5, 5, -3});
    EXPECT_EQ(PQueueGetMax__(&queue), 1);
    PQueueReset__(&queue);
    for (int v = 0; v < 3; v++) EXPECT_FALSE(queue_holds(&queue.bucket, v)) << v;
    EXPECT_TRUE(pqueue_ok(&queue));
    fill(&queue, {1});
    EXPECT_TRUE(queue_holds(&queue.bucket, 0));
    EXPECT_EQ(drain(&queue), (std::vector<int>{0}));
}

TEST(PQueue, the_inline_operations_leave_maxgain_to_the_next_look)
{
    OwnedQueue queue(VERTICES, BUCKET_SPAN);
    fill(&queue, {5, 2, 2});
    queue_update(&queue.bucket, 0, 5, -1);
    EXPECT_TRUE(pqueue_ok(&queue));
    queue_update(&queue.bucket, 1, 2, 4); // between the empty best bucket and the rest
    EXPECT_TRUE(pqueue_ok(&queue));
    EXPECT_EQ(bucket_top(&queue.bucket), 1);
    EXPECT_EQ(queue.bucket.maxgain, 4);
    queue_delete(&queue.bucket, 1);
    EXPECT_FALSE(queue_holds(&queue.bucket, 1));
    EXPECT_EQ(drain(&queue), (std::vector<int>{2, 0}));
}

TEST(PQueue, an_update_away_and_back_puts_the_vertex_first)
{
    OwnedQueue queue(VERTICES, BUCKET_SPAN);
    fill(&queue, {5, 5, 5});
    PQueueUpdate__(&queue, 0, 5, 4);
    PQueueUpdate__(&queue, 0, 4, 5);
    EXPECT_EQ(drain(&queue), (std::vector<int>{0, 2, 1}));
}

TEST(PQueue, a_vertex_can_be_deleted_from_any_place_of_its_list)
{
    for (int gone = 0; gone < 3; gone++) {
        OwnedQueue queue(VERTICES, BUCKET_SPAN);
        fill(&queue, {5, 5, 5});
        EXPECT_EQ(PQueueDelete(&queue, gone, 5), 0);
        EXPECT_TRUE(pqueue_ok(&queue));
        std::vector<int> expected = {2, 1, 0};
        expected.erase(expected.begin() + (2 - gone));
        EXPECT_EQ(drain(&queue), expected);
    }
}

TEST(PQueue, deleting_the_best_vertex_lowers_maxgain_to_the_next_one)
{
    OwnedQueue queue(VERTICES, BUCKET_SPAN);
    fill(&queue, {-20, 7, 30});
    EXPECT_EQ(queue.bucket.maxgain, 30);
    PQueueDelete(&queue, 2, 30);
    EXPECT_EQ(queue.bucket.maxgain, 7);
    PQueueDelete(&queue, 1, 7);
    EXPECT_EQ(queue.bucket.maxgain, -20);
    PQueueDelete(&queue, 0, -20);
    EXPECT_EQ(queue.bucket.maxgain, -BUCKET_SPAN);
    EXPECT_EQ(size_of(&queue), 0);
}

TEST(PQueue, a_leap_to_the_top_and_away_leaves_the_next_bucket_known)
{
    OwnedQueue queue(VERTICES, BUCKET_SPAN);
    fill(&queue, {-20, -25, -22, -28});
    PQueueUpdate__(&queue, 1, -25, 30);
    EXPECT_EQ(queue.bucket.maxgain, 30);
    EXPECT_EQ(queue.bucket.nextgain, -20);
    PQueueUpdate__(&queue, 2, -22, 5); // between the two
    EXPECT_EQ(queue.bucket.nextgain, 5);
    PQueueUpdate__(&queue, 3, -28, 30); // into the best bucket itself
    EXPECT_EQ(queue.bucket.nextgain, 5);
    EXPECT_TRUE(pqueue_ok(&queue));
    EXPECT_EQ(PQueueGetMax__(&queue), 3);
    EXPECT_EQ(PQueueGetMax__(&queue), 1);
    EXPECT_EQ(queue.bucket.maxgain, 5);
    EXPECT_EQ(queue.bucket.nextgain, 5);
    EXPECT_EQ(drain(&queue), (std::vector<int>{2, 0}));
}

TEST(PQueue, the_gains_at_both_ends_of_the_span_are_kept)
{
    OwnedQueue queue(VERTICES, BUCKET_SPAN);
    fill(&queue, {-BUCKET_SPAN, BUCKET_SPAN});
    EXPECT_TRUE(pqueue_ok(&queue));
    EXPECT_EQ(drain(&queue), (std::vector<int>{1, 0}));
}

TEST(PQueue, an_empty_queue_gives_minus_1_in_every_question)
{
    const std::vector<int> vwgt(VERTICES, 1);
    for (int span : SPANS) {
        OwnedQueue queue(VERTICES, span);
        for (int round = 0; round < 2; round++) { // new, and emptied again
            EXPECT_EQ(PQueueGetMax__(&queue), -1);
            EXPECT_EQ(PQueueSeeMax__(&queue), -1);
            EXPECT_EQ(PQueueSeeConstraintMax(&queue, 5000, vwgt.data()), -1);
            EXPECT_EQ(PQueueSeeConstraintMax(&queue, 10, vwgt.data()), -1);
            EXPECT_EQ(size_of(&queue), 0);
            PQueueInsert__(&queue, 3, 12);
            EXPECT_EQ(PQueueGetMax__(&queue), 3);
            if (span == BUCKET_SPAN) {
                EXPECT_EQ(queue.bucket.maxgain, -BUCKET_SPAN);
            }
        }
    }
}

TEST(PQueue, seeing_the_maximum_does_not_remove_it)
{
    for (int span : SPANS) {
        OwnedQueue queue(VERTICES, span);
        fill(&queue, {1, 9, 4});
        EXPECT_EQ(PQueueSeeMax__(&queue), 1);
        EXPECT_EQ(PQueueSeeMax__(&queue), 1);
        EXPECT_EQ(size_of(&queue), 3);
        EXPECT_EQ(drain(&queue), (std::vector<int>{1, 2, 0}));
    }
}

TEST(PQueue, a_reset_empties_and_the_queue_can_be_filled_again)
{
    for (int span : SPANS) {
        OwnedQueue queue(VERTICES, span);
        fill(&queue, {1, 9, 4});
        PQueueReset__(&queue);
        EXPECT_EQ(size_of(&queue), 0);
        EXPECT_EQ(PQueueSeeMax__(&queue), -1);
        EXPECT_TRUE(pqueue_ok(&queue));
        fill(&queue, {7, 3, 8});
        EXPECT_TRUE(pqueue_ok(&queue));
        EXPECT_EQ(drain(&queue), (std::vector<int>{2, 0, 1}));
    }
}

TEST(PQueue, a_freed_queue_holds_no_vertices)
{
    for (int span : SPANS) {
        PQueue queue;
        PQueueInit__(&queue, VERTICES, span);
        PQueueFree__(&queue);
        EXPECT_EQ(queue.bucket.maxnodes + queue.tree.maxnodes, 0);
    }
}

TEST(PQueue, in_the_heap_an_insert_does_not_pass_an_equal_parent)
{
    OwnedQueue queue(VERTICES, HEAP_SPAN);
    fill(&queue, {5, 5});
    EXPECT_EQ(drain(&queue), (std::vector<int>{0, 1}));
}

TEST(PQueue, in_the_heap_the_left_of_two_equal_children_rises)
{
    OwnedQueue queue(VERTICES, HEAP_SPAN);
    fill(&queue, {9, 5, 5, 1});
    EXPECT_EQ(drain(&queue), (std::vector<int>{0, 1, 2, 3}));
}

TEST(PQueue, in_the_heap_an_entry_sinking_never_passes_an_equal_child)
{
    OwnedQueue queue(VERTICES, HEAP_SPAN);
    fill(&queue, {9, 5, 5}); // the last entry fills the root and stops above its equal
    EXPECT_EQ(PQueueGetMax__(&queue), 0);
    EXPECT_EQ(PQueueSeeMax__(&queue), 2);
}

TEST(PQueue, in_the_heap_updates_go_up_and_down)
{
    OwnedQueue queue(VERTICES, HEAP_SPAN);
    fill(&queue, {9, 7, 5, 3});
    PQueueUpdate__(&queue, 3, 3, 11);
    EXPECT_TRUE(pqueue_ok(&queue));
    EXPECT_EQ(PQueueSeeMax__(&queue), 3);
    PQueueUpdate__(&queue, 3, 11, -40);
    EXPECT_TRUE(pqueue_ok(&queue));
    EXPECT_EQ(drain(&queue), (std::vector<int>{0, 1, 2, 3}));
}

TEST(PQueue, in_the_heap_deleting_the_last_entry_only_shrinks_it)
{
    OwnedQueue queue(VERTICES, HEAP_SPAN);
    fill(&queue, {9, 7, 8});
    EXPECT_EQ(PQueueDelete(&queue, 2, 8), 0);
    EXPECT_TRUE(pqueue_ok(&queue));
    EXPECT_EQ(drain(&queue), (std::vector<int>{0, 1}));
}

TEST(PQueue, in_the_heap_the_entry_that_fills_a_gap_may_rise_above_it)
{
    OwnedQueue queue(VERTICES, HEAP_SPAN);
    fill(&queue, {100, 10, 50, 5, 6, 40, 45}); // 45, the last, is larger than the parent of 5
    PQueueDelete(&queue, 3, 5);
    EXPECT_TRUE(pqueue_ok(&queue));
    EXPECT_EQ(drain(&queue), (std::vector<int>{0, 2, 6, 5, 1, 4}));
}

TEST(PQueue, in_the_heap_a_delete_ignores_the_gain_it_is_given)
{
    OwnedQueue queue(VERTICES, HEAP_SPAN);
    fill(&queue, {9, 7, 8});
    PQueueDelete(&queue, 0, -12345);
    EXPECT_EQ(drain(&queue), (std::vector<int>{2, 1}));
}

TEST(PQueue, the_heap_takes_gains_of_any_size)
{
    OwnedQueue queue(VERTICES, INT_MAX);
    fill(&queue, {INT_MIN, INT_MAX, 0});
    EXPECT_TRUE(pqueue_ok(&queue));
    EXPECT_EQ(drain(&queue), (std::vector<int>{1, 2, 0}));
}

TEST(PQueue, a_limit_of_1000_is_not_searched_and_one_of_1001_is)
{
    const std::vector<int> vwgt = {9000, 1, 1001, 1002};
    for (int span : SPANS) {
        OwnedQueue queue(VERTICES, span);
        fill(&queue, {9, 2, 5, 7});
        EXPECT_EQ(PQueueSeeConstraintMax(&queue, 1000, vwgt.data()), 0);
        EXPECT_EQ(PQueueSeeConstraintMax(&queue, 0, vwgt.data()), 0);
        EXPECT_EQ(PQueueSeeConstraintMax(&queue, 1001, vwgt.data()), 2);
        EXPECT_EQ(PQueueSeeConstraintMax(&queue, 1002, vwgt.data()), 3);
        EXPECT_EQ(PQueueSeeConstraintMax(&queue, 9000, vwgt.data()), 0);
        EXPECT_EQ(size_of(&queue), 4);
    }
}

TEST(PQueue, when_every_vertex_of_positive_gain_is_too_heavy_the_maximum_is_given_anyway)
{
    const std::vector<int> vwgt = {9000, 8000, 1};
    for (int span : SPANS) {
        OwnedQueue queue(VERTICES, span);
        fill(&queue, {9, 2, 0}); // vertex 2 fits, but has no positive gain
        EXPECT_EQ(PQueueSeeConstraintMax(&queue, 2000, vwgt.data()), 0);
    }
}

TEST(PQueue, without_a_positive_gain_the_maximum_is_given_whatever_its_weight)
{
    const std::vector<int> vwgt = {9000, 1};
    for (int span : SPANS) {
        OwnedQueue queue(VERTICES, span);
        fill(&queue, {0, -1});
        EXPECT_EQ(PQueueSeeConstraintMax(&queue, 2000, vwgt.data()), 0);
    }
}

TEST(PQueue, a_gain_of_1_is_searched)
{
    const std::vector<int> vwgt = {9000, 1500};
    for (int span : SPANS) {
        OwnedQueue queue(VERTICES, span);
        fill(&queue, {2, 1});
        EXPECT_EQ(PQueueSeeConstraintMax(&queue, 2000, vwgt.data()), 1);
    }
}

TEST(PQueue, a_bucket_is_searched_from_its_latest_vertex)
{
    const std::vector<int> vwgt = {10, 10, 9000};
    OwnedQueue queue(VERTICES, BUCKET_SPAN);
    fill(&queue, {5, 5, 5});
    EXPECT_EQ(PQueueSeeConstraintMax(&queue, 2000, vwgt.data()), 1);
}

TEST(PQueue, the_heap_is_searched_by_position_and_stops_by_the_entry_at_half_the_position)
{
    /* Keys by position: 9 8 -1 7 -2 -3 -4 6. At position 2 the half is position 1 (key 8): go on.
     * At 4 it is 2 (key -1): stop, so that vertex 7 is never reached. */
    const std::vector<int> heavy = {9000, 9000, 1, 9000, 1, 1, 1, 10};
    OwnedQueue queue(VERTICES, HEAP_SPAN);
    fill(&queue, {9, 8, -1, 7, -2, -3, -4, 6});
    EXPECT_EQ(PQueueSeeConstraintMax(&queue, 2000, heavy.data()), 0);
    std::vector<int> third_fits = heavy;
    third_fits[3] = 10; // position 3 lies before the stop
    EXPECT_EQ(PQueueSeeConstraintMax(&queue, 2000, third_fits.data()), 3);
}
