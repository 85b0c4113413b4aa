// SPDX-License-Identifier: MIT
/* zorpelx/files/clock_nets.cpp: which nets of a netlist look like clocks and resets. */
#include "clock_nets.h"

#include <algorithm>
#include <cctype>
#include <cstring>

#include "fileerror.h"
#include "told.h"

/* Names of ports in capital letters, an underscore and what follows it left out. */
static const char *const CLOCKS[] = {"CLK",  "CK",   "CP",   "CLOCK", "GCLK",
                                     "WCLK", "RCLK", "ACLK", "CLKA",  "CLKB"};
static const char *const RESETS[] = {"RST",  "RSTN", "RSTB",   "RESET", "RESETN", "RESETB", "ARST",
                                     "SRST", "CLR",  "CLRN",   "CLEAR", "PRE",    "PRESET", "SET",
                                     "SETN", "SETB", "NRESET", "NRST",  "RN",     "SN"};
static const char *const LETTER_CLOCKS[] = {"C"};
static const char *const LETTER_RESETS[] = {"R", "S"};

static std::string capitals(std::string_view name)
{
    std::string text;
    for (const char c : name) text += static_cast<char>(toupper(static_cast<unsigned char>(c)));
    return text;
}

template <size_t N> static bool lists(const char *const (&names)[N], const std::string &name)
{
    return std::find(std::begin(names), std::end(names), name) != std::end(names);
}

static unsigned char use_anywhere(const std::string &port)
{
    const std::string stem = port.substr(0, port.find('_'));
    if (lists(CLOCKS, stem)) return USE_CLOCK;
    return lists(RESETS, stem) ? USE_RESET : USE_PLAIN;
}

static unsigned char use_on_flipflop(const std::string &port)
{
    if (lists(LETTER_CLOCKS, port)) return USE_CLOCK;
    if (lists(LETTER_RESETS, port)) return USE_RESET;
    return use_anywhere(port);
}

static bool is_flipflop(const std::string &type)
{
    for (const char *const part : {"DFF", "FF_", "LATCH", "SDFF", "FDRE", "FDSE", "FDCE", "FDPE"})
        if (strstr(type.c_str(), part) != nullptr) return true;
    return false;
}

NetUses uses_of(const NetDesign &design)
{
    NetUses uses;
    for (int64_t p = 0; p < count_names(design.portnames.names); p++) {
        const std::string port = capitals(name_of(design.portnames.names, p));
        uses.anywhere.push_back(use_anywhere(port));
        uses.sequential.push_back(use_on_flipflop(port));
    }
    for (int64_t t = 0; t < count_names(design.types.names); t++)
        uses.flipflop.push_back(is_flipflop(capitals(name_of(design.types.names, t))));
    return uses;
}

static void tell_use(const Hypergraph &graph, const std::vector<unsigned char> &use, NetUse wanted,
                     const char *one, const char *several, Findings *findings)
{
    constexpr int64_t FEWEST = 3; // below, leaving a net out changes little
    std::vector<int64_t> nets;
    for (int64_t e = 0; e < graph.nnets; e++)
        if ((use[static_cast<size_t>(e)] & wanted) != 0 && net_size(graph, e) >= FEWEST)
            nets.push_back(e);
    if (nets.empty()) return;
    const auto larger = [&](int64_t a, int64_t b) {
        return net_size(graph, a) > net_size(graph, b);
    };
    std::stable_sort(nets.begin(), nets.end(), larger);
    tell_note(findings, {0, 0},
              counted(static_cast<int64_t>(nets.size()), one, several) + ": " +
                  listed(nets.size(),
                         [&](size_t i) {
                             return net_label(graph, nets[i]) + " (" +
                                    counted(net_size(graph, nets[i]), "vertex", "vertices") + ")";
                         }) +
                  "; --skip-nets leaves nets out");
}

void tell_clock_nets(const Hypergraph &graph, const std::vector<unsigned char> &use,
                     Findings *findings)
{
    tell_use(graph, use, USE_CLOCK, "net looks like a clock", "nets look like clocks", findings);
    tell_use(graph, use, USE_RESET, "net looks like a reset", "nets look like resets", findings);
}
