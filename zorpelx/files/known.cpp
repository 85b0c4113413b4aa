// SPDX-License-Identifier: MIT
/* zorpelx/files/known.cpp: other formats, recognised by how their files begin.
 *
 * A format is recognised by bytes that no hypergraph file begins with: a magic number, or the first word
 * that is neither blank nor a comment of its own kind. Numbers alone never make one.
 */
#include "known.h"

#include <cctype>
#include <cstring>


struct Magic {
    size_t place;
    std::string_view bytes;
    const char *name;
};

using namespace std::string_view_literals;

static const Magic MAGICS[] = {
    {0, "%%MatrixMarket"sv, "Matrix Market"},
    {0, "%PDF-"sv, "PDF"},
    {0, "PK\3\4"sv, "zip"},
    {0, "7z\xbc\xaf\x27\x1c"sv, "7z"},
    {0, "\x04\x22\x4d\x18"sv, "lz4"},
    {0, "\x1f\x9d"sv, "compress (.Z)"},
    {0, "LZIP"sv, "lzip"},
    {0, "\x89HDF\r\n\x1a\n"sv, "HDF5"},
    {0, "CDF\1"sv, "NetCDF"},
    {0, "\x93NUMPY"sv, "NumPy array"},
    {0, "MATLAB 5.0"sv, "MATLAB"},
    {0, "PAR1"sv, "Parquet"},
    {0, "ARROW1"sv, "Arrow"},
    {0, "SQLite format 3"sv, "SQLite"},
    {0,
     "\x7f"
     "ELF"sv,
     "ELF"},
    {0, "\x89PNG"sv, "PNG"},
    {0, "\xff\xfe"sv, "UTF-16 text"},
    {0, "\xfe\xff"sv, "UTF-16 text"},
    {257, "ustar"sv, "tar"},
};

/* The first word, letters in any case, behind blanks and comments. */
struct Opening {
    std::string_view word; // in small letters
    const char *name;
};

static const Opening OPENINGS[] = {
    {".model", "BLIF"},
    {".inputs", "BLIF"},
    {".subckt", "SPICE"},
    {"module", "Verilog"},
    {"`timescale", "Verilog"},
    {"entity", "VHDL"},
    {"library", "VHDL or Liberty"},
    {"(edif", "EDIF"},
    {"(kicad_pcb", "KiCad board"},
    {"p cnf", "DIMACS CNF"},
    {"p edge", "DIMACS graph"},
    {"p col", "DIMACS graph"},
    {"ucla", "Bookshelf"},
    {"rowbasedplacement", "Bookshelf"},
    {"<?xml", "XML"},
    {"<graphml", "GraphML"},
    {"<!doctype", "HTML"},
    {"<html", "HTML"},
    {"graph", "DOT or GML"},
    {"digraph", "DOT"},
    {"strict graph", "DOT"},
    {"strict digraph", "DOT"},
    {"*vertices", "Pajek"},
    {"version", "LEF or DEF"},
};

static bool begins(std::string_view text, std::string_view with)
{
    return text.substr(0, with.size()) == with;
}

static char small(char c)
{
    return static_cast<char>(tolower(static_cast<unsigned char>(c)));
}

static bool begins_in_any_case(std::string_view text, std::string_view with)
{
    if (text.size() < with.size()) return false;
    for (size_t i = 0; i < with.size(); i++)
        if (small(text[i]) != with[i]) return false;
    return true;
}

static bool is_word_end(std::string_view text, size_t place)
{
    return place >= text.size() || !isalnum(static_cast<unsigned char>(text[place]));
}

static std::string_view without_line(std::string_view text)
{
    const size_t newline = text.find('\n');
    return newline == std::string_view::npos ? "" : text.substr(newline + 1);
}

/* A line that is a comment where it belongs: "# text", "// text" or, of DIMACS, "c text". */
static bool is_foreign_comment(std::string_view text)
{
    if (begins(text, "#") || begins(text, "//")) return true;
    return !text.empty() && text[0] == 'c' &&
           (text.size() == 1 || text[1] == ' ' || text[1] == '\n' || text[1] == '\r');
}

/* The text from its first word on. */
static std::string_view from_first_word(std::string_view text)
{
    for (;;) {
        const size_t word = text.find_first_not_of(" \t\r\n\v\f");
        if (word == std::string_view::npos) return "";
        text = text.substr(word);
        if (begins(text, "/*")) {
            const size_t end = text.find("*/", 2);
            text = end == std::string_view::npos ? "" : text.substr(end + 2);
        } else if (is_foreign_comment(text)) {
            text = without_line(text);
        } else {
            return text;
        }
    }
}

/* "{" or "[" and then what JSON goes on with. */
static bool looks_like_json(std::string_view text)
{
    if (text.empty() || (text[0] != '{' && text[0] != '[')) return false;
    const size_t next = text.find_first_not_of(" \t\r\n", 1);
    return next != std::string_view::npos && strchr("{}[]\"-0123456789tfn", text[next]) != nullptr;
}

/* A first line of words or numbers between commas. */
static bool looks_like_csv(std::string_view text)
{
    const std::string_view line = text.substr(0, text.find('\n'));
    return line.find(',') != std::string_view::npos;
}

static bool is_text(std::string_view bytes)
{
    return bytes.find('\0') == std::string_view::npos;
}

const char *known_format(std::string_view bytes)
{
    bytes = bytes.substr(0, MOST_LOOKED_AT);
    for (const Magic &magic : MAGICS)
        if (bytes.size() > magic.place && begins(bytes.substr(magic.place), magic.bytes))
            return magic.name;
    if (!is_text(bytes)) return nullptr;
    if (begins(bytes, "\xef\xbb\xbf")) bytes = bytes.substr(3);
    const std::string_view text = from_first_word(bytes);
    for (const Opening &opening : OPENINGS)
        if (begins_in_any_case(text, opening.word) && is_word_end(text, opening.word.size()))
            return opening.name;
    if (looks_like_json(text)) return "JSON";
    if (text.empty() || text[0] == '%') return nullptr;
    return looks_like_csv(text) ? "CSV" : nullptr;
}
