// SPDX-License-Identifier: MIT
/* zorpelx/report/draw_scatter.cpp: results as points, in panels. */
#include "draw_scatter.h"

#include <algorithm>
#include <cmath>

#include "fileerror.h" // text_of
#include "markup.h"

constexpr double WIDTH = 420, HEIGHT = 300; // of a panel
constexpr double LEFT = 76, RIGHT = 14, TOP = 34, BOTTOM = 50;
constexpr size_t PANELS_A_ROW = 2;
constexpr double LEGEND = 40, LEGEND_ENTRY = 150; // height of the legend, width of an entry

/* An axis from least to most with ticks at round numbers. */
struct Axis {
    double least, most;
    bool logarithmic;
    std::vector<double> ticks;
};

static double round_step(double range)
{
    constexpr double TICKS = 5;
    const double power = std::pow(10, std::floor(std::log10(range / TICKS)));
    for (const double step : {1.0, 2.0, 5.0})
        if (range / (step * power) <= TICKS) return step * power;
    return 10 * power;
}

static Axis linear_axis(double least, double most)
{
    if (most <= least) most = least + 1;
    const double step = round_step(most - least);
    Axis axis = {std::floor(least / step) * step, std::ceil(most / step) * step, false, {}};
    const int count = static_cast<int>(std::lround((axis.most - axis.least) / step));
    for (int i = 0; i <= count; i++) axis.ticks.push_back(axis.least + i * step);
    return axis;
}

/* Whole powers of ten around the numbers, with 2 and 5 between where they are few. */
static Axis logarithmic_axis(double least, double most)
{
    const int low = static_cast<int>(std::floor(std::log10(least)));
    const int high = std::max(low + 1, static_cast<int>(std::ceil(std::log10(most))));
    Axis axis = {std::pow(10, low), std::pow(10, high), true, {}};
    for (int power = low; power <= high; power++)
        for (const double step : {1.0, 2.0, 5.0})
            if ((step == 1 || high - low <= 2) && (power < high || step == 1))
                axis.ticks.push_back(step * std::pow(10, power));
    return axis;
}

static double share_of(const Axis &axis, double value)
{
    if (axis.logarithmic) return std::log(value / axis.least) / std::log(axis.most / axis.least);
    return (value - axis.least) / (axis.most - axis.least);
}

struct ScatterFrame {
    Axis x, y;
};

static ScatterFrame frame_of(const Scatter &scatter, const Panel &panel)
{
    std::vector<double> xs = panel.marks, ys;
    for (const Point &point : panel.points) {
        xs.push_back(point.x);
        ys.push_back(point.y);
    }
    if (ys.empty()) ys = {0};
    if (xs.empty()) xs = {1};
    const auto [x0, x1] = std::minmax_element(xs.begin(), xs.end());
    const auto [y0, y1] = std::minmax_element(ys.begin(), ys.end());
    return {scatter.x_logarithmic ? logarithmic_axis(*x0, *x1)
                                  : linear_axis(std::min(0.0, *x0), *x1),
            linear_axis(*y0, *y1)};
}

static double place_x(const ScatterFrame &frame, double x)
{
    return LEFT + share_of(frame.x, x) * (WIDTH - LEFT - RIGHT);
}

static double place_y(const ScatterFrame &frame, double y)
{
    return HEIGHT - BOTTOM - share_of(frame.y, y) * (HEIGHT - TOP - BOTTOM);
}

static std::string points_text(double x, double y)
{
    return length(x) + ',' + length(y) + ' ';
}

/* One shape for each series: circle, square, diamond, triangle, and again. */
static std::string shape(size_t series, double x, double y, const std::string &title)
{
    constexpr double R = 5;
    const std::string head = "class=\"" + part_class(static_cast<int64_t>(series)) + '"';
    const std::string inside = title.empty() ? "" : "<title>" + markup(title) + "</title>";
    if (series % 4 == 0)
        return "<circle " + head + " cx=\"" + length(x) + "\" cy=\"" + length(y) + "\" r=\"" +
               length(R) + "\">" + inside + "</circle>\n";
    if (series % 4 == 1)
        return "<rect " + head + " x=\"" + length(x - R + 0.5) + "\" y=\"" + length(y - R + 0.5) +
               "\" width=\"" + length(2 * R - 1) + "\" height=\"" + length(2 * R - 1) + "\">" +
               inside + "</rect>\n";
    const bool diamond = series % 4 == 2;
    const double low = diamond ? y : y + R - 1;
    return "<polygon " + head + " points=\"" + points_text(x, y - R - (diamond ? 1 : 0)) +
           points_text(x + R + 1, low) + (diamond ? points_text(x, y + R + 1) : "") +
           points_text(x - R - 1, low) + "\">" + inside + "</polygon>\n";
}

static std::string axes(const Scatter &scatter, const Panel &panel, const ScatterFrame &frame)
{
    const double right = WIDTH - RIGHT, bottom = HEIGHT - BOTTOM, middle = (LEFT + right) / 2;
    std::string out = text("ink mid strong", middle, TOP - 14, markup(panel.title));
    for (const double tick : frame.x.ticks) {
        const double x = place_x(frame, tick);
        out += line("rule", x, TOP, x, bottom) +
               text("dim mid", x, bottom + 18, text_of("%.6g", tick));
    }
    for (const double tick : frame.y.ticks) {
        const double y = place_y(frame, tick);
        out += line("rule", LEFT, y, right, y) +
               text("dim end", LEFT - 6, y + 4, text_of("%.9g", tick));
    }
    out += text("dim mid", middle, bottom + 38, markup(scatter.x_name));
    out += "<text class=\"dim mid\" transform=\"translate(16 " + length((TOP + bottom) / 2) +
           ") rotate(-90)\">" + markup(scatter.y_name) + "</text>\n";
    return out + line("pen", LEFT, bottom, right, bottom) + line("pen", LEFT, TOP, LEFT, bottom);
}

static std::string panel_text(const Scatter &scatter, const Panel &panel)
{
    const ScatterFrame frame = frame_of(scatter, panel);
    std::string out = axes(scatter, panel, frame);
    for (const double mark : panel.marks) {
        const double x = place_x(frame, mark);
        out += line("pen dash", x, TOP, x, HEIGHT - BOTTOM);
    }
    for (const Point &point : panel.points) {
        const double x = place_x(frame, point.x), y = place_y(frame, point.y);
        out += shape(point.series, x, y, point.title);
        if (point.best)
            out += "<circle class=\"pen open\" stroke-width=\"1.5\" cx=\"" + length(x) +
                   "\" cy=\"" + length(y) + "\" r=\"9\"/>\n";
    }
    return out;
}

static std::string legend(const Scatter &scatter)
{
    std::string out;
    for (size_t i = 0; i < scatter.series.size(); i++) {
        const double x = 22 + LEGEND_ENTRY * static_cast<double>(i);
        out += shape(i, x, 16, "") + text("ink", x + 14, 20, markup(scatter.series[i]));
    }
    return out;
}

Picture draw_scatter(const Scatter &scatter)
{
    const size_t rows = (scatter.panels.size() + PANELS_A_ROW - 1) / PANELS_A_ROW;
    const size_t columns = std::min(PANELS_A_ROW, scatter.panels.size());
    const double wide = std::max(WIDTH * static_cast<double>(columns),
                                 LEGEND_ENTRY * static_cast<double>(scatter.series.size()) + 20);
    std::string body = legend(scatter);
    for (size_t i = 0; i < scatter.panels.size(); i++)
        body += text_of("<g transform=\"translate(%.0f %.0f)\">\n",
                        WIDTH * static_cast<double>(i % PANELS_A_ROW),
                        LEGEND + HEIGHT * static_cast<double>(i / PANELS_A_ROW)) +
                panel_text(scatter, scatter.panels[i]) + "</g>\n";
    return {scatter.name,
            markup(scatter.title),
            markup(scatter.description),
            wide,
            LEGEND + HEIGHT * static_cast<double>(rows),
            std::move(body)};
}
