// SPDX-License-Identifier: MIT
/* zorpelx/cli/recorded_options.cpp: the options of the partition command in a record, and back.
 *
 * Both ways go through the table of options, so that an option which is added there is recorded.
 */
#include "recorded_options.h"

#include <algorithm>

#include "failure.h"

static bool is_one_of(const OptionRow &row, const std::vector<Field> &fields)
{
    return std::find(fields.begin(), fields.end(), row.field) != fields.end();
}

/* Files, whose content is what counts, and what changes neither partition nor figures. */
static bool is_left_out(const OptionRow &row)
{
    static const std::vector<Field> fields = {
        &Settings::hypergraph, &Settings::fix,     &Settings::start,  &Settings::together,
        &Settings::output,     &Settings::json,    &Settings::record, &Settings::trace,
        &Settings::progress,   &Settings::quiet,   &Settings::strict, &Settings::jobs,
        &Settings::threads,    &Settings::journal, &Settings::shard,  &Settings::wait};
    return is_one_of(row, fields);
}

static bool is_recorded(const OptionRow &row)
{
    return (row.commands & PARTITION) != 0 && !is_left_out(row);
}

/* Whether the method at work looks at the option. */
static bool is_in_force(const OptionRow &row, const Settings &settings)
{
    static const std::vector<Field> engine = {
        &Settings::ubfactor, &Settings::runs,    &Settings::matching, &Settings::refine,
        &Settings::vcycle,   &Settings::reconst, &Settings::polish};
    static const std::vector<Field> search = {&Settings::epsilon, &Settings::least,
                                              &Settings::capacities, &Settings::keep_price,
                                              &Settings::time};
    if (is_one_of(row, wants_engine(settings) ? search : engine)) return false;
    const bool has_fallback = row.fallback != nullptr && row.fallback[0] != '\0';
    return has_fallback || is_switch(row) || was_given(settings, row.field);
}

std::string record_name(const OptionRow &row)
{
    std::string name = long_name(row).substr(2);
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
}

static std::string name_of_choice(const OptionRow &row, int64_t value)
{
    for (const NamedValue *choice = row.choices; choice->name != nullptr; choice++)
        if (choice->value == value) return choice->name;
    return "";
}

static Json value_of(const OptionRow &row, const Settings &settings)
{
    if (const auto *field = std::get_if<bool Settings::*>(&row.field)) return settings.*(*field);
    if (const auto *field = std::get_if<double Settings::*>(&row.field)) return settings.*(*field);
    if (const auto *field = std::get_if<std::string Settings::*>(&row.field))
        return settings.*(*field);
    const int64_t number = settings.*std::get<int64_t Settings::*>(row.field);
    return row.choices == nullptr ? Json(number) : Json(name_of_choice(row, number));
}

Json options_record(const Settings &settings, const std::vector<double> &capacities)
{
    Json options = {{"method", wants_engine(settings) ? "engine" : "search"}};
    for (const OptionRow &row : OPTIONS)
        if (is_recorded(row))
            options[record_name(row)] =
                is_in_force(row, settings) ? value_of(row, settings) : Json(nullptr);
    if (!capacities.empty()) options["capacities"] = capacities;
    return options;
}

static std::string word_of_number(const Json &value)
{
    if (value.is_number_float()) return text_of("%.17g", value.get<double>());
    return value.dump();
}

/* The value as the command line would have it; empty for none. */
static std::string word_of(const Json &value)
{
    if (value.is_boolean()) return value.get<bool>() ? "yes" : "";
    if (value.is_string()) return value.get<std::string>();
    if (value.is_number()) return word_of_number(value);
    std::string list;
    if (!value.is_array()) return list;
    for (const Json &item : value) {
        if (!list.empty()) list += ',';
        list += item.is_number() ? word_of_number(item) : "?";
    }
    return list;
}

static size_t row_of(const std::string &name)
{
    for (size_t i = 0; i < OPTIONS.size(); i++)
        if (is_recorded(OPTIONS[i]) && record_name(OPTIONS[i]) == name) return i;
    return OPTIONS.size();
}

static void set_option(const std::string &name, const Json &value, const std::string &file,
                       Settings *settings)
{
    const size_t i = row_of(name);
    if (i == OPTIONS.size())
        fail(STATUS_BAD_INPUT, "%s: options: there is no option %s in this version", file.c_str(),
             name.c_str());
    const std::string word = word_of(value);
    if (word.empty()) return;
    const std::string why = set_field(OPTIONS[i], word, settings);
    if (!why.empty())
        fail(STATUS_BAD_INPUT, "%s: options: %s: %s", file.c_str(), name.c_str(), why.c_str());
    settings->given[i] = true;
}

void set_options(const Json &options, const std::string &name, Settings *settings)
{
    for (const auto &[key, value] : options.items())
        if (key != "method") set_option(key, value, name, settings);
}

void set_reading(const Json &options, const std::string &name, Settings *settings)
{
    for (const OptionRow &row : OPTIONS) {
        const bool shared = (row.commands & VERIFY) != 0 || row.field == Field(&Settings::force);
        if (is_recorded(row) && shared && options.contains(record_name(row)))
            set_option(record_name(row), options[record_name(row)], name, settings);
    }
}
