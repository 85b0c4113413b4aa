// SPDX-License-Identifier: MIT
/* fuzz/fuzz_words.cpp: any words on the command line, one a line; "g" and "f" name a small hypergraph
 * and a fix file. Numbers that would only make the run long are passed over.
 */
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "hook.h"

int program_main(int nwords, char **words);

static const char GRAPH[] =
    "6 7 11\n2 1 2 3\n1 3 4\n3 4 5 6\n1 6 7\n1 7 1\n2 2 5\n1\n1\n2\n1\n1\n1\n3\n";
static const char FIX[] = "0\n-1\n-1\n1\n-1\n-1\n-1\n";

struct Words {
    int count;
    char **words;
};

static void run_program(void *argument)
{
    const Words *const line = static_cast<const Words *>(argument);
    program_main(line->count, line->words);
}

static const char *file_of(const char *text, size_t size, int number)
{
    return fuzz_file(number, reinterpret_cast<const uint8_t *>(text), size - 1);
}

static std::vector<std::string> split_words(const uint8_t *bytes, size_t size)
{
    std::vector<std::string> words = {"zorpel"};
    std::string word;
    for (size_t i = 0; i < size && words.size() < 20; i++) {
        const char c = static_cast<char>(bytes[i]);
        if (c != '\n' && c != '\0') {
            word += c;
            continue;
        }
        if (word == "g") word = file_of(GRAPH, sizeof GRAPH, 0);
        if (word == "f") word = file_of(FIX, sizeof FIX, 1);
        words.push_back(word);
        word.clear();
    }
    return words;
}

// Whether the run is valid but long.
static bool takes_long(const std::vector<std::string> &words)
{
    if (words.size() != 10 && words.size() != 11) return false;
    const size_t first = words.size() - 8; // Nparts; Nruns two further
    const int nparts = static_cast<int>(strtol(words[first].c_str(), nullptr, 10));
    const int nruns = static_cast<int>(strtol(words[first + 2].c_str(), nullptr, 10));
    return nparts > 200 || nruns > 12;
}

int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size)
{
    std::vector<std::string> words = split_words(bytes, size);
    if (takes_long(words)) return 0;
    fuzz_silence();
    std::vector<char *> pointers;
    for (std::string &word : words) pointers.push_back(word.data());
    pointers.push_back(nullptr);
    Words line = {static_cast<int>(words.size()), pointers.data()};
    fuzz_survives(run_program, &line);
    return 0;
}
