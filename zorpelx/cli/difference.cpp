// SPDX-License-Identifier: MIT
/* zorpelx/cli/difference.cpp: where two JSON values differ. */
#include "difference.h"

#include <algorithm>

#include "escaped.h"

static void compare(const std::string &field, const Json &recorded, const Json &now,
                    std::vector<Difference> *list);

static std::string below(const std::string &field, const std::string &name)
{
    return field.empty() ? name : field + '.' + name;
}

static Json value_at(const Json &object, const std::string &key)
{
    return object.contains(key) ? object[key] : Json(nullptr);
}

static void compare_objects(const std::string &field, const Json &recorded, const Json &now,
                            std::vector<Difference> *list)
{
    for (const auto &[key, value] : recorded.items())
        compare(below(field, key), value, value_at(now, key), list);
    for (const auto &[key, value] : now.items())
        if (!recorded.contains(key)) compare(below(field, key), Json(nullptr), value, list);
}

static void compare_arrays(const std::string &field, const Json &recorded, const Json &now,
                           std::vector<Difference> *list)
{
    for (size_t i = 0; i < std::max(recorded.size(), now.size()); i++)
        compare(below(field, std::to_string(i)), i < recorded.size() ? recorded[i] : Json(nullptr),
                i < now.size() ? now[i] : Json(nullptr), list);
}

static void compare(const std::string &field, const Json &recorded, const Json &now,
                    std::vector<Difference> *list)
{
    if (recorded.is_object() && now.is_object())
        compare_objects(field, recorded, now, list);
    else if (recorded.is_array() && now.is_array())
        compare_arrays(field, recorded, now, list);
    else if (recorded != now)
        list->push_back({field, recorded, now});
}

std::vector<Difference> differences(const Json &recorded, const Json &now)
{
    std::vector<Difference> list;
    compare("", recorded, now, &list);
    return list;
}

static std::string shown(const Json &value)
{
    constexpr size_t LONGEST = 80;
    if (value.is_null()) return "nothing";
    std::string text = value.dump(-1, ' ', false, Json::error_handler_t::replace);
    if (text.size() > LONGEST) text = text.substr(0, LONGEST) + "...";
    return escaped(text);
}

std::string difference_text(const Difference &difference)
{
    return escaped(difference.field) + ": " + shown(difference.recorded) + " in the record, " +
           shown(difference.now) + " now";
}
