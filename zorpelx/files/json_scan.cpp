// SPDX-License-Identifier: MIT
/* zorpelx/files/json_scan.cpp: JSON read value by value.
 * Source: Bray, The JavaScript Object Notation (JSON) data interchange format, RFC 8259, 2017. */
#include "json_scan.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "bytes.h"
#include "fileerror.h"
#include "known.h"
#include "told.h"
#include "zorpelx.h"

constexpr int DEEPEST = 500;
constexpr int64_t CLOCK_STRIDE = int64_t{1} << 20; // bytes between two looks at the clock

JsonScan json_over(std::string_view bytes, Budget *budget)
{
    bytes = without_mark(bytes);
    const char *const begin = bytes.data();
    return {begin, begin, begin + bytes.size(), begin, 0, budget, {}};
}

Place json_place(const JsonScan &scan, const char *at)
{
    return place_of({scan.begin, static_cast<size_t>(scan.end - scan.begin)}, at);
}

void json_error(const JsonScan &scan, const char *at, const char *format, ...)
{
    constexpr size_t LONGEST = 512;
    char text[LONGEST];
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    const Place place = json_place(scan, at);
    file_error(ZORPELX_BAD_INPUT, "%s:%lld:%lld: %s", scan.budget->name.c_str(),
               static_cast<long long>(place.line), static_cast<long long>(place.column), text);
}

static bool is_json_space(char c)
{
    return c == ' ' || c == '\n' || c == '\r' || c == '\t';
}

static bool is_json_digit(char c)
{
    return c >= '0' && c <= '9';
}

/* The next character that is not white space, which stays; 0 at the end. */
static char peek(JsonScan *scan)
{
    const char *s = scan->next;
    const char *const end = scan->end;
    while (s < end && is_json_space(*s)) s++;
    scan->next = s;
    return s < end ? *s : '\0';
}

static void expect(JsonScan *scan, char wanted, const char *what)
{
    const char c = peek(scan);
    if (c == wanted && scan->next < scan->end) {
        scan->next++;
        return;
    }
    if (scan->next == scan->end) json_error(*scan, scan->next, "the file ends before %s", what);
    json_error(*scan, scan->next, "there should be %s here", what);
}

const char *next_value(JsonScan *scan)
{
    peek(scan);
    return scan->next;
}

JsonKind json_kind(JsonScan *scan)
{
    const char c = peek(scan);
    if (c == '"') return JSON_STRING;
    if (c == '{') return JSON_OBJECT;
    if (c == '[') return JSON_ARRAY;
    if (c == '-' || is_json_digit(c)) return JSON_NUMBER;
    if (c == 't' || c == 'f' || c == 'n') return JSON_WORD;
    if (scan->next == scan->end) json_error(*scan, scan->next, "the file ends before a value");
    json_error(*scan, scan->next, "there should be a value here");
}

static JsonList open_list(JsonScan *scan, char bracket, const char *what)
{
    expect(scan, bracket, what);
    if (++scan->depth > DEEPEST)
        json_error(*scan, scan->next - 1, "more than %d lists stand one in another", DEEPEST);
    return {true};
}

JsonList open_object(JsonScan *scan)
{
    return open_list(scan, '{', "an object, {...},");
}

JsonList open_array(JsonScan *scan)
{
    return open_list(scan, '[', "an array, [...],");
}

/* To the next member of a list, or behind its end. */
static bool next_member(JsonScan *scan, JsonList *list, char bracket)
{
    if (scan->next >= scan->look) {
        check_time(*scan->budget);
        scan->look = scan->end - scan->next > CLOCK_STRIDE ? scan->next + CLOCK_STRIDE : scan->end;
    }
    if (peek(scan) == bracket) {
        scan->next++;
        scan->depth--;
        return false;
    }
    if (!list->first) expect(scan, ',', bracket == '}' ? "a comma or }" : "a comma or ]");
    list->first = false;
    return true;
}

bool next_key(JsonScan *scan, JsonList *list, std::string_view *key)
{
    if (!next_member(scan, list, '}')) return false;
    if (peek(scan) != '"') expect(scan, '"', "a key in quotes");
    *key = take_string(scan);
    expect(scan, ':', "a colon");
    return true;
}

bool next_item(JsonScan *scan, JsonList *list)
{
    return next_member(scan, list, ']');
}

static int hex_digit(char c)
{
    if (is_json_digit(c)) return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

/* The four digits behind \u. */
static unsigned take_hex(JsonScan *scan)
{
    unsigned code = 0;
    for (int i = 0; i < 4; i++, scan->next++) {
        const int digit = scan->next < scan->end ? hex_digit(*scan->next) : -1;
        if (digit < 0) json_error(*scan, scan->next, "\\u needs four hexadecimal digits");
        code = 16 * code + static_cast<unsigned>(digit);
    }
    return code;
}

static void add_utf8(std::string *text, unsigned code)
{
    const auto add = [text](unsigned byte) { *text += static_cast<char>(byte); };
    if (code < 0x80) {
        add(code);
    } else if (code < 0x800) {
        add(0xc0 | code >> 6);
        add(0x80 | (code & 0x3f));
    } else if (code < 0x10000) {
        add(0xe0 | code >> 12);
        add(0x80 | (code >> 6 & 0x3f));
        add(0x80 | (code & 0x3f));
    } else {
        add(0xf0 | code >> 18);
        add(0x80 | (code >> 12 & 0x3f));
        add(0x80 | (code >> 6 & 0x3f));
        add(0x80 | (code & 0x3f));
    }
}

/* The character of one or two \u escapes; a half of a pair alone becomes U+FFFD. */
static void take_unicode(JsonScan *scan, std::string *text)
{
    constexpr unsigned HIGH = 0xd800, LOW = 0xdc00, AFTER = 0xe000, UNKNOWN = 0xfffd;
    const unsigned code = take_hex(scan);
    if (code < HIGH || code >= AFTER) return add_utf8(text, code);
    const bool more = scan->end - scan->next >= 2 && scan->next[0] == '\\' && scan->next[1] == 'u';
    if (code >= LOW || !more) return add_utf8(text, UNKNOWN);
    const char *const second = scan->next;
    scan->next += 2;
    const unsigned low = take_hex(scan);
    if (low >= LOW && low < AFTER)
        return add_utf8(text, 0x10000 + ((code - HIGH) << 10) + (low - LOW));
    scan->next = second;
    add_utf8(text, UNKNOWN);
}

static void take_escape(JsonScan *scan, std::string *text)
{
    static const char LETTERS[] = "\"\\/bfnrt", MEANT[] = "\"\\/\b\f\n\r\t";
    const char *const backslash = scan->next++;
    const char c = scan->next < scan->end ? *scan->next : '\0';
    scan->next += scan->next < scan->end;
    if (c == 'u') return take_unicode(scan, text);
    const char *const letter = c != '\0' ? strchr(LETTERS, c) : nullptr;
    if (letter == nullptr) json_error(*scan, backslash, "a backslash that begins no escape");
    *text += MEANT[letter - LETTERS];
}

/* To the next quote, backslash or control character. */
static const char *plain_end(const char *s, const char *end)
{
    while (s < end && *s != '"' && *s != '\\' && static_cast<unsigned char>(*s) >= ' ') s++;
    return s;
}

static void check_unended(const JsonScan &scan, const char *quote)
{
    if (scan.next == scan.end) json_error(scan, quote, "a string that does not end");
    if (static_cast<unsigned char>(*scan.next) < ' ')
        json_error(scan, scan.next, "a control character within a string");
}

static std::string_view take_escaped(JsonScan *scan, const char *quote)
{
    std::string text(quote + 1, scan->next);
    while (scan->next == scan->end || *scan->next != '"') {
        check_unended(*scan, quote);
        take_escape(scan, &text);
        const char *const plain = scan->next;
        scan->next = plain_end(plain, scan->end);
        text.append(plain, scan->next);
    }
    scan->next++;
    charge(scan->budget, sizeof text + text.size());
    return scan->unescaped.emplace_back(std::move(text));
}

std::string_view take_string(JsonScan *scan)
{
    expect(scan, '"', "a string");
    const char *const begin = scan->next;
    scan->next = plain_end(begin, scan->end);
    if (scan->next < scan->end && *scan->next == '"') {
        scan->next++;
        return {begin, static_cast<size_t>(scan->next - 1 - begin)};
    }
    return take_escaped(scan, begin - 1);
}

static void take_digits(JsonScan *scan, const char *number)
{
    if (scan->next == scan->end || !is_json_digit(*scan->next))
        json_error(*scan, number, "a number that lacks a digit");
    while (scan->next < scan->end && is_json_digit(*scan->next)) scan->next++;
}

static bool skips(JsonScan *scan, char c)
{
    if (scan->next == scan->end || *scan->next != c) return false;
    scan->next++;
    return true;
}

std::string_view take_number(JsonScan *scan)
{
    if (json_kind(scan) != JSON_NUMBER) json_error(*scan, scan->next, "there should be a number");
    const char *const begin = scan->next;
    skips(scan, '-');
    const bool zero = scan->next < scan->end && *scan->next == '0';
    const char *const digits = scan->next;
    take_digits(scan, begin);
    if (zero && scan->next - digits > 1) json_error(*scan, begin, "a number that begins with 0");
    if (skips(scan, '.')) take_digits(scan, begin);
    if (skips(scan, 'e') || skips(scan, 'E')) {
        if (!skips(scan, '+')) skips(scan, '-');
        take_digits(scan, begin);
    }
    return {begin, static_cast<size_t>(scan->next - begin)};
}

bool is_whole(std::string_view number, int64_t *value)
{
    constexpr size_t MOST_DIGITS = 18;
    const bool negative = !number.empty() && number[0] == '-';
    const std::string_view digits = number.substr(negative ? 1 : 0);
    size_t ndigits = 0;
    int64_t whole = 0;
    for (; ndigits < digits.size() && is_json_digit(digits[ndigits]) && ndigits < MOST_DIGITS; ndigits++)
        whole = 10 * whole + (digits[ndigits] - '0');
    if (ndigits == digits.size() && ndigits > 0) {
        *value = negative ? -whole : whole;
        return true;
    }
    if (ndigits == MOST_DIGITS && is_json_digit(digits[ndigits])) return false;
    constexpr double EXACT = 9007199254740992; // 2^53
    const double real = strtod(std::string(number).c_str(), nullptr);
    if (!(std::fabs(real) <= EXACT) || real != std::floor(real)) return false;
    *value = static_cast<int64_t>(real);
    return true;
}

static void skip_word(JsonScan *scan)
{
    const std::string_view rest(scan->next, static_cast<size_t>(scan->end - scan->next));
    for (const std::string_view word : {"true", "false", "null"})
        if (rest.substr(0, word.size()) == word) {
            scan->next += word.size();
            return;
        }
    json_error(*scan, scan->next, "a word that is none of true, false and null");
}

static void skip_string(JsonScan *scan)
{
    const size_t kept = scan->unescaped.size();
    const std::string_view text = take_string(scan);
    if (scan->unescaped.size() == kept) return;
    give_back(scan->budget, sizeof(std::string) + text.size());
    scan->unescaped.pop_back();
}

static void skip_object(JsonScan *scan)
{
    for (JsonList list = open_object(scan); next_member(scan, &list, '}');) {
        if (peek(scan) != '"') expect(scan, '"', "a key in quotes");
        skip_string(scan);
        expect(scan, ':', "a colon");
        skip_value(scan);
    }
}

std::string_view skip_value(JsonScan *scan)
{
    const JsonKind kind = json_kind(scan);
    const char *const begin = scan->next;
    if (kind == JSON_OBJECT) skip_object(scan);
    if (kind == JSON_ARRAY)
        for (JsonList list = open_array(scan); next_item(scan, &list);) skip_value(scan);
    if (kind == JSON_STRING) skip_string(scan);
    if (kind == JSON_NUMBER) take_number(scan);
    if (kind == JSON_WORD) skip_word(scan);
    return {begin, static_cast<size_t>(scan->next - begin)};
}

void end_json(JsonScan *scan)
{
    peek(scan);
    if (scan->next < scan->end) json_error(*scan, scan->next, "more text behind the end");
    assert(scan->depth == 0);
}

/* The string that begins at text[i], without its quotes; i goes behind it. */
static std::string_view string_at(std::string_view text, size_t *i)
{
    const size_t begin = *i + 1;
    for (*i = begin; *i < text.size() && text[*i] != '"'; ++*i)
        if (text[*i] == '\\') ++*i;
    *i = std::min(*i, text.size());
    const std::string_view string = text.substr(begin, *i - begin);
    *i = std::min(*i + 1, text.size());
    return string;
}

bool has_top_key(std::string_view text, std::string_view key)
{
    text = text.substr(0, MOST_LOOKED_AT);
    size_t i = text.find_first_not_of(" \t\r\n\xef\xbb\xbf");
    if (i == std::string_view::npos || text[i] != '{') return false;
    for (int depth = 0; i < text.size();) {
        if (text[i] == '"') {
            const std::string_view string = string_at(text, &i);
            const size_t next = std::min(text.find_first_not_of(" \t\r\n", i), text.size());
            if (depth == 1 && string == key && next < text.size() && text[next] == ':') return true;
            continue;
        }
        depth += (text[i] == '{' || text[i] == '[') - (text[i] == '}' || text[i] == ']');
        i++;
    }
    return false;
}

size_t utf8_length(std::string_view text)
{
    const auto byte = [text](size_t i) { return static_cast<unsigned char>(text[i]); };
    const size_t length = byte(0) < 0x80 ? 1 : byte(0) < 0xe0 ? 2 : byte(0) < 0xf0 ? 3 : 4;
    if (length == 1) return 1;
    if (byte(0) < 0xc2 || byte(0) > 0xf4 || text.size() < length) return 0;
    for (size_t i = 1; i < length; i++)
        if ((byte(i) & 0xc0) != 0x80) return 0;
    const unsigned pair = static_cast<unsigned>(byte(0)) << 8 | byte(1);
    const bool overlong = (pair >= 0xe000 && pair < 0xe0a0) || (pair >= 0xf000 && pair < 0xf090);
    const bool outside = (pair >= 0xeda0 && pair < 0xee00) || pair >= 0xf490;
    return overlong || outside ? 0 : length;
}

static void add_quoted(std::string *quoted, char c)
{
    if (c == '"' || c == '\\')
        (*quoted += '\\') += c;
    else if (static_cast<unsigned char>(c) < ' ' || c == '\x7f')
        *quoted += text_of("\\u%04x", static_cast<unsigned>(static_cast<unsigned char>(c)));
    else
        *quoted += c;
}

std::string json_quoted(std::string_view text)
{
    std::string quoted = "\"";
    while (!text.empty()) {
        const size_t length = utf8_length(text);
        if (length == 0) quoted += "\\ufffd";
        if (length == 1) add_quoted(&quoted, text[0]);
        if (length > 1) quoted += text.substr(0, length);
        text.remove_prefix(length == 0 ? 1 : length);
    }
    return quoted + '"';
}
