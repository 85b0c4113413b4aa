/* SPDX-License-Identifier: MIT */
/* zorpelx/cli/suggest.h: what a misspelt word was meant to be. */
#ifndef ZORPELX_CLI_SUGGEST_H
#define ZORPELX_CLI_SUGGEST_H

#include <string>
#include <vector>

/* Letters to insert, delete, change or exchange with their neighbour to make one word of the
 * other; each letter is touched once at most. */
int edit_distance(const std::string &a, const std::string &b);

/* "; did you mean 'partition'?" for the nearest of the words, the first of several, if about a
 * third of its letters or less would have to be changed; empty if none is so near. A word that the
 * other begins with is near, too. */
std::string suggestion(const std::string &word, const std::vector<std::string> &words);

#endif
