/* SPDX-License-Identifier: MIT */
/* tests/model/plain_queue.h: the gain queue as a list that is scanned, or as a textbook heap: the
 * model of the queue that the refiners use.
 */
#ifndef ZORPEL_TESTS_PLAIN_QUEUE_H
#define ZORPEL_TESTS_PLAIN_QUEUE_H

#include <cstddef>
#include <utility>
#include <vector>

struct Entry {
    int gain, v;
};

/* Vertices of one side. Lists: in order of arrival, the last arrival leaves first among equals.
 * Heap: in heap order. */
struct PlainQueue {
    bool heap;
    std::vector<Entry> entries;
};

inline size_t place_of(const PlainQueue &queue, int v)
{
    size_t i = 0;
    while (queue.entries.at(i).v != v) i++;
    return i;
}

inline void sift_up(std::vector<Entry> &heap, size_t i)
{
    for (; i > 0 && heap[(i - 1) / 2].gain < heap[i].gain; i = (i - 1) / 2)
        std::swap(heap[i], heap[(i - 1) / 2]);
}

inline void sift_down(std::vector<Entry> &heap, size_t i)
{
    for (size_t child; (child = 2 * i + 1) < heap.size(); i = child) {
        if (child + 1 < heap.size() && heap[child + 1].gain > heap[child].gain) child++;
        if (heap[child].gain <= heap[i].gain) return;
        std::swap(heap[i], heap[child]);
    }
}

inline void plain_insert(PlainQueue &queue, int v, int gain)
{
    queue.entries.push_back({gain, v});
    if (queue.heap) sift_up(queue.entries, queue.entries.size() - 1);
}

inline void plain_remove(PlainQueue &queue, int v)
{
    const size_t i = place_of(queue, v);
    if (!queue.heap) {
        queue.entries.erase(queue.entries.begin() + static_cast<long>(i));
        return;
    }
    const int gain = queue.entries[i].gain;
    queue.entries[i] = queue.entries.back();
    queue.entries.pop_back();
    if (i == queue.entries.size()) return;
    if (queue.entries[i].gain > gain)
        sift_up(queue.entries, i);
    else
        sift_down(queue.entries, i);
}

inline int plain_change(PlainQueue &queue, int v, int delta)
{
    const size_t i = place_of(queue, v);
    const int gain = queue.entries[i].gain + delta;
    if (!queue.heap) {
        plain_remove(queue, v);
        plain_insert(queue, v, gain);
        return gain;
    }
    queue.entries[i].gain = gain;
    if (delta > 0)
        sift_up(queue.entries, i);
    else
        sift_down(queue.entries, i);
    return gain;
}

inline int plain_top(const PlainQueue &queue)
{
    if (queue.entries.empty()) return -1;
    if (queue.heap) return queue.entries[0].v;
    Entry best = queue.entries[0];
    for (const Entry &entry : queue.entries)
        if (entry.gain >= best.gain) best = entry;
    return best.v;
}

/* The best vertex of positive gain that fits into the room; the top when room is small. */
inline int plain_fitting_top(const PlainQueue &queue, int room, const int *cellwgt)
{
    const int top = plain_top(queue);
    if (top < 0 || room <= 1000) return top;
    Entry best = {0, top};
    for (size_t i = 0; i < queue.entries.size(); i++) {
        const Entry &entry = queue.entries[i];
        const bool fits = entry.gain > 0 && cellwgt[entry.v] <= room;
        if (queue.heap && fits) return entry.v;
        // the heap is read in array order up to an entry that is not positive, nor its half place
        if (queue.heap && entry.gain < 1 && queue.entries[i / 2].gain < 1) break;
        if (!queue.heap && fits && entry.gain >= best.gain) best = entry;
    }
    return best.v;
}

#endif
