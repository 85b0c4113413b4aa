// SPDX-License-Identifier: MIT
/* fuzz/fuzz_numbers.cpp: any bytes as a partition or fix file of zorpelx, or as a table of names
 * and parts; the first two bytes tell how many vertices and parts there should be. */
#include "bytes.h"
#include "fileerror.h"
#include "hook.h"
#include "partfiles.h"
#include "parts_by_name.h"

constexpr size_t CAP = size_t{1} << 24;

static void check_fix(std::string_view text, int64_t nvertices, int64_t nparts)
{
    Findings findings;
    Budget budget = make_budget("fix", CAP, 0, 0);
    const std::vector<int64_t> fix = scan_fix(text, nvertices, nparts, &findings, &budget);
    if (static_cast<int64_t>(fix.size()) != nvertices) fuzz_finding("not an entry per vertex");
    for (const int64_t part : fix)
        if (count_errors(findings) == 0 && (part < -1 || (nparts > 0 && part >= nparts)))
            fuzz_finding("an entry that is no part, and no error");
}

static void check_partition(std::string_view text, int64_t nvertices)
{
    Budget budget = make_budget("partition", CAP, 0, 0);
    bool unended = false;
    try {
        const std::vector<int64_t> part = scan_partition(text, nvertices, &budget, &unended);
        if (static_cast<int64_t>(part.size()) != nvertices) fuzz_finding("not a part per vertex");
        for (const int64_t p : part)
            if (p < 0) fuzz_finding("a part below 0");
        if (unended != (!text.empty() && text.back() != '\n')) fuzz_finding("the last newline");
    } catch (const FileError &) {
        return;
    }
}

/* Vertices are called a to z; the names of more come again. */
static std::string letter(int64_t v)
{
    return std::string(1, static_cast<char>('a' + v % 26));
}

/* The parts, or nothing if the table is refused. */
static std::vector<int64_t> parts_of(std::string_view text, int64_t nvertices,
                                     const PartTableRule &rule)
{
    Budget budget = make_budget("table", CAP, 0, 0);
    try {
        return scan_parts_by_name(text, {nvertices, letter}, rule, &budget);
    } catch (const FileError &) {
        return {};
    }
}

static void check_table(std::string_view text, int64_t nvertices, int64_t nparts)
{
    if (!has_parts_by_name(text)) return;
    const std::vector<int64_t> whole = parts_of(text, nvertices, {nparts, false});
    const std::vector<int64_t> partial = parts_of(text, nvertices, {nparts, true});
    for (const std::vector<int64_t> &parts : {whole, partial}) {
        if (!parts.empty() && static_cast<int64_t>(parts.size()) != nvertices)
            fuzz_finding("not a part per vertex");
        for (const int64_t part : parts)
            if (part >= nparts || part < -1) fuzz_finding("a part out of range");
    }
    if (!whole.empty() && whole != partial) fuzz_finding("a whole table is not what it is in part");
    for (const int64_t part : whole)
        if (part < 0) fuzz_finding("a vertex without a part");
}

int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size)
{
    if (size < 2) return 0;
    const std::string_view text(reinterpret_cast<const char *>(bytes) + 2, size - 2);
    check_fix(text, bytes[0], bytes[1]);
    check_partition(text, bytes[0]);
    check_table(text, bytes[0], bytes[1]);
    return 0;
}
