// SPDX-License-Identifier: MIT
/* io/partfile.cpp: the partition file and the fix file.
 *
 * The number in the partition file's name is the count of parts really used, as judged by the
 * largest part number. Lines are put together in a block by hand: formatted output would take
 * longer than many a partitioning.
 */
#include "io/partfile.h"

#include <cassert>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "core/errors.h"
#include "core/memory.h"
#include "core/vectors.h"
#include "io/outfile.h"
#include "io/textfile.h"

constexpr size_t BLOCK_SIZE = size_t{1} << 16;
constexpr size_t LONGEST_LINE = 12; // "-2147483648\n"

/* Appends "value\n" at out; returns the end. */
static char *put_line(char *out, int value)
{
    static_assert(LONGEST_LINE == sizeof "-2147483648\n" - 1);
    char digits[LONGEST_LINE];
    int n = 0;
    unsigned left = value < 0 ? 0u - static_cast<unsigned>(value) : static_cast<unsigned>(value);
    do {
        digits[n++] = static_cast<char>('0' + left % 10);
    } while ((left /= 10) > 0);
    if (value < 0) *out++ = '-';
    while (n > 0) *out++ = digits[--n];
    *out++ = '\n';
    return out;
}

/* Stops at the first block that cannot be written; the file keeps an error mark. */
static void put_lines(int n, const int *x, FILE *file)
{
    static char block[BLOCK_SIZE];
    char *out = block;
    for (int i = 0; i < n; i++) {
        out = put_line(out, x[i]);
        const size_t used = static_cast<size_t>(out - block);
        assert(used <= BLOCK_SIZE);
        if (i + 1 < n && used + LONGEST_LINE <= BLOCK_SIZE) continue;
        if (fwrite(block, 1, used, file) != used) return;
        out = block;
    }
}

void WriteHGraphPart(int nvtxs, const int *part, const char *name)
{
    if (nvtxs < 1) return;
    const size_t length = strlen(name) + sizeof ".part.2147483648";
    char *filename = alloc_array<char>(length, "WriteHGraphPart: filename");
    snprintf(filename, length, "%s.part.%d", name, part[iamax__(nvtxs, part)] + 1);
    FILE *const file = QXfopen__(filename, "w", "WriteHGraphPart: partfile");
    put_lines(nvtxs, part, file);
    close_whole(file, filename, "WriteHGraphPart");
    free(filename);
}

void ReadPartition(int nvtxs, int *part, const char *name)
{
    TextFile file = read_text_file(name, "ReadPartition: partfile");
    TextLine rest = {file.bytes, file.bytes + file.size};
    for (int v = 0; v < nvtxs && take_int(&rest, &part[v]); v++) continue;
    free_text_file(&file);
}
