/* SPDX-License-Identifier: MIT */
/* zorpelx/report/draw_scatter.h: results as points, in panels. Colours and shapes both tell the
 * series apart. */
#ifndef ZORPELX_REPORT_DRAW_SCATTER_H
#define ZORPELX_REPORT_DRAW_SCATTER_H

#include <string>
#include <vector>

#include "picture.h"

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

/* All texts are plain; they become markup in the picture. */
struct Scatter {
    std::string name; // of the picture: lower case letters and digits
    std::string title, description;
    std::string x_name, y_name;
    bool x_logarithmic;              // then every x is above 0
    std::vector<std::string> series; // names, for the legend
    std::vector<Panel> panels;
};

Picture draw_scatter(const Scatter &scatter);

#endif
