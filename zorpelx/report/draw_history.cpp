// SPDX-License-Identifier: MIT
/* zorpelx/report/draw_history.cpp: how the search went: its best partition by time and step. */
#include <algorithm>

#include "draw.h"
#include "markup.h"

constexpr double WIDTH = 720, HEIGHT = 280, LEFT = 76, RIGHT = 30, TOP = 24, BOTTOM = 44;
constexpr size_t MOST_STEPS = 12; // whose names have room

struct Scale {
    double least, most, from, to; // values, and where they are in the picture
};

static double on(const Scale &scale, double value)
{
    const double range = scale.most - scale.least;
    return scale.from + (range > 0 ? (value - scale.least) / range : 0) * (scale.to - scale.from);
}

/* 1, 2 or 5 times a power of ten: the least that divides a range into at most five. */
static double tick_of(double range)
{
    constexpr double FEW = 5;
    double tick = 1;
    while (tick * FEW < range) tick *= 10;
    while (tick * FEW / 10 >= range && tick > 1e-6) tick /= 10;
    for (const double part : {0.2, 0.5})
        if (tick * part * FEW >= range) return tick * part;
    return tick;
}

static std::string axes(const Scale &time, const Scale &value, const std::string &name)
{
    std::string out;
    const double across = tick_of(time.most - time.least);
    for (int i = 0; i * across <= time.most; i++)
        out += text("dim mid", on(time, i * across), HEIGHT - BOTTOM + 18,
                    decimal(i * across, across < 1 ? (across < 0.1 ? 2 : 1) : 0));
    const double up = std::max(tick_of(value.most - value.least), 1.0);
    for (double at = up * static_cast<double>(static_cast<int64_t>(value.least / up));
         at <= value.most; at += up) {
        if (at < value.least) continue;
        out += line("rule", LEFT, on(value, at), WIDTH - RIGHT, on(value, at)) +
               text("dim end", LEFT - 8, on(value, at) + 4, grouped(static_cast<int64_t>(at)));
    }
    return out + text("dim end", WIDTH - RIGHT, HEIGHT - 8, "seconds") + text("dim", 0, 12, name);
}

static std::string steps_path(const History &history, const Scale &time, const Scale &value)
{
    std::string path;
    double last = 0;
    for (const Improvement &step : history.improvements) {
        const double x = on(time, step.seconds), y = on(value, static_cast<double>(step.objective));
        path += path.empty()
                    ? "M" + length(x) + ' ' + length(y)
                    : "L" + length(x) + ' ' + length(last) + "L" + length(x) + ' ' + length(y);
        last = y;
    }
    return path + "L" + length(WIDTH - RIGHT) + ' ' + length(last);
}

static std::string dots(const History &history, const Scale &time, const Scale &value)
{
    std::string out;
    const bool named = history.improvements.size() <= MOST_STEPS;
    for (size_t i = 0; i < history.improvements.size(); i++) {
        const Improvement &step = history.improvements[i];
        const double x = on(time, step.seconds), y = on(value, static_cast<double>(step.objective));
        out += "<circle class=\"heat\" cx=\"" + length(x) + "\" cy=\"" + length(y) +
               "\" r=\"3.5\"><title>" + grouped(step.objective) + " after " +
               decimal(step.seconds, 2) + " s by " + short_markup(step.step, 40) +
               "</title></circle>\n";
        const bool first = i == 0 || step.step != history.improvements[i - 1].step;
        if (named && first) {
            const bool left = x > WIDTH * 0.75;
            out += text(left ? "ink end halo" : "ink halo", left ? x - 6 : x + 6, y - 7,
                        short_markup(step.step, 40));
        }
    }
    return out;
}

Picture draw_history(const Account &account)
{
    const History &history = account.history;
    double least = static_cast<double>(history.improvements[0].objective), most = least;
    for (const Improvement &step : history.improvements) {
        least = std::min(least, static_cast<double>(step.objective));
        most = std::max(most, static_cast<double>(step.objective));
    }
    const double spare = std::max((most - least) * 0.06, 0.5);
    const double end = std::max(history.seconds, history.improvements.back().seconds);
    const Scale time = {0, std::max(end, 0.01), LEFT, WIDTH - RIGHT};
    const Scale value = {std::max(least - spare, 0.0), most + spare, HEIGHT - BOTTOM, TOP};
    const std::string body = axes(time, value, markup(history.objective)) +
                             "<path class=\"trend open\" stroke-width=\"2\" d=\"" +
                             steps_path(history, time, value) + "\"/>\n" +
                             dots(history, time, value);
    const int64_t first = history.improvements.front().objective;
    const int64_t last = history.improvements.back().objective;
    return {"history",
            "The best partition by time",
            "From " + grouped(first) + " to " + grouped(last) + " in " + decimal(end, 2) +
                " seconds, in " +
                with_number(static_cast<int64_t>(history.improvements.size()), "step.", "steps."),
            WIDTH,
            HEIGHT,
            body};
}

std::vector<Picture> draw_all(const Account &account)
{
    std::vector<Picture> pictures = {draw_sizes(account), draw_matrix(account),
                                     draw_touched(account), draw_parts(account),
                                     draw_hypergraph(account)};
    if (!account.history.improvements.empty()) pictures.push_back(draw_history(account));
    for (size_t i = 1; i < account.divisions.size(); i++)
        pictures.push_back(draw_moves(account, i));
    return pictures;
}
