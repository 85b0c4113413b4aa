/* SPDX-License-Identifier: MIT */
/* zorpelx/files/known.h: other formats, recognised by how their files begin. */
#ifndef ZORPELX_FILES_KNOWN_H
#define ZORPELX_FILES_KNOWN_H

#include <cstddef>
#include <string_view>

constexpr size_t MOST_LOOKED_AT = size_t{1} << 16; // bytes by which a format is recognised

/* The name of the format that a file seems to be of, such as "Matrix Market"; null for one that may
 * be a hypergraph file. Looks at MOST_LOOKED_AT bytes. */
const char *known_format(std::string_view bytes);

#endif
