// SPDX-License-Identifier: MIT
/* zorpelx/files/json_copy.cpp: JSON text copied as it is, but for attributes that are put in. */
#include "json_copy.h"

#include <algorithm>

JsonCopy copy_over(std::string_view bytes, Budget *budget)
{
    return {json_over(bytes, budget), bytes.data(), ""};
}

void copy_to(JsonCopy *copy, const char *end)
{
    copy->text.append(copy->copied, end);
    copy->copied = end;
}

/* The attributes, with the new one before the others. */
static void copy_attributes(JsonCopy *copy, const std::string &attribute,
                            std::span<const std::string_view> own)
{
    JsonScan *const json = &copy->json;
    std::string_view key;
    JsonList list = open_object(json);
    copy_to(copy, json->next);
    (copy->text += ' ') += attribute;
    const char *member = json->next; // behind the comma before it
    while (next_key(json, &list, &key)) {
        const bool goes = std::find(own.begin(), own.end(), key) != own.end();
        skip_value(json);
        copy->copied = json->next;
        if (!goes) copy->text.append(",").append(member, json->next);
        member = next_value(json);
        if (member < json->end && *member == ',') member++;
    }
}

void copy_with_attribute(JsonCopy *copy, std::string_view member, const std::string &attribute,
                         std::span<const std::string_view> own)
{
    JsonScan *const json = &copy->json;
    bool there = false, members = false;
    std::string_view key;
    JsonList list = open_object(json);
    const char *const inside = json->next;
    const size_t place = copy->text.size() + static_cast<size_t>(inside - copy->copied);
    while (next_key(json, &list, &key)) {
        members = true;
        if (key == member && !there) {
            copy_attributes(copy, attribute, own);
            there = true;
        } else {
            skip_value(json);
        }
    }
    if (there) return;
    copy_to(copy, json->next);
    std::string made = " \"";
    made.append(member).append("\": { ").append(attribute).append(members ? " }," : " }");
    copy->text.insert(place, made);
}
