/* zorpelx/cli/output.h: files that are written whole or not at all. */
#ifndef ZORPELX_CLI_OUTPUT_H
#define ZORPELX_CLI_OUTPUT_H

#include <string>
#include <vector>

/* Writes a file so that a reader, a full disk, a kill or a power cut finds the old content or the
 * new one: into a temporary file beside it, synced, renamed over it. The name "-" is standard
 * output; a device or a pipe is written to as it stands, a symbolic link keeps pointing.
 * Errors  STATUS_IO; the temporary file is removed */
void write_whole(const std::string &name, const std::string &content);

/* Throws STATUS_USAGE if an output is the same regular file as another output or an input. Names
 * that are empty, "-" or not there yet are compared as they stand. */
void check_outputs(const std::vector<std::string> &outputs, const std::vector<std::string> &inputs);

/* How messages call a file that is written: its name, "standard output" for "-". */
std::string shown_output(const std::string &name);

/* Sends what standard output still holds on its way. Errors: STATUS_IO */
void flush_output();

#endif
