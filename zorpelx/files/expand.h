/* SPDX-License-Identifier: MIT */
/* zorpelx/files/expand.h: compressed files, expanded block by block within a budget. */
#ifndef ZORPELX_FILES_EXPAND_H
#define ZORPELX_FILES_EXPAND_H

#include "bytes.h"
#include "rawfile.h"

/* A kind of compression. */
struct Expander {
    const char *name;   // as messages have it
    const char *ending; // of file names, with its dot
    const char *magic;  // how its files begin
    size_t length;      // of that
    /* Expands the whole file at the end of bytes; a build without the library that it takes ends
     * with a sentence.
     * Errors  ZORPELX_BAD_INPUT, and those of refill() and take_in() */
    void (*expand)(RawFile *file, Bytes *bytes);
};
constexpr size_t LONGEST_MAGIC = 6;
constexpr int NEXPANDERS = 4;
extern const Expander EXPANDERS[NEXPANDERS];

/* The compression of a file whose first LONGEST_MAGIC bytes are read; null if it has none. */
const Expander *find_expander(const RawFile &file);

/* The name without the ending of a compression. */
std::string plain_name(const std::string &name);

#endif
