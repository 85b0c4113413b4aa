/* SPDX-License-Identifier: MIT */
/* zorpelx/files/bookshelf_lines.h: one file of a Bookshelf benchmark, line by line.
 *
 * A # begins a comment; the first line says "UCLA" and what the file is; colons stand by
 * themselves.
 */
#ifndef ZORPELX_FILES_BOOKSHELF_LINES_H
#define ZORPELX_FILES_BOOKSHELF_LINES_H

#include <string_view>
#include <vector>

#include "bytes.h"
#include "rules.h"

/* A file that is held as long as its lines are read. */
struct BookshelfFile {
    Bytes bytes = {};
    Budget budget = {}; // with the name of this file
    std::string_view text = {};
    const char *next = nullptr, *end = nullptr;
    const char *look = nullptr;               // where the clock is looked at again
    std::vector<std::string_view> words = {}; // of the line last taken; colons are left out
};

/* Begins with a file, read within the budget, or with a text that stays. */
void open_bookshelf(const std::string &path, const Budget &budget, BookshelfFile *file);
void open_text(std::string_view text, const Budget &budget, BookshelfFile *file);

/* Takes the words of the next line that has any; false at the end. */
bool take_words(BookshelfFile *file);

/* First words of a block of lines ahead, and the last ones of those that begin with `counted`, so
 * that the places of names can be prefetched together: one by one they would be waited for. */
struct BookshelfAhead {
    const char *end = nullptr; // of the block
    std::vector<std::string_view> first = {}, last = {};
};

/* Looks at a block from the line last taken on, unless the block before reaches beyond it; then
 * false. */
bool look_ahead(const BookshelfFile &file, std::string_view counted, BookshelfAhead *ahead);

/* The real number that a word is.
 * Errors  FileError with its place */
double real_of(const BookshelfFile &file, std::string_view word);

/* The count of a line such as "NumNets : 8", if the line begins with this word. */
bool is_count(const BookshelfFile &file, std::string_view word, int64_t *count);

Place place_in(const BookshelfFile &file, std::string_view word);

#endif
