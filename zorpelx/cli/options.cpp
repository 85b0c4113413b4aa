// SPDX-License-Identifier: MIT
/* zorpelx/cli/options.cpp: the commands and their options, in one table. */
#include "options.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <strings.h>

#include "failure.h"
#include "formats.h"
#include "suggest.h"
#include "zorpelx.h"

constexpr int64_t BY_NUMBER = 1; // as the `most` of a list of choices: zorpel knows their numbers

static const NamedValue MATCHINGS[] = {{"hfc", 1},   {"fc", 2},   {"gfc", 3},
                                       {"hedge", 4}, {"edge", 5}, {nullptr, 0}};
static const NamedValue REFINEMENTS[] = {{"fm", 1}, {"1wayfm", 2}, {"eefm", 3}, {nullptr, 0}};
static const NamedValue VCYCLES[] = {
    {"no", 0}, {"end", 1}, {"formin", 2}, {"all", 3}, {nullptr, 0}};
static const NamedValue NO_YES[] = {{"no", 0}, {"yes", 1}, {nullptr, 0}};
static const NamedValue PRESETS[] = {
    {"fast", PRESET_FAST}, {"default", PRESET_DEFAULT}, {"best", PRESET_BEST}, {nullptr, 0}};
static const NamedValue OBJECTIVES[] = {
    {"cut", ZORPELX_CUT}, {"km1", ZORPELX_KM1}, {"soed", ZORPELX_SOED}, {nullptr, 0}};
static const NamedValue WHEN[] = {
    {"auto", PROGRESS_AUTO}, {"always", PROGRESS_ALWAYS}, {"never", PROGRESS_NEVER}, {nullptr, 0}};
static const NamedValue LINES[] = {{"refuse", 0}, {"whole", 1}, {"pieces", 2}, {nullptr, 0}};
static const NamedValue FORMATS[] = {
    {"text", FORMAT_TEXT}, {"json", FORMAT_JSON}, {"csv", FORMAT_CSV}, {nullptr, 0}};
static const NamedValue SHELLS[] = {{"bash", SHELL_BASH}, {"zsh", SHELL_ZSH}, {nullptr, 0}};
static const NamedValue TEXT_OR_JSON[] = {
    {"text", FORMAT_TEXT}, {"json", FORMAT_JSON}, {nullptr, 0}};

static constexpr char FIX_FILE[] =
    "fix file: the part of each vertex, or -1 for a free one; or a table of names and parts, in "
    "which vertices without a row are free; or patterns of names, such as 'u_core/*=2,io?=0'";

/* The formats that are read, by their rows; then the older spelling of --first. */
static std::vector<NamedValue> reading_choices()
{
    std::vector<NamedValue> choices = {{"auto", FROM_CONTENT}};
    const std::span<const FormatRow> rows = format_rows();
    for (size_t i = 0; i < rows.size(); i++)
        if (rows[i].read != nullptr) choices.push_back({rows[i].name, static_cast<int64_t>(i)});
    choices.insert(choices.end(), {{"0", FROM_FIRST_0}, {"1", FROM_FIRST_1}, {nullptr, 0}});
    return choices;
}
static const std::vector<NamedValue> READ_FORMATS = reading_choices();

/* The formats into which something is written. */
static std::vector<NamedValue> writing_choices()
{
    std::vector<NamedValue> choices = {{"auto", TO_NAME}};
    const std::span<const FormatRow> rows = format_rows();
    for (size_t i = 0; i < rows.size(); i++)
        if (rows[i].write != nullptr || rows[i].annotate != nullptr)
            choices.push_back({rows[i].name, static_cast<int64_t>(i)});
    choices.push_back({nullptr, 0});
    return choices;
}
static const std::vector<NamedValue> WRITTEN_FORMATS = writing_choices();

/* Measured: docs/OPTIONS.md. 1WayFM wants several runs, and V-cycles are what sees large
 * hyperedges, so fast has both; several starts of ten runs use more processors than many runs. */
const PresetRow PRESET_ROWS[] = {
    {"fast", 3, 1, 2, 1, 1}, {"default", 10, 1, 1, 1, 1}, {"best", 10, 1, 2, 3, 8}};

const ProgramRow ZORPELX = {"zorpelx", "Partition hypergraphs and check what came out."};

const std::vector<CommandRow> COMMANDS = {
    {PARTITION, "partition", "Divide a hypergraph into parts.",
     "The partition file holds the part of each vertex, from 0, one a line. It has no name until "
     "it is whole and synced, so that whatever happens the old file or the new one is there; the "
     "JSON file appears together with it. A place that cannot be written is reported before the "
     "run, and an output that is read, or two that are one place, are refused. Standard output, "
     "FIFOs and devices are written where they stand.\n"
     "With a deadline or an interrupt the best start that is finished is delivered, and the status "
     "says that it was cut short. Without --timeout the result depends only on the hypergraph and "
     "the options, not on the number of processors."},
    {MERGE, "merge", "Join the shards of a partitioning.",
     "Takes what zorpelx partition --shard I/N --journal FOLDER has left in the folder, for all I, "
     "and delivers the partition that one process would have made, to the bit. Shards that are "
     "missing are named. The combinations of the best partitions, which no shard can make before "
     "all "
     "have ended, are made here; with --wait the shards have made them.\n"
     "The hypergraph and the options are those of the first shard; its files must be where they "
     "were."},
    {VERIFY, "verify", "Recompute every figure of a partition.",
     "The files are read and everything is counted in 64 bits by code that shares nothing with the "
     "partitioner. Status 1 if anything claimed is not so: a fixed vertex elsewhere, another cut "
     "than --expect, a part beyond --epsilon, a report that differs.\n"
     "With --report the statistics in what zorpel printed are compared byte for byte."},
    {LINT, "lint", "Find what is wrong or surprising in hypergraph and fix files.",
     "Each finding names a rule, a line and a column; --explain says more about a rule. With -k, "
     "lint also shows which weights each part can get at this --ubfactor and whether the vertices "
     "can be divided so."},
    {REPORT, "report", "Make a page about a partition: pictures, tables, comparisons.",
     "Writes one HTML file that needs no network and no scripts: the figures, the sizes of the "
     "parts, the cut between them, the most expensive hyperedges, what lies in each part, and "
     "drawings of the parts and of the hypergraph. Every picture has a table beside it. Further "
     "partitions are compared with the first one. docs/REPORT.md tells how to read the page.\n"
     "The number of parts is that of -k; otherwise the end .part.K of a partition file's name "
     "tells it, otherwise the largest number in the file."},
    {STATS, "stats", "Describe a hypergraph.",
     "Counts, histograms of sizes and degrees, connected components, heavy vertices, and an "
     "estimate of the memory that partitioning takes."},
    {REPLAY, "replay", "Run again what a record says, and compare.",
     "Takes the options from the record of a run, which partition wrote by --record, runs with "
     "them, and compares every field but machine, time and names of files. Status 1 and a line for "
     "each difference if the result is another one. Hypergraph and other files are compared "
     "first; if one is not the file of the record, nothing is run.\n"
     "The partition and the other files are looked for beside the record. A record that time or "
     "memory cut short says so: running again may then give something else."},
    {CONVERT, "convert", "Write a hypergraph in another format.",
     "What the format does not keep is told. Where weights, fixed vertices, groups or vertices "
     "would be lost, which makes another problem of it, nothing is written without --force. "
     "docs/FORMATS.md has a table of what each format keeps."},
    {ANNOTATE, "annotate", "Write a partition back where its hypergraph came from.",
     "A table of names and parts, or a file of the hypergraph's own format with the parts in it; "
     "dot and graphml draw up to 5,000 vertices. Without --to the ending of the output decides. "
     "For a Matrix Market file: the matrix permuted to bordered block diagonal form, and beside it "
     "the part of each entry (ending .distribution.mtx) and the old number of each new row and "
     "column (.rows, .columns)."},
    {SWEEP, "sweep", "Partition with every combination of some settings, and compare.",
     "Runs go on all processors, one on each. Each result is appended to journal.jsonl in the "
     "folder of the sweep and synced before the next one starts there; the same command goes on "
     "where an interrupt, a deadline or a kill ended it. In the end the folder holds sweep.csv "
     "with "
     "a row for each run, pictures of the objective against time and against balance, the best "
     "partition of each number of parts and epsilon with its report, and sweep.html, a page with "
     "all of it. Every run is the one that partition makes "
     "with "
     "these options; only its time depends on what runs beside it."},
    {COMPARE, "compare", "Tell which of two partitions is better, and where.",
     "Better is the one that partition would deliver of the two: within --epsilon, then the lesser "
     "objective, cut, sum of external degrees and heaviest part. The numbers of parts mean "
     "nothing: "
     "parts of A and B are matched one to one such that as much weight as possible is in matched "
     "parts, which is the agreement; what is not in them has moved. The adjusted Rand index is 1 "
     "for the same division and about 0 for unrelated ones."},
    {EXPLAIN, "explain", "Tell what bounds a partition before it is made.",
     "Everything that is said about balance and cut holds for every partition within the bounds: "
     "vertices too heavy for a part, fixed vertices, hyperedges and components that must be cut. "
     "The times are estimates. Status 4 if no partition can be within the bounds."},
};

constexpr unsigned READERS =
    PARTITION | VERIFY | LINT | STATS | CONVERT | ANNOTATE | SWEEP | COMPARE | EXPLAIN | REPORT;

const std::vector<OptionRow> OPTIONS = {
    {GLOBAL, "--man", "", &Settings::man, "", 0, 0, nullptr, "print the manual page and end"},
    {GLOBAL, "--completion", "SHELL", &Settings::completion, "", 0, 0, SHELLS,
     "print the completion of a shell and end"},
    {REPLAY, "RECORD", "FILE", &Settings::record, nullptr, 0, 0, nullptr,
     "record of the run, written by partition --record"},
    {PARTITION | VERIFY | STATS | REPLAY | CONVERT | ANNOTATE | SWEEP | COMPARE | EXPLAIN,
     "HYPERGRAPH", "FILE", &Settings::hypergraph, nullptr, 0, 0, nullptr,
     "hypergraph, in a format of --from, plain or compressed (.gz, .zst, .xz, .bz2); - for "
     "standard "
     "input"},
    {LINT, "HYPERGRAPH", "FILE", &Settings::hypergraph, "", 0, 0, nullptr,
     "hypergraph, in a format of --from, plain or compressed (.gz, .zst, .xz, .bz2); - for "
     "standard "
     "input"},
    {CONVERT, "OUTPUT", "FILE", &Settings::output, nullptr, 0, 0, nullptr,
     "file to be written; - for standard output"},
    {ANNOTATE, "PARTITION", "FILE", &Settings::partition, nullptr, 0, 0, nullptr,
     "partition file: the part of each vertex"},
    {ANNOTATE, "-k,--nparts", "K", &Settings::nparts, "", 2, 1000000, nullptr,
     "number of parts; otherwise one more than the highest of the partition file"},
    {ANNOTATE, "-o,--output", "FILE", &Settings::output, "", 0, 0, nullptr,
     "file to be written; otherwise standard output"},
    {VERIFY, "PARTITION", "FILE", &Settings::partition, "", 0, 0, nullptr,
     "partition file: the part of each vertex, one a line, or a table of names and parts as "
     "annotate writes it; with --record otherwise the one that it names"},
    {VERIFY | LINT, "FIX", "FILE", &Settings::fix, "", 0, 0, nullptr,
     "fix file: the part of each vertex, or -1"},
    {COMPARE, "A", "FILE", &Settings::partition, nullptr, 0, 0, nullptr,
     "partition file, or a table of names and parts as annotate writes it"},
    {COMPARE, "B", "FILE", &Settings::other, nullptr, 0, 0, nullptr,
     "partition to compare it with, in either form"},
    {EXPLAIN, "-k,--nparts", "K", &Settings::nparts, nullptr, 2, 1000000, nullptr,
     "number of parts"},
    {COMPARE, "-k,--nparts", "K", &Settings::nparts, "", 2, 1000000, nullptr,
     "number of parts; otherwise the names of the files, which end with .part.K, or the largest "
     "part in them gives it"},
    {SWEEP, "-k,--nparts", "LIST", &Settings::sweep_nparts, nullptr, 0, 0, nullptr,
     "numbers of parts, such as 2,4,8"},
    {SWEEP, "-e,--epsilon", "LIST", &Settings::sweep_epsilons, "3", 0, 0, nullptr,
     "values of --epsilon of partition"},
    {SWEEP, "--preset", "LIST", &Settings::sweep_presets, "default", 0, 0, nullptr,
     "presets, such as fast,default,best"},
    {SWEEP, "--seeds", "N", &Settings::seeds, "3", 1, 1000000, nullptr,
     "runs of each combination, with seeds one after another"},
    {COMPARE | EXPLAIN, "-e,--epsilon", "PERCENT", &Settings::epsilon, "3", 0, 1000000000, nullptr,
     "no part should weigh more than so much above the average, rounded up"},
    {COMPARE | EXPLAIN, "--top", "N", &Settings::top, "5", 0, INT_MAX, nullptr,
     "list so many hyperedges of a kind"},
    {EXPLAIN, "-f,--fix", "FILE", &Settings::fix, "", 0, 0, nullptr, FIX_FILE},
    {SWEEP, "-o,--output", "FOLDER", &Settings::output, "", 0, 0, nullptr,
     "folder of the results; otherwise HYPERGRAPH.sweep"},
    {PARTITION, "-k,--nparts", "K", &Settings::nparts, nullptr, 2, 1000000, nullptr,
     "number of parts"},
    {VERIFY, "-k,--nparts", "K", &Settings::nparts, "", 2, 1000000, nullptr,
     "number of parts; otherwise the report gives it, or the partition file's name, which ends "
     "with "
     ".part.K"},
    {LINT, "-k,--nparts", "K", &Settings::nparts, "", 2, 1000000, nullptr,
     "number of parts, for advice on their weights"},
    {PARTITION, "-e,--epsilon", "PERCENT", &Settings::epsilon, "3", 0, 1000000000, nullptr,
     "no part weighs more than so much above the average, rounded up"},
    {VERIFY, "-e,--epsilon", "PERCENT", &Settings::epsilon, "", 0, 1000000000, nullptr,
     "no part must weigh more than so much above the average, rounded up"},
    {LINT, "-e,--epsilon", "PERCENT", &Settings::epsilon, "", 0, 1000000000, nullptr,
     "with -k: find the largest --ubfactor that keeps every part within so much above the average"},
    {PARTITION, "--least", "PERCENT", &Settings::least, "", 0, 100, nullptr,
     "no part weighs less than so much below the average; otherwise no part is empty where that "
     "can "
     "be"},
    {PARTITION, "--capacities", "LIST", &Settings::capacities, "", 0, 0, nullptr,
     "sizes of the parts as shares of their sum, such as 3,3,2, or a file of them; otherwise all "
     "are equal"},
    {PARTITION | SWEEP | COMPARE, "--objective", "NAME", &Settings::objective, "cut", 0, 0,
     OBJECTIVES,
     "what is made least: the weight of the cut hyperedges; the same, each counted once for every "
     "part that it touches beyond the first; each counted for every part that it touches"},
    {PARTITION, "--start", "FILE", &Settings::start, "", 0, 0, nullptr,
     "partition file of any origin, to be improved"},
    {PARTITION, "--keep-in-place", "PRICE", &Settings::keep_price, "0", 0, INT_MAX, nullptr,
     "with --start: price of each unit of weight that moves to another part"},
    {PARTITION, "--together", "FILE", &Settings::together, "", 0, 0, nullptr,
     "file with a number for each vertex: vertices of equal numbers from 0 stay in one part, -1 "
     "leaves one free; or a table of names and numbers, in which vertices without a row are free; "
     "or patterns of names, such as 'u_core/*=0,u_io/*=1'"},
    {PARTITION, "--time", "SECONDS", &Settings::time, "0", 0, 1000000000, nullptr,
     "search for so long, reading included, and deliver the best; otherwise as much is done as the "
     "preset says, the same on every machine"},
    {PARTITION | LINT, "-b,--ubfactor", "PERCENT", &Settings::ubfactor, "5", 1, 49, nullptr,
     "the engine alone, as zorpel runs it: each side of a bisection may miss its share of the "
     "weight by so much, which compounds over bisections"},
    {VERIFY, "-b,--ubfactor", "PERCENT", &Settings::ubfactor, "", 1, 49, nullptr,
     "every part must be within what partition allows it with this --ubfactor"},
    {PARTITION, "--preset", "NAME", &Settings::preset, "default", 0, 0, PRESETS,
     "how much is done"},
    {PARTITION, "-r,--runs", "N", &Settings::runs, "10", 1, INT_MAX, nullptr,
     "runs of each bisection; this and the next five are the engine's own and select it like "
     "--ubfactor"},
    {PARTITION, "--matching", "SCHEME", &Settings::matching, "hfc", 0, BY_NUMBER, MATCHINGS,
     "matching scheme of coarsening"},
    {PARTITION, "--refine", "SCHEME", &Settings::refine, "fm", 0, BY_NUMBER, REFINEMENTS,
     "refinement scheme"},
    {PARTITION, "--vcycle", "WHEN", &Settings::vcycle, "end", 0, BY_NUMBER, VCYCLES,
     "V-cycles: never, on the best run at the end, on each new best run, on all good runs"},
    {PARTITION, "--reconst", "YESNO", &Settings::reconst, "no", 0, BY_NUMBER, NO_YES,
     "keep the pieces of cut hyperedges for the bisections to come"},
    {PARTITION, "--polish", "YESNO", &Settings::polish, "yes", 0, BY_NUMBER, NO_YES,
     "refine 3 to 64 parts together at the end"},
    {PARTITION, "-f,--fix", "FILE", &Settings::fix, "", 0, 0, nullptr, FIX_FILE},
    {REPLAY, "-f,--fix", "FILE", &Settings::fix, "", 0, 0, nullptr,
     "fix file of the run, if it is not beside the record"},
    {REPLAY | VERIFY, "--start", "FILE", &Settings::start, "", 0, 0, nullptr,
     "--start of the recorded run, if it is not beside the record"},
    {REPLAY | VERIFY, "--together", "FILE", &Settings::together, "", 0, 0, nullptr,
     "--together of the recorded run, if it is not beside the record"},
    {PARTITION | SWEEP, "-s,--seed", "N", &Settings::seed, "1", -1, INT_MAX, nullptr,
     "seed of the first start; -1 draws one"},
    {PARTITION, "--starts", "N", &Settings::starts, "1", 1, INT_MAX, nullptr,
     "independent starts, with seeds one after another; the best is taken"},
    {PARTITION, "--share", "", &Settings::share, "", 0, 0, nullptr,
     "the starts are one search, which combines the best of them all; so they are with --journal"},
    {PARTITION | REPLAY, "-j,--jobs", "N", &Settings::jobs, "0", 0, INT_MAX, nullptr,
     "starts at work at once; 0 for one on each processor"},
    {PARTITION | MERGE | REPLAY, "-t,--threads", "N", &Settings::threads, "0", 0, INT_MAX, nullptr,
     "threads of each start, which change nothing but the time; 0 for all processors divided by "
     "the "
     "jobs"},
    {PARTITION | MERGE, "--timeout", "SECONDS", &Settings::timeout, "0", 0, 1000000000, nullptr,
     "stop so long after the begin and deliver the best finished start; 0 for no deadline"},
    {PARTITION | MERGE, "--memory", "MIB", &Settings::memory, "0", 0, INT_MAX, nullptr,
     "memory that reading a file may take, and then one start, which stats estimates; 0 for no "
     "cap"},
    {SWEEP, "-j,--jobs", "N", &Settings::jobs, "0", 0, INT_MAX, nullptr,
     "runs at work at once; 0 for one on each processor"},
    {REPLAY | SWEEP, "--timeout", "SECONDS", &Settings::timeout, "0", 0, 1000000000, nullptr,
     "stop so long after the begin; 0 for no deadline"},
    {REPLAY | SWEEP, "--memory", "MIB", &Settings::memory, "0", 0, INT_MAX, nullptr,
     "memory that reading a file may take, and then one start; 0 for no cap"},
    {REPLAY, "-o,--output", "FILE", &Settings::output, "", 0, 0, nullptr,
     "write the partition there as well; - for standard output"},
    {VERIFY | LINT | STATS | CONVERT | ANNOTATE | COMPARE | EXPLAIN, "--timeout", "SECONDS",
     &Settings::timeout, "0", 0, 1000000000, nullptr,
     "give up reading so long after the begin; 0 for no deadline"},
    {VERIFY | LINT | STATS | CONVERT | ANNOTATE | COMPARE | EXPLAIN, "--memory", "MIB",
     &Settings::memory, "0", 0, INT_MAX, nullptr,
     "memory that reading a file may take; 0 for no cap"},
    {PARTITION, "--journal", "FOLDER", &Settings::journal, "", 0, 0, nullptr,
     "keep what the search makes there as it goes; the same command goes on where it was ended"},
    {PARTITION, "--shard", "I/N", &Settings::shard, "", 0, 0, nullptr,
     "with --journal: make the jobs of shard I of N only; merge joins them"},
    {PARTITION, "--wait", "", &Settings::wait, "", 0, 0, nullptr,
     "with --shard: wait for what other shards make, where later jobs need it, and make a share of "
     "those too"},
    {MERGE, "FOLDER", "FOLDER", &Settings::folder, nullptr, 0, 0, nullptr,
     "what --journal named in the shards"},
    {MERGE, "--finish", "", &Settings::finish, "", 0, 0, nullptr,
     "make the jobs of shards that are missing here"},
    {CLUSTER_PARTITION, "--patience", "SECONDS", &Settings::patience, "10", 1, 1000000, nullptr,
     "a rank that is silent for so long is taken for lost, and others make its jobs"},
    {PARTITION | MERGE, "-o,--output", "FILE", &Settings::output, "", 0, 0, nullptr,
     "partition file; - for standard output; otherwise HYPERGRAPH.part.K, without the ending of a "
     "compression, and "
     "standard output if the hypergraph comes from standard input"},
    {PARTITION | MERGE, "--json", "FILE", &Settings::json, "", 0, 0, nullptr,
     "write options and figures there as JSON; - for standard output"},
    {PARTITION | MERGE, "--record", "FILE", &Settings::record, "", 0, 0, nullptr,
     "write a record of the run there, by which others can check or repeat it; - for standard "
     "output"},
    {VERIFY, "--record", "FILE", &Settings::record, "", 0, 0, nullptr,
     "record of the run: check its digests and figures"},
    {PARTITION, "--force", "", &Settings::force, "", 0, 0, nullptr,
     "go on if no partition can be within --ubfactor, and without the vertices or weights that "
     "reading a file loses"},
    {CONVERT, "--force", "", &Settings::force, "", 0, 0, nullptr,
     "go on without what reading the file loses and the format of the output does not keep"},
    {VERIFY | STATS | ANNOTATE | SWEEP | COMPARE | EXPLAIN, "--force", "", &Settings::force, "", 0,
     0, nullptr, "go on without the vertices or weights that reading a file loses"},
    {LINT, "--force", "", &Settings::force, "", 0, 0, nullptr,
     "with --fix: write a clean file although vertices or weights are lost"},
    {PARTITION | REPLAY | MERGE | SWEEP, "--progress", "WHEN", &Settings::progress, "auto", 0, 0,
     WHEN, "whether to show progress on standard error; auto does on a terminal"},
    {PARTITION, "--trace", "BITS", &Settings::trace, "0", 0, INT_MAX, nullptr,
     "print the engine's traces on standard error: 1 coarsening, 2 initial bisections, 4 passes, "
     "8 bisections, 16 runs, 32 timers, 128 details, 256 moves, or a sum of these"},
    {VERIFY, "--expect", "CUT", &Settings::expect, "", 0, INT64_MAX, nullptr,
     "the cut must be this"},
    {VERIFY, "--report", "FILE", &Settings::report, "", 0, 0, nullptr,
     "compare with what zorpel printed; implies --lines pieces"},
    {VERIFY, "--list-cut", "", &Settings::list_cut, "", 0, 0, nullptr, "list the cut hyperedges"},
    {LINT, "--fix", "FILE", &Settings::clean, "", 0, 0, nullptr,
     "write a clean hypergraph file, and end with status 0 if that mends it; - for standard "
     "output, "
     "where then nothing else is printed"},
    {LINT, "--map", "FILE", &Settings::map, "", 0, 0, nullptr,
     "with --fix: write the number that each hyperedge of the clean file has in the old one; "
     "otherwise the clean file's name with .map, and none for standard output"},
    {LINT, "--explain", "RULE", &Settings::explain, "", 0, 0, nullptr,
     "explain a rule by its number or name, or 'all', and end"},
    {LINT, "--notes", "", &Settings::notes, "", 0, 0, nullptr,
     "show each note; otherwise one line sums them up"},
    {LINT, "--limit", "N", &Settings::limit, "20", 0, INT_MAX, nullptr,
     "show so many findings of each rule; 0 for all"},
    {VERIFY, "--format", "FORMAT", &Settings::format, "text", 0, 0, FORMATS, "form of the answer"},
    {LINT | STATS | REPLAY | CONVERT | ANNOTATE | SWEEP | COMPARE | EXPLAIN, "--format", "FORMAT",
     &Settings::format, "text", 0, 0, TEXT_OR_JSON, "form of the answer"},
    {REPORT, "HYPERGRAPH", "FILE", &Settings::hypergraph, nullptr, 0, 0, nullptr,
     "hypergraph, in a format of --from, plain or compressed (.gz, .zst, .xz, .bz2); - for "
     "standard input"},
    {REPORT, "PARTITION", "FILE", &Settings::partitions, nullptr, 0, 0, nullptr,
     "partition files, or tables of names and parts as annotate writes them: the report is about "
     "the first, the others are compared with it"},
    {REPORT, "-o,--output", "FILE", &Settings::output, "", 0, 0, nullptr,
     "page to write; - for standard output; otherwise the first partition file's name with .html"},
    {REPORT, "-k,--nparts", "K", &Settings::nparts, "", 1, 1000000, nullptr, "number of parts"},
    {REPORT, "-e,--epsilon", "PERCENT", &Settings::epsilon, "", 0, 1000000000, nullptr,
     "show this bound on the parts: no more than so much above the average, rounded up; otherwise "
     "that of --history"},
    {REPORT, "--history", "FILE", &Settings::history, "", 0, 0, nullptr,
     "what partition --json wrote of the run: show how its search went"},
    {REPORT, "--pictures", "FOLDER", &Settings::pictures, "", 0, 0, nullptr,
     "write each picture there as SVG, and as PNG where rsvg-convert is installed; the folder is "
     "made if it is not there"},
    {REPORT, "--json", "FILE", &Settings::json, "", 0, 0, nullptr,
     "write all figures of the page there as JSON; - for standard output"},
    {REPORT, "--limit", "N", &Settings::limit, "20", 0, 10000, nullptr,
     "list so many of the most expensive hyperedges"},
    {REPORT, "--timeout", "SECONDS", &Settings::timeout, "0", 0, 1000000000, nullptr,
     "give up reading so long after the begin; 0 for no deadline"},
    {REPORT, "--memory", "MIB", &Settings::memory, "0", 0, INT_MAX, nullptr,
     "memory that reading a file may take; 0 for no cap"},
    {REPORT, "--force", "", &Settings::force, "", 0, 0, nullptr,
     "go on without the vertices or weights that reading a file loses"},
    {REPORT, "-q,--quiet", "", &Settings::quiet, "", 0, 0, nullptr,
     "print nothing but errors and what was asked for"},
    {READERS, "--lines", "HOW", &Settings::lines, "whole", 0, 0, LINES,
     "what to do with lines of more than 131071 characters; whole reads them as one, pieces as "
     "zorpel does"},
    {READERS, "--first", "NUMBER", &Settings::first, "1", 0, 1, nullptr,
     "number of the first vertex in a hypergraph file"},
    {READERS, "--from", "FORMAT", &Settings::from, "auto", 0, 0, READ_FORMATS.data(),
     "format of the file with the hypergraph; auto finds it by its content; 0 and 1 mean --first 0 "
     "and --first 1"},
    {CONVERT, "--to", "FORMAT", &Settings::to, "auto", 0, 0, WRITTEN_FORMATS.data(),
     "format of the output; auto finds it by the ending of its name"},
    {ANNOTATE, "--to", "FORMAT", &Settings::to, "auto", 0, 0, WRITTEN_FORMATS.data(),
     "format of the output; auto takes that of the hypergraph if parts can be written into it, "
     "otherwise csv"},
    {READERS, "--model", "NAME", &Settings::model, "", 0, 0, nullptr,
     "which hypergraph is made of a matrix: row-net, column-net or fine-grain; of a formula: "
     "primal, dual or literal; otherwise the first of these"},
    {READERS, "--skip-nets", "PATTERNS", &Settings::skip_nets, "", 0, 0, nullptr,
     "leave out the hyperedges whose name fits one of these patterns, separated by commas, such as "
     "'clk,rst*'"},
    {READERS, "--areas", "FILE", &Settings::areas, "", 0, 0, nullptr,
     "weights of the cells of a netlist by their type: a Liberty file, or a table with lines "
     "TYPE,AREA; otherwise each cell weighs 1"},
    {READERS, "--top-module", "MODULE", &Settings::top_module, "", 0, 0, nullptr,
     "module of a netlist that is taken, with all below it; otherwise the top one"},
    {PARTITION | LINT | CONVERT | ANNOTATE, "--strict", "", &Settings::strict, "", 0, 0, nullptr,
     "take warnings for errors"},
    {PARTITION | VERIFY | LINT | CONVERT | ANNOTATE | REPLAY | MERGE | SWEEP, "-q,--quiet", "",
     &Settings::quiet, "", 0, 0, nullptr, "print nothing but errors and what was asked for"},
    {CLUSTER_PARTITION, "--distributed", "", &Settings::distributed, "", 0, 0, nullptr,
     "no rank holds the hypergraph as a whole: each reads its share, they cluster together until "
     "what is left fits rank 0, and refine what comes of it together"},
    {CLUSTER_PARTITION, "--fits", "PINS", &Settings::fits, "2000000", 1, 2147482624, nullptr,
     "with --distributed: so many pins, and vertices, fit rank 0"},
    {CLUSTER_PARTITION, "--gather", "", &Settings::gather, "", 0, 0, nullptr,
     "with --distributed: rank 0 writes one partition file; otherwise each rank writes the slice "
     "of its vertices, OUTPUT.slice-I-of-N"},
    {CLUSTER_VERIFY | CLUSTER_CONVERT, "HYPERGRAPH", "FILE", &Settings::hypergraph, nullptr, 0, 0,
     nullptr, "hypergraph file, plain .hgr or the binary form of convert"},
    {CLUSTER_VERIFY, "PARTITION", "FILE", &Settings::partition, nullptr, 0, 0, nullptr,
     "partition file: the part of each vertex"},
    {CLUSTER_CONVERT, "OUTPUT", "FILE", &Settings::output, nullptr, 0, 0, nullptr,
     "binary file to be written"},
    {CLUSTER_VERIFY, "--distributed", "", &Settings::distributed, "", 0, 0, nullptr,
     "no rank holds the hypergraph as a whole, which is so in any case"},
    {CLUSTER_VERIFY, "-k,--nparts", "K", &Settings::nparts, "", 2, 1 << 24, nullptr,
     "number of parts; otherwise the largest number in the partition file tells it"},
    {CLUSTER_VERIFY, "-e,--epsilon", "PERCENT", &Settings::epsilon, "", 0, 1000000000, nullptr,
     "no part must weigh more than so much above the average, rounded up"},
    {CLUSTER_VERIFY, "--expect", "CUT", &Settings::expect, "", 0, INT64_MAX, nullptr,
     "the cut must be this"},
    {CLUSTER_VERIFY, "--format", "FORMAT", &Settings::format, "text", 0, 0, TEXT_OR_JSON,
     "form of the answer"},
    {CLUSTER_VERIFY | CLUSTER_CONVERT, "--first", "NUMBER", &Settings::first, "1", 0, 1, nullptr,
     "number of the first vertex in a text"},
};

int64_t first_vertex(const Settings &settings)
{
    if (settings.from == FROM_FIRST_0) return 0;
    return settings.from == FROM_FIRST_1 ? 1 : settings.first;
}

bool is_place(const OptionRow &row)
{
    return row.names[0] != '-';
}

bool takes_several(const OptionRow &row)
{
    return std::holds_alternative<std::vector<std::string> Settings::*>(row.field);
}

bool is_switch(const OptionRow &row)
{
    return row.value[0] == '\0';
}

std::string long_name(const OptionRow &row)
{
    const std::string names = row.names;
    const size_t comma = names.find(',');
    return comma == std::string::npos ? names : names.substr(comma + 1);
}

std::string choice_names(const OptionRow &row, const char *separator)
{
    std::string names;
    for (const NamedValue *choice = row.choices; choice != nullptr && choice->name != nullptr;
         choice++)
        names.append(names.empty() ? "" : separator).append(choice->name);
    return names;
}

std::string choice_name(const Field &field, int64_t value)
{
    for (const OptionRow &row : OPTIONS)
        for (const NamedValue *choice = row.choices; choice != nullptr && choice->name != nullptr;
             choice++)
            if (row.field == field && choice->value == value) return choice->name;
    return std::to_string(value);
}

static bool known_by_number(const OptionRow &row)
{
    return row.choices != nullptr && row.most == BY_NUMBER;
}

/* "hfc (1), fc (2)" */
static std::string numbered_choices(const OptionRow &row)
{
    if (!known_by_number(row)) return choice_names(row, ", ");
    std::string names;
    for (const NamedValue *choice = row.choices; choice->name != nullptr; choice++)
        names += text_of("%s%s (%lld)", names.empty() ? "" : ", ", choice->name,
                         static_cast<long long>(choice->value));
    return names;
}

std::string full_help(const OptionRow &row)
{
    std::string help = row.help;
    if (row.choices != nullptr) help += ": " + numbered_choices(row);
    const std::string fallback = row.fallback != nullptr ? row.fallback : "";
    if (!fallback.empty() && !is_switch(row)) help += " [" + fallback + "]";
    return help;
}

static std::vector<std::string> choice_list(const OptionRow &row)
{
    std::vector<std::string> names;
    for (const NamedValue *choice = row.choices; choice->name != nullptr; choice++)
        names.push_back(choice->name);
    return names;
}

static std::string set_number(const OptionRow &row, const std::string &word, int64_t *number)
{
    for (const NamedValue *choice = row.choices; choice != nullptr && choice->name != nullptr;
         choice++)
        if (strcasecmp(word.c_str(), choice->name) == 0 ||
            (known_by_number(row) && word == std::to_string(choice->value))) {
            *number = choice->value;
            return "";
        }
    if (row.choices != nullptr)
        return text_of("'%s' is none of %s%s", word.c_str(), choice_names(row, ", ").c_str(),
                       suggestion(word, choice_list(row)).c_str());
    char *end = nullptr;
    errno = 0;
    const long long value = strtoll(word.c_str(), &end, 10);
    if (word.empty() || *end != '\0' || errno != 0)
        return text_of("'%s' is not a whole number", word.c_str());
    if (value < row.least || value > row.most)
        return text_of("%lld is not between %lld and %lld", value,
                       static_cast<long long>(row.least), static_cast<long long>(row.most));
    *number = value;
    return "";
}

static std::string set_real(const OptionRow &row, const std::string &word, double *number)
{
    char *end = nullptr;
    const double value = strtod(word.c_str(), &end);
    if (word.empty() || *end != '\0' || !std::isfinite(value))
        return text_of("'%s' is not a number", word.c_str());
    if (value < static_cast<double>(row.least) || value > static_cast<double>(row.most))
        return text_of("%s is not between %lld and %lld", word.c_str(),
                       static_cast<long long>(row.least), static_cast<long long>(row.most));
    *number = value;
    return "";
}

std::string set_field(const OptionRow &row, const std::string &word, Settings *settings)
{
    if (const auto *field = std::get_if<bool Settings::*>(&row.field)) {
        settings->*(*field) = !word.empty();
        return "";
    }
    if (const auto *field = std::get_if<int64_t Settings::*>(&row.field))
        return set_number(row, word, &(settings->*(*field)));
    if (const auto *field = std::get_if<double Settings::*>(&row.field))
        return set_real(row, word, &(settings->*(*field)));
    if (word.empty()) return "the name is empty";
    if (const auto *field = std::get_if<std::vector<std::string> Settings::*>(&row.field)) {
        (settings->*(*field)).push_back(word);
        return "";
    }
    settings->*std::get<std::string Settings::*>(row.field) = word;
    return "";
}

/* Fields without a fallback are 0 or empty. */
Settings fallback_settings()
{
    Settings settings = {};
    for (const OptionRow &row : OPTIONS)
        if (row.fallback != nullptr && row.fallback[0] != '\0')
            set_field(row, row.fallback, &settings);
    settings.given.assign(OPTIONS.size(), false);
    return settings;
}

std::string preset_text(const PresetRow &row)
{
    return text_of("%lld runs, matching %s, refinement %s, V-cycles %s, %lld start%s",
                   static_cast<long long>(row.runs),
                   choice_name(&Settings::matching, row.matching).c_str(),
                   choice_name(&Settings::refine, row.refine).c_str(),
                   choice_name(&Settings::vcycle, row.vcycle).c_str(),
                   static_cast<long long>(row.starts), row.starts == 1 ? "" : "s");
}

bool wants_engine(const Settings &settings)
{
    const Field own[] = {&Settings::ubfactor, &Settings::runs,   &Settings::matching,
                         &Settings::refine,   &Settings::vcycle, &Settings::reconst,
                         &Settings::polish,   &Settings::trace};
    return std::any_of(std::begin(own), std::end(own),
                       [&](const Field &field) { return was_given(settings, field); });
}

void apply_preset(Settings *settings)
{
    if (!wants_engine(*settings)) return;
    const PresetRow &row = PRESET_ROWS[settings->preset];
    if (!was_given(*settings, &Settings::runs)) settings->runs = row.runs;
    if (!was_given(*settings, &Settings::matching)) settings->matching = row.matching;
    if (!was_given(*settings, &Settings::refine)) settings->refine = row.refine;
    if (!was_given(*settings, &Settings::vcycle)) settings->vcycle = row.vcycle;
    if (!was_given(*settings, &Settings::starts)) settings->starts = row.starts;
}

bool was_given(const Settings &settings, const Field &field)
{
    for (size_t i = 0; i < OPTIONS.size(); i++)
        if (settings.given[i] && OPTIONS[i].field == field) return true;
    return false;
}
