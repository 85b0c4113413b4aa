/* SPDX-License-Identifier: MIT */
/* zorpelx/report/picture.h: pictures in SVG, inside a page or by themselves. */
#ifndef ZORPELX_REPORT_PICTURE_H
#define ZORPELX_REPORT_PICTURE_H

#include <cstdint>
#include <string>

constexpr int NCOLOURS = 8; // parts beyond have the same again, in outline

/* One picture.
 *   name   of its file, and of its place in the page: lower case letters and digits
 *   title  what it shows; text says what can be seen in it, both are markup already
 *   body   the drawing, markup
 *   whole  shrinks with a narrow page instead of being scrolled: it has few words */
struct Picture {
    std::string name, title, text;
    double width, height;
    std::string body;
    bool whole = false;
};

/* Colours and lines of all pictures, light and dark: the content of a style element. */
std::string picture_style();

/* As an element of a page that has the style. */
std::string picture_in_page(const Picture &picture);

/* As a file of its own, on a ground of its own. */
std::string picture_file(const Picture &picture);

/* Pieces of a drawing. The words are names of classes of the style. */
std::string rect(const char *words, double x, double y, double width, double height,
                 const std::string &more = "");
std::string line(const char *words, double x1, double y1, double x2, double y2);
std::string text(const char *words, double x, double y, const std::string &marked);

/* The classes for what belongs to a part: its fill. */
std::string part_class(int64_t part);

#endif
