/* SPDX-License-Identifier: MIT */
/* zorpelx/cli/pictures.h: pictures as files, SVG and PNG. */
#ifndef ZORPELX_CLI_PICTURES_H
#define ZORPELX_CLI_PICTURES_H

#include <string>

/* The program that turns SVG into PNG, by its path; empty if it is not installed. */
std::string find_converter();

/* PNG bytes of an SVG file, empty if the program fails. Neither gets a name: they are in memory. */
std::string png_of(const std::string &converter, const std::string &svg);

/* Makes a folder unless it is there. Errors: STATUS_IO */
void make_folder(const std::string &name);

#endif
