/* SPDX-License-Identifier: MIT */
/* zorpelx_output.h: files written by libzorpelx: whole, together, and never over one another or
 * over what is read. The zorpelx program and the Python package write all their files so.
 *
 *     const char *const names[] = {"g.part.4", "g.txt"}, *const inputs[] = {"g.hgr"};
 *     zorpelx_outputs *outputs;
 *     char message[ZORPELX_MESSAGE_SIZE];
 *     int status = zorpelx_outputs_open(&outputs, names, 2, inputs, 1, message);
 *     if (status == ZORPELX_OK) {
 *         ... what may take long ...
 *         status = zorpelx_outputs_write(outputs, bytes, sizes, message);
 *         zorpelx_outputs_close(outputs);
 *     }
 *
 * A regular file is the old one or the new one, whatever happens: the new one has no name until it
 * is whole and on its disk (where the file system has no such files, one beside its place, and the
 * signals that end the process wait). Owner, permissions and access list of an old file stay,
 * rights to run as its owner or group go. Symbolic links are followed where the system follows
 * them, and stay. Standard streams ("-", /dev/stdout, /dev/fd/N), FIFOs and devices are written
 * where they stand.
 *
 * Past a file size limit, or without a reader, a write fails with a sentence; SIGXFSZ and SIGPIPE
 * do not end the process. Records of their own may be used by several threads at once.
 */
#ifndef ZORPELX_OUTPUT_H
#define ZORPELX_OUTPUT_H

#include "zorpelx.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Files to be written. */
typedef struct zorpelx_outputs zorpelx_outputs;

/* Finds the places of all outputs, and whether they can be written.
 *   outputs  out: to be released by zorpelx_outputs_close(); NULL unless ZORPELX_OK is returned
 *   names    [count] of the outputs; "-" is standard output, which the caller has flushed
 *   inputs   [ninputs] what is read; "-" is standard input; may be NULL if there are none
 *   message  [ZORPELX_MESSAGE_SIZE] out: why not, empty for ZORPELX_OK; or NULL
 * Returns ZORPELX_OK; ZORPELX_BAD_OPTION if two outputs are one place, an output is an input or an
 *         argument is wrong; ZORPELX_SYSTEM if a place cannot be written; ZORPELX_NO_MEMORY.
 */
ZORPELX_API int zorpelx_outputs_open(zorpelx_outputs **outputs, const char *const *names, int count,
                                     const char *const *inputs, int ninputs, char *message);

/* Writes all outputs; they appear together, when everything is on its disk.
 *   bytes, sizes  [count] the content of each; those whose bytes are NULL stay as they are
 *   message       as above; it tells which outputs stand in spite of a failure, if any do
 * Returns ZORPELX_OK, _BAD_OPTION, _SYSTEM or _NO_MEMORY. */
ZORPELX_API int zorpelx_outputs_write(zorpelx_outputs *outputs, const void *const *bytes,
                                      const size_t *sizes, char *message);

/* Releases the record; what was not written stays as it is. NULL is let pass. */
ZORPELX_API void zorpelx_outputs_close(zorpelx_outputs *outputs);

#ifdef __cplusplus
}
#endif

#endif
