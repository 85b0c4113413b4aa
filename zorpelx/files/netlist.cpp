// SPDX-License-Identifier: MIT
/* zorpelx/files/netlist.cpp: the modules of a netlist, and which is the top one. */
#include "netlist.h"

#include <algorithm>
#include <cassert>

#include "casts.h"
#include "fileerror.h"
#include "zorpelx.h"

void add_connection(NetDesign *design, NetModule *module, std::string_view port, int32_t width,
                    Budget *budget)
{
    assert(!module->cells.empty());
    const int32_t number = intern(&design->portnames, port, budget);
    push_charged(budget, &module->connections, NetConnection{number, width});
}

/* The different nets of a module, in increasing order. */
static std::vector<int32_t> numbers_used(const NetModule &module, Budget *budget)
{
    charge(budget, module.bits.size() * sizeof module.bits[0]);
    std::vector<int32_t> used = module.bits;
    std::sort(used.begin(), used.end());
    used.erase(std::unique(used.begin(), used.end()), used.end());
    used.erase(used.begin(), std::upper_bound(used.begin(), used.end(), CONSTANT_BIT));
    return used;
}

void settle_bits(NetModule *module, Budget *budget)
{
    constexpr int64_t SPARSE = 4;
    int32_t largest = CONSTANT_BIT;
    for (const int32_t bit : module->bits) largest = std::max(largest, bit);
    module->nbits = largest + 1;
    if (module->nbits <= SPARSE * static_cast<int64_t>(module->bits.size())) return;
    const std::vector<int32_t> used = numbers_used(*module, budget);
    for (int32_t &bit : module->bits)
        if (bit != CONSTANT_BIT)
            bit = static_cast<int32_t>(std::lower_bound(used.begin(), used.end(), bit) -
                                       used.begin());
    module->nbits = static_cast<int32_t>(used.size());
    give_back(budget, module->bits.size() * sizeof module->bits[0]);
}

/* Which modules some cell is of. */
static std::vector<bool> used_modules(const NetDesign &design)
{
    std::vector<bool> types(at(count_names(design.types.names)), false), used;
    for (const NetModule &module : design.modules)
        for (const NetCell &cell : module.cells) types[at(cell.type)] = true;
    for (const NetModule &module : design.modules) {
        const int32_t type = find_name(design.types, module.name);
        used.push_back(type >= 0 && types[at(type)]);
    }
    return used;
}

static std::string module_names(const NetDesign &design, const std::vector<size_t> &indices)
{
    constexpr size_t MOST = 6;
    std::string names;
    for (size_t i = 0; i < indices.size() && i < MOST; i++)
        names.append(i == 0 ? "" : ", ").append(design.modules[indices[i]].name);
    return indices.size() > MOST ? names + ", ..." : names;
}

/* The modules that the file calls top or, if there are none, those that no other one holds. */
static std::vector<size_t> top_candidates(const NetDesign &design)
{
    std::vector<size_t> said, roots;
    const std::vector<bool> used = used_modules(design);
    for (size_t m = 0; m < design.modules.size(); m++) {
        if (design.modules[m].top) said.push_back(m);
        if (!used[m] && !design.modules[m].blackbox) roots.push_back(m);
    }
    return said.empty() ? roots : said;
}

static size_t module_called(const NetDesign &design, const std::string &name, const Budget &budget)
{
    for (size_t m = 0; m < design.modules.size(); m++)
        if (design.modules[m].name == name) return m;
    file_error(ZORPELX_BAD_INPUT, "%s: no module is called '%s'", budget.name.c_str(),
               name.c_str());
}

size_t top_module(const NetDesign &design, const std::string &name, const Budget &budget)
{
    if (!name.empty()) return module_called(design, name, budget);
    const std::vector<size_t> tops = top_candidates(design);
    if (tops.empty())
        file_error(ZORPELX_BAD_INPUT, "%s: there is no module that could be the top one",
                   budget.name.c_str());
    if (tops.size() > 1)
        file_error(ZORPELX_BAD_INPUT, "%s: %zu modules could be the top one (%s); --top-module says which",
                   budget.name.c_str(), tops.size(), module_names(design, tops).c_str());
    return tops[0];
}
