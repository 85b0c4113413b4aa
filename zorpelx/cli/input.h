/* zorpelx/cli/input.h: whole files, plain or compressed. */
#ifndef ZORPELX_CLI_INPUT_H
#define ZORPELX_CLI_INPUT_H

#include <string>

/* The content of a file. The name "-" is standard input. Gzip and zstd are told by the first
 * bytes, not by the name, and may hold several members one after another.
 * Errors  a file that cannot be opened or read: STATUS_IO; damaged or cut compression:
 *         STATUS_BAD_INPUT */
std::string read_whole(const std::string &name);

/* How messages call a file: its name, "standard input" for "-". */
std::string shown_name(const std::string &name);

/* The name without a last .gz or .zst. */
std::string plain_name(const std::string &name);

#endif
