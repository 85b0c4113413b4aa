/* SPDX-License-Identifier: MIT */
/* zorpelx/files/known.h: other formats, recognised by how their files begin. */
#ifndef ZORPELX_FILES_KNOWN_H
#define ZORPELX_FILES_KNOWN_H

#include <string_view>

/* The name of the format that a file seems to be of, such as "Matrix Market"; null for one that may
 * be a hypergraph file. Looks at the first 64 KiB at most. */
const char *known_format(std::string_view bytes);

#endif
