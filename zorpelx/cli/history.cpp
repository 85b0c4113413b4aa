// SPDX-License-Identifier: MIT
/* zorpelx/cli/history.cpp: the history of a run, from the JSON answer of the partition command. */
#include "history.h"

#include <algorithm>

#include "failure.h"
#include "json.h"

static Json parsed(std::string_view text, const std::string &name)
{
    try {
        return Json::parse(text);
    } catch (const Json::exception &error) {
        const std::string what = error.what(); // "[json.exception...] parse error at line 1, ..."
        const size_t space = what.find("] ");
        fail(STATUS_BAD_INPUT, "%s: it is no JSON: %s", name.c_str(),
             what.substr(space == std::string::npos ? 0 : space + 2).c_str());
    }
}

/* The member of an object; null if there is none. */
static Json member(const Json &json, const char *field)
{
    return json.is_object() && json.contains(field) ? json[field] : Json(nullptr);
}

static Improvement improvement_of(const Json &entry, size_t place, const std::string &name)
{
    const Json seconds = member(entry, "seconds"), objective = member(entry, "objective");
    const Json step = member(entry, "step");
    if (!seconds.is_number() || seconds < 0 || !objective.is_number_integer() || objective < 0 ||
        !step.is_string())
        fail(STATUS_BAD_INPUT, "%s: entry %zu of its history lacks seconds, objective or step",
             name.c_str(), place + 1);
    return {seconds.get<double>(), objective.get<int64_t>(), step.get<std::string>()};
}

static std::vector<Improvement> improvements_of(const Json &answer, const std::string &name)
{
    const Json list = member(answer, "history");
    if (!list.is_array() || list.empty())
        fail(STATUS_BAD_INPUT, "%s: it is no answer of partition --json that has a history",
             name.c_str());
    std::vector<Improvement> improvements;
    for (size_t i = 0; i < list.size(); i++) {
        improvements.push_back(improvement_of(list[i], i, name));
        if (i > 0 && improvements[i].seconds < improvements[i - 1].seconds)
            fail(STATUS_BAD_INPUT, "%s: entry %zu of its history is earlier than the one before",
                 name.c_str(), i + 1);
    }
    return improvements;
}

RunTold read_history(std::string_view text, const std::string &name)
{
    const Json answer = parsed(text, name);
    const Json options = member(answer, "options");
    RunTold told = {{name, "cut", improvements_of(answer, name), 0}, 0, -1, -1};
    if (member(answer, "seconds").is_number())
        told.history.seconds = std::max(answer["seconds"].get<double>(), 0.0);
    if (member(options, "objective").is_string()) told.history.objective = options["objective"];
    if (member(options, "nparts").is_number_integer()) told.nparts = options["nparts"];
    if (member(options, "epsilon").is_number() && member(options, "capacities").is_null())
        told.epsilon = options["epsilon"];
    if (member(options, "least").is_number()) told.least = options["least"];
    return told;
}
