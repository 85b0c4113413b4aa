// SPDX-License-Identifier: MIT
/* zorpelx/files/bookshelf_lines.cpp: one file of a Bookshelf benchmark, line by line. */
#include "bookshelf_lines.h"

#include <cassert>
#include <cmath>
#include <cstdlib>
#include <cstring>

#include "told.h"

static void begin_text(BookshelfFile *file, std::string_view text)
{
    file->text = text;
    file->next = file->look = without_mark(text).data();
    file->end = text.data() + text.size();
}

void open_bookshelf(const std::string &path, const Budget &budget, BookshelfFile *file)
{
    file->budget = budget;
    file->budget.name = path;
    file->bytes = read_bytes(path, &file->budget);
    begin_text(file, view_of(file->bytes));
}

void open_text(std::string_view text, const Budget &budget, BookshelfFile *file)
{
    file->budget = budget;
    begin_text(file, text);
}

static bool separates_words(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == ':' || c == '\v' || c == '\f';
}

static void look_at_clock(BookshelfFile *file)
{
    constexpr int64_t STRIDE = int64_t{1} << 20;
    if (file->next < file->look) return;
    check_time(file->budget);
    file->look = file->end - file->next > STRIDE ? file->next + STRIDE : file->end;
}

/* The words up to the end of the line. */
static void take_line_words(BookshelfFile *file)
{
    const char *s = file->next, *const end = file->end;
    while (s < end && *s != '\n') {
        if (*s == '#') {
            const void *const newline = memchr(s, '\n', static_cast<size_t>(end - s));
            s = newline != nullptr ? static_cast<const char *>(newline) : end;
        } else if (separates_words(*s)) {
            s++;
        } else {
            const char *const begin = s;
            while (s < end && *s != '\n' && !separates_words(*s)) s++;
            push_charged(&file->budget, &file->words,
                         std::string_view(begin, static_cast<size_t>(s - begin)));
        }
    }
    file->next = s < end ? s + 1 : end;
}

bool take_words(BookshelfFile *file)
{
    file->words.clear();
    while (file->next < file->end && file->words.empty()) {
        look_at_clock(file);
        take_line_words(file);
        if (!file->words.empty() && file->words[0] == "UCLA") file->words.clear();
    }
    return !file->words.empty();
}

static std::string_view first_word(std::string_view line)
{
    size_t begin = 0;
    while (begin < line.size() && separates_words(line[begin])) begin++;
    size_t end = begin;
    while (end < line.size() && !separates_words(line[end])) end++;
    return line.substr(begin, end - begin);
}

static std::string_view last_word(std::string_view line)
{
    size_t end = line.size();
    while (end > 0 && separates_words(line[end - 1])) end--;
    size_t begin = end;
    while (begin > 0 && !separates_words(line[begin - 1])) begin--;
    return line.substr(begin, end - begin);
}

bool look_ahead(const BookshelfFile &file, std::string_view counted, BookshelfAhead *ahead)
{
    constexpr size_t BLOCK = 64; // lines
    assert(!file.words.empty());
    const char *at = file.words[0].data();
    if (ahead->end != nullptr && at < ahead->end) return false;
    ahead->first.clear();
    ahead->last.clear();
    for (size_t i = 0; i < BLOCK && at < file.end; i++) {
        const void *const newline = memchr(at, '\n', static_cast<size_t>(file.end - at));
        const char *const end = newline != nullptr ? static_cast<const char *>(newline) : file.end;
        const std::string_view line(at, static_cast<size_t>(end - at));
        ahead->first.push_back(first_word(line));
        if (ahead->first.back() == counted) {
            ahead->first.pop_back();
            ahead->last.push_back(last_word(line));
        }
        at = end < file.end ? end + 1 : end;
    }
    assert(at > file.words[0].data() && at <= file.end);
    ahead->end = at;
    return true;
}

Place place_in(const BookshelfFile &file, std::string_view word)
{
    return place_of(file.text, word.data());
}

double real_of(const BookshelfFile &file, std::string_view word)
{
    const std::string number(word);
    char *end = nullptr;
    const double value = strtod(number.c_str(), &end);
    if (*end != '\0' || !std::isfinite(value))
        bad_input(file.budget, place_in(file, word), "'%.40s' is not a number", number.c_str());
    return value;
}

bool is_count(const BookshelfFile &file, std::string_view word, int64_t *count)
{
    constexpr double MOST = 1e15;
    if (file.words.size() < 2 || file.words[0] != word) return false;
    const double value = real_of(file, file.words[1]);
    if (value < 0 || value > MOST || value != std::floor(value))
        bad_input(file.budget, place_in(file, file.words[1]), "a count is a whole number");
    *count = static_cast<int64_t>(value);
    return true;
}
