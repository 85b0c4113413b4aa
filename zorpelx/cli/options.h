/* SPDX-License-Identifier: MIT */
/* zorpelx/cli/options.h: the commands and their options, in one table.
 *
 * The parser, its help, the manual page and the completions are all made from it.
 */
#ifndef ZORPELX_CLI_OPTIONS_H
#define ZORPELX_CLI_OPTIONS_H

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

/* What the command line says; each field starts at the table's fallback. */
struct Settings {
    std::string hypergraph, partition, fix; // files
    int64_t nparts, ubfactor, runs, matching, refine, vcycle, reconst, polish, trace;
    int64_t seed, starts, jobs, threads, memory;
    double timeout, time, epsilon, least;
    int64_t objective, keep_price, preset, progress, lines, first, from, format, expect;
    std::string capacities, start, together;
    std::string output, json, record, report, clean, map, explain;
    std::string history, pictures;
    std::vector<std::string> partitions;
    int64_t to;
    std::string other;                                       // partition B of compare
    std::string sweep_nparts, sweep_epsilons, sweep_presets; // lists
    std::string model, skip_nets, areas, top_module;
    int64_t limit, top, seeds;
    bool quiet, strict, force, list_cut, notes, man;
    int64_t completion;
    bool distributed, gather; // zorpelx-mpi
    int64_t fits;
    std::string shard, journal, folder;
    bool share, wait, finish;
    int64_t patience;
    std::vector<std::string> words; // the command line itself
    std::vector<bool> given;        // by row of the table: the command line has it
};

enum Command {
    PARTITION = 1,
    VERIFY = 2,
    LINT = 4,
    STATS = 8,
    GLOBAL = 16,
    REPLAY = 32,
    CONVERT = 1 << 20,
    ANNOTATE = 1 << 21,
    COMPARE = 256,
    SWEEP = 512,
    EXPLAIN = 1024,
    REPORT = 1 << 22,
    MERGE = 1 << 27
};

/* Commands of zorpelx-mpi; its options are the rows of these and of the zorpelx command alike. */
constexpr unsigned CLUSTER_PARTITION = 1u << 28, CLUSTER_VERIFY = 1u << 29,
                   CLUSTER_CONVERT = 1u << 30;

struct ProgramRow {
    const char *name, *summary;
};
extern const ProgramRow ZORPELX;

struct CommandRow {
    unsigned command; // the rows of options that it takes
    const char *name;
    const char *summary;     // a sentence
    const char *description; // paragraphs for the manual page, separated by newlines
    const ProgramRow *program = &ZORPELX;
};

/* A value that an option takes by name or by number; the last of a list has no name. */
struct NamedValue {
    const char *name;
    int64_t value;
};

using Field = std::variant<bool Settings::*, int64_t Settings::*, double Settings::*,
                           std::string Settings::*, std::vector<std::string> Settings::*>;

struct OptionRow {
    unsigned commands; // sum of the commands that take it; GLOBAL: without a command
    const char *names; // "-k,--nparts"; a name without dashes is a place on the line
    const char *value; // what the value is called; empty for a switch
    Field field;
    const char *fallback;      // value if it is not given; null if it must be, empty for none
    int64_t least, most;       // of numbers; of choices: whether they are known by number too
    const NamedValue *choices; // or null
    const char *help;          // without a full stop
};

extern const std::vector<CommandRow> COMMANDS;
extern const std::vector<OptionRow> OPTIONS;

/* What a preset says of the options that the command line leaves open. */
enum PresetNumber { PRESET_FAST, PRESET_DEFAULT, PRESET_BEST, NPRESETS };
struct PresetRow {
    const char *name;
    int64_t runs, matching, refine, vcycle, starts;
};
extern const PresetRow PRESET_ROWS[NPRESETS];

enum Progress { PROGRESS_AUTO, PROGRESS_ALWAYS, PROGRESS_NEVER };
/* Values of --from: below 0 no format is chosen, from 0 on the row of the table of formats. The
 * numbers 0 and 1 are an older spelling of --first. */
enum To { TO_NAME = -1 };
enum From { FROM_FIRST_1 = -3, FROM_FIRST_0 = -2, FROM_CONTENT = -1 };
enum Shell { SHELL_NONE, SHELL_BASH, SHELL_ZSH };
enum Format { FORMAT_TEXT, FORMAT_JSON, FORMAT_CSV };

/* Number of the first vertex, in hypergraph files. */
int64_t first_vertex(const Settings &settings);

bool is_place(const OptionRow &row);
bool is_switch(const OptionRow &row);
bool takes_several(const OptionRow &row); // a place for one word or more

/* The long name of an option with its dashes, or the name of a place. */
std::string long_name(const OptionRow &row);

/* "hfc, fc, gfc" */
std::string choice_names(const OptionRow &row, const char *separator);

/* The name of one of the values of an option. */
std::string choice_name(const Field &field, int64_t value);

/* The help, with the fallback in parentheses. */
std::string full_help(const OptionRow &row);

/* Settings at their fallbacks. */
Settings fallback_settings();

/* Sets the field of a row from a word, where letters may be of any case; returns why that cannot
 * be, empty if it can. */
std::string set_field(const OptionRow &row, const std::string &word, Settings *settings);

/* "10 runs, matching hfc, ..." */
std::string preset_text(const PresetRow &row);

/* Sets what the preset says and the command line does not. */
void apply_preset(Settings *settings);

/* Whether the engine alone is wanted: the command line has one of its own options. */
bool wants_engine(const Settings &settings);

/* Whether the command line gave the option that sets this field. */
bool was_given(const Settings &settings, const Field &field);

#endif
