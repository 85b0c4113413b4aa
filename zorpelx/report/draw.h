/* SPDX-License-Identifier: MIT */
/* zorpelx/report/draw.h: the pictures of a report, one function each. */
#ifndef ZORPELX_REPORT_DRAW_H
#define ZORPELX_REPORT_DRAW_H

#include <vector>

#include "account.h"
#include "picture.h"

Picture draw_sizes(const Account &account);
Picture draw_touched(const Account &account);
Picture draw_matrix(const Account &account);
Picture draw_parts(const Account &account);
Picture draw_hypergraph(const Account &account);
Picture draw_history(const Account &account);

/* The vertices of partition i, counted from 0, by where the first one has them. */
Picture draw_moves(const Account &account, size_t i);

/* All that the account has something for, in the order of the page. */
std::vector<Picture> draw_all(const Account &account);

/* Rows of the picture by numbers of parts touched: small numbers each, then together. */
struct TouchedBin {
    int64_t least, most, number, weight;
};
std::vector<TouchedBin> touched_bins(const Facts &facts);

#endif
