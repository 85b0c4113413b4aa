/* SPDX-License-Identifier: MIT */
/* zorpelx/files/formats.h: the table of formats: how each is recognised, read and written.
 *
 * To add a format:
 *   1. read_NAME.h and read_NAME.cpp with a reader and a recogniser, write_NAME.h and .cpp with
 *      the writer and the annotator if there are any; into CMakeLists.txt.
 *   2. A row in formats.cpp. Everything else, such as the choices of --from and --to, comes from
 *      the row.
 *   3. Its section and its row in docs/FORMATS.md, a fuzz target, and tests with files that
 *      another program made.
 * A reader gets the whole file as text, expanded, with the budget charged for it. It takes lines
 * and words with their places from scan.h or walks over the characters itself, makes the record by
 * a Builder, charges what it holds beyond that, and looks at the clock at least every 2^18 steps.
 * What is wrong ends it by bad_input(), what the user should know goes to tell_note() or
 * tell_warning(), all three of builder.h. White space includes \r, so files with DOS line ends are
 * read like others.
 */
#ifndef ZORPELX_FILES_FORMATS_H
#define ZORPELX_FILES_FORMATS_H

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "read_hgr.h"

/* Whether a file is of a format, from how it begins. */
enum Recognised {
    UNLIKE, // it is not
    OPEN,   // nothing tells: its name may
    LIKE,   // it may be: a name that ends as those of another format speaks against it
    CERTAIN // it is, whatever it is called
};

/* What a writer keeps of the record. Hyperedges, vertices and pins are kept by all. */
enum Keeps : unsigned {
    KEEPS_VERTEX_NAMES = 1,
    KEEPS_NET_NAMES = 2,
    KEEPS_VERTEX_WEIGHTS = 4,
    KEEPS_NET_WEIGHTS = 8,
    KEEPS_KINDS = 16,
    KEEPS_FIXED = 32,
    KEEPS_GROUPS = 64,
    KEEPS_ISLANDS = 128,    // vertices in no hyperedge
    KEEPS_EMPTY_NETS = 256, // hyperedges without vertices
    KEEPS_ALL = 511
};

/* One file of several that are written together. */
struct WrittenFile {
    std::string ending; // behind the name of the output; empty for the first
    std::string text;
};

/* What a partition is written with. */
struct Annotation {
    const std::vector<int64_t> &part; // [nvertices]
    int64_t nparts;
    std::string_view original; // the bytes of the file that the hypergraph was read from
    std::string path;          // its name
};

/* Reads the whole text; findings and budget as of scan_hypergraph(). */
using ReadFormat = Hypergraph (*)(std::string_view bytes, const Reading &reading,
                                  Findings *findings, Budget *budget);
using RecogniseFormat = Recognised (*)(std::string_view bytes);

/* The text of a file of this format.
 * Errors  FileError: the format cannot hold this at all; past the budget */
using WriteFormat = std::string (*)(const Hypergraph &graph, Budget *budget);

/* A partition in the format that the hypergraph came in; one file or several. */
using AnnotateFormat = std::vector<WrittenFile> (*)(const Hypergraph &graph,
                                                    const Annotation &annotation, Budget *budget);

struct FormatRow {
    const char *name;          // of --from and --to
    const char *title;         // "Matrix Market", in sentences
    const char *suffixes;      // ".mtx .mm"
    const char *models;        // "row-net column-net", the first is taken if none is said; or ""
    RecogniseFormat recognise; // null: by suffix and by --from alone
    ReadFormat read;           // null: is written only
    WriteFormat write;         // null: is read only
    AnnotateFormat annotate;   // null: parts are not written back into it
    unsigned keeps;            // by write
    bool needs_own = false;    // annotate: the hypergraph must come from this format
};

/* All of them, zorpel's own first. */
std::span<const FormatRow> format_rows();

/* The row of a name; null if there is none. */
const FormatRow *find_format(std::string_view name);

/* The row that a file is read by: certain content first, then suffix, then what it is like, then
 * zorpel's own hypergraph file. The suffix of a compression does not count. */
const FormatRow *detect_format(std::string_view bytes, const std::string &path);

/* The row for a file to be written, by its suffix; null if no format has it. */
const FormatRow *format_of_suffix(const std::string &path);

/* Whether a file's name ends as those of the format do. */
bool has_suffix(const FormatRow &row, const std::string &path);

/* Reads by the row, or by the one that is detected if that is null, and says in the provenance by
 * which. Findings and the record are as of scan_hypergraph().
 * Errors  FileError: what is wrong, with its place; a model that the format does not have */
Hypergraph read_any(std::string_view bytes, const FormatRow *row, const Reading &reading,
                    Findings *findings, Budget *budget);

/* What the hypergraph has and the format does not keep. */
struct Lost {
    const char *what; // "names of hyperedges"
    bool matters;     // what is left is another problem
};
std::vector<Lost> lost_by(const FormatRow &row, const Hypergraph &graph);

#endif
