/* SPDX-License-Identifier: MIT */
/* zorpelx_files.h: files read by libzorpelx, as the zorpelx program and the Python package read
 * them: plain or compressed by gzip, zstd, xz or bzip2, within caps on memory and time that hold
 * from the first byte, with the place of everything that is wrong.
 *
 *     zorpelx_file *file;
 *     char message[ZORPELX_MESSAGE_SIZE];
 *     if (zorpelx_read_hypergraph("chip.hgr.xz", NULL, &file, message) == ZORPELX_OK)
 *         zorpelx_partition(zorpelx_file_hypergraph(file), &options, part, &result);
 *     zorpelx_file_free(file);
 *
 * The name "-" is standard input. A pipe is read to its end, without waiting longer than the
 * timeout for its writer. Routines may be called from any number of threads at once.
 */
#ifndef ZORPELX_FILES_H
#define ZORPELX_FILES_H

#include "zorpelx.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Lines of more than 131071 characters, which the program zorpel takes for several. */
enum {
    ZORPELX_LINES_REFUSE = 0,
    ZORPELX_LINES_WHOLE = 1, /* read as one */
    ZORPELX_LINES_PIECES = 2 /* as zorpel reads them */
};

/* What a finding is worth. */
enum {
    ZORPELX_NOTE = 0,    /* harmless */
    ZORPELX_WARNING = 1, /* read in another way than the file suggests */
    ZORPELX_LOSS = 2,    /* vertices or weights are lost: an error unless forced */
    ZORPELX_ERROR = 3
};

/* How to read. Set every field by zorpelx_read_options_init(), then change what is to differ. The
 * default is in parentheses. */
typedef struct zorpelx_read_options {
    size_t size;                /* bytes of this record, set by zorpelx_read_options_init() */
    int from;                   /* number of the first vertex in the file, 1 or 0 (1) */
    int lines;                  /* ZORPELX_LINES_* (WHOLE) */
    int force;                  /* 1: go on without vertices or weights that are lost (0) */
    int strict;                 /* 1: take warnings for errors (0) */
    int notes;                  /* 1: look for what is only worth a note (0) */
    int listed;                 /* findings kept of each rule; 0: all (20) */
    double timeout;             /* seconds; 0: no deadline (0) */
    size_t memory;              /* most bytes held at once; 0: as many as the machine has (0) */
    const volatile int *cancel; /* polled: reading ends soon after it is not 0; or NULL */
    const char *format;         /* "mtx", "cnf", "csv": as zorpelx --from takes it (NULL: by content) */
    const char *model;          /* "row-net", "dual": as --model does (NULL: the format's first) */
    const char *areas;          /* file with the area of each type of cell (NULL: none) */
    const char *skip_nets;      /* patterns of nets to leave out, between commas (NULL: none) */
    const char *top_module;     /* of a netlist (NULL: the top one) */
} zorpelx_read_options;

/* Something that was found in a file. The texts belong to the file. */
typedef struct zorpelx_finding {
    const char *rule; /* "H13" */
    const char *name; /* "zero-based" */
    const char *text; /* what is there */
    int severity;     /* ZORPELX_NOTE to ZORPELX_ERROR */
    int64_t line;     /* from 1; 0: the file as a whole */
    int64_t column;   /* from 1 */
} zorpelx_finding;

/* What was read, with all its arrays. */
typedef struct zorpelx_file zorpelx_file;

ZORPELX_API int zorpelx_read_options_init(zorpelx_read_options *options, size_t size);

/* Read a file.
 *   options  NULL: the defaults
 *   file     out: what was read, to be freed; NULL on a failure
 *   message  [ZORPELX_MESSAGE_SIZE] out: the first fault, with file, line and column, empty if
 *            none; or NULL
 * Return ZORPELX_OK, _BAD_OPTION, _BAD_INPUT, _SYSTEM for a file that cannot be opened or read,
 * _NO_MEMORY past the cap, _TIMEOUT or _CANCELLED.
 */

/* A hypergraph file. */
ZORPELX_API int zorpelx_read_hypergraph(const char *name, const zorpelx_read_options *options,
                                        zorpelx_file **file, char *message);

/* A hypergraph file that may hold any number of faults, all of which become findings: the status
 * is ZORPELX_BAD_INPUT for damaged compression only. */
ZORPELX_API int zorpelx_lint_hypergraph(const char *name, const zorpelx_read_options *options,
                                        zorpelx_file **file, char *message);

/* A partition file: the part of each vertex.
 *   nvtxs  vertices; -1: any number */
ZORPELX_API int zorpelx_read_partition(const char *name, int nvtxs,
                                       const zorpelx_read_options *options, zorpelx_file **file,
                                       char *message);

/* The partition of a hypergraph: a partition file, or a table of names and parts as zorpelx
 * annotate writes it, with the header "vertex,part" or the same with a tab, its rows in any order.
 *   nvtxs  vertices
 *   names  what they are called, name i being names[start[i]] to names[start[i + 1] - 1], as
 *          zorpelx_file_names() returns it; if names and start are NULL: 1, 2, 3, ... */
ZORPELX_API int zorpelx_read_named_partition(const char *name, int nvtxs, const char *names,
                                             const int64_t *start,
                                             const zorpelx_read_options *options,
                                             zorpelx_file **file, char *message);

/* A fix file: the part of each pre-assigned vertex, -1 for a free one.
 *   nvtxs   vertices
 *   nparts  parts; 0 if they are not known */
ZORPELX_API int zorpelx_read_fixed(const char *name, int nvtxs, int nparts,
                                   const zorpelx_read_options *options, zorpelx_file **file,
                                   char *message);

/* Whole numbers of 32 bits between white space, whatever they mean. */
ZORPELX_API int zorpelx_read_numbers(const char *name, const zorpelx_read_options *options,
                                     zorpelx_file **file, char *message);

/* What is said of each vertex of a hypergraph, such as its group or the part that it is fixed to:
 * numbers as zorpelx_read_numbers() reads them, which need not be nvtxs many, or a table as
 * zorpelx_read_named_partition() reads it, in which vertices without a row, or with -1, have -1. */
ZORPELX_API int zorpelx_read_named_numbers(const char *name, int nvtxs, const char *names,
                                           const int64_t *start,
                                           const zorpelx_read_options *options,
                                           zorpelx_file **file, char *message);

/* The hypergraph of a file; NULL if the file holds none, or none that fits 32 bits. It belongs to
 * the file. Absent weights are NULL. */
ZORPELX_API const zorpelx_hypergraph *zorpelx_file_hypergraph(const zorpelx_file *file);

/* What a hypergraph's file knows of it beyond that. They belong to the file. */
enum { ZORPELX_OF_VERTICES = 0, ZORPELX_OF_HYPEREDGES = 1 };

/* The format that the file was read by, and the names of its vertices or hyperedges, of which name i
 * is text[start[i]] to text[start[i + 1] - 1], in UTF-8 if the file is. NULL: they are called by
 * their numbers. */
ZORPELX_API const char *zorpelx_file_format(const zorpelx_file *file);
ZORPELX_API const char *zorpelx_file_names(const zorpelx_file *file, int of, const int64_t **start);

/* The part that each vertex is fixed to, -1 for a free one; and the group of each, -1 for none. NULL
 * if the file fixes or groups nothing. */
ZORPELX_API const int *zorpelx_file_fixed(const zorpelx_file *file);
ZORPELX_API const int *zorpelx_file_groups(const zorpelx_file *file);

/* The numbers of any other file, in its order; count out: how many they are. */
ZORPELX_API const int *zorpelx_file_numbers(const zorpelx_file *file, size_t *count);

/* What was found, in the order of the file: `count` of a severity or more, with those of each rule
 * that are not kept; and the ones that are. */
ZORPELX_API int64_t zorpelx_file_count(const zorpelx_file *file, int severity);
ZORPELX_API const zorpelx_finding *zorpelx_file_findings(const zorpelx_file *file, size_t *count);

/* What the program zorpel makes of a linted hypergraph file: 1 it reads it, 0 it refuses it, -1 not
 * known. */
ZORPELX_API int zorpelx_file_suits_zorpel(const zorpelx_file *file);

/* Frees what was read; NULL is let through. */
ZORPELX_API void zorpelx_file_free(zorpelx_file *file);

/* The text of a hypergraph file, which is checked as zorpelx_check() does and must hold no
 * hyperedge without vertices; or of a partition or fix file.
 *   text  out: its bytes, without a 0 at the end; to be freed by zorpelx_text_free()
 *   size  out: how many they are
 * Return ZORPELX_OK, _BAD_OPTION, _BAD_INPUT or _NO_MEMORY. */
ZORPELX_API int zorpelx_hypergraph_text(const zorpelx_hypergraph *hypergraph, char **text,
                                        size_t *size, char *message);
ZORPELX_API int zorpelx_numbers_text(const int *numbers, size_t count, char **text, size_t *size,
                                     char *message);
ZORPELX_API void zorpelx_text_free(char *text);

#ifdef __cplusplus
}
#endif

#endif
