// SPDX-License-Identifier: MIT
/* fuzz/replay_seeds.cpp: feeds files, or all files of folders, to a fuzz target without the fuzzer. */
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "hook.h"

static void feed(const std::filesystem::path &name)
{
    std::ifstream file(name, std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
    LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t *>(bytes.data()), bytes.size());
}

int main(int argc, char **argv)
{
    int fed = 0;
    for (int i = 1; i < argc; i++) {
        if (!std::filesystem::is_directory(argv[i])) {
            feed(argv[i]);
            fed++;
            continue;
        }
        for (const auto &entry : std::filesystem::directory_iterator(argv[i])) {
            feed(entry.path());
            fed++;
        }
    }
    fprintf(stderr, "%d inputs\n", fed);
    return fed == 0;
}
