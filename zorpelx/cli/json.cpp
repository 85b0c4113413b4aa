// SPDX-License-Identifier: MIT
/* zorpelx/cli/json.cpp: answers as JSON: what all of them have in common. */
#include "json.h"

#include "version.h"

static const char *name_of(Command command)
{
    for (const CommandRow &row : COMMANDS)
        if (row.command == command) return row.name;
    return "";
}

Json answer_json(const Settings &settings, Command command, Status status,
                 const std::string &message)
{
    return {{"format", JSON_FORMAT},       {"version", ZORPELX_CLI_VERSION},
            {"command", name_of(command)}, {"status", status},
            {"message", message},          {"hypergraph", settings.hypergraph}};
}

std::string json_text(const Json &json)
{
    return json.dump(2, ' ', false, Json::error_handler_t::replace) + '\n';
}
