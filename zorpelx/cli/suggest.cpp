// SPDX-License-Identifier: MIT
/* zorpelx/cli/suggest.cpp: what a misspelt word was meant to be.
 *
 * Source: Damerau, A technique for computer detection and correction of spelling errors, CACM 7(3),
 * 1964: the four kinds of slips; the distance is the usual dynamic programme over them.
 */
#include "suggest.h"

#include <algorithm>

#include "failure.h"

int edit_distance(const std::string &a, const std::string &b)
{
    const size_t width = b.size() + 1;
    std::vector<int> table((a.size() + 1) * width);
    const auto at = [&](size_t i, size_t j) -> int & { return table[i * width + j]; };
    for (size_t i = 0; i <= a.size(); i++) at(i, 0) = static_cast<int>(i);
    for (size_t j = 0; j <= b.size(); j++) at(0, j) = static_cast<int>(j);
    for (size_t i = 1; i <= a.size(); i++)
        for (size_t j = 1; j <= b.size(); j++) {
            const int change = at(i - 1, j - 1) + (a[i - 1] != b[j - 1]);
            at(i, j) = std::min({at(i - 1, j) + 1, at(i, j - 1) + 1, change});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                at(i, j) = std::min(at(i, j), at(i - 2, j - 2) + 1);
        }
    return table.back();
}

/* How far a word may be and still be meant. */
static int most_changes(const std::string &word)
{
    return static_cast<int>(word.size() + 2) / 3;
}

static bool begins(const std::string &word, const std::string &beginning)
{
    return beginning.size() > 1 && word.compare(0, beginning.size(), beginning) == 0;
}

std::string suggestion(const std::string &word, const std::vector<std::string> &words)
{
    constexpr size_t LONGEST = 64; // what is longer is no slip
    const std::string *best = nullptr;
    int least = 0;
    for (const std::string &candidate : words) {
        if (word.size() > LONGEST) break;
        const int distance = begins(candidate, word) ? 0 : edit_distance(word, candidate);
        if (distance > most_changes(candidate) || (best != nullptr && distance >= least)) continue;
        best = &candidate;
        least = distance;
    }
    return best == nullptr ? "" : text_of("; did you mean '%s'?", best->c_str());
}
