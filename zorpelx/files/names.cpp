// SPDX-License-Identifier: MIT
/* zorpelx/files/names.cpp: names in one array, and patterns that they fit. */
#include "names.h"

#include <cassert>

constexpr size_t LEAST_ROOM = 64; // characters

int64_t count_names(const Names &names)
{
    return names.start.empty() ? 0 : static_cast<int64_t>(names.start.size()) - 1;
}

bool names_ok(const Names &names)
{
    if (names.start.empty()) return names.text.empty();
    if (names.start.front() != 0) return false;
    if (names.start.back() != static_cast<int64_t>(names.text.size())) return false;
    for (size_t i = 1; i < names.start.size(); i++)
        if (names.start[i] < names.start[i - 1]) return false;
    return true;
}

std::string_view name_of(const Names &names, int64_t i)
{
    assert(i >= 0 && i < count_names(names));
    const size_t begin = static_cast<size_t>(names.start[static_cast<size_t>(i)]);
    const size_t end = static_cast<size_t>(names.start[static_cast<size_t>(i) + 1]);
    return {names.text.data() + begin, end - begin};
}

/* Makes room for so many characters more. */
static void reserve_text(Names *names, size_t more, Budget *budget)
{
    const size_t old = names->text.capacity(), wanted = names->text.size() + more;
    if (wanted <= old) return;
    const size_t larger = wanted < 2 * old ? 2 * old : wanted + LEAST_ROOM;
    charge(budget, larger);
    names->text.reserve(larger);
    give_back(budget, old);
}

void add_name(Names *names, std::string_view name, Budget *budget)
{
    if (names->start.empty()) push_charged(budget, &names->start, int64_t{0});
    reserve_text(names, name.size(), budget);
    names->text.insert(names->text.end(), name.begin(), name.end());
    push_charged(budget, &names->start, static_cast<int64_t>(names->text.size()));
}

std::string name_or_number(const Names &names, int64_t i, int64_t first)
{
    if (names.start.empty()) return std::to_string(i + first);
    return std::string(name_of(names, i));
}

/* The place behind the set that begins at p, and whether it has the character; npos if the set has
 * no end and is a bracket like any other character. */
static size_t fit_set(std::string_view pattern, size_t p, char c, bool *fits)
{
    size_t at = p + 1;
    const bool negated = at < pattern.size() && (pattern[at] == '!' || pattern[at] == '^');
    if (negated) at++;
    bool found = false;
    for (const size_t begin = at; at < pattern.size(); at++) {
        if (pattern[at] == ']' && at > begin) {
            *fits = found != negated;
            return at + 1;
        }
        char least = pattern[at], most = least;
        if (at + 2 < pattern.size() && pattern[at + 1] == '-' && pattern[at + 2] != ']')
            most = pattern[at += 2];
        found = found || (c >= least && c <= most);
    }
    return std::string_view::npos;
}

/* Whether one character fits what stands at p, and where the pattern goes on. */
static bool fit_one(std::string_view pattern, size_t p, char c, size_t *next)
{
    *next = p + 1;
    if (pattern[p] == '?') return true;
    if (pattern[p] == '[') {
        bool fits = false;
        const size_t behind = fit_set(pattern, p, c, &fits);
        if (behind != std::string_view::npos) {
            *next = behind;
            return fits;
        }
    }
    if (pattern[p] == '\\' && p + 1 < pattern.size()) {
        *next = p + 2;
        return pattern[p + 1] == c;
    }
    return pattern[p] == c;
}

/* The last star takes one character more whenever what follows does not fit. */
bool name_fits(std::string_view name, std::string_view pattern)
{
    constexpr size_t NONE = std::string_view::npos;
    size_t n = 0, p = 0, star = NONE, taken = 0;
    while (n < name.size()) {
        size_t next = 0;
        if (p < pattern.size() && pattern[p] == '*') {
            star = p++;
            taken = n;
        } else if (p < pattern.size() && fit_one(pattern, p, name[n], &next)) {
            p = next;
            n++;
        } else if (star != NONE) {
            p = star + 1;
            n = ++taken;
        } else {
            return false;
        }
    }
    while (p < pattern.size() && pattern[p] == '*') p++;
    return p == pattern.size();
}
