// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "Arguments.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <string>
#include <system_error>

namespace pulsewright::cli
{

namespace
{
    constexpr char lowerCase (char c) noexcept
    {
        return c >= 'A' && c <= 'Z' ? static_cast<char> (c - 'A' + 'a') : c;
    }

    bool equalsIgnoringCase (std::string_view a, std::string_view b) noexcept
    {
        return std::equal (a.begin(), a.end(), b.begin(), b.end(), [] (char x, char y) { return lowerCase (x) == lowerCase (y); });
    }

    BadArgument notAmong (std::string_view option, std::string_view text, std::span<const std::string_view> names, std::string_view orElse)
    {
        std::string message;
        message.append (option).append (": \"").append (text).append ("\" is none of ");

        for (const auto name : names)
            message.append (name == names.front() ? "" : ", ").append (name);

        return BadArgument (message.append (orElse));
    }

    BadArgument noNumber (std::string_view option, std::string_view text, std::string_view kind)
    {
        std::string message;
        return BadArgument (message.append (option).append (": \"").append (text).append ("\" is not ").append (kind));
    }

    struct Digits
    {
        bool isNegative = false;
        int base        = 10;
        std::string_view digits;
    };

    /** Splits an integer; the digits are empty if it is none. */
    Digits digitsOf (std::string_view text, bool hexAllowed)
    {
        Digits result;

        if (! text.empty() && (text.front() == '-' || text.front() == '+'))
        {
            result.isNegative = text.front() == '-';
            text.remove_prefix (1);
        }

        if (hexAllowed && text.size() > 2 && text[0] == '0' && lowerCase (text[1]) == 'x')
        {
            result.base = 16;
            text.remove_prefix (2);
        }

        const auto isDigit = [&result] (char c)
        { return (c >= '0' && c <= '9') || (result.base == 16 && lowerCase (c) >= 'a' && lowerCase (c) <= 'f'); };

        if (std::all_of (text.begin(), text.end(), isDigit))
            result.digits = text;

        return result;
    }
} // namespace

std::uint32_t indexOfName (std::string_view option, std::string_view text, std::span<const std::string_view> names)
{
    const auto found = std::find_if (names.begin(), names.end(), [text] (auto name) { return equalsIgnoringCase (name, text); });

    if (found == names.end())
        throw notAmong (option, text, names, "");

    return static_cast<std::uint32_t> (found - names.begin());
}

std::uint32_t indexOfNameOrNumber (std::string_view option, std::string_view text, std::span<const std::string_view> names)
{
    if (! digitsOf (text, false).digits.empty())
        return static_cast<std::uint32_t> (integer (option, text));

    try
    {
        return indexOfName (option, text, names);
    }
    catch (const BadArgument&)
    {
        throw notAmong (option, text, names, ", or their numbers from 0");
    }
}

std::int32_t integer (std::string_view option, std::string_view text)
{
    const auto [isNegative, base, digits] = digitsOf (text, false);

    if (digits.empty())
        throw noNumber (option, text, "a whole number");

    using Limits = std::numeric_limits<std::int32_t>;
    std::int32_t magnitude {};

    if (std::from_chars (digits.data(), digits.data() + digits.size(), magnitude).ec != std::errc())
        return isNegative ? Limits::min() : Limits::max();

    return isNegative ? -magnitude : magnitude;
}

std::uint32_t integerModulo32 (std::string_view option, std::string_view text)
{
    const auto [isNegative, base, digits] = digitsOf (text, true);

    if (digits.empty())
        throw noNumber (option, text, "a whole number, decimal or 0x");

    std::uint32_t value = 0;

    for (const char c : digits)
    {
        const int digit = c <= '9' ? c - '0' : lowerCase (c) - 'a' + 10;
        value           = value * static_cast<std::uint32_t> (base) + static_cast<std::uint32_t> (digit);
    }

    return isNegative ? 0u - value : value;
}

double number (std::string_view option, std::string_view text)
{
    const bool hasPlus = text.size() > 1 && text.front() == '+' && text[1] != '-';
    const auto digits  = hasPlus ? text.substr (1) : text;
    double value {};
    const auto [end, error] = std::from_chars (digits.data(), digits.data() + digits.size(), value);

    if (digits.empty() || end != digits.data() + digits.size() || error == std::errc::invalid_argument || std::isnan (value) || std::isinf (value))
        throw noNumber (option, text, "a number");

    if (error != std::errc::result_out_of_range)
        return value;

    // Too large or too small for a double, but a number all the same.
    const auto exponent = digits.find_first_of ("eE");
    const bool isTiny   = exponent != digits.npos && digits.substr (exponent + 1).starts_with ('-');
    const auto huge     = std::numeric_limits<double>::max();
    return isTiny ? 0.0 : digits.front() == '-' ? -huge : huge;
}

std::vector<std::string_view> commaSeparated (std::string_view text)
{
    std::vector<std::string_view> parts;

    for (std::size_t comma = 0; comma != text.npos;)
    {
        comma = text.find (',');
        parts.push_back (text.substr (0, comma));
        text.remove_prefix (comma == text.npos ? 0 : comma + 1);
    }

    return parts;
}

} // namespace pulsewright::cli
