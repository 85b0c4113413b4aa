// SPDX-License-Identifier: MIT
/* tests/unit/memory_test.cpp: checked allocation and release of arrays in groups. */
#include "core/memory.h"

#include <gtest/gtest.h>
#include <malloc.h>
#include <sys/resource.h>

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <string>

#include "support.h"
#include "spare/dense_vectors.h"

TEST(Memory, a_request_for_0_elements_gives_null)
{
    EXPECT_EQ(QXmalloc__(0, "none"), nullptr);
    EXPECT_EQ(imalloc__(0, "none"), nullptr);
    EXPECT_EQ(ismalloc__(0, 5, "none"), nullptr);
    EXPECT_EQ(fmalloc__(0, "none"), nullptr);
    EXPECT_EQ(fsmalloc__(0, 5.0f, "none"), nullptr);
    EXPECT_EQ(alloc_array<HGraph>(0, "none"), nullptr);
}

TEST(Memory, the_s_forms_set_every_entry)
{
    int *ints = ismalloc__(5, -7, "ints");
    float *floats = fsmalloc__(3, 0.25f, "floats");
    EXPECT_EQ(to_ints(ints, 5), std::vector<int>(5, -7));
    for (int i = 0; i < 3; i++) EXPECT_EQ(floats[i], 0.25f);
    QXfree__(&ints, &floats, LTERM);
}

TEST(Memory, freeing_nulls_every_variable_up_to_the_sentinel_and_none_behind_it)
{
    int *a = imalloc__(4, "a"), *b = imalloc__(4, "b"), *behind = imalloc__(4, "behind");
    char *c = alloc_array<char>(3, "c");
    QXfree__(&a, &c, &b, LTERM, &behind, LTERM);
    EXPECT_EQ(a, nullptr);
    EXPECT_EQ(b, nullptr);
    EXPECT_EQ(c, nullptr);
    EXPECT_NE(behind, nullptr);
    QXfree__(&behind, LTERM);
}

TEST(Memory, freeing_a_null_pointer_does_nothing)
{
    int *none = nullptr, *some = imalloc__(2, "some");
    QXfree__(&none, &some, LTERM);
    QXfree__(&none, LTERM);
    EXPECT_EQ(none, nullptr);
    EXPECT_EQ(some, nullptr);
}

TEST(Memory, a_request_beyond_the_address_space_names_the_array_and_ends_with_status_0)
{
    const Outcome end = run_in_child([] { QXmalloc__(SIZE_MAX, "test: huge"); });
    EXPECT_EQ(end.err,
              "Memory allocation failed for test: huge. Requested size: 2147483647 bytes\n\n");
    EXPECT_EQ(end.out, "");
    EXPECT_EQ(end.status, 0);
}

TEST(Memory, a_size_that_would_wrap_when_multiplied_is_refused)
{
    const size_t wraps_to_8 = SIZE_MAX / sizeof(int) + 3;
    const std::string message =
        "Memory allocation failed for test: wraps. Requested size: 2147483647 bytes\n\n";
    EXPECT_EQ(run_in_child([=] { imalloc__(wraps_to_8, "test: wraps"); }).err, message);
    EXPECT_EQ(run_in_child([=] { fmalloc__(wraps_to_8, "test: wraps"); }).err, message);
    EXPECT_EQ(run_in_child([=] { ismalloc__(wraps_to_8, 0, "test: wraps"); }).err, message);
    EXPECT_EQ(run_in_child([=] { fsmalloc__(wraps_to_8, 0, "test: wraps"); }).err, message);
}

TEST(Memory, a_refused_request_of_ordinary_size_is_reported_in_bytes)
{
#ifdef ZORPEL_TEST_ASAN
    GTEST_SKIP() << "the sanitizer needs the address space that this test takes away";
#endif
    const Outcome end = run_in_child([] {
        const rlimit limit = {size_t{1} << 28, size_t{1} << 28};
        setrlimit(RLIMIT_AS, &limit);
        imalloc__(250000000, "test: large");
    });
    EXPECT_EQ(end.err,
              "Memory allocation failed for test: large. Requested size: 1000000000 bytes\n\n");
    EXPECT_EQ(end.status, 0);
}

/* Whether large pages were asked for where the array is. */
static bool asked_for_large_pages(const void *array)
{
    std::ifstream maps("/proc/self/smaps");
    const uintptr_t address = reinterpret_cast<uintptr_t>(array);
    bool inside = false;
    for (std::string line; std::getline(maps, line);) {
        unsigned long begin, end;
        if (sscanf(line.c_str(), "%lx-%lx ", &begin, &end) == 2)
            inside = begin <= address && address < end;
        else if (inside && line.starts_with("VmFlags:"))
            return line.find(" hg") != std::string::npos;
    }
    return false;
}

static bool has_large_pages()
{
    return std::ifstream("/sys/kernel/mm/transparent_hugepage/enabled").good();
}

TEST(Memory, large_pages_are_asked_for_behind_large_arrays_but_not_behind_pools)
{
    if (!has_large_pages()) GTEST_SKIP() << "the system has no large pages to ask for";
    constexpr size_t mb = size_t{1} << 20;
    int *array = imalloc__(64 * mb / sizeof(int), "array");
    int *pool = alloc_pool<int>(64 * mb / sizeof(int), "pool");
    EXPECT_TRUE(asked_for_large_pages(array + 32 * mb / sizeof(int)));
    EXPECT_FALSE(asked_for_large_pages(pool + 32 * mb / sizeof(int)));
    QXfree__(&array, &pool, LTERM);
}

#if defined(__GLIBC__) && !defined(ZORPEL_TEST_ASAN)
/* How many of the C library's blocks come straight from the system while there is an array of size
 * bytes. */
static size_t mapped_blocks_with(size_t size)
{
    int *array = imalloc__(size / sizeof(int), "array");
    const size_t nblocks = mallinfo2().hblks;
    QXfree__(&array, LTERM);
    return nblocks;
}

TEST(Memory, freed_memory_is_kept_for_the_next_arrays)
{
    constexpr size_t mb = size_t{1} << 20;
    const size_t before = mallinfo2().hblks;
    keep_freed_memory(25 * mb, 12 * mb);
    EXPECT_EQ(mapped_blocks_with(24 * mb), before);
    keep_freed_memory(SIZE_MAX, SIZE_MAX); // as much as there can be
    EXPECT_EQ(mapped_blocks_with(31 * mb), before);
    EXPECT_EQ(mapped_blocks_with(33 * mb), before + 1);
}

TEST(Memory, large_pages_are_asked_for_behind_the_memory_that_is_kept)
{
    if (!has_large_pages()) GTEST_SKIP() << "the system has no large pages to ask for";
    constexpr size_t mb = size_t{1} << 20, n = 3 * mb / sizeof(int); // no large array
    keep_freed_memory(25 * mb, 12 * mb);
    int *array = imalloc__(n, "array");
    EXPECT_TRUE(asked_for_large_pages(array + n - 1));
    QXfree__(&array, LTERM);
}
#endif
