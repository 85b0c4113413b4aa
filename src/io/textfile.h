/* SPDX-License-Identifier: MIT */
/* io/textfile.h: text files as a sequence of bounded lines of integers (io/ only). */
#ifndef ZORPEL_IO_TEXTFILE_H
#define ZORPEL_IO_TEXTFILE_H

#include <cstddef>

/* A whole file in memory and the place reached in it. */
struct TextFile {
    char *bytes;  // [size + 1] the contents and a closing NUL
    size_t size;  // bytes in the file
    size_t place; // next byte to read, 0..size
};

/* The unread part of one line: [next, end). */
struct TextLine {
    const char *next;
    const char *end;
};

/* Reads the file; text names the purpose in messages. A file that cannot be opened or read ends
 * the process. */
TextFile read_text_file(const char *name, const char *text);
void free_text_file(TextFile *file);

inline bool at_end(const TextFile *file)
{
    return file->place == file->size;
}

/* Takes the next line, at most LINE_BUFFER - 1 bytes: what is longer follows as further lines. */
constexpr int LINE_BUFFER = 131072;
TextLine next_line(TextFile *file);

inline bool is_comment(TextLine line)
{
    return line.next < line.end && *line.next == '%';
}

/* Takes a decimal integer with optional sign after white space; false, and nothing taken, if there
 * is none. One beyond 32 bits ends the process. */
bool take_int(TextLine *line, int *value);

/* The same, 0 where there is none. */
int int_or_zero(TextLine *line);

#endif
