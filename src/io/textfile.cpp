// SPDX-License-Identifier: MIT
/* io/textfile.cpp: text files as a sequence of bounded lines of integers.
 *
 * A file is read once, whole, so that several passes cost no further reading and pipes work too.
 * Lines are cut as a buffer of LINE_BUFFER characters would cut them.
 */
#include "io/textfile.h"

#include <cassert>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "core/errors.h"
#include "core/memory.h"

constexpr size_t FIRST_CAPACITY = size_t{1} << 16;

/* Doubles the capacity of file->bytes, keeping the size bytes in use. */
static void grow_text(TextFile *file, size_t *capacity)
{
    assert(file->size < *capacity);
    char *const larger = alloc_array<char>(2 * *capacity, "TextFile: bytes");
    memcpy(larger, file->bytes, file->size);
    free(file->bytes);
    file->bytes = larger;
    *capacity *= 2;
}

TextFile read_text_file(const char *name, const char *text)
{
    FILE *const stream = QXfopen__(name, "r", text);
    size_t capacity = FIRST_CAPACITY;
    TextFile file = {alloc_array<char>(capacity, "TextFile: bytes"), 0, 0};
    for (size_t got;
         (got = fread(file.bytes + file.size, 1, capacity - 1 - file.size, stream)) > 0;) {
        file.size += got;
        if (file.size == capacity - 1) grow_text(&file, &capacity);
    }
    if (ferror(stream)) errexit__("%s: cannot read %s: %s", text, name, strerror(errno));
    QXfclose__(stream);
    file.bytes[file.size] = '\0';
    return file;
}

void free_text_file(TextFile *file)
{
    QXfree__(&file->bytes, LTERM);
}

TextLine next_line(TextFile *file)
{
    const char *const start = file->bytes + file->place;
    assert(file->place <= file->size);
    const size_t left = file->size - file->place;
    const size_t most = left < LINE_BUFFER - 1 ? left : LINE_BUFFER - 1;
    const void *const newline = memchr(start, '\n', most);
    const char *const end =
        newline != nullptr ? static_cast<const char *>(newline) + 1 : start + most;
    file->place += static_cast<size_t>(end - start);
    assert(file->place <= file->size && end - start < LINE_BUFFER);
    return {start, end};
}

/* White space as the C locale has it. */
static bool is_space(char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

static bool is_digit(char c)
{
    return c >= '0' && c <= '9';
}

bool take_int(TextLine *line, int *value)
{
    const char *s = line->next, *const end = line->end;
    while (s < end && is_space(*s)) s++;
    bool negative = false;
    if (s < end && (*s == '+' || *s == '-')) negative = *s++ == '-';
    if (s == end || !is_digit(*s)) return false;
    long long number = 0;
    for (; s < end && is_digit(*s); s++)
        if (number <= INT_MAX) number = 10 * number + (*s - '0');
    if (negative) number = -number;
    if (number > INT_MAX || number < INT_MIN)
        errexit__("Number too large for 32 bits in the input file!\n");
    assert(line->next < s && s <= end);
    line->next = s;
    *value = static_cast<int>(number);
    return true;
}

int int_or_zero(TextLine *line)
{
    int value = 0;
    take_int(line, &value);
    return value;
}
