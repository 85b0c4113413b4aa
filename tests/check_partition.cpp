// SPDX-License-Identifier: MIT
/* tests/check_partition.cpp: check_partition, a judge of partition files that trusts nobody.
 *
 * It reads the hypergraph, partition and fix files again with code of its own, shares not a line
 * with the library, includes none of its headers, and counts everything afresh in 64 bits:
 *   K1  the partition file holds one part number of 0 .. NPARTS-1 a line, a line for each vertex
 *   K2  with --fix FIX, every vertex with an entry of 0 or more is in that part
 *   K3  with --cut N, the cut is N
 *   K4  with --ub PERCENT, every bisection that leads to the parts is balanced (see below)
 * A broken K1, K2 or K3 is told on the error stream and gives status 1. K4 is reported, and gives
 * status 1 only with --strict: heavy vertices or fixed ones may leave no balanced bisection, and
 * polishing three or more parts together bounds the heaviest part, not the bisections.
 *
 * Where the program reads on, the reader here may call a file bad (a missing or negative weight);
 * and a line may have any length here, while the program takes 131071 characters at a time.
 */
#include <cerrno>
#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

constexpr int STATUS_FAILED = 1, STATUS_BAD_INPUT = 2;
constexpr int64_t MAX_PARTS = 1000000;
constexpr int64_t MAX_COUNT = 2147483647;  // vertex and hyperedge numbers are 32-bit
constexpr int64_t MAX_WEIGHT = 2147483647; // weights too, so no sum of them overflows

/* The hypergraph as its file gives it.
 *   H1  hyperedge e joins the distinct vertices pins[start[e]] .. pins[start[e+1]-1]
 *   H2  netwgt and vertexwgt always hold a weight, 1 where the file has none
 */
struct Hypergraph {
    int64_t nvertices, nnets;
    std::vector<size_t> start; // [nnets+1]
    std::vector<int32_t> pins;
    std::vector<int64_t> netwgt;    // [nnets]
    std::vector<int64_t> vertexwgt; // [nvertices]
};

// What the command line asks for.
struct Request {
    const char *hypergraph, *partition, *fix; // fix is null without --fix
    int64_t nparts, cut, percent;             // cut and percent are -1 when not given
    bool strict;
};

// The figures of a partition.
struct Figures {
    int64_t cut, soed;           // soed: sum of (parts touched) x weight over cut hyperedges
    std::vector<int64_t> weight; // [nparts]
};

[[noreturn]] static void bad_input(const char *file, size_t line, const char *what)
{
    fprintf(stderr, "check_partition: %s:%zu: %s\n", file, line, what);
    exit(STATUS_BAD_INPUT);
}

/* ---- text ---------------------------------------------------------------------------------- */

// A file read whole, and the place reached in it.
struct Text {
    const char *file;
    std::string bytes;
    size_t next; // first byte of the line to take next
    size_t line; // number of the line taken last, from 1
};

static Text read_file(const char *name)
{
    FILE *file = fopen(name, "rb");
    if (file == nullptr) bad_input(name, 0, strerror(errno));
    Text text = {name, {}, 0, 0};
    char buffer[65536];
    size_t count;
    while ((count = fread(buffer, 1, sizeof buffer, file)) > 0) text.bytes.append(buffer, count);
    if (ferror(file)) bad_input(name, 0, "cannot be read");
    fclose(file);
    return text;
}

// Takes the next line: [*begin, *end) without its newline. False at the end of the file.
static bool take_line(Text *text, const char **begin, const char **end)
{
    if (text->next >= text->bytes.size()) return false;
    const size_t stop = text->bytes.find('\n', text->next);
    const size_t last = stop == std::string::npos ? text->bytes.size() : stop;
    *begin = text->bytes.data() + text->next;
    *end = text->bytes.data() + last;
    text->next = last + 1;
    text->line++;
    return true;
}

// The same, passing over comment lines.
static bool take_data_line(Text *text, const char **begin, const char **end)
{
    while (take_line(text, begin, end)) {
        if (*begin == *end || **begin != '%') return true;
    }
    return false;
}

/* Reads a decimal integer at *at, after white space, and moves *at behind it. False, with *at
 * left alone, where no integer stands. A number of more digits than fit keeps its first ones, and
 * so comes out above every limit that its user tests.
 */
static bool take_integer(const char **at, const char *end, int64_t *number)
{
    const char *p = *at;
    while (p < end && (*p == ' ' || (*p >= '\t' && *p <= '\r'))) p++;
    const bool negative = p < end && *p == '-';
    if (p < end && (*p == '-' || *p == '+')) p++;
    if (p == end || *p < '0' || *p > '9') return false;
    int64_t value = 0;
    for (; p < end && *p >= '0' && *p <= '9'; p++) {
        if (value <= INT64_MAX / 10 - 1) value = value * 10 + (*p - '0');
    }
    *number = negative ? -value : value;
    *at = p;
    return true;
}

/* ---- readers ------------------------------------------------------------------------------- */

// Fills in the counts; returns the format code: units hyperedge weights, tens vertex weights.
static int64_t read_header(Text *text, Hypergraph *graph)
{
    const char *at, *end;
    if (!take_data_line(text, &at, &end)) bad_input(text->file, text->line, "no header line");
    int64_t code = 0;
    if (!take_integer(&at, end, &graph->nnets) || !take_integer(&at, end, &graph->nvertices)) {
        bad_input(text->file, text->line, "the header needs two numbers");
    }
    take_integer(&at, end, &code);
    if (graph->nnets < 0 || graph->nnets > MAX_COUNT || graph->nvertices < 2 ||
        graph->nvertices > MAX_COUNT) {
        bad_input(text->file, text->line, "count of hyperedges or vertices out of range");
    }
    if (code < 0 || code > 99) bad_input(text->file, text->line, "format code out of range");
    return code;
}

static int64_t read_weight(const Text *text, const char **at, const char *end)
{
    int64_t weight = 0;
    if (!take_integer(at, end, &weight)) bad_input(text->file, text->line, "no weight");
    if (weight < 0 || weight > MAX_WEIGHT) {
        bad_input(text->file, text->line, "weight out of range");
    }
    return weight;
}

/* Reads one hyperedge: vertex numbers up to the first that is not positive or is no number.
 * Vertices listed again are dropped; mark[v] is e when v is a pin of e already.
 */
static void read_pins(const Text *text, const char *at, const char *end, int32_t e,
                      Hypergraph *graph, std::vector<int32_t> *mark)
{
    for (int64_t number; take_integer(&at, end, &number) && number > 0;) {
        if (number > graph->nvertices) bad_input(text->file, text->line, "no such vertex");
        const int32_t v = static_cast<int32_t>(number - 1);
        int32_t &seen = (*mark)[static_cast<size_t>(v)];
        if (seen == e) continue;
        seen = e;
        graph->pins.push_back(v);
    }
}

static Hypergraph read_hypergraph(const char *name)
{
    Text text = read_file(name);
    Hypergraph graph = {};
    const int64_t code = read_header(&text, &graph);
    const char *at, *end;
    std::vector<int32_t> mark(static_cast<size_t>(graph.nvertices), -1);
    graph.start.push_back(0);
    for (int64_t e = 0; e < graph.nnets; e++) {
        if (!take_data_line(&text, &at, &end)) bad_input(name, text.line, "hyperedges missing");
        graph.netwgt.push_back(code % 10 != 0 ? read_weight(&text, &at, end) : 1);
        read_pins(&text, at, end, static_cast<int32_t>(e), &graph, &mark);
        graph.start.push_back(graph.pins.size());
    }
    for (int64_t v = 0; v < graph.nvertices; v++) {
        if (code / 10 != 0 && !take_data_line(&text, &at, &end)) {
            bad_input(name, text.line, "vertex weights missing");
        }
        graph.vertexwgt.push_back(code / 10 != 0 ? read_weight(&text, &at, end) : 1);
    }
    return graph;
}

// Reads a fix file: a part or a negative number for each vertex, separated by any white space.
static std::vector<int64_t> read_fix(const char *name, int64_t nvertices, int64_t nparts)
{
    const Text text = read_file(name);
    const char *at = text.bytes.data(), *end = at + text.bytes.size();
    std::vector<int64_t> fix;
    for (int64_t v = 0, part; v < nvertices; v++) {
        const size_t line = static_cast<size_t>(v) + 1;
        if (!take_integer(&at, end, &part)) bad_input(name, line, "not a number");
        if (part >= nparts) bad_input(name, line, "part number out of range");
        fix.push_back(part);
    }
    return fix;
}

// K1. False, with a message, when the partition is not one; what it then holds is of no use.
static bool read_partition(const char *name, int64_t nvertices, int64_t nparts,
                           std::vector<int64_t> *parts)
{
    Text text = read_file(name);
    const char *at, *end, *wrong = nullptr;
    while (wrong == nullptr && take_line(&text, &at, &end)) {
        int64_t part = 0;
        const bool digits = at < end && *at >= '0' && *at <= '9';
        if (!digits || !take_integer(&at, end, &part) || at != end) {
            wrong = "the line is not one part number";
        } else if (part >= nparts) {
            wrong = "part number out of range";
        } else if (static_cast<int64_t>(parts->size()) == nvertices) {
            wrong = "more lines than vertices";
        }
        parts->push_back(part);
    }
    if (wrong == nullptr && static_cast<int64_t>(parts->size()) < nvertices) {
        wrong = "fewer lines than vertices";
    }
    if (wrong == nullptr && text.bytes.back() != '\n') wrong = "the last line is cut off";
    if (wrong == nullptr) return true;
    fprintf(stderr, "check_partition: %s:%zu: %s\n", name, text.line, wrong);
    return false;
}

/* ---- figures and checks -------------------------------------------------------------------- */

static Figures count_figures(const Hypergraph &graph, const std::vector<int64_t> &parts,
                             int64_t nparts)
{
    Figures figures = {0, 0, std::vector<int64_t>(static_cast<size_t>(nparts), 0)};
    for (size_t v = 0; v < parts.size(); v++) {
        figures.weight[static_cast<size_t>(parts[v])] += graph.vertexwgt[v];
    }
    std::vector<int64_t> mark(static_cast<size_t>(nparts), -1);
    for (int64_t e = 0; e < graph.nnets; e++) {
        const size_t i = static_cast<size_t>(e);
        int64_t touched = 0;
        for (size_t j = graph.start[i]; j < graph.start[i + 1]; j++) {
            int64_t &seen = mark[static_cast<size_t>(parts[static_cast<size_t>(graph.pins[j])])];
            if (seen == e) continue;
            seen = e;
            touched++;
        }
        if (touched < 2) continue;
        figures.cut += graph.netwgt[i];
        figures.soed += touched * graph.netwgt[i];
    }
    return figures;
}

// K2
static bool fixed_are_kept(const std::vector<int64_t> &parts, const std::vector<int64_t> &fix)
{
    int64_t moved = 0;
    for (size_t v = 0; v < fix.size(); v++) {
        if (fix[v] < 0 || fix[v] == parts[v]) continue;
        if (moved++ > 0) continue;
        fprintf(stderr,
                "check_partition: vertex %zu is fixed in part %" PRId64
                " but stands in part %" PRId64 "\n",
                v + 1, fix[v], parts[v]);
    }
    if (moved > 1) fprintf(stderr, "check_partition: %" PRId64 " fixed vertices moved\n", moved);
    return moved == 0;
}

static int64_t sum_weights(const Figures &figures, int64_t first, int64_t count)
{
    int64_t sum = 0;
    for (int64_t p = first; p < first + count; p++) sum += figures.weight[static_cast<size_t>(p)];
    return sum;
}

/* Least weight of the half that gets `mine` of k parts, of a weight of total:
 * (mine/k - percent/100) x total, rounded down, less what single precision may lose.
 */
static int64_t least_weight(int64_t mine, int64_t k, int64_t percent, int64_t total)
{
    const int64_t numerator = 100 * mine - percent * k, denominator = 100 * k;
    if (numerator <= 0) return 0;
    const int64_t exact =
        total / denominator * numerator + total % denominator * numerator / denominator;
    return exact - total / 4194304 - 1;
}

/* K4: parts first .. first+k-1 come from a bisection that gives floor(k/2) of them to the left
 * half and the rest to the right, and so on inside each half. Each half must hold its share of
 * the weight less percent of the whole.
 */
static bool is_balanced(const Figures &figures, int64_t percent, int64_t first, int64_t k)
{
    if (k < 2) return true;
    const int64_t nleft = k / 2, nright = k - nleft;
    const int64_t left = sum_weights(figures, first, nleft);
    const int64_t right = sum_weights(figures, first + nleft, nright);
    return left >= least_weight(nleft, k, percent, left + right) &&
           right >= least_weight(nright, k, percent, left + right) &&
           is_balanced(figures, percent, first, nleft) &&
           is_balanced(figures, percent, first + nleft, nright);
}

// cut, soed, parts that hold a vertex's weight, lightest and heaviest part, heaviest over average
static void print_figures(const Figures &figures, const char *balance)
{
    int64_t least = figures.weight[0], most = least, total = 0, used = 0;
    for (const int64_t weight : figures.weight) {
        if (weight < least) least = weight;
        if (weight > most) most = weight;
        if (weight > 0) used++;
        total += weight;
    }
    const double average = static_cast<double>(total) / static_cast<double>(figures.weight.size());
    printf("cut=%" PRId64 " soed=%" PRId64 " parts=%" PRId64 " weights=%" PRId64 "..%" PRId64
           " imbalance=%.4f%s%s\n",
           figures.cut, figures.soed, used, least, most,
           total > 0 ? static_cast<double>(most) / average : 0.0, *balance ? " " : "", balance);
}

/* ---- the program --------------------------------------------------------------------------- */

[[noreturn]] static void usage(const char *what, const char *word)
{
    if (what != nullptr) fprintf(stderr, "check_partition: %s: %s\n", what, word);
    fprintf(stderr, "usage: check_partition HGR PART NPARTS [--fix FIX] [--cut N]"
                    " [--ub PERCENT [--strict]]\n");
    exit(STATUS_BAD_INPUT);
}

static int64_t parse_number(const char *word, int64_t low, int64_t high)
{
    const char *at = word, *end = word + strlen(word);
    int64_t number = 0;
    if (!take_integer(&at, end, &number) || at != end || number < low || number > high) {
        usage("not a number in range", word);
    }
    return number;
}

static Request parse_words(int argc, char **argv)
{
    if (argc < 4) usage(nullptr, nullptr);
    Request request = {argv[1], argv[2], nullptr, parse_number(argv[3], 1, MAX_PARTS),
                       -1,      -1,      false};
    for (int i = 4; i < argc; i++) {
        const char *word = argv[i];
        if (strcmp(word, "--strict") == 0) {
            request.strict = true;
            continue;
        }
        if (i + 1 == argc) usage("unknown option, or its value is missing", word);
        const char *value = argv[++i];
        if (strcmp(word, "--fix") == 0)
            request.fix = value;
        else if (strcmp(word, "--cut") == 0)
            request.cut = parse_number(value, 0, INT64_MAX);
        else if (strcmp(word, "--ub") == 0)
            request.percent = parse_number(value, 0, 100);
        else
            usage("unknown option", word);
    }
    if (request.strict && request.percent < 0) usage("needs --ub", "--strict");
    return request;
}

int main(int argc, char **argv)
{
    const Request request = parse_words(argc, argv);
    const Hypergraph graph = read_hypergraph(request.hypergraph);
    std::vector<int64_t> parts, fix;
    if (request.fix != nullptr) fix = read_fix(request.fix, graph.nvertices, request.nparts);
    if (!read_partition(request.partition, graph.nvertices, request.nparts, &parts)) {
        return STATUS_FAILED;
    }
    const Figures figures = count_figures(graph, parts, request.nparts);
    const bool judged = request.percent >= 0;
    const bool balanced = judged && is_balanced(figures, request.percent, 0, request.nparts);
    print_figures(figures, !judged ? "" : balanced ? "balanced" : "unbalanced");

    bool good = fixed_are_kept(parts, fix) && (balanced || !request.strict);
    if (request.cut >= 0 && request.cut != figures.cut) {
        fprintf(stderr, "check_partition: the cut is %" PRId64 ", not %" PRId64 "\n", figures.cut,
                request.cut);
        good = false;
    }
    return good ? 0 : STATUS_FAILED;
}
