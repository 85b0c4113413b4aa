// SPDX-License-Identifier: MIT
/* zorpelx/report/page.cpp: the report as one page of HTML. */
#include "page.h"

#include <algorithm>

#include "markup.h"
#include "table.h"

std::string figure_of(const std::vector<Picture> &pictures, const std::string &name)
{
    const auto picture = std::find_if(pictures.begin(), pictures.end(),
                                      [&](const Picture &one) { return one.name == name; });
    if (picture == pictures.end()) return "";
    return "<figure>\n<div class=\"scroll\" role=\"region\" tabindex=\"0\" aria-label=\"Picture: " +
           picture->title + "\">\n" + picture_in_page(*picture) + "</div>\n<figcaption>" +
           picture->text + "</figcaption>\n</figure>\n";
}

std::string folded(const std::string &summary, const std::string &content)
{
    return "<details>\n<summary>" + summary + "</summary>\n" + content + "</details>\n";
}

static std::string shown_file(const std::string &name)
{
    const size_t slash = name.rfind('/');
    return short_markup(slash == std::string::npos ? name : name.substr(slash + 1), 60);
}

static std::string title_of(const Account &account)
{
    return shown_file(account.name) + " in " +
           with_number(account.figures[0].nparts, "part", "parts");
}

static std::string head_of(const Frame &frame)
{
    return "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
           "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
           "<meta name=\"color-scheme\" content=\"light dark\">\n"
           "<meta name=\"generator\" content=\"zorpelx " +
           markup(frame.version) +
           "\">\n<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; "
           "style-src 'unsafe-inline'; img-src data:\">\n<link rel=\"icon\" href=\"data:,\">\n"
           "<title>" +
           frame.title + frame.window + "</title>\n<style>\n" + page_style() + picture_style() +
           "</style>\n</head>\n";
}

static std::string share_text(int64_t number, int64_t all)
{
    if (all == 0) return "";
    return " (" + decimal(100.0 * static_cast<double>(number) / static_cast<double>(all), 1) +
           "\u00a0%)";
}

static std::string balance_text(const Account &account)
{
    const Figures &figures = account.figures[0];
    std::string text = "The heaviest part is " + decimal(imbalance_percent(figures), 2) +
                       "\u00a0% above the average";
    if (account.allowed.most.empty()) return text + '.';
    bool within = true;
    for (size_t p = 0; p < figures.weight.size(); p++)
        within = within && figures.weight[p] <= account.allowed.most[p] &&
                 figures.weight[p] >= account.allowed.least[p];
    return text + (within ? ", and every part is within its bounds."
                          : "; not every part is within its bounds.");
}

/* What there is to say in two sentences. */
static std::string lead_of(const Account &account)
{
    const Figures &figures = account.figures[0];
    const int64_t nnets = account.graph->nnets;
    const std::string cut =
        figures.ncut == 0
            ? "No hyperedge is cut."
            : grouped(figures.ncut) + " of " + with_number(nnets, "hyperedge", "hyperedges") +
                  share_text(figures.ncut, nnets) +
                  (figures.ncut == 1 ? " joins several parts." : " join several parts.");
    return cut + ' ' + balance_text(account);
}

std::string headline(const std::string &name, const Cell &cell, const std::string &more)
{
    return "<div><dt>" + name + "</dt>" + figure_markup("dd", cell) +
           (more.empty() ? "" : "<dd class=\"more\">" + more + "</dd>") + "</div>\n";
}

static std::string headlines(const Account &account)
{
    const Figures &figures = account.figures[0];
    const Hypergraph &graph = *account.graph;
    return "<dl class=\"headlines\">\n" +
           headline("Cut", number_cell(figures.cut, "/cut"),
                    "of " + grouped(total_weight(graph.netwgt)) + " in all") +
           headline("Connectivity", number_cell(figures.km1, "/connectivity"),
                    "each hyperedge for every part beyond its first") +
           headline("Heaviest part", percent_cell(imbalance_percent(figures), "/imbalance_percent"),
                    "above the average") +
           headline("Parts", number_cell(figures.nparts, "/nparts"), "") +
           headline("Vertices", number_cell(graph.nvertices, "/vertices"), "") +
           headline("Hyperedges", number_cell(graph.nnets, "/hyperedges"),
                    figure_markup("span", number_cell(figures.ncut, "/cut_hyperedges")) + " cut") +
           headline("Pins", number_cell(static_cast<int64_t>(graph.pins.size()), "/pins"), "") +
           headline("External degrees", number_cell(figures.soed, "/soed"),
                    "each cut hyperedge for every part") +
           "</dl>\n";
}

static std::string files_text(const Account &account)
{
    std::string text =
        "<p class=\"files\">Hypergraph <code>" + markup(account.name) + "</code>, partition";
    for (size_t i = 0; i < account.divisions.size(); i++)
        text += (i == 0   ? " <code>"
                 : i == 1 ? ", compared with <code>"
                          : ", <code>") +
                markup(account.divisions[i].name) + "</code>";
    return text + "</p>\n";
}

static std::string contents_list(const std::vector<Section> &sections)
{
    std::string list = "<nav aria-label=\"Contents\">\n<ul>\n";
    for (const Section &section : sections)
        list += "<li><a href=\"#" + section.name + "\">" + section.heading + "</a></li>\n";
    return list + "</ul>\n</nav>\n";
}

static std::string section_markup(const Section &section)
{
    return "<section id=\"" + section.name + "\" aria-labelledby=\"" + section.name +
           "-heading\">\n<h2 id=\"" + section.name + "-heading\">" + section.heading + "</h2>\n" +
           section.content + "</section>\n";
}

static void append(const std::vector<Section> &more, std::vector<Section> *sections)
{
    sections->insert(sections->end(), more.begin(), more.end());
}

std::string framed_page(const Frame &frame, const std::vector<Section> &sections)
{
    std::string page = head_of(frame) +
                       "<body>\n<a class=\"skip\" href=\"#content\">Skip to the content</a>\n"
                       "<header>\n<h1>" +
                       frame.title + "</h1>\n<p class=\"lead\">" + frame.lead +
                       "</p>\n</header>\n" + contents_list(sections) +
                       "<main id=\"content\" tabindex=\"-1\">\n";
    for (const Section &section : sections) page += section_markup(section);
    return page + "</main>\n<footer>Made by zorpelx " + markup(frame.version) +
           "</footer>\n</body>\n</html>\n";
}

std::string page_of(const Account &account, const std::vector<Picture> &pictures)
{
    std::vector<Section> sections = {
        {"summary", "Summary", headlines(account) + files_text(account)}};
    append(part_sections(account, pictures), &sections);
    append(cut_sections(account, pictures), &sections);
    append(kind_sections(account), &sections);
    append(comparison_sections(account, pictures), &sections);
    return framed_page({title_of(account), ", cut " + grouped(account.figures[0].cut),
                        lead_of(account), account.version},
                       sections);
}
