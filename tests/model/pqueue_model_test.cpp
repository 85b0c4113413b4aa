// SPDX-License-Identifier: MIT
/* tests/model/pqueue_model_test.cpp: the gain queue against naive twins under random operations.
 *
 * The twin of the bucket form is one list, latest entry first, searched from end to end; the twin
 * of the heap form moves its entries by exchanges and finds vertices by looking at all of them.
 * After each operation the answers must agree and the queue must keep its invariants. A failure
 * prints the seed and the shortest sequence of operations found that still fails.
 */
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "spare/pqueue.h"
#include "shrink.h"

struct TwinEntry {
    int gain, vertex;
};
using Twin = std::vector<TwinEntry>;

static size_t find_vertex(const Twin &twin, int vertex)
{
    size_t i = 0;
    while (i < twin.size() && twin[i].vertex != vertex) i++;
    return i;
}

/* Bucket form: twin[0] came in last. */
static void list_erase(Twin *twin, int vertex)
{
    twin->erase(twin->begin() + static_cast<std::ptrdiff_t>(find_vertex(*twin, vertex)));
}

static void list_insert(Twin *twin, int vertex, int gain)
{
    twin->insert(twin->begin(), {gain, vertex});
}

static int list_max(const Twin &twin)
{
    if (twin.empty()) return -1;
    TwinEntry best = twin.front();
    for (const TwinEntry &entry : twin)
        if (entry.gain > best.gain) best = entry;
    return best.vertex;
}

static int list_constraint_max(Twin twin, int limit, const std::vector<int> &vwgt)
{
    std::stable_sort(twin.begin(), twin.end(),
                     [](const TwinEntry &a, const TwinEntry &b) { return a.gain > b.gain; });
    for (const TwinEntry &entry : twin)
        if (entry.gain >= 1 && vwgt[static_cast<size_t>(entry.vertex)] <= limit)
            return entry.vertex;
    return twin.empty() ? -1 : twin.front().vertex;
}

/* Heap form: twin is the heap. */
static void heap_rise(Twin *twin, size_t i)
{
    for (; i > 0 && (*twin)[(i - 1) / 2].gain < (*twin)[i].gain; i = (i - 1) / 2)
        std::swap((*twin)[i], (*twin)[(i - 1) / 2]);
}

static void heap_sink(Twin *twin, size_t i)
{
    for (;;) {
        size_t child = 2 * i + 1;
        if (child >= twin->size()) return;
        if (child + 1 < twin->size() && (*twin)[child + 1].gain > (*twin)[child].gain) child++;
        if ((*twin)[child].gain <= (*twin)[i].gain) return;
        std::swap((*twin)[child], (*twin)[i]);
        i = child;
    }
}

static void heap_erase(Twin *twin, int vertex)
{
    const size_t i = find_vertex(*twin, vertex);
    const int gone = (*twin)[i].gain;
    const TwinEntry last = twin->back();
    twin->pop_back();
    if (last.vertex == vertex) return;
    (*twin)[i] = last;
    if (last.gain > gone)
        heap_rise(twin, i);
    else
        heap_sink(twin, i);
}

static int heap_constraint_max(const Twin &twin, int limit, const std::vector<int> &vwgt)
{
    for (size_t i = 0; i < twin.size(); i++) {
        if (twin[i].gain >= 1 && vwgt[static_cast<size_t>(twin[i].vertex)] <= limit)
            return twin[i].vertex;
        if (twin[i].gain < 1 && twin[i / 2].gain < 1) break;
    }
    return twin.empty() ? -1 : twin.front().vertex;
}

enum Kind { INSERT, DELETE, UPDATE, GETMAX, SEE, RESET, KINDS };
static const char *const KIND_NAMES[] = {"insert", "delete", "update", "getmax", "see", "reset"};

/* One operation. An insert of a present vertex, or a delete or update of an absent one, is left
 * out, so that every part of a sequence is a sequence. */
struct Step {
    Kind kind;
    int vertex, gain;
    int limit; // of the constrained look after the operation
};

struct Setting {
    int maxnodes, span;
    std::vector<int> vwgt;
};

static void twin_insert(int form, Twin *twin, int vertex, int gain)
{
    if (form == PQ_BUCKETS) {
        list_insert(twin, vertex, gain);
    } else {
        twin->push_back({gain, vertex});
        heap_rise(twin, twin->size() - 1);
    }
}

static void twin_erase(int form, Twin *twin, int vertex)
{
    if (form == PQ_BUCKETS)
        list_erase(twin, vertex);
    else
        heap_erase(twin, vertex);
}

static void twin_update(int form, Twin *twin, int vertex, int gain)
{
    const size_t i = find_vertex(*twin, vertex);
    const int old = (*twin)[i].gain;
    if (old == gain) return;
    if (form == PQ_BUCKETS) {
        list_erase(twin, vertex);
        list_insert(twin, vertex, gain);
        return;
    }
    (*twin)[i].gain = gain;
    if (old < gain)
        heap_rise(twin, i);
    else
        heap_sink(twin, i);
}

static int twin_max(int form, const Twin &twin)
{
    if (form == PQ_BUCKETS) return list_max(twin);
    return twin.empty() ? -1 : twin.front().vertex;
}

static int twin_constraint_max(int form, const Twin &twin, int limit, const std::vector<int> &vwgt)
{
    if (limit <= 1000) return twin_max(form, twin);
    return form == PQ_BUCKETS ? list_constraint_max(twin, limit, vwgt)
                              : heap_constraint_max(twin, limit, vwgt);
}

/* Applies the step to both; false if GetMax disagrees. */
static bool apply(const Step &step, PQueue *queue, Twin *twin)
{
    const size_t i = find_vertex(*twin, step.vertex);
    const bool present = i < twin->size();
    switch (step.kind) {
    case INSERT:
        if (present) break;
        PQueueInsert__(queue, step.vertex, step.gain);
        twin_insert(queue->type, twin, step.vertex, step.gain);
        break;
    case DELETE:
        if (!present) break;
        PQueueDelete(queue, step.vertex, (*twin)[i].gain);
        twin_erase(queue->type, twin, step.vertex);
        break;
    case UPDATE:
        if (!present) break;
        PQueueUpdate__(queue, step.vertex, (*twin)[i].gain, step.gain);
        twin_update(queue->type, twin, step.vertex, step.gain);
        break;
    case GETMAX: {
        const int wanted = twin_max(queue->type, *twin);
        if (PQueueGetMax__(queue) != wanted) return false;
        if (wanted != -1) twin_erase(queue->type, twin, wanted);
        break;
    }
    case RESET:
        PQueueReset__(queue);
        twin->clear();
        break;
    default:
        break;
    }
    return true;
}

/* Buckets: maxgain is the best gain before anybody looks for it. */
static bool maxgain_agrees(const PQueue *queue, const Twin &twin)
{
    if (queue->type != PQ_BUCKETS) return true;
    int best = -queue->bucket.gainspan;
    for (const TwinEntry &entry : twin) best = std::max(best, entry.gain);
    return queue->bucket.maxgain == best;
}

static bool agree(PQueue *queue, const Twin &twin, int limit, const Setting &setting)
{
    const int nnodes = queue->type == PQ_BUCKETS ? queue->bucket.nnodes : queue->tree.nnodes;
    return pqueue_ok(queue) && maxgain_agrees(queue, twin) &&
           nnodes == static_cast<int>(twin.size()) &&
           PQueueSeeMax__(queue) == twin_max(queue->type, twin) &&
           PQueueSeeConstraintMax(queue, limit, setting.vwgt.data()) ==
               twin_constraint_max(queue->type, twin, limit, setting.vwgt);
}

/* Whether queue and twin part ways somewhere in the sequence, or while they are drained. */
static bool fails(const Setting &setting, const std::vector<Step> &steps)
{
    PQueue queue;
    PQueueInit__(&queue, setting.maxnodes, setting.span);
    Twin twin;
    bool good = true;
    for (size_t i = 0; i < steps.size() && good; i++)
        good = apply(steps[i], &queue, &twin) && agree(&queue, twin, steps[i].limit, setting);
    const Step take = {GETMAX, 0, 0, 0};
    while (good && !twin.empty())
        good = apply(take, &queue, &twin) && agree(&queue, twin, 0, setting);
    PQueueFree__(&queue);
    return !good;
}

static std::string told(const std::vector<Step> &steps)
{
    std::ostringstream text;
    for (const Step &step : steps)
        text << KIND_NAMES[step.kind] << " vertex " << step.vertex << " gain " << step.gain
             << ", then look under " << step.limit << "\n";
    return text.str();
}

/* Mostly inserts and updates; a reset now and then; gains of few values, so that many are equal. */
static std::vector<Step> random_steps(std::minstd_rand *random, const Setting &setting, int n)
{
    static const Kind mix[] = {INSERT, INSERT, INSERT, INSERT, DELETE, DELETE,
                               UPDATE, UPDATE, UPDATE, GETMAX, SEE};
    const int values = 1 + static_cast<int>((*random)() % 12);
    const auto below = [random](int n_) {
        return static_cast<int>((*random)() % static_cast<unsigned>(n_));
    };
    std::vector<Step> steps;
    for (int i = 0; i < n; i++) {
        Step step = {mix[below(11)], below(setting.maxnodes), 0, 900 + below(2500)};
        if (below(150) == 0) step.kind = RESET;
        const int gain = below(values) - values / 2;
        step.gain = std::clamp(gain, -setting.span, setting.span);
        if (below(20) == 0) step.gain = below(2) == 0 ? -setting.span : setting.span;
        steps.push_back(step);
    }
    return steps;
}

static Setting random_setting(std::minstd_rand *random, int form)
{
    Setting setting;
    setting.maxnodes = 1 + static_cast<int>((*random)() % 40);
    const int most = 3 * setting.maxnodes;
    setting.span = form == PQ_BUCKETS
                       ? static_cast<int>((*random)() % static_cast<unsigned>(most + 1))
                       : most + 1 + static_cast<int>((*random)() % 100000);
    for (int v = 0; v < setting.maxnodes; v++)
        setting.vwgt.push_back(static_cast<int>((*random)() % 4000));
    return setting;
}

static void drive(int form)
{
    for (unsigned seed = 1; seed <= 400; seed++) {
        std::minstd_rand random(seed);
        const Setting setting = random_setting(&random, form);
        const std::vector<Step> steps = random_steps(&random, setting, 300);
        if (!fails(setting, steps)) continue;
        const std::vector<Step> shortest =
            shrink(steps, [&](const std::vector<Step> &part) { return fails(setting, part); });
        FAIL() << "seed " << seed << ", " << setting.maxnodes << " vertices, span " << setting.span
               << "\n"
               << told(shortest);
    }
}

TEST(PQueueModel, buckets_agree_with_one_list_searched_from_its_latest_entry)
{
    drive(PQ_BUCKETS);
}

TEST(PQueueModel, the_heap_agrees_with_one_that_exchanges_entries)
{
    drive(PQ_HEAP);
}

TEST(PQueueModel, shrinking_leaves_only_the_steps_that_are_needed)
{
    std::vector<int> steps;
    for (int i = 0; i < 100; i++) steps.push_back(i);
    const auto needs_three = [](const std::vector<int> &part) {
        int found = 0;
        for (int step : part) found += step == 7 || step == 50 || step == 99;
        return found == 3;
    };
    EXPECT_EQ(shrink(steps, needs_three), (std::vector<int>{7, 50, 99}));
}
