// SPDX-License-Identifier: MIT
/* search/gain_heap.cpp: the heap of moves. See the header for its invariants. */
#include "search/gain_heap.h"

#include "core/memory.h"

constexpr int CHILDREN = 4;

void open_gain_heap(GainHeap *heap, int nvertices)
{
    const size_t n = static_cast<size_t>(nvertices);
    heap->n = 0;
    heap->nodes = alloc_array<GainHeap::Node>(n, "search: heap");
    heap->place = ismalloc__(n, -1, "search: places");
}

void close_gain_heap(GainHeap *heap)
{
    QXfree__(&heap->nodes, &heap->place, LTERM);
}

static void set_node(GainHeap *heap, int i, GainHeap::Node node)
{
    assert(0 <= i && i < heap->n && node.v >= 0);
    heap->nodes[i] = node;
    heap->place[node.v] = i;
}

static void rise(GainHeap *heap, int i, GainHeap::Node node)
{
    while (i > 0) {
        const int parent = (i - 1) / CHILDREN;
        if (heap->nodes[parent].gain >= node.gain) break;
        assert(parent < i);
        set_node(heap, i, heap->nodes[parent]);
        i = parent;
    }
    set_node(heap, i, node);
}

static void sink(GainHeap *heap, int i, GainHeap::Node node)
{
    for (;;) {
        const int first = CHILDREN * i + 1;
        if (first >= heap->n) break;
        const int end = first + CHILDREN < heap->n ? first + CHILDREN : heap->n;
        int best = first;
        for (int c = first + 1; c < end; c++)
            if (heap->nodes[c].gain > heap->nodes[best].gain) best = c;
        if (heap->nodes[best].gain <= node.gain) break;
        set_node(heap, i, heap->nodes[best]);
        i = best;
    }
    set_node(heap, i, node);
}

void put_in_heap(GainHeap *heap, int v, int64_t gain)
{
    const int i = heap->place[v];
    assert(i >= -1 && i < heap->n && (i < 0 || heap->nodes[i].v == v)); // G1
    if (i < 0)
        rise(heap, heap->n++, {gain, v});
    else if (gain > heap->nodes[i].gain)
        rise(heap, i, {gain, v});
    else
        sink(heap, i, {gain, v});
}

void remove_from_heap(GainHeap *heap, int v)
{
    const int i = heap->place[v];
    assert(i >= 0 && i < heap->n && heap->nodes[i].v == v); // G1
    const int64_t gone = heap->nodes[i].gain;
    const GainHeap::Node last = heap->nodes[--heap->n];
    heap->place[v] = -1;
    if (i == heap->n) return;
    assert(last.v != v);
    if (last.gain > gone)
        rise(heap, i, last);
    else
        sink(heap, i, last);
}

void empty_heap(GainHeap *heap)
{
    for (int i = 0; i < heap->n; i++) heap->place[heap->nodes[i].v] = -1;
    heap->n = 0;
}
