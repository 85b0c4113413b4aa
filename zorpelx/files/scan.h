/* SPDX-License-Identifier: MIT */
/* zorpelx/files/scan.h: lines and tokens of a text, with their places. */
#ifndef ZORPELX_FILES_SCAN_H
#define ZORPELX_FILES_SCAN_H

#include <cstdint>
#include <string>
#include <string_view>

#include "rules.h"

constexpr int64_t PIECE = 131071; // characters that zorpel reads at a time

/* How a line longer than a piece is read. */
enum LineMode { LINES_REFUSE, LINES_WHOLE, LINES_PIECES };

/* A text being read line by line.
 *   number  of the line last begun, from 1; column: of the character at place, from 1 */
struct Text {
    const char *bytes;
    int64_t size;
    int64_t place;
    int64_t number;
    int64_t column;
    bool pieces;
};

/* A line or, with pieces, a piece of one; its newline is part of it. */
struct Line {
    const char *begin, *next, *end;
    int64_t number;
    int64_t column; // of begin
};

enum TokenKind { TOKEN_END, TOKEN_NUMBER, TOKEN_RUBBISH };

struct Token {
    TokenKind kind;
    int64_t value; // of a number; held at the ends of 64 bits
    bool fits;     // the number fits 32 bits
    Place place;
    const char *begin, *end; // its characters
};

Text text_over(std::string_view bytes, bool pieces);
bool at_end(const Text &text);

/* The next line, up to and with its newline, or the next piece of it. */
Line take_line(Text *text);

bool is_comment(const Line &line);

/* More characters than zorpel reads at a time. */
bool is_long(const Line &line);

bool is_blank(const Line &line);

/* The next token: a decimal number with an optional sign, which ends before the first character
 * that is no digit; or anything else up to white space. The end is where the last token ended. */
Token take_token(Line *line);

/* The next word, up to white space, whatever it is: TOKEN_RUBBISH, or the end. */
Token take_word(Line *line);

std::string_view text_of_token(const Token &token);

/* The token as a message shows it: shortened, unprintable characters as dots. */
std::string shown(const Token &token);

/* The same, from the white space before the token on: "1.5" for the ".5" behind a 1. */
std::string shown_word(const Line &line, const Token &token);

#endif
