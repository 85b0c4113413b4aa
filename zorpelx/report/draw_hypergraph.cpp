// SPDX-License-Identifier: MIT
/* zorpelx/report/draw_hypergraph.cpp: the hypergraph itself, or its clusters.
 *
 * Thousands of points are a few paths: all hyperedges of one kind, and all points of one part and
 * one size. A point is a stroke of no length with a round cap, which takes a dozen bytes.
 */
#include <algorithm>
#include <cmath>
#include <map>

#include "draw.h"
#include "markup.h"

constexpr double WIDTH = 720, MARGIN = 10;
constexpr size_t MOST_TITLED = 400;  // points that have their name as a tool tip
constexpr size_t MOST_NUMBERED = 40; // parts whose number stands in the picture

static std::string place_text(const Spot &place)
{
    return length(place.x + MARGIN) + ' ' + length(place.y + MARGIN);
}

/* Lines of the hyperedges that are cut, or of the others. */
static std::string net_path(const Account &account, bool cut)
{
    const Sketch &sketch = account.sketch;
    size_t hub = sketch.part.size();
    std::string path;
    for (size_t i = 0; i + 1 < sketch.start.size(); i++) {
        const size_t begin = sketch.start[i], end = sketch.start[i + 1];
        const bool star = end - begin > 2;
        const size_t centre = star ? hub++ : static_cast<size_t>(sketch.pins[begin]);
        if (sketch.cut[i] != cut) continue;
        for (size_t j = star ? begin : begin + 1; j < end; j++)
            path += 'M' + place_text(account.places[centre]) + 'L' +
                    place_text(account.places[static_cast<size_t>(sketch.pins[j])]);
    }
    return path;
}

static std::string draw_nets(const Account &account)
{
    const double thin = account.sketch.pins.size() > 8000 ? 0.4 : 0.7;
    return "<path class=\"wire open\" stroke-width=\"" + length(thin) +
           "\" stroke-opacity=\".55\" d=\"" + net_path(account, false) +
           "\"/>\n<path class=\"pen open\" stroke-width=\"" + length(thin + 0.3) +
           "\" stroke-opacity=\"" + (thin < 0.5 ? ".4" : ".6") + "\" d=\"" +
           net_path(account, true) + "\"/>\n";
}

/* Across, by the number of vertices of a cluster; in tenths, to have few different sizes. */
static int64_t point_size(const Sketch &sketch, size_t c)
{
    const double usual =
        std::clamp(150.0 / std::sqrt(static_cast<double>(sketch.part.size())), 3.5, 14.0);
    if (!sketch.clustered) return std::llround(usual * 10);
    const double mean =
        static_cast<double>(sketch.point.size()) / static_cast<double>(sketch.part.size());
    const double share = std::sqrt(static_cast<double>(sketch.vertices[c]) / mean);
    return std::llround(std::clamp(1.3 * usual * share, 2.0, 24.0)) * 10;
}

static std::string titled_points(const Account &account)
{
    const Sketch &sketch = account.sketch;
    std::string body;
    for (size_t c = 0; c < sketch.part.size(); c++) {
        const Spot &place = account.places[c];
        body +=
            "<circle class=\"" + part_class(sketch.part[c]) + "\" cx=\"" +
            length(place.x + MARGIN) + "\" cy=\"" + length(place.y + MARGIN) + "\" r=\"" +
            length(static_cast<double>(point_size(sketch, c)) / 20) + "\"><title>" +
            short_markup(vertex_label(*account.graph, static_cast<int64_t>(c), account.first), 80) +
            ", part " + std::to_string(sketch.part[c]) + "</title></circle>\n";
    }
    return body;
}

static std::string plain_points(const Account &account)
{
    const Sketch &sketch = account.sketch;
    std::map<std::pair<int64_t, int64_t>, std::string> paths; // by colour and size
    for (size_t c = 0; c < sketch.part.size(); c++)
        paths[{sketch.part[c] % NCOLOURS, point_size(sketch, c)}] +=
            'M' + place_text(account.places[c]) + "h0";
    std::string body;
    for (const auto &[kind, path] : paths)
        body += "<path class=\"q" + std::to_string(kind.first) +
                " open\" stroke-linecap=\"round\" stroke-width=\"" +
                length(static_cast<double>(kind.second) / 10) + "\" d=\"" + path + "\"/>\n";
    return body;
}

/* The point of each part that is nearest to the part's centre; none for an empty part. */
static std::vector<size_t> middle_points(const Account &account)
{
    const Sketch &sketch = account.sketch;
    const size_t nparts = account.facts.parts.size(), none = sketch.part.size();
    std::vector<Spot> centre(nparts, {0, 0});
    std::vector<double> number(nparts, 0);
    for (size_t c = 0; c < sketch.part.size(); c++) {
        const size_t p = static_cast<size_t>(sketch.part[c]);
        centre[p] = {centre[p].x + account.places[c].x, centre[p].y + account.places[c].y};
        number[p]++;
    }
    std::vector<size_t> middle(nparts, none);
    std::vector<double> nearest(nparts, 0);
    for (size_t c = 0; c < sketch.part.size(); c++) {
        const size_t p = static_cast<size_t>(sketch.part[c]);
        const double dx = account.places[c].x - centre[p].x / number[p];
        const double dy = account.places[c].y - centre[p].y / number[p];
        const double square = dx * dx + dy * dy;
        if (middle[p] != none && square >= nearest[p]) continue;
        nearest[p] = square;
        middle[p] = c;
    }
    return middle;
}

static std::string part_numbers(const Account &account)
{
    if (account.facts.parts.size() > MOST_NUMBERED) return "";
    const std::vector<size_t> middle = middle_points(account);
    std::string body;
    for (size_t p = 0; p < middle.size(); p++)
        if (middle[p] < account.sketch.part.size()) {
            const Spot &place = account.places[middle[p]];
            body += text("ink mid label halo", place.x + MARGIN, place.y + MARGIN + 4,
                         std::to_string(p));
        }
    return body;
}

static std::string what_is_drawn(const Account &account)
{
    const Sketch &sketch = account.sketch;
    const int64_t npoints = static_cast<int64_t>(sketch.part.size());
    std::string said =
        sketch.clustered
            ? with_number(npoints, "cluster", "clusters") + " of " +
                  with_number(account.graph->nvertices, "vertex", "vertices") +
                  ", each of one part, near to what they are joined with."
            : with_number(npoints, "vertex", "vertices") + ", near to what they are joined with.";
    said += " The colour and the number are those of the part; dark lines are cut hyperedges.";
    if (sketch.left_out > 0)
        said += ' ' + with_number(sketch.left_out, "hyperedge that joins", "hyperedges that join") +
                " very many points or little weight " + (sketch.left_out == 1 ? "is" : "are") +
                " left out.";
    return said;
}

Picture draw_hypergraph(const Account &account)
{
    const bool titled = !account.sketch.clustered && account.sketch.part.size() <= MOST_TITLED;
    const std::string body = draw_nets(account) +
                             (titled ? titled_points(account) : plain_points(account)) +
                             part_numbers(account);
    return {"hypergraph",
            account.sketch.clustered ? "The hypergraph, in clusters" : "The hypergraph",
            what_is_drawn(account),
            WIDTH,
            DRAWING_HEIGHT + 2 * MARGIN,
            body,
            true};
}
