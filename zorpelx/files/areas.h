/* SPDX-License-Identifier: MIT */
/* zorpelx/files/areas.h: areas of cells by their type, from a table or a Liberty file.
 *
 * A table has lines TYPE,AREA; a first line whose area is no number is its header. A Liberty file
 * tells areas by cell ("NAME") { area : 1.5; }.
 */
#ifndef ZORPELX_FILES_AREAS_H
#define ZORPELX_FILES_AREAS_H

#include <string>
#include <string_view>
#include <vector>

#include "hypergraph.h"
#include "interner.h"
#include "rules.h"

/* Names of types with their areas; each name once, the last area counts. */
struct Areas {
    Interner types;
    std::vector<double> area;
};

/* Reads a table or a Liberty file, whichever it is.
 * Errors  FileError with line and column */
Areas read_areas(std::string_view bytes, Budget *budget);

/* A Liberty file; read_areas() calls it. */
Areas read_liberty(std::string_view bytes, Budget *budget);

/* The area of a type; what was there before is replaced. */
void set_area(Areas *areas, std::string_view type, double area, Budget *budget);

/* Sets the weight of every vertex whose kind has an area; that of another kind stays what it was,
 * counted in the areas' unit, and such kinds are told. Ports without an area weigh 0.
 *   name  of the file with the areas, for what is told
 * Errors  FileError: vertices have no kinds */
void weigh_by_area(Hypergraph *graph, const Areas &areas, const std::string &name,
                   Findings *findings, const Budget &budget);

/* The same with a file, read within the budget; "-" cannot be it. */
void weigh_by_file(Hypergraph *graph, const std::string &path, Findings *findings, Budget *budget);

/* Leaves out the hyperedges whose name fits one of the patterns, which commas separate; tells how
 * many. Without names, their numbers from 1 are what patterns are of. */
void skip_nets(Hypergraph *graph, const std::string &patterns, Findings *findings);

#endif
