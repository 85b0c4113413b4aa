/* zorpelx/cli/hypergraph.cpp: the reader of hypergraph files.
 *
 * One pass over the text. A mark per vertex (the last hyperedge that listed it) tells repeated
 * ones; the count that zorpel's first pass would make is kept beside, to tell whether it stops.
 */
#include "hypergraph.h"

#include <algorithm>
#include <cstdio>
#include <numeric>

#include "failure.h"
#include "input.h"
#include "reading.h"

constexpr int64_t HOLLOW_COUNT = 1000000, HOLLOW_RATIO = 16;

int64_t net_size(const Hypergraph &graph, int64_t e)
{
    return graph.start[static_cast<size_t>(e) + 1] - graph.start[static_cast<size_t>(e)];
}

int64_t total_weight(const std::vector<int64_t> &weights)
{
    return std::accumulate(weights.begin(), weights.end(), int64_t{0});
}

static long long ll(int64_t number)
{
    return number;
}

static void check_range(Scan *scan, const Token &token)
{
    if (token.kind == TOKEN_NUMBER && !token.fits)
        add_finding(scan->findings, RULE_RANGE, token.place,
                    text_of("%s does not fit 32 bits", shown(token).c_str()));
}

/* A line, or the first part of one, that zorpel does not read at once. */
static void found_long(Scan *scan, const Line &line)
{
    const LineMode mode = scan->reading.lines;
    const Place place = {line.number, line.column + PIECE};
    if (mode == LINES_PIECES)
        add_milder(scan->findings, RULE_LONG_LINE, NOTE, place,
                   "a line is read in pieces: the next one begins here");
    else
        add_milder(scan->findings, RULE_LONG_LINE, mode == LINES_WHOLE ? NOTE : ERROR, place,
                   text_of("the line has %lld characters, more than %lld",
                           ll(line.end - line.begin), ll(PIECE)));
}

/* The next line that is no comment; false at the end of the file. */
static bool data_line(Scan *scan, Line *line)
{
    while (!at_end(scan->text)) {
        *line = take_line(&scan->text);
        const int64_t length = line->end - line->begin;
        if (is_long(*line) || (length == PIECE && scan->text.column > 1 && !at_end(scan->text)))
            found_long(scan, *line);
        if (length > 1 && line->end[-1] == '\n' && line->end[-2] == '\r' && scan->crlf == 0)
            scan->crlf = line->number;
        if (!is_comment(*line)) return true;
    }
    return false;
}

/* Adds a finding about a token that is no number. */
static void found_rubbish(Scan *scan, RuleIndex rule, const Token &token)
{
    if (*token.begin == '%')
        add_finding(scan->findings, RULE_COMMENT, token.place, "% after the start of the line");
    else
        add_finding(scan->findings, rule, token.place,
                    text_of("'%s' is not a number", shown(token).c_str()));
}

static void skip_mark(Scan *scan)
{
    Text *const text = &scan->text;
    if (text->size < 3 || std::string(text->bytes, 3) != "\xef\xbb\xbf") return;
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

static void header_code(Scan *scan, Line *line)
{
    Token token = take_token(line);
    check_range(scan, token);
    if (token.kind == TOKEN_NUMBER) {
        scan->code = token.value;
        check_code(scan, token.place);
        token = take_token(line);
    }
    if (token.kind == TOKEN_END) return;
    add_finding(scan->findings, RULE_HEADER_REST, token.place,
                text_of("'%s' is ignored", shown(token).c_str()));
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
    const bool enough = graph->nvertices >= 2 && graph->nnets >= 0;
    if (!enough)
        add_finding(
            scan->findings, RULE_COUNTS, scan->header,
            text_of("%lld hyperedges and %lld vertices", ll(graph->nnets), ll(graph->nvertices)));
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
        found_rubbish(scan, RULE_RUBBISH, token);
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
    int64_t *const last = &scan->last[static_cast<size_t>(v)];
    if (*last == e) {
        add_finding(
            scan->findings, RULE_REPEATED_PIN, token.place,
            text_of("vertex %lld is in hyperedge %lld already", ll(token.value), ll(e + 1)));
        return;
    }
    *last = e;
    graph->pins.push_back(static_cast<int32_t>(v));
}

static void scan_pins(Scan *scan, Hypergraph *graph, int64_t e, Line *line)
{
    for (;;) {
        const Token token = take_token(line);
        check_range(scan, token);
        const bool listed = token.kind == TOKEN_NUMBER && token.value >= scan->reading.first;
        if (!listed) return list_ended(scan, line, token);
        note_number(scan, token);
        if (token.fits) add_pin(scan, graph, e, token);
    }
}

/* What zorpel's first pass counts on a hyperedge line: the numbers up to the first that is not
 * positive, less one for the weight. */
static int64_t first_pass_count(const Scan &scan, Line line, bool netweights)
{
    int64_t count = netweights ? -1 : 0;
    for (Token token = take_token(&line);
         token.kind == TOKEN_NUMBER && token.value >= (scan.reading.first == 0 ? 0 : 1);
         token = take_token(&line))
        count++;
    return count;
}

static void check_size(Scan *scan, const Hypergraph &graph, int64_t e, const Line &line)
{
    const int64_t size = net_size(graph, e);
    const Place place = {line.number, line.column};
    if (size == 0)
        add_milder(scan->findings, RULE_EMPTY_NET, e + 1 < graph.nnets ? ERROR : WARNING, place,
                   text_of("hyperedge %lld has no vertex", ll(e + 1)));
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
        const int64_t room = first_pass_count(*scan, line, graph->netweights);
        const Place place = {line.number, line.column};
        scan->room += room;
        scan->netplace.push_back(place);
        graph->netwgt.push_back(graph->netweights ? net_weight(scan, &line) : 1);
        scan_pins(scan, graph, e, &line);
        graph->start.push_back(static_cast<int64_t>(graph->pins.size()));
        if (scan->tight.line == 0 && net_size(*graph, e) > room) scan->tight = place;
        check_size(scan, *graph, e, line);
    }
}

static int64_t vertex_weight(Scan *scan, Line *line)
{
    Token token = take_token(line);
    check_range(scan, token);
    if (token.kind == TOKEN_END)
        add_finding(scan->findings, RULE_NO_VERTEX_WEIGHT, token.place, "the line is blank");
    if (token.kind == TOKEN_RUBBISH) found_rubbish(scan, RULE_NO_VERTEX_WEIGHT, token);
    if (token.kind != TOKEN_NUMBER) return 0;
    if (token.value < 0)
        add_finding(scan->findings, RULE_NEGATIVE_WEIGHT, token.place,
                    text_of("vertex weight %lld", ll(token.value)));
    if (token.value == 0)
        add_finding(scan->findings, RULE_ZERO_VERTEX_WEIGHT, token.place, "vertex weight 0");
    const int64_t weight = token.value;
    if ((token = take_token(line)).kind != TOKEN_END)
        add_finding(scan->findings, RULE_WEIGHT_REST, token.place,
                    text_of("'%s' is ignored", shown(token).c_str()));
    return weight;
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
        scan->wgtplace.push_back({line.number, line.column});
        graph->vertexwgt[static_cast<size_t>(v)] = vertex_weight(scan, &line);
    }
}

static void scan_rest(Scan *scan, const Hypergraph &graph)
{
    Line line;
    Place place = {0, 0};
    int64_t nlines = 0;
    while (data_line(scan, &line)) {
        if (is_blank(line)) continue;
        if (nlines++ == 0) place = {line.number, 1};
    }
    if (nlines == 0) return;
    const bool weights = nlines == graph.nvertices && !graph.vertexweights;
    add_finding(
        scan->findings, RULE_TRAILING, place,
        text_of("%lld line%s too many%s", ll(nlines), nlines == 1 ? "" : "s",
                weights ? ", as many as vertices: the format code may lack vertex weights" : ""));
}

Hypergraph scan_hypergraph(const std::string &bytes, Reading reading, Findings *findings)
{
    Hypergraph graph = {0, 0, false, false, {0}, {}, {}, {}};
    Scan scan = {};
    scan.text = text_over(bytes, reading.lines == LINES_PIECES);
    scan.reading = reading;
    scan.findings = findings;
    if (!scan_header(&scan, &graph)) {
        graph.nvertices = graph.nnets = 0;
        return graph;
    }
    scan.last.assign(static_cast<size_t>(graph.nvertices), -1);
    graph.vertexwgt.assign(static_cast<size_t>(graph.nvertices), 1);
    scan_nets(&scan, &graph);
    if (graph.vertexweights) scan_vertex_weights(&scan, &graph);
    scan_rest(&scan, graph);
    check_whole(&scan, graph);
    return graph;
}

static const Finding *first_warning(const Findings &findings)
{
    for (const Finding &finding : findings.listed)
        if (finding.severity >= WARNING) return &finding;
    return nullptr;
}

Hypergraph read_hypergraph(const std::string &name, Reading reading, bool strict,
                           Findings *findings)
{
    Hypergraph graph = scan_hypergraph(read_whole(name), reading, findings);
    const Finding *const bad = strict ? first_warning(*findings) : first_error(*findings);
    if (bad != nullptr)
        fail(STATUS_BAD_INPUT, "%s\n(zorpelx lint tells more)",
             finding_line(shown_name(name), *bad).c_str());
    return graph;
}

void tell_warnings(const std::string &name, const Findings &findings)
{
    const int64_t count = findings.severities[WARNING];
    if (count > 0)
        fprintf(stderr, "zorpelx: %s: %lld warning%s; zorpelx lint tells more\n",
                shown_name(name).c_str(), ll(count), count == 1 ? "" : "s");
}
