// SPDX-License-Identifier: MIT
/* zorpelx/files/read_liberty.cpp: areas from a Liberty file.
 *
 * Only what tells areas is looked at: groups "cell (NAME) { ... }" anywhere and in them the
 * attribute "area : NUMBER;", not that of an inner group. Comments and strings are skipped.
 */
#include <cctype>
#include <cmath>
#include <cstdlib>
#include <cstring>

#include "areas.h"
#include "builder.h"
#include "told.h"

/* A name, a number, a string without its quotes, or one other character. */
struct LibertyWord {
    std::string_view text;
    bool string;
};

struct LibertyScan {
    std::string_view text;
    const char *next, *end;
    const char *look; // where the clock is looked at again
    Budget *budget;
};

[[noreturn]] static void liberty_error(const LibertyScan &scan, const char *at, const char *what)
{
    bad_input(*scan.budget, place_of(scan.text, at), "%s", what);
}

static bool begins(const LibertyScan &scan, std::string_view with)
{
    return std::string_view(scan.next, static_cast<size_t>(scan.end - scan.next))
               .substr(0, with.size()) == with;
}

/* Behind the next `end`. */
static void skip_behind(LibertyScan *scan, std::string_view end, const char *what)
{
    const std::string_view rest(scan->next, static_cast<size_t>(scan->end - scan->next));
    const size_t found = rest.find(end, 1);
    if (found == std::string_view::npos) liberty_error(*scan, scan->next, what);
    scan->next += found + end.size();
}

static bool is_word(char c)
{
    return isalnum(static_cast<unsigned char>(c)) != 0 || strchr("_.+-$[]!'*&|^<>/%", c) != nullptr;
}

/* To the next word, over white space, comments and backslashes at ends of lines. */
static void skip_blanks(LibertyScan *scan)
{
    while (scan->next < scan->end) {
        if (begins(*scan, "/*"))
            skip_behind(scan, "*/", "a comment that does not end");
        else if (isspace(static_cast<unsigned char>(*scan->next)) || *scan->next == '\\')
            scan->next++;
        else
            return;
    }
}

/* False at the end. */
static bool take_word(LibertyScan *scan, LibertyWord *word)
{
    constexpr int64_t STRIDE = int64_t{1} << 20;
    skip_blanks(scan);
    const char *const begin = scan->next;
    if (begin == scan->end) return false;
    if (begin >= scan->look) {
        check_time(*scan->budget);
        scan->look = scan->end - begin > STRIDE ? begin + STRIDE : scan->end;
    }
    word->string = *begin == '"';
    if (word->string) {
        skip_behind(scan, "\"", "a string that does not end");
        word->text = {begin + 1, static_cast<size_t>(scan->next - begin) - 2};
        return true;
    }
    scan->next++;
    if (is_word(*begin))
        while (scan->next < scan->end && is_word(*scan->next) && !begins(*scan, "/*")) scan->next++;
    word->text = {begin, static_cast<size_t>(scan->next - begin)};
    return true;
}

static bool is_sign(const LibertyWord &word, char sign)
{
    return !word.string && word.text.size() == 1 && word.text[0] == sign;
}

/* What is open: how many groups, and which of them is a cell.
 *   depth  of the braces; cell  the depth within the cell, 0 outside of cells */
struct LibertyState {
    int64_t depth, cell;
    std::string_view name; // of the cell
};

static double take_area(LibertyScan *scan)
{
    LibertyWord word = {"", false};
    skip_blanks(scan);
    const char *const begin = scan->next;
    if (!take_word(scan, &word)) liberty_error(*scan, begin, "the file ends within a cell");
    const std::string number(word.text);
    char *end = nullptr;
    const double area = strtod(number.c_str(), &end);
    if (number.empty() || *end != '\0' || !std::isfinite(area) || area < 0)
        liberty_error(*scan, begin, "an area is a number, not below 0");
    return area;
}

/* The name of a cell whose "cell (" is behind, if it is one. */
static std::string_view take_cell_name(LibertyScan *scan)
{
    LibertyWord name = {"", false}, bracket = {"", false};
    skip_blanks(scan);
    const char *const begin = scan->next;
    if (!take_word(scan, &name) || !take_word(scan, &bracket) || !is_sign(bracket, ')'))
        liberty_error(*scan, begin, "there should be the name of a cell and a ) here");
    return name.text;
}

/* What a word behind another one means. */
static void take_pair(LibertyScan *scan, LibertyState *state, const LibertyWord &first,
                      const LibertyWord &second, Areas *areas)
{
    if (first.string) return;
    if (first.text == "cell" && is_sign(second, '(') && state->cell == 0) {
        state->name = take_cell_name(scan);
        state->cell = state->depth + 1;
    } else if (first.text == "area" && is_sign(second, ':') && state->cell > 0 &&
               state->depth == state->cell) {
        set_area(areas, state->name, take_area(scan), scan->budget);
    }
}

Areas read_liberty(std::string_view bytes, Budget *budget)
{
    LibertyScan scan = {bytes, bytes.data(), bytes.data() + bytes.size(), bytes.data(), budget};
    LibertyState state = {0, 0, ""};
    Areas areas;
    LibertyWord last = {"", false}, word = {"", false};
    while (take_word(&scan, &word)) {
        take_pair(&scan, &state, last, word, &areas);
        if (is_sign(word, '{')) state.depth++;
        if (is_sign(word, '}') && state.depth-- == 0)
            liberty_error(scan, word.text.data(), "a } too many");
        if (state.depth < state.cell && is_sign(word, '}')) state.cell = 0;
        last = word;
    }
    if (state.depth > 0) liberty_error(scan, scan.end, "the file ends within a group");
    return areas;
}
