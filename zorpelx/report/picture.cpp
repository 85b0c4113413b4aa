// SPDX-License-Identifier: MIT
/* zorpelx/report/picture.cpp: pictures in SVG, inside a page or by themselves. */
#include "picture.h"

#include "fileerror.h" // text_of
#include "markup.h"

/* Colours of one scheme. Those of parts differ for people with any of the usual kinds of colour
 * blindness as well, and stand out from the ground; a test computes both. */
struct Scheme {
    const char *ground, *ink, *dim, *rule, *heat, *on_heat, *wire;
    const char *parts[NCOLOURS];
};

constexpr Scheme LIGHT = {
    "#ffffff",
    "#1b1f24",
    "#57606a",
    "#c8ced6",
    "#0b5fa5",
    "#ffffff",
    "#8c959f",
    {"#0c4c9f", "#bd8569", "#95375b", "#3295ff", "#695700", "#968fb5", "#4b004a", "#1a2d05"}};
constexpr Scheme DARK = {
    "#15191e",
    "#e8ecf1",
    "#a3adb8",
    "#3d4651",
    "#6cb6ff",
    "#0d1116",
    "#6e7a87",
    {"#54adff", "#edc85d", "#e37666", "#0d68a5", "#5affbf", "#935500", "#d5ceed", "#6f6976"}};

static std::string rule_of(const std::string &words, const char *property, const char *colour)
{
    return words + '{' + property + ':' + colour + "}\n";
}

static std::string scheme_style(const Scheme &scheme)
{
    std::string style =
        rule_of(".ground", "fill", scheme.ground) + rule_of(".ink", "fill", scheme.ink) +
        rule_of(".dim", "fill", scheme.dim) + rule_of(".rule", "stroke", scheme.rule) +
        rule_of(".pen", "stroke", scheme.ink) + rule_of(".wire", "stroke", scheme.wire) +
        rule_of(".heat", "fill", scheme.heat) + rule_of(".trend", "stroke", scheme.heat) +
        rule_of(".onheat", "fill", scheme.on_heat) + rule_of(".halo", "stroke", scheme.ground);
    for (int i = 0; i < NCOLOURS; i++)
        style +=
            text_of(".p%d{fill:%s}\n.q%d{stroke:%s}\n", i, scheme.parts[i], i, scheme.parts[i]);
    return style;
}

std::string picture_style()
{
    return "svg text{font:12px system-ui,\"Noto Sans\",\"DejaVu Sans\",sans-serif}\n"
           "svg .end{text-anchor:end}\nsvg .mid{text-anchor:middle}\n"
           "svg .strong{font-weight:600}\nsvg .label{font-weight:600;font-size:13px}\n"
           ".dash{stroke-dasharray:5 3}\n.band{fill-opacity:.1}\n.open{fill:none}\n"
           ".halo{stroke-width:3px;paint-order:stroke;stroke-linejoin:round}\n" +
           scheme_style(LIGHT) + "@media (prefers-color-scheme:dark){\n" + scheme_style(DARK) +
           "}\n";
}

static std::string opening(const Picture &picture, const std::string &more)
{
    return "<svg xmlns=\"http://www.w3.org/2000/svg\"" + more + " viewBox=\"0 0 " +
           length(picture.width) + ' ' + length(picture.height) +
           "\" role=\"img\" aria-labelledby=\"" + picture.name + "-title " + picture.name +
           "-text\">\n<title id=\"" + picture.name + "-title\">" + picture.title +
           "</title>\n<desc id=\"" + picture.name + "-text\">" + picture.text + "</desc>\n";
}

std::string picture_in_page(const Picture &picture)
{
    return opening(picture, picture.whole ? " class=\"whole\"" : "") + picture.body + "</svg>\n";
}

std::string picture_file(const Picture &picture)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n" +
           opening(picture, " width=\"" + length(picture.width) + "\" height=\"" +
                                length(picture.height) + '"') +
           "<style>\n" + picture_style() + "</style>\n" +
           rect("ground", 0, 0, picture.width, picture.height) + picture.body + "</svg>\n";
}

std::string rect(const char *words, double x, double y, double width, double height,
                 const std::string &more)
{
    return std::string("<rect class=\"") + words + "\" x=\"" + length(x) + "\" y=\"" + length(y) +
           "\" width=\"" + length(width) + "\" height=\"" + length(height) + '"' + more + "/>\n";
}

std::string line(const char *words, double x1, double y1, double x2, double y2)
{
    return std::string("<path class=\"") + words + "\" d=\"M" + length(x1) + ' ' + length(y1) +
           'L' + length(x2) + ' ' + length(y2) + "\"/>\n";
}

std::string text(const char *words, double x, double y, const std::string &marked)
{
    return std::string("<text class=\"") + words + "\" x=\"" + length(x) + "\" y=\"" + length(y) +
           "\">" + marked + "</text>\n";
}

std::string part_class(int64_t part)
{
    return "p" + std::to_string(part % NCOLOURS);
}
