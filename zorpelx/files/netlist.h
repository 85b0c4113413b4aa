/* SPDX-License-Identifier: MIT */
/* zorpelx/files/netlist.h: a netlist of modules, as files have it, and the hypergraph of its top
 * module with all that lies below.
 *
 * Cells whose type is a module of the file with cells of its own are opened, again and again until
 * none is left; what they hold is named by the path, "u_core.u_alu.g17". Each other cell is a
 * vertex, and so is each bit of each port of the top module. A net that joins any of them is a
 * hyperedge. A net may have several names; it goes by one that the designer gave, if there is one,
 * and of these by the one furthest up.
 */
#ifndef ZORPELX_FILES_NETLIST_H
#define ZORPELX_FILES_NETLIST_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "hypergraph.h"
#include "interner.h"
#include "rules.h"

constexpr int32_t CONSTANT_BIT = -1; // in place of the number of a net

/* A port, a wire, or what a cell connects to one of its ports. The bits of a wire are numbered from
 * `offset`, upwards from the first bit or, with `upto`, downwards. */
struct NetBundle {
    std::string_view name;
    int64_t bit; // first of `width` entries of the module's bits
    int32_t width, offset;
    bool upto, hidden; // hidden: a name that a program made
    bool output;       // of a port
};

struct NetConnection {
    int32_t port; // number of its name in the design's
    int32_t width;
};

/* Its connections stand one behind another, and so do their bits. */
struct NetCell {
    std::string_view name;
    int64_t connection, bit; // first ones
    int32_t type;
};

/*   M1  connections of cell c are those before the first of cell c + 1, or before the end
 *   M2  an entry of bits is CONSTANT_BIT or below nbits
 *   M3  with netnames, net b is called by name b, and there are no wires
 *   M4  ordered: there are netnames, no constants, and nets are numbered in the order in which the
 *       bits of cells, then those of ports, come to them */
struct NetModule {
    std::string_view name;
    Place place;
    bool top, blackbox; // as the file says
    bool ordered = false;
    int32_t nbits;
    std::vector<int32_t> bits;
    std::vector<NetBundle> ports, wires;
    Names *netnames = nullptr;
    std::vector<NetCell> cells;
    std::vector<NetConnection> connections;
};

/* The views are of the file's text, or of whatever else outlives the design. */
struct NetDesign {
    std::vector<NetModule> modules;
    Interner types, portnames;
    std::string_view outputs = ""; // before the names of outputs, where cells have these names
    int64_t nconstants = 0;        // cells that are left out because they drive a constant only
};

/* Where a vertex comes from: cell `item` of a module or, if `port`, bit `bit` of port `item` of the
 * top module. */
struct NetOrigin {
    int32_t module, item, bit;
    bool port;
};

/* Adds a connection with its bits to the module's last cell. */
void add_connection(NetDesign *design, NetModule *module, std::string_view port, int32_t width,
                    Budget *budget);

/* Renumbers bits that are too far apart for an array over them; sets nbits. */
void settle_bits(NetModule *module, Budget *budget);

/* Index of the top module: the one of this name; if that is empty, the one that the file says, or
 * the only one that is no part of another.
 * Errors  FileError: there is none, or there are several */
size_t top_module(const NetDesign &design, const std::string &name, const Budget &budget);

/* The hypergraph. Cells weigh 1, ports 0. What was left out, and which nets look like clocks and
 * resets, is told. It may take the netnames away.
 *   origins  out: of each vertex; or null
 * Errors  FileError: a module that holds itself; past the budget */
Hypergraph flatten_design(const NetDesign &design, size_t top, Findings *findings, Budget *budget,
                          std::vector<NetOrigin> *origins = nullptr);

/* What vertices that stand for ports have as their kind. */
constexpr std::string_view PORT_KIND = "(port)";

#endif
