// SPDX-License-Identifier: MIT
/* zorpelx/files/read_jsonl.cpp: the reader of memberships as JSON lines.
 *
 * A value never crosses a line, so the walk needs no count of lines within one. Strings are looked
 * at where they stand unless they hold escapes.
 */
#include "read_jsonl.h"

#include <cstring>
#include <deque>

#include "fileerror.h"
#include "known.h"
#include "members.h"
#include "walk.h"

struct JsonLine {
    Walk walk;
    Members members;
    std::deque<std::string> copies; // of strings with escapes, of one line; views stay
    MemberEntry member;
    std::vector<MemberEntry::Word> vertices;
    std::string number; // of the line
};

[[noreturn]] static void not_json(const JsonLine &line, const char *what)
{
    bad_input(*line.members.builder.budget, place_of(line.walk), "%s where %s should be",
              shown_here(line.walk).c_str(), what);
}

static bool next_is(JsonLine *line, char c)
{
    skip_blanks(&line->walk);
    if (line->walk.at == line->walk.end || *line->walk.at != c) return false;
    line->walk.at++;
    return true;
}

static void expect(JsonLine *line, char c, const char *what)
{
    if (!next_is(line, c)) not_json(*line, what);
}

static unsigned take_hex(JsonLine *line)
{
    unsigned code = 0;
    for (int i = 0; i < 4; i++, line->walk.at++) {
        const char *const digits = "0123456789abcdef";
        const bool there = line->walk.at < line->walk.end && *line->walk.at != '\0';
        const char *const digit = there ? strchr(digits, *line->walk.at | 0x20) : nullptr;
        if (digit == nullptr) not_json(*line, "four digits of \\u");
        code = 16 * code + static_cast<unsigned>(digit - digits);
    }
    return code;
}

static void put_utf8(std::string *text, unsigned code)
{
    const auto put = [text](unsigned byte) { *text += static_cast<char>(byte); };
    if (code < 0x80) return put(code);
    if (code < 0x800) {
        put(0xc0 | code >> 6);
    } else if (code < 0x10000) {
        put(0xe0 | code >> 12);
        put(0x80 | (code >> 6 & 0x3f));
    } else {
        put(0xf0 | code >> 18);
        put(0x80 | (code >> 12 & 0x3f));
        put(0x80 | (code >> 6 & 0x3f));
    }
    put(0x80 | (code & 0x3f));
}

/* The character that \u names, which may take a second \u behind it. */
static void put_code(JsonLine *line, std::string *text)
{
    constexpr unsigned REPLACEMENT = 0xfffd;
    unsigned code = take_hex(line);
    const Walk *const walk = &line->walk;
    const bool high = code >= 0xd800 && code < 0xdc00;
    if (high && walk->end - walk->at >= 6 && walk->at[0] == '\\' && walk->at[1] == 'u') {
        line->walk.at += 2;
        const unsigned low = take_hex(line);
        code = low >= 0xdc00 && low < 0xe000 ? 0x10000 + ((code & 0x3ff) << 10 | (low & 0x3ff))
                                             : REPLACEMENT;
    } else if (code >= 0xd800 && code < 0xe000) {
        code = REPLACEMENT; // half of a pair names no character
    }
    put_utf8(text, code);
}

static void put_escaped(JsonLine *line, std::string *text)
{
    static const char NAMES[] = "\"\\/bfnrt", MEANT[] = "\"\\/\b\f\n\r\t";
    Walk *const walk = &line->walk;
    if (++walk->at == walk->end) not_json(*line, "an escaped character");
    const char c = *walk->at;
    const char *const name = c == '\0' ? nullptr : strchr(NAMES, c);
    if (name == nullptr && c != 'u') not_json(*line, "an escaped character");
    walk->at++;
    if (name != nullptr)
        *text += MEANT[name - NAMES];
    else
        put_code(line, text);
}

/* The string at its opening quote. */
static std::string_view take_string(JsonLine *line)
{
    Walk *const walk = &line->walk;
    const Place place = place_of(*walk);
    const char *const begin = ++walk->at;
    while (!line_ended(*walk) && *walk->at != '"' && *walk->at != '\\') walk->at++;
    if (!line_ended(*walk) && *walk->at == '"')
        return {begin, static_cast<size_t>(walk->at++ - begin)};
    std::string *const copy =
        &line->copies.emplace_back(begin, static_cast<size_t>(walk->at - begin));
    while (!line_ended(*walk) && *walk->at != '"') {
        if (*walk->at == '\\')
            put_escaped(line, copy);
        else
            *copy += *walk->at++;
    }
    if (line_ended(*walk))
        bad_input(*line->members.builder.budget, place, "a string has no closing quote");
    walk->at++;
    return *copy;
}

/* The characters of a number, true, false or null. */
static std::string_view take_bare(JsonLine *line)
{
    Walk *const walk = &line->walk;
    const char *const begin = walk->at;
    while (!line_ended(*walk) && strchr(",:]}[{\"", *walk->at) == nullptr &&
           !is_walk_blank(*walk->at))
        walk->at++;
    const std::string_view text(begin, static_cast<size_t>(walk->at - begin));
    const bool number = !text.empty() && strchr("-0123456789", text[0]) != nullptr;
    if (number || text == "null" || text == "true" || text == "false") return text;
    walk->at = begin;
    not_json(*line, "a value");
}

/* A string or a number; absent for null. */
static MemberEntry::Word take_name(JsonLine *line)
{
    skip_blanks(&line->walk);
    const Place place = place_of(line->walk);
    if (!line_ended(line->walk) && *line->walk.at == '"') return {take_string(line), place};
    const std::string_view text = take_bare(line);
    if (text == "null") return {};
    return {text, place};
}

/* Any value, nested or not. */
static void skip_value(JsonLine *line)
{
    int64_t depth = 0;
    do {
        skip_blanks(&line->walk);
        if (line_ended(line->walk)) not_json(*line, "a value");
        const char c = *line->walk.at;
        if (c == '"') {
            take_string(line);
        } else if (c == '{' || c == '[') {
            depth++;
            line->walk.at++;
        } else if (depth > 0 && strchr("}],:", c) != nullptr) {
            depth -= c == '}' || c == ']';
            line->walk.at++;
        } else {
            take_bare(line);
        }
    } while (depth > 0);
}

/* One vertex or an array of them. */
static void take_vertices(JsonLine *line)
{
    if (!next_is(line, '[')) {
        line->vertices.push_back(take_name(line));
        return;
    }
    if (next_is(line, ']')) return;
    do {
        line->vertices.push_back(take_name(line));
    } while (next_is(line, ','));
    expect(line, ']', "a comma or ]");
}

static void take_role(JsonLine *line, Role role)
{
    if (role == ROLE_VERTEX)
        take_vertices(line);
    else if (role == ROLE_NONE)
        skip_value(line);
    else
        line->member.words[role] = take_name(line);
}

static void take_object(JsonLine *line)
{
    if (next_is(line, '}')) return;
    do {
        skip_blanks(&line->walk);
        if (line_ended(line->walk) || *line->walk.at != '"') not_json(*line, "a key");
        const Role role = role_of_name(take_string(line));
        expect(line, ':', "a colon");
        take_role(line, role);
    } while (next_is(line, ','));
    expect(line, '}', "a comma or }");
}

static void take_array(JsonLine *line)
{
    static const Role BY_PLACE[] = {ROLE_NET, ROLE_VERTEX, ROLE_NET_WEIGHT};
    size_t i = 0;
    do {
        take_role(line, i < std::size(BY_PLACE) ? BY_PLACE[i] : ROLE_NONE);
        i++;
    } while (next_is(line, ','));
    expect(line, ']', "a comma or ]");
}

/* Whether the line is of a hyperedge and its vertices and no more, and its texts are the file's. */
static bool is_plain_line(const JsonLine &line)
{
    for (const Role role : {ROLE_NET_WEIGHT, ROLE_VERTEX_WEIGHT, ROLE_KIND, ROLE_FIXED, ROLE_GROUP})
        if (line.member.words[role].place.line > 0) return false;
    for (const MemberEntry::Word &vertex : line.vertices)
        if (vertex.place.line == 0) return false;
    return line.copies.empty() && line.number.empty() && line.member.words[ROLE_NET].place.line > 0;
}

static void add_line(JsonLine *line)
{
    MemberEntry *const member = &line->member;
    bool says = !line->vertices.empty();
    for (int role = 0; role < NROLES; role++) says = says || member->words[role].place.line > 0;
    if (!says)
        bad_input(*line->members.builder.budget, {line->walk.line, 1},
                  "the line has neither a hyperedge nor a vertex");
    if (member->words[ROLE_NET].place.line == 0 && line->vertices.size() > 1) {
        line->number = std::to_string(line->walk.line);
        member->words[ROLE_NET] = {line->number, {line->walk.line, 1}};
    }
    if (line->vertices.empty()) return add_member(&line->members, *member);
    if (is_plain_line(*line)) {
        for (const MemberEntry::Word &vertex : line->vertices)
            add_later(&line->members, member->words[ROLE_NET].text, vertex.text);
        return;
    }
    for (const MemberEntry::Word &vertex : line->vertices) {
        member->words[ROLE_VERTEX] = vertex;
        add_member(&line->members, *member);
    }
}

static void take_line(JsonLine *line)
{
    line->member = MemberEntry();
    line->vertices.clear();
    line->copies.clear();
    line->number.clear();
    if (next_is(line, '{'))
        take_object(line);
    else if (next_is(line, '['))
        take_array(line);
    else
        not_json(*line, "an object or an array");
    skip_blanks(&line->walk);
    if (!line_ended(line->walk)) not_json(*line, "the end of the line");
    add_line(line);
}

/* A first line that is an object or an array by itself. */
Recognised recognise_jsonl(std::string_view bytes)
{
    Walk walk = walk_over(bytes.substr(0, MOST_LOOKED_AT));
    skip_space(&walk);
    if (text_ended(walk) || (*walk.at != '{' && *walk.at != '[')) return UNLIKE;
    const char *const begin = walk.at;
    while (!line_ended(walk)) walk.at++;
    const char *end = walk.at;
    while (end > begin && is_walk_blank(end[-1])) end--;
    return end - begin > 2 && end[-1] == (*begin == '{' ? '}' : ']') ? LIKE : UNLIKE;
}

Hypergraph read_jsonl(std::string_view bytes, const Reading &, Findings *findings, Budget *budget)
{
    JsonLine line = {walk_over(bytes), open_members(findings, budget), {}, {}, {}, {}};
    for (skip_space(&line.walk); !text_ended(line.walk); skip_space(&line.walk)) take_line(&line);
    return finish_members(&line.members);
}
