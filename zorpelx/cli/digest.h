/* SPDX-License-Identifier: MIT */
/* zorpelx/cli/digest.h: SHA-256 digests, in hexadecimal, of what a record speaks of.
 *
 * What is digested is a text of which each number has one form, whatever file it came from:
 *   hypergraph  a hypergraph file with all weights: the line "HYPEREDGES VERTICES 11", for each
 *               hyperedge a line of its weight and its vertices from 1 in the order of the file,
 *               for each vertex a line of its weight; single blanks, lines that end with \n
 *   numbers     of a partition and of the like: for each vertex a line of its number
 */
#ifndef ZORPELX_CLI_DIGEST_H
#define ZORPELX_CLI_DIGEST_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "hypergraph.h"

std::string digest_of(std::string_view text);
std::string digest_of(const Hypergraph &graph);
std::string digest_of(const std::vector<int> &numbers);

#endif
