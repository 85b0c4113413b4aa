// SPDX-License-Identifier: MIT
/* zorpelx/files/read_hgr.cpp: the reader of hypergraph files.
 *
 * One pass over the text. A mark per vertex (the last hyperedge that listed it) shows repeated
 * ones; the count that zorpel's first pass would make is kept beside, to see whether it stops.
 * Arrays grow with the lines that fill them: of the header only the number of vertices is believed,
 * and that as far as the length of the file bears it out.
 */
#include "read_hgr.h"

#include <algorithm>

#include "casts.h"
#include "fileerror.h"
#include "known.h"
#include "reading.h"
#include "sizes.h"

constexpr int64_t HOLLOW_COUNT = 1000000, HOLLOW_RATIO = 16;

static void check_range(Scan *scan, const Token &token)
{
    if (token.kind == TOKEN_NUMBER && !token.fits)
        add_finding(scan->findings, RULE_RANGE, token.place,
                    text_of("%s does not fit 32 bits", shown(token).c_str()));
}

/* A line, or the first part of one, that zorpel does not read at once. */
static void found_long(Scan *scan, const Line &line)
{
    static const Severity severities[] = {ERROR, WARNING, NOTE}; // by LineMode
    const LineMode mode = scan->reading.lines;
    add_finding_as(
        scan->findings, RULE_LONG_LINE, severities[mode], {line.number, line.column + PIECE},
        mode == LINES_PIECES ? "a line is read in pieces: the next one begins here"
                             : text_of("the line has %lld characters; zorpel reads %lld at a time",
                                       ll(line.end - line.begin), ll(PIECE)));
}

/* The next line that is no comment; false at the end of the file. */
static bool data_line(Scan *scan, Line *line)
{
    while (!at_end(scan->text)) {
        *line = take_line(&scan->text);
        const int64_t length = line->end - line->begin;
        look_at_clock(scan, scan->text.place);
        if (is_long(*line) || (length == PIECE && scan->text.column > 1 && !at_end(scan->text)))
            found_long(scan, *line);
        if (length > 1 && line->end[-1] == '\n' && line->end[-2] == '\r' && scan->crlf == 0)
            scan->crlf = line->number;
        if (!is_comment(*line)) return true;
    }
    return false;
}

/* Adds a finding about a token that is no number: a comment, which loses nothing, or text. */
static void found_rubbish(Scan *scan, RuleIndex rule, const Line &line, const Token &token)
{
    if (*token.begin == '%')
        add_finding(scan->findings, RULE_COMMENT, token.place, "% after the start of the line");
    else
        add_finding(scan->findings, rule, token.place,
                    text_of("'%s' is not a whole number", shown_word(line, token).c_str()));
}

static void skip_mark(Scan *scan)
{
    Text *const text = &scan->text;
    if (text->size < 3 || std::string_view(text->bytes, 3) != "\xef\xbb\xbf") return;
    text->place = 3;
    add_finding(scan->findings, RULE_MARK, {1, 1}, "the bytes EF BB BF before the first line");
}

static bool header_count(Scan *scan, Line *line, const char *what, int64_t *count)
{
    const Token token = take_token(line);
    check_range(scan, token);
    if (token.kind != TOKEN_NUMBER)
        add_finding(scan->findings, RULE_HEADER_NUMBERS, token.place,
                    text_of("the number of %s is missing", what));
    *count = token.value;
    return token.kind == TOKEN_NUMBER && token.fits;
}

static void check_code(Scan *scan, Place place)
{
    const int64_t code = scan->code;
    if (code > 99)
        add_finding(scan->findings, RULE_FORMAT_CODE, place, text_of("format code %lld", ll(code)));
    else if (code != 0 && code != 1 && code != 10 && code != 11)
        add_finding(scan->findings, RULE_ODD_CODE, place,
                    text_of("format code %lld is read as %d", ll(code),
                            (code / 10 % 10 > 0 ? 10 : 0) + (code % 10 > 0 ? 1 : 0)));
}

/* What stands behind the numbers of the header that are read. A third word that is no number is
 * read as no format code, and all weights go with it. */
static void header_rest(Scan *scan, const Line &line, const Token &token, bool coded)
{
    const bool number = token.kind == TOKEN_NUMBER;
    if (token.kind == TOKEN_END) return;
    if (*token.begin == '%') return found_rubbish(scan, RULE_HEADER_REST, line, token);
    const bool glued = token.begin > line.begin && token.begin[-1] >= '0' && token.begin[-1] <= '9';
    add_finding_as(scan->findings, RULE_HEADER_REST, (glued || !coded) && !number ? LOSS : WARNING,
                   token.place, text_of("'%s' is ignored", shown(token).c_str()));
}

static void header_code(Scan *scan, Line *line)
{
    Token token = take_token(line);
    const bool coded = token.kind == TOKEN_NUMBER;
    check_range(scan, token);
    if (coded) {
        scan->code = token.value;
        check_code(scan, token.place);
        token = take_token(line);
    }
    header_rest(scan, *line, token, coded);
}

/* False if there is nothing to go on with. */
static bool scan_header(Scan *scan, Hypergraph *graph)
{
    Line line;
    skip_mark(scan);
    if (!data_line(scan, &line)) {
        add_finding(scan->findings, RULE_NO_HEADER, {0, 0}, "no line but comments");
        return false;
    }
    scan->header = {line.number, line.column};
    if (!header_count(scan, &line, "hyperedges", &graph->nnets)) return false;
    if (!header_count(scan, &line, "vertices", &graph->nvertices)) return false;
    header_code(scan, &line);
    const bool enough = graph->nvertices >= (scan->reading.few ? 0 : 2) && graph->nnets >= 0;
    if (!enough) add_finding(scan->findings, RULE_COUNTS, scan->header, nets_and_vertices(*graph));
    const bool hollow =
        graph->nvertices > HOLLOW_COUNT && graph->nvertices / HOLLOW_RATIO > scan->text.size;
    if (hollow)
        add_finding(scan->findings, RULE_HOLLOW, scan->header,
                    text_of("%lld vertices in a file of %lld bytes", ll(graph->nvertices),
                            ll(scan->text.size)));
    graph->netweights = scan->code % 10 > 0;
    graph->vertexweights = scan->code / 10 % 10 > 0;
    return enough && !hollow && scan->code <= 99;
}

static int64_t net_weight(Scan *scan, Line *line)
{
    const char *const begin = line->next;
    const Token token = take_token(line);
    check_range(scan, token);
    if (token.kind != TOKEN_NUMBER) {
        add_finding(scan->findings, RULE_NO_NET_WEIGHT, token.place,
                    token.kind == TOKEN_END
                        ? "the line is blank"
                        : text_of("'%s' is not a number", shown(token).c_str()));
        line->next = begin; // the list of vertices begins where the weight should
        return 0;
    }
    if (token.value < 0)
        add_finding(scan->findings, RULE_NEGATIVE_WEIGHT, token.place,
                    text_of("hyperedge weight %lld", ll(token.value)));
    if (token.value == 0)
        add_finding(scan->findings, RULE_ZERO_NET_WEIGHT, token.place, "hyperedge weight 0");
    return token.value;
}

static void note_number(Scan *scan, const Token &token)
{
    if (token.kind != TOKEN_NUMBER) return;
    scan->largest = std::max(scan->largest, token.value);
    if (token.value == 0 && scan->zero.line == 0) scan->zero = token.place;
}

/* Reports what ended a list before its line did, and looks through the rest of the line. */
static void list_ended(Scan *scan, Line *line, Token token)
{
    if (token.kind == TOKEN_END) return;
    if (token.kind == TOKEN_RUBBISH)
        found_rubbish(scan, RULE_RUBBISH, *line, token);
    else
        add_finding(scan->findings, RULE_LIST_ENDED, token.place,
                    text_of("%lld ends the list%s", ll(token.value),
                            take_token(line).kind == TOKEN_END ? "" : "; more follows"));
    line->next = token.begin;
    while ((token = take_token(line)).kind != TOKEN_END) note_number(scan, token);
}

static void add_pin(Scan *scan, Hypergraph *graph, int64_t e, const Token &token)
{
    const int64_t v = token.value - scan->reading.first;
    if (v >= graph->nvertices) {
        add_finding(scan->findings, RULE_VERTEX_ABOVE, token.place,
                    text_of("vertex %lld of %lld", ll(token.value), ll(graph->nvertices)));
        return;
    }
    int32_t *const last = &scan->last[static_cast<size_t>(v)];
    if (*last == e) {
        add_finding(
            scan->findings, RULE_REPEATED_PIN, token.place,
            text_of("vertex %lld is in hyperedge %lld already", ll(token.value), ll(e + 1)));
        return;
    }
    *last = static_cast<int32_t>(e);
    push_charged(scan->budget, &graph->pins, static_cast<int32_t>(v));
}

static bool is_digit(const char *s, const char *end)
{
    return s < end && *s >= '0' && *s <= '9';
}

/* Takes the pins of a line as most files have them: short numbers between single blanks, each of a
 * vertex that is there and new to the hyperedge. Stops before anything else, which scan_pins()
 * looks at; returns how many were taken. */
static int64_t take_plain_pins(Scan *scan, Hypergraph *graph, int64_t e, Line *line)
{
    constexpr int MOST_DIGITS = 10;
    const int64_t first = scan->reading.first, least = std::max(first, int64_t{1});
    const int64_t most = graph->nvertices + first - 1;
    const char *s = line->next, *const end = line->end;
    int32_t *const last = scan->last.data();
    int64_t count = 0, largest = scan->largest;
    for (;; count++) {
        line->next = s;
        while (s < end && *s == ' ') s++;
        const char *const digits = s;
        int64_t value = 0;
        for (; is_digit(s, end) && s - digits < MOST_DIGITS; s++) value = 10 * value + (*s - '0');
        if (s == end || (*s != ' ' && *s != '\n') || value < least || value > most) break;
        int32_t *const seen = &last[value - first];
        if (*seen == static_cast<int32_t>(e)) break;
        *seen = static_cast<int32_t>(e);
        largest = std::max(largest, value);
        push_charged(scan->budget, &graph->pins, static_cast<int32_t>(value - first));
        look_at_clock(scan, s - scan->text.bytes);
    }
    scan->largest = largest;
    return count;
}

/* Returns how many numbers the list holds, repeated ones included. */
static int64_t scan_pins(Scan *scan, Hypergraph *graph, int64_t e, Line *line)
{
    for (int64_t count = take_plain_pins(scan, graph, e, line);; count++) {
        const Token token = take_token(line);
        check_range(scan, token);
        look_at_clock(scan, token.begin - scan->text.bytes);
        const bool listed = token.kind == TOKEN_NUMBER && token.value >= scan->reading.first;
        if (!listed) {
            list_ended(scan, line, token);
            return count;
        }
        note_number(scan, token);
        if (token.fits) add_pin(scan, graph, e, token);
    }
}

static void check_size(Scan *scan, const Hypergraph &graph, int64_t e, const Line &line)
{
    const int64_t size = net_size(graph, e);
    const Place place = {line.number, line.column};
    const bool last = e + 1 == graph.nnets; // zorpel takes it
    if (size == 0)
        add_finding_as(scan->findings, RULE_EMPTY_NET, last ? LOSS : ERROR, place,
                       text_of("hyperedge %lld has no vertex%s", ll(e + 1),
                               last ? "; its line may be missing" : ""));
    if (size == 1)
        add_finding(scan->findings, RULE_SINGLE_PIN, place,
                    text_of("hyperedge %lld has one vertex", ll(e + 1)));
}

static void scan_nets(Scan *scan, Hypergraph *graph)
{
    Line line;
    for (int64_t e = 0; e < graph->nnets; e++) {
        if (!data_line(scan, &line)) {
            add_finding(scan->findings, RULE_NETS_MISSING, {scan->text.number + 1, 1},
                        text_of("%lld of %lld hyperedges are there", ll(e), ll(graph->nnets)));
            graph->nnets = e;
            break;
        }
        const Place place = {line.number, line.column};
        const int64_t weight = graph->netweights ? net_weight(scan, &line) : 1;
        push_charged(scan->budget, &scan->netplace, place);
        push_charged(scan->budget, &graph->netwgt, weight);
        const int64_t listed = scan_pins(scan, graph, e, &line);
        // zorpel's first pass counts the numbers up to the first that is not positive, less one for
        // the weight
        const int64_t room = weight >= scan->reading.first || !graph->netweights ? listed : -1;
        scan->room += room;
        push_charged(scan->budget, &graph->start, static_cast<int64_t>(graph->pins.size()));
        if (scan->tight.line == 0 && net_size(*graph, e) > room) scan->tight = place;
        check_size(scan, *graph, e, line);
    }
}

static void weight_rest(Scan *scan, Line *line)
{
    const Token token = take_token(line);
    if (token.kind == TOKEN_RUBBISH) found_rubbish(scan, RULE_WEIGHT_REST, *line, token);
    if (token.kind == TOKEN_NUMBER)
        add_finding(scan->findings, RULE_WEIGHT_REST, token.place,
                    text_of("'%s' is ignored", shown(token).c_str()));
}

static int64_t vertex_weight(Scan *scan, Line *line)
{
    const Token token = take_token(line);
    check_range(scan, token);
    if (token.kind == TOKEN_END)
        add_finding(scan->findings, RULE_NO_VERTEX_WEIGHT, token.place, "the line is blank");
    if (token.kind == TOKEN_RUBBISH)
        add_finding(scan->findings, RULE_NO_VERTEX_WEIGHT, token.place,
                    text_of("'%s' is not a whole number", shown_word(*line, token).c_str()));
    if (token.kind != TOKEN_NUMBER) return 0;
    if (token.value < 0)
        add_finding(scan->findings, RULE_NEGATIVE_WEIGHT, token.place,
                    text_of("vertex weight %lld", ll(token.value)));
    if (token.value == 0)
        add_finding(scan->findings, RULE_ZERO_VERTEX_WEIGHT, token.place, "vertex weight 0");
    weight_rest(scan, line);
    return token.value;
}

static void scan_vertex_weights(Scan *scan, Hypergraph *graph)
{
    Line line;
    for (int64_t v = 0; v < graph->nvertices; v++) {
        if (!data_line(scan, &line)) {
            add_finding(
                scan->findings, RULE_WEIGHTS_MISSING, {scan->text.number + 1, 1},
                text_of("%lld of %lld vertex weights are there", ll(v), ll(graph->nvertices)));
            break;
        }
        push_charged(scan->budget, &scan->wgtplace, Place{line.number, line.column});
        graph->vertexwgt[static_cast<size_t>(v)] = vertex_weight(scan, &line);
    }
}

static void scan_rest(Scan *scan, const Hypergraph &graph)
{
    Line line;
    Place place = {0, 0};
    int64_t nlines = 0;
    bool numbers = false; // some line begins with one
    while (data_line(scan, &line)) {
        if (is_blank(line)) continue;
        if (nlines++ == 0) place = {line.number, 1};
        numbers = numbers || take_token(&line).kind == TOKEN_NUMBER;
    }
    if (nlines == 0) return;
    const bool weights = nlines == graph.nvertices && !graph.vertexweights;
    add_finding_as(
        scan->findings, RULE_TRAILING, numbers ? LOSS : WARNING, place,
        text_of("%lld line%s too many%s", ll(nlines), nlines == 1 ? "" : "s",
                weights ? ", as many as vertices: the format code may lack vertex weights" : ""));
}

/* The arrays of which the header alone gives the size. */
static void make_vertex_arrays(Scan *scan, Hypergraph *graph)
{
    const size_t nvertices = static_cast<size_t>(graph->nvertices);
    charge(scan->budget, nvertices * (sizeof scan->last[0] + sizeof graph->vertexwgt[0]));
    scan->last.assign(nvertices, -1);
    graph->vertexwgt.assign(nvertices, 1);
}

static void check_end(Scan *scan)
{
    const Text &text = scan->text;
    if (text.size > 0 && text.bytes[text.size - 1] != '\n')
        add_finding(scan->findings, RULE_UNENDED, {text.number, text.column},
                    "the file ends within a line");
}

static void give_back_places(Scan *scan)
{
    give_back(scan->budget, scan->last.capacity() * sizeof scan->last[0] +
                                scan->netplace.capacity() * sizeof scan->netplace[0] +
                                scan->wgtplace.capacity() * sizeof scan->wgtplace[0]);
}

/* Of formats of which some files are read. */
static const char *what_is_read(std::string_view format)
{
    if (format == "Bookshelf") return "; an .aux file that names .nodes and .nets is read";
    return format == "JSON" ? "; of these, HIF and netlists of Yosys are read" : "";
}

Hypergraph scan_hypergraph(std::string_view bytes, Reading reading, Findings *findings,
                           Budget *budget)
{
    Hypergraph graph = {0, 0, false, false, {0}, {}, {}, {}};
    Scan scan = {};
    scan.text = text_over(bytes, reading.lines == LINES_PIECES);
    scan.reading = reading;
    scan.findings = findings;
    scan.budget = budget;
    charge(budget, graph.start.capacity() * sizeof graph.start[0]);
    if (const char *const format = known_format(bytes))
        add_finding(findings, RULE_OTHER_FORMAT, {1, 1},
                    text_of("it begins as %s files do%s", format, what_is_read(format)));
    if (!scan_header(&scan, &graph)) {
        graph.nvertices = graph.nnets = 0;
        return graph;
    }
    make_vertex_arrays(&scan, &graph);
    scan_nets(&scan, &graph);
    if (graph.vertexweights) scan_vertex_weights(&scan, &graph);
    scan_rest(&scan, graph);
    check_end(&scan);
    check_whole(&scan, graph);
    give_back_places(&scan);
    return graph;
}

/* zorpel reads lines in pieces, and vertices from 1. */
static bool reads_as_zorpel(Reading reading, const Findings &findings)
{
    if (reading.first != 1) return false;
    return reading.lines == LINES_PIECES || findings.count[RULE_LONG_LINE] == 0;
}

Judgement judge(std::string_view bytes, Reading reading, const Findings &findings, Budget *budget)
{
    if (!reads_as_zorpel(reading, findings)) {
        Findings again;
        Budget own = *budget; // what it takes is given back at its end
        const Reading as_zorpel = {LINES_PIECES, 1, false};
        scan_hypergraph(bytes, as_zorpel, &again, &own);
        return judge(bytes, as_zorpel, again, &own);
    }
    if (findings.stops > 0) return JUDGED_REFUSED;
    return findings.count[RULE_HOLLOW] > 0 ? JUDGED_UNKNOWN : JUDGED_READ;
}
