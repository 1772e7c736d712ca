// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// What the engine tells the page, as JSON.

#pragma once

#include <string>
#include <string_view>

namespace pulsewright::json
{

/** A string; its bytes stay as they are, but for quotes and backslashes. */
inline std::string text (std::string_view plain)
{
    std::string quoted = "\"";

    for (const char letter : plain)
    {
        if (letter == '"' || letter == '\\')
            quoted += '\\';
        quoted += letter;
    }

    return quoted + '"';
}

inline std::string number (auto value)
{
    return std::to_string (value);
}

/** A member of an object, with the comma that goes before the next one. @param value  is JSON already */
inline std::string member (std::string_view name, std::string_view value)
{
    return text (name).append (":").append (value).append (",");
}

/** @param members  each with its comma */
inline std::string object (std::string members)
{
    if (! members.empty())
        members.pop_back();
    return "{" + members + "}";
}

/** An array of what is made of each item. */
template <typename Make>
std::string array (const auto& items, Make&& make)
{
    std::string made;
    for (const auto& item : items)
        made.append (make (item)).append (",");

    if (! made.empty())
        made.pop_back();
    return "[" + made + "]";
}

} // namespace pulsewright::json
