/* SPDX-License-Identifier: MIT */
/* zorpelx/cli/json.h: answers as JSON: what all of them have in common. */
#ifndef ZORPELX_CLI_JSON_H
#define ZORPELX_CLI_JSON_H

#include <string>

#include <nlohmann/json.hpp>

#include "failure.h"
#include "options.h"

using Json = nlohmann::ordered_json;

/* Goes up when a field changes its meaning or goes; docs/zorpelx.schema.json describes it. New
 * fields come without a new number. */
constexpr int JSON_FORMAT = 1;

/* The beginning of every answer: format, version, command, status, message, hypergraph.
 *   message  empty if there is nothing to say */
Json answer_json(const Settings &settings, Command command, Status status,
                 const std::string &message);

/* The text of an answer with a newline at its end; bytes that are no UTF-8 are replaced. */
std::string json_text(const Json &json);

#endif
