// SPDX-License-Identifier: MIT
/* zorpelx/cli/read_record.cpp: a record read again. */
#include <algorithm>
#include <cstring>
#include <unistd.h>

#include "input.h"
#include "record.h"
#include "recorded_options.h"

/* A field that must be there, and what it must be. */
struct Required {
    const char *path;
    const char *kinds; // 'o'bject, 's'tring, 'i'nteger, 'b'oolean, 'a'rray, 'n'ull
};

static const Required REQUIRED[] = {
    {"/record", "i"},           {"/version", "s"},           {"/hypergraph", "o"},
    {"/hypergraph/file", "s"},  {"/hypergraph/sha256", "s"}, {"/inputs", "o"},
    {"/inputs/fix", "on"},      {"/inputs/start", "on"},     {"/inputs/together", "on"},
    {"/options", "o"},          {"/options/nparts", "i"},    {"/options/seed", "i"},
    {"/options/time", "fn"},    {"/generator", "o"},         {"/run", "o"},
    {"/run/status", "i"},       {"/run/failed", "i"},        {"/figures", "o"},
    {"/figures/valid", "b"},    {"/partition", "o"},         {"/partition/file", "s"},
    {"/partition/sha256", "s"}, {"/repeatable", "b"},        {"/sha256", "s"}};

static char kind_of(const Json &value)
{
    if (value.is_object()) return 'o';
    if (value.is_string()) return 's';
    if (value.is_number_integer()) return 'i';
    if (value.is_number_float()) return 'f';
    if (value.is_boolean()) return 'b';
    if (value.is_array()) return 'a';
    return 'n';
}

static void check_field(const std::string &name, const Json &json, const std::string &path,
                        const char *kinds)
{
    const Json::json_pointer place(path);
    if (json.contains(place) && strchr(kinds, kind_of(json[place])) != nullptr) return;
    std::string field = path.substr(1);
    std::replace(field.begin(), field.end(), '/', '.');
    fail(STATUS_BAD_INPUT, "%s: this is no record of a run: the field %s %s", name.c_str(),
         field.c_str(), json.contains(place) ? "is of another kind" : "is missing");
}

static void check_fields(const std::string &name, const Json &json)
{
    if (!json.is_object())
        fail(STATUS_BAD_INPUT, "%s: this is no record of a run: it is no JSON object",
             name.c_str());
    for (const Required &field : REQUIRED) check_field(name, json, field.path, field.kinds);
    for (const char *const input : {"fix", "start", "together"}) {
        if (json["inputs"][input].is_null()) continue;
        check_field(name, json, text_of("/inputs/%s/file", input), "s");
        check_field(name, json, text_of("/inputs/%s/sha256", input), "s");
    }
    if (json["record"] != RECORD_FORMAT)
        fail(STATUS_BAD_INPUT, "%s: records of format %s are not known to this version",
             name.c_str(), json["record"].dump().c_str());
}

/* Line and column of a byte, both from 1. */
static std::pair<size_t, size_t> place_of(const std::string &text, size_t byte)
{
    const size_t at = std::min(byte > 0 ? byte - 1 : 0, text.size());
    const auto begin = text.begin(), end = begin + static_cast<std::ptrdiff_t>(at);
    const size_t line_begin = at == 0 ? std::string::npos : text.rfind('\n', at - 1);
    return {static_cast<size_t>(std::count(begin, end, '\n')) + 1,
            at - (line_begin == std::string::npos ? 0 : line_begin + 1) + 1};
}

static Json parsed(const std::string &name, const std::string &text)
{
    try {
        return Json::parse(text);
    } catch (const Json::parse_error &error) {
        const auto [line, column] = place_of(text, error.byte);
        fail(STATUS_BAD_INPUT, "%s:%zu:%zu: this is no JSON", name.c_str(), line, column);
    }
}

static std::string fault_of(const std::string &text, const Json &json)
{
    if (text == record_text(json)) return "";
    return "a byte of it is not as it was written";
}

Record read_record(const Settings &settings)
{
    const std::string text = read_text(settings, settings.record);
    const std::string name = shown_name(settings.record);
    const Json json = parsed(name, text);
    check_fields(name, json);
    return {settings.record, json, fault_of(text, json)};
}

Settings settings_of(const Record &record, const Settings &given)
{
    Settings settings = fallback_settings();
    set_options(record.json["options"], shown_name(record.name), &settings);
    if (settings.nparts < 2)
        fail(STATUS_BAD_INPUT, "%s: options: nparts is missing", shown_name(record.name).c_str());
    settings.quiet = given.quiet;
    settings.jobs = given.jobs;
    settings.threads = given.threads;
    settings.progress = given.progress;
    return settings;
}

static std::string last_component(const std::string &name)
{
    return name.substr(name.rfind('/') + 1);
}

static std::string folder_of(const std::string &name)
{
    return name.substr(0, name.rfind('/') + 1);
}

std::string file_of(const Record &record, const Json &recorded, const std::string &given)
{
    if (!given.empty() || recorded.is_null()) return given;
    const std::string name = recorded["file"].get<std::string>();
    if (name.empty()) return ""; // the hypergraph's file has it
    const std::string beside = folder_of(record.name) + last_component(name);
    return access(beside.c_str(), F_OK) == 0 ? beside : name;
}
