/* zorpelx/cli/scatter.h: pictures of results as points, in SVG.
 *
 * Colours and shapes both tell the series apart; the colours are those of Okabe & Ito, Color
 * universal design, 2008, which colour-blind people tell apart. A style sheet in the picture
 * follows the reader's choice of a light or dark background.
 */
#ifndef ZORPELX_CLI_SCATTER_H
#define ZORPELX_CLI_SCATTER_H

#include <string>
#include <vector>

struct Point {
    double x, y;
    size_t series;     // its colour and shape
    bool best;         // ringed
    std::string title; // shown where a pointer rests
};

/* Points with axes of their own. */
struct Panel {
    std::string title;
    std::vector<Point> points;
    std::vector<double> marks; // vertical lines
};

struct Scatter {
    std::string title, description;
    std::string x_name, y_name;
    bool x_logarithmic;              // then every x is above 0
    std::vector<std::string> series; // names, for the legend
    std::vector<Panel> panels;
};

/* The picture as a file of its own: no script, no link, no font of its own. */
std::string svg_of(const Scatter &scatter);

#endif
