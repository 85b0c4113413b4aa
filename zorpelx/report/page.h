/* SPDX-License-Identifier: MIT */
/* zorpelx/report/page.h: the report as one page of HTML.
 *
 * It needs no network and no script. Every picture has a table beside it that says the same. What
 * also stands in the JSON answer says where, in the attribute data-figure.
 */
#ifndef ZORPELX_REPORT_PAGE_H
#define ZORPELX_REPORT_PAGE_H

#include <string>

#include "account.h"
#include "picture.h"
#include "table.h"

/* The whole page with its pictures, as draw_all() makes them. */
std::string page_of(const Account &account, const std::vector<Picture> &pictures);

/* What stands around the sections of any page.
 *   title    of the page, markup; window is what the title of the window has more
 *   lead     a sentence or two below the title, markup
 *   version  of the program, plain */
struct Frame {
    std::string title, window, lead, version;
};

/* One part of the page.
 *   name     of its place: lower case letters and digits
 *   heading  plain text
 *   content  markup */
struct Section {
    std::string name, heading, content;
};

std::string framed_page(const Frame &frame, const std::vector<Section> &sections);

/* A figure with a name above it and more below it, in a list of class "headlines". */
std::string headline(const std::string &name, const Cell &cell, const std::string &more);

/* A picture by its name, with a line below it; empty if there is none. */
std::string figure_of(const std::vector<Picture> &pictures, const std::string &name);

/* A table that opens when it is asked for. */
std::string folded(const std::string &summary, const std::string &content);

std::vector<Section> part_sections(const Account &account, const std::vector<Picture> &pictures);
std::vector<Section> cut_sections(const Account &account, const std::vector<Picture> &pictures);
std::vector<Section> kind_sections(const Account &account);
std::vector<Section> comparison_sections(const Account &account,
                                         const std::vector<Picture> &pictures);

/* The rules of the page for how it looks. */
std::string page_style();

#endif
