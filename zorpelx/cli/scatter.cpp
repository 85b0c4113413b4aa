/* zorpelx/cli/scatter.cpp: pictures of results as points, in SVG. */
#include "scatter.h"

#include <algorithm>
#include <cmath>

#include "failure.h" // text_of

constexpr double WIDTH = 420, HEIGHT = 300; // of a panel
constexpr double LEFT = 76, RIGHT = 14, TOP = 34, BOTTOM = 50;
constexpr size_t PANELS_A_ROW = 2, NCOLOURS = 6;
constexpr double LEGEND = 64, LEGEND_ENTRY = 190; // height of title and legend, width of an entry

static const char STYLE[] =
    "<style>\n"
    "svg { background: #ffffff; color: #1a1a1a; font: 13px sans-serif; }\n"
    "text { fill: currentColor; } .axis { stroke: currentColor; fill: none; }\n"
    ".grid { stroke: currentColor; opacity: 0.15; }\n"
    ".mark { stroke: currentColor; opacity: 0.5; stroke-dasharray: 4 3; }\n"
    ".best { fill: none; stroke: currentColor; stroke-width: 1.5; }\n"
    ".c0 { fill: #0072b2; } .c1 { fill: #d55e00; } .c2 { fill: #009e73; }\n"
    ".c3 { fill: #cc79a7; } .c4 { fill: #e69f00; } .c5 { fill: #56b4e9; }\n"
    "@media (prefers-color-scheme: dark) {\n"
    "svg { background: #16191d; color: #e8e8e8; }\n"
    ".c0 { fill: #4ba3dc; } .c1 { fill: #f28e4b; } .c2 { fill: #2fc79b; }\n"
    "}\n"
    "</style>\n";

static std::string xml(const std::string &text)
{
    std::string out;
    for (const char c : text) {
        if (c == '&')
            out += "&amp;";
        else if (c == '<')
            out += "&lt;";
        else if (c == '>')
            out += "&gt;";
        else if (c == '"')
            out += "&quot;";
        else
            out += c;
    }
    return out;
}

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

struct Frame {
    Axis x, y;
};

static Frame frame_of(const Scatter &scatter, const Panel &panel)
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

static double place_x(const Frame &frame, double x)
{
    return LEFT + share_of(frame.x, x) * (WIDTH - LEFT - RIGHT);
}

static double place_y(const Frame &frame, double y)
{
    return HEIGHT - BOTTOM - share_of(frame.y, y) * (HEIGHT - TOP - BOTTOM);
}

static std::string line(const char *kind, double x1, double y1, double x2, double y2)
{
    return text_of("<line class=\"%s\" x1=\"%.1f\" y1=\"%.1f\" x2=\"%.1f\" y2=\"%.1f\"/>\n", kind,
                   x1, y1, x2, y2);
}

static std::string words(double x, double y, const char *anchor, const std::string &text)
{
    return text_of("<text x=\"%.1f\" y=\"%.1f\" text-anchor=\"%s\">", x, y, anchor) + xml(text) +
           "</text>\n";
}

/* One shape for each series: circle, square, diamond, triangle, and again. */
static std::string shape(size_t series, double x, double y, const std::string &title)
{
    constexpr double R = 5;
    const std::string head = text_of("class=\"c%zu\"", series % NCOLOURS);
    const std::string tail = title.empty() ? "/>\n" : "><title>" + xml(title) + "</title>";
    switch (series % 4) {
    case 0:
        return text_of("<circle %s cx=\"%.1f\" cy=\"%.1f\" r=\"%.1f\"", head.c_str(), x, y, R) +
               tail + (title.empty() ? "" : "</circle>\n");
    case 1:
        return text_of("<rect %s x=\"%.1f\" y=\"%.1f\" width=\"%.1f\" height=\"%.1f\"",
                       head.c_str(), x - R + 0.5, y - R + 0.5, 2 * R - 1, 2 * R - 1) +
               tail + (title.empty() ? "" : "</rect>\n");
    default:
        const double top = series % 4 == 2 ? R + 1 : R;
        const double low = series % 4 == 2 ? 0 : R - 1;
        const std::string foot =
            series % 4 == 2 ? text_of(" %.1f,%.1f", x, y + R + 1) : std::string();
        return text_of("<polygon %s points=\"%.1f,%.1f %.1f,%.1f%s %.1f,%.1f\"", head.c_str(), x,
                       y - top, x + R + 1, y + low, foot.c_str(), x - R - 1, y + low) +
               tail + (title.empty() ? "" : "</polygon>\n");
    }
}

static std::string axes(const Scatter &scatter, const Panel &panel, const Frame &frame)
{
    const double right = WIDTH - RIGHT, bottom = HEIGHT - BOTTOM;
    std::string text = words((LEFT + right) / 2, TOP - 14, "middle", panel.title);
    for (const double tick : frame.x.ticks) {
        const double x = place_x(frame, tick);
        text += line("grid", x, TOP, x, bottom) +
                words(x, bottom + 18, "middle", text_of("%.6g", tick));
    }
    for (const double tick : frame.y.ticks) {
        const double y = place_y(frame, tick);
        text +=
            line("grid", LEFT, y, right, y) + words(LEFT - 6, y + 4, "end", text_of("%.9g", tick));
    }
    text += words((LEFT + right) / 2, bottom + 38, "middle", scatter.x_name);
    text += text_of("<text transform=\"translate(16 %.1f) rotate(-90)\" text-anchor=\"middle\">",
                    (TOP + bottom) / 2) +
            xml(scatter.y_name) + "</text>\n";
    return text + line("axis", LEFT, bottom, right, bottom) + line("axis", LEFT, TOP, LEFT, bottom);
}

static std::string panel_text(const Scatter &scatter, const Panel &panel)
{
    const Frame frame = frame_of(scatter, panel);
    std::string text = axes(scatter, panel, frame);
    for (const double mark : panel.marks) {
        const double x = place_x(frame, mark);
        text += line("mark", x, TOP, x, HEIGHT - BOTTOM);
    }
    for (const Point &point : panel.points) {
        const double x = place_x(frame, point.x), y = place_y(frame, point.y);
        text += shape(point.series, x, y, point.title);
        if (point.best)
            text += text_of("<circle class=\"best\" cx=\"%.1f\" cy=\"%.1f\" r=\"9\"/>\n", x, y);
    }
    return text;
}

static std::string legend(const Scatter &scatter)
{
    std::string text = words(14, 24, "start", scatter.title);
    for (size_t i = 0; i < scatter.series.size(); i++) {
        const double x = 22 + LEGEND_ENTRY * static_cast<double>(i);
        text += shape(i, x, 46, "") + words(x + 14, 50, "start", scatter.series[i]);
    }
    return text;
}

std::string svg_of(const Scatter &scatter)
{
    const size_t rows = (scatter.panels.size() + PANELS_A_ROW - 1) / PANELS_A_ROW;
    const size_t columns = std::min(PANELS_A_ROW, scatter.panels.size());
    const double wide = std::max(WIDTH * static_cast<double>(columns),
                                 LEGEND_ENTRY * static_cast<double>(scatter.series.size()) + 20);
    const double high = LEGEND + HEIGHT * static_cast<double>(rows);
    std::string text =
        text_of("<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 %.0f %.0f\" "
                "width=\"%.0f\" height=\"%.0f\" role=\"img\">\n",
                wide, high, wide, high) +
        "<title>" + xml(scatter.title) + "</title>\n<desc>" + xml(scatter.description) +
        "</desc>\n" + STYLE + legend(scatter);
    for (size_t i = 0; i < scatter.panels.size(); i++)
        text += text_of("<g transform=\"translate(%.0f %.0f)\">\n",
                        WIDTH * static_cast<double>(i % PANELS_A_ROW),
                        LEGEND + HEIGHT * static_cast<double>(i / PANELS_A_ROW)) +
                panel_text(scatter, scatter.panels[i]) + "</g>\n";
    return text + "</svg>\n";
}
