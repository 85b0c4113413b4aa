// SPDX-License-Identifier: MIT
/* zorpelx/lib/files.cpp: reading and the texts of files, for callers in C.
 *
 * The work is done by zorpelx/files; here it is put into records of 32 bits, and what it throws
 * becomes a status and a sentence.
 */
#include "zorpelx_files.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

#include "bytes.h"
#include "check.h"
#include "fault.h"
#include "fileerror.h"
#include "formats.h"
#include "partfiles.h"
#include "parts_by_name.h"
#include "read_hgr.h"
#include "write_hgr.h"

/* The numbers of the header are those of zorpelx/files. */
template <class A, class B> constexpr bool same_number(A a, B b)
{
    return static_cast<int>(a) == static_cast<int>(b);
}
static_assert(same_number(ZORPELX_NOTE, NOTE) && same_number(ZORPELX_WARNING, WARNING));
static_assert(same_number(ZORPELX_LOSS, LOSS) && same_number(ZORPELX_ERROR, ERROR));
static_assert(same_number(ZORPELX_LINES_REFUSE, LINES_REFUSE));
static_assert(same_number(ZORPELX_LINES_WHOLE, LINES_WHOLE));
static_assert(same_number(ZORPELX_LINES_PIECES, LINES_PIECES));

/*   X1  listed[i] shows findings.listed[i] */
struct zorpelx_file {
    bool holds_hypergraph = false;
    std::vector<int> eptr, eind, vwgts, hewgts; // of the hypergraph
    zorpelx_hypergraph hypergraph = {};
    std::string format;
    Names names[2];                 // by ZORPELX_OF_*
    std::vector<int> fixed, groups; // of its vertices
    std::vector<int> numbers;
    Findings findings;
    std::vector<zorpelx_finding> listed;
    Judgement judgement = JUDGED_UNKNOWN;
};

int zorpelx_read_options_init(zorpelx_read_options *options, size_t size)
{
    if (options == nullptr || size != sizeof *options) return ZORPELX_BAD_OPTION;
    *options = {};
    options->size = size;
    options->from = 1;
    options->lines = ZORPELX_LINES_WHOLE;
    options->listed = static_cast<int>(Findings().most);
    return ZORPELX_OK;
}

static Fault check_read_options(const zorpelx_read_options &o)
{
    if (o.size != sizeof o)
        return fault(ZORPELX_BAD_OPTION,
                     "The size of the options is %zu instead of %zu; set them by "
                     "zorpelx_read_options_init().",
                     o.size, sizeof o);
    if (o.from != 0 && o.from != 1)
        return fault(ZORPELX_BAD_OPTION, "from is %d; it should be 0 or 1.", o.from);
    if (o.lines < ZORPELX_LINES_REFUSE || o.lines > ZORPELX_LINES_PIECES)
        return fault(ZORPELX_BAD_OPTION, "lines is %d; it should be one of ZORPELX_LINES_*.",
                     o.lines);
    if (o.listed < 0)
        return fault(ZORPELX_BAD_OPTION, "listed is %d; it should be 0 or more.", o.listed);
    if (std::isnan(o.timeout) || o.timeout < 0)
        return fault(ZORPELX_BAD_OPTION, "timeout is %g; it should be 0 or more seconds.",
                     o.timeout);
    const FormatRow *const row = o.format != nullptr ? find_format(o.format) : nullptr;
    if (o.format != nullptr && (row == nullptr || row->read == nullptr))
        return fault(ZORPELX_BAD_OPTION, "format is '%s', which is none that is read.", o.format);
    return {};
}

/* One reading under way. */
struct FileCall {
    std::string path, name; // as it was given, as messages have it
    zorpelx_read_options options;
    Budget budget;
    std::unique_ptr<zorpelx_file> file;
};

static void show_findings(zorpelx_file *file)
{
    for (const Finding &finding : file->findings.listed)
        file->listed.push_back({RULES[finding.rule].id, RULES[finding.rule].name,
                                finding.text.c_str(), finding.severity, finding.place.line,
                                finding.place.column});
    file->findings.budget = nullptr;
}

/* Reads by work(call), which fills in call->file. */
template <class Work>
static int read_by(const char *name, const zorpelx_read_options *options, zorpelx_file **file,
                   char *message, const Work &work)
{
    if (file != nullptr) *file = nullptr;
    return reporting_to(message, [&]() -> Fault {
        if (name == nullptr) return fault(ZORPELX_BAD_OPTION, "The name of the file is null.");
        if (file == nullptr) return fault(ZORPELX_BAD_OPTION, "file is null.");
        zorpelx_read_options chosen;
        zorpelx_read_options_init(&chosen, sizeof chosen);
        if (options != nullptr) chosen = *options;
        if (Fault found = check_read_options(chosen)) return found;
        FileCall call = {name, strcmp(name, "-") == 0 ? "standard input" : name, chosen, {}, {}};
        call.budget = make_budget(call.name, chosen.memory, chosen.timeout, budget_clock());
        call.budget.cancel = chosen.cancel;
        call.file = std::make_unique<zorpelx_file>();
        call.file->findings.most = chosen.listed;
        call.file->findings.budget = &call.budget;
        try {
            const Bytes bytes = read_bytes(name, &call.budget);
            Fault found = work(&call, view_of(bytes));
            show_findings(call.file.get());
            if (found) return found;
        } catch (const FileError &error) {
            return {error.status, error.text};
        }
        *file = call.file.release();
        return {};
    });
}

/* The finding for which a file is refused. */
static Fault refused(const FileCall &call)
{
    const Finding *const bad =
        refusal(call.file->findings, call.options.strict != 0, call.options.force != 0);
    if (bad == nullptr) return {};
    return {ZORPELX_BAD_INPUT, finding_line(call.name, *bad)};
}

template <class Wide>
static std::vector<int> narrowed(const std::vector<Wide> &numbers, Budget *budget)
{
    charge(budget, numbers.size() * sizeof(int));
    std::vector<int> narrow(numbers.size());
    std::transform(numbers.begin(), numbers.end(), narrow.begin(),
                   [](Wide number) { return static_cast<int>(number); });
    return narrow;
}

static bool all_fit(const std::vector<int64_t> &numbers)
{
    const auto fits = [](int64_t number) { return number >= INT_MIN && number <= INT_MAX; };
    return std::all_of(numbers.begin(), numbers.end(), fits);
}

/* Those that the format or the model gives: numbers by themselves are left out. */
template <class Label> static Names names_of(int64_t count, const Label &label, Budget *budget)
{
    Names names;
    for (int64_t i = 0; i < count; i++) {
        add_name(&names, label(i), budget);
        if (i % 65536 == 0) check_time(*budget);
    }
    return names;
}

static void keep_names(FileCall *call, const Hypergraph &graph)
{
    Budget *const budget = &call->budget;
    if (has_vertex_labels(graph))
        call->file->names[ZORPELX_OF_VERTICES] = names_of(
            graph.nvertices, [&](int64_t v) { return vertex_label(graph, v, 1); }, budget);
    if (has_net_labels(graph))
        call->file->names[ZORPELX_OF_HYPEREDGES] = names_of(
            graph.nnets, [&](int64_t e) { return net_label(graph, e); }, budget);
}

/* Puts the hypergraph into the file, if 32 bits hold it. */
static void keep_hypergraph(FileCall *call, const Hypergraph &graph)
{
    zorpelx_file *const file = call->file.get();
    if (graph.pins.size() > INT_MAX || graph.nvertices >= INT_MAX || graph.nnets >= INT_MAX ||
        graph.nvertices == 0 || !all_fit(graph.vertexwgt) || !all_fit(graph.netwgt))
        return;
    file->eptr = narrowed(graph.start, &call->budget);
    file->eind = narrowed(graph.pins, &call->budget);
    if (graph.vertexweights) file->vwgts = narrowed(graph.vertexwgt, &call->budget);
    if (graph.netweights) file->hewgts = narrowed(graph.netwgt, &call->budget);
    file->format = graph.provenance.format;
    file->fixed = narrowed(graph.fixed, &call->budget);
    file->groups = narrowed(graph.group, &call->budget);
    keep_names(call, graph);
    file->holds_hypergraph = true;
    file->hypergraph = {static_cast<int>(graph.nvertices),
                        static_cast<int>(graph.nnets),
                        file->eptr.data(),
                        file->eind.data(),
                        graph.vertexweights ? file->vwgts.data() : nullptr,
                        graph.netweights ? file->hewgts.data() : nullptr};
}

static Hypergraph scan(FileCall *call, std::string_view bytes, Reading reading)
{
    const char *const format = call->options.format;
    const FormatRow *const row = format != nullptr ? find_format(format) : nullptr;
    return read_any(bytes, row, reading, &call->file->findings, &call->budget);
}

static Reading reading_for(const FileCall &call, bool notes)
{
    Reading reading = {static_cast<LineMode>(call.options.lines), call.options.from, notes};
    const zorpelx_read_options &options = call.options;
    reading.path = call.path;
    if (options.model != nullptr) reading.model = options.model;
    if (options.areas != nullptr) reading.areas = options.areas;
    if (options.skip_nets != nullptr) reading.skip_nets = options.skip_nets;
    if (options.top_module != nullptr) reading.top = options.top_module;
    return reading;
}

int zorpelx_read_hypergraph(const char *name, const zorpelx_read_options *options,
                            zorpelx_file **file, char *message)
{
    return read_by(name, options, file, message, [](FileCall *call, std::string_view bytes) {
        const Hypergraph graph = scan(call, bytes, reading_for(*call, call->options.notes != 0));
        if (Fault found = refused(*call)) return found;
        keep_hypergraph(call, graph);
        if (call->file->holds_hypergraph) return Fault();
        return fault(ZORPELX_BAD_INPUT, "%s: it holds more than 32 bits can count.",
                     call->name.c_str());
    });
}

int zorpelx_lint_hypergraph(const char *name, const zorpelx_read_options *options,
                            zorpelx_file **file, char *message)
{
    return read_by(name, options, file, message, [](FileCall *call, std::string_view bytes) {
        const Reading reading = reading_for(*call, true);
        const Hypergraph graph = scan(call, bytes, reading);
        call->file->judgement = judge(bytes, reading, call->file->findings, &call->budget);
        sort_by_place(&call->file->findings);
        keep_hypergraph(call, graph);
        return Fault();
    });
}

static void note_unended(FileCall *call, bool unended)
{
    if (unended)
        add_finding(&call->file->findings, RULE_FIX_UNENDED, {0, 0}, "the file ends within a line");
}

static Fault keep_numbers(FileCall *call, const std::vector<int64_t> &numbers, bool unended)
{
    note_unended(call, unended);
    if (Fault found = refused(*call)) return found;
    call->file->numbers = narrowed(numbers, &call->budget);
    return {};
}

int zorpelx_read_partition(const char *name, int nvtxs, const zorpelx_read_options *options,
                           zorpelx_file **file, char *message)
{
    return read_by(name, options, file, message, [nvtxs](FileCall *call, std::string_view bytes) {
        bool unended = false;
        const std::vector<int64_t> part = scan_partition(bytes, nvtxs, &call->budget, &unended);
        return keep_numbers(call, part, unended);
    });
}

static Fault check_labels(int nvtxs, const char *names, const int64_t *start)
{
    if (nvtxs < 0) return fault(ZORPELX_BAD_OPTION, "nvtxs is %d; it is never negative.", nvtxs);
    if ((names == nullptr) != (start == nullptr))
        return fault(ZORPELX_BAD_OPTION, "names and start belong together: one of them is NULL.");
    for (int v = 0; start != nullptr && v < nvtxs; v++)
        if (start[v] < 0 || start[v] > start[v + 1])
            return fault(ZORPELX_BAD_OPTION,
                         "start[%d] is %lld and start[%d] is %lld; offsets are not negative and "
                         "never fall.",
                         v, static_cast<long long>(start[v]), v + 1,
                         static_cast<long long>(start[v + 1]));
    return {};
}

/* The arrays outlive the labels. */
static VertexLabels labels_in(int nvtxs, const char *names, const int64_t *start)
{
    return {nvtxs, [=](int64_t v) {
                return names == nullptr ? text_of("%lld", static_cast<long long>(v + 1))
                                        : std::string(names + start[v], names + start[v + 1]);
            }};
}

int zorpelx_read_named_partition(const char *name, int nvtxs, const char *names,
                                 const int64_t *start, const zorpelx_read_options *options,
                                 zorpelx_file **file, char *message)
{
    return read_by(name, options, file, message, [=](FileCall *call, std::string_view bytes) {
        if (Fault found = check_labels(nvtxs, names, start)) return found;
        bool unended = false;
        const std::vector<int64_t> part =
            scan_partition_or_table(bytes, labels_in(nvtxs, names, start), &call->budget, &unended);
        return keep_numbers(call, part, unended);
    });
}

int zorpelx_read_named_numbers(const char *name, int nvtxs, const char *names, const int64_t *start,
                               const zorpelx_read_options *options, zorpelx_file **file,
                               char *message)
{
    return read_by(name, options, file, message, [=](FileCall *call, std::string_view bytes) {
        if (Fault found = check_labels(nvtxs, names, start)) return found;
        bool unended = false;
        const PartTableRule partial = {INT_MAX, true};
        const std::vector<int64_t> numbers =
            has_parts_by_name(bytes)
                ? scan_parts_by_name(bytes, labels_in(nvtxs, names, start), partial, &call->budget)
                : scan_numbers(bytes, &call->budget, &unended);
        return keep_numbers(call, numbers, unended);
    });
}

int zorpelx_read_fixed(const char *name, int nvtxs, int nparts, const zorpelx_read_options *options,
                       zorpelx_file **file, char *message)
{
    return read_by(name, options, file, message, [=](FileCall *call, std::string_view bytes) {
        if (nvtxs < 0 || nparts < 0)
            return fault(ZORPELX_BAD_OPTION, "nvtxs is %d and nparts %d; neither is negative.",
                         nvtxs, nparts);
        const std::vector<int64_t> fix =
            scan_fix(bytes, nvtxs, nparts, &call->file->findings, &call->budget);
        if (Fault found = refused(*call)) return found;
        call->file->numbers = narrowed(fix, &call->budget);
        return Fault();
    });
}

int zorpelx_read_numbers(const char *name, const zorpelx_read_options *options, zorpelx_file **file,
                         char *message)
{
    return read_by(name, options, file, message, [](FileCall *call, std::string_view bytes) {
        bool unended = false;
        const std::vector<int64_t> numbers = scan_numbers(bytes, &call->budget, &unended);
        return keep_numbers(call, numbers, unended);
    });
}

const zorpelx_hypergraph *zorpelx_file_hypergraph(const zorpelx_file *file)
{
    return file != nullptr && file->holds_hypergraph ? &file->hypergraph : nullptr;
}

const char *zorpelx_file_format(const zorpelx_file *file)
{
    return file != nullptr && file->holds_hypergraph ? file->format.c_str() : nullptr;
}

const char *zorpelx_file_names(const zorpelx_file *file, int of, const int64_t **start)
{
    const bool known = of == ZORPELX_OF_VERTICES || of == ZORPELX_OF_HYPEREDGES;
    if (file == nullptr || !known || count_names(file->names[of]) == 0) return nullptr;
    *start = file->names[of].start.data();
    return file->names[of].text.empty() ? "" : file->names[of].text.data();
}

const int *zorpelx_file_fixed(const zorpelx_file *file)
{
    return file != nullptr && !file->fixed.empty() ? file->fixed.data() : nullptr;
}

const int *zorpelx_file_groups(const zorpelx_file *file)
{
    return file != nullptr && !file->groups.empty() ? file->groups.data() : nullptr;
}

const int *zorpelx_file_numbers(const zorpelx_file *file, size_t *count)
{
    *count = file != nullptr ? file->numbers.size() : 0;
    return *count > 0 ? file->numbers.data() : nullptr;
}

int64_t zorpelx_file_count(const zorpelx_file *file, int severity)
{
    int64_t count = 0;
    if (file == nullptr) return 0;
    for (int s = std::max(severity, 0); s < NSEVERITIES; s++) count += file->findings.severities[s];
    return count;
}

const zorpelx_finding *zorpelx_file_findings(const zorpelx_file *file, size_t *count)
{
    *count = file != nullptr ? file->listed.size() : 0;
    return *count > 0 ? file->listed.data() : nullptr;
}

int zorpelx_file_suits_zorpel(const zorpelx_file *file)
{
    if (file == nullptr || file->judgement == JUDGED_UNKNOWN) return -1;
    return file->judgement == JUDGED_READ ? 1 : 0;
}

void zorpelx_file_free(zorpelx_file *file)
{
    delete file;
}

/* Hands a text over to the caller. */
static Fault give_text(const std::string &made, char **text, size_t *size)
{
    *text = static_cast<char *>(malloc(made.size() + 1));
    if (*text == nullptr) throw std::bad_alloc();
    memcpy(*text, made.c_str(), made.size() + 1);
    *size = made.size();
    return {};
}

static Hypergraph widened(const zorpelx_hypergraph &h)
{
    const size_t nnets = static_cast<size_t>(h.nhedges), nvertices = static_cast<size_t>(h.nvtxs);
    Hypergraph graph = {h.nvtxs, h.nhedges, h.hewgts != nullptr, h.vwgts != nullptr, {}, {},
                        {},      {}};
    graph.start.assign(h.eptr, h.eptr + nnets + 1);
    graph.pins.assign(h.eind, h.eind + h.eptr[h.nhedges]);
    if (graph.netweights) graph.netwgt.assign(h.hewgts, h.hewgts + nnets);
    if (graph.vertexweights) graph.vertexwgt.assign(h.vwgts, h.vwgts + nvertices);
    return graph;
}

int zorpelx_hypergraph_text(const zorpelx_hypergraph *hypergraph, char **text, size_t *size,
                            char *message)
{
    return reporting_to(message, [&]() -> Fault {
        if (text == nullptr || size == nullptr)
            return fault(ZORPELX_BAD_OPTION, "text or size is null.");
        *text = nullptr;
        Watch watch;
        if (Fault found = check_hypergraph(hypergraph, Totals::Any, watch)) return found;
        for (int e = 0; e < hypergraph->nhedges; e++)
            if (hypergraph->eptr[e] == hypergraph->eptr[e + 1])
                return fault(ZORPELX_BAD_INPUT,
                             "Hyperedge %d is empty, which the file format cannot express.", e);
        return give_text(hgr_text(widened(*hypergraph)), text, size);
    });
}

int zorpelx_numbers_text(const int *numbers, size_t count, char **text, size_t *size, char *message)
{
    return reporting_to(message, [&]() -> Fault {
        if (text == nullptr || size == nullptr || (numbers == nullptr && count > 0))
            return fault(ZORPELX_BAD_OPTION, "numbers, text or size is null.");
        *text = nullptr;
        return give_text(numbers_text(numbers, count), text, size);
    });
}

void zorpelx_text_free(char *text)
{
    free(text);
}
