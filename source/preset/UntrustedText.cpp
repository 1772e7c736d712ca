// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "UntrustedText.h"

#include <algorithm>
#include <charconv>
#include <cstddef>

namespace pulsewright
{

namespace
{
    constexpr std::ptrdiff_t mostTags = 256; // a state of ours has some twenty
    constexpr std::size_t mostDigits  = 7;   // "&#1114111;" is the last character

    /** Whether this is what follows the "&" of an entity that needs no declaration: "amp;", "#65;", "#x41;". */
    bool beginsWithEntity (std::string_view text)
    {
        for (const std::string_view name : { "amp;", "lt;", "gt;", "quot;", "apos;" })
            if (text.starts_with (name))
                return true;

        const bool isHex  = text.starts_with ("#x");
        const auto digits = text.substr (std::min (text.size(), isHex ? std::size_t { 2 } : std::size_t { 1 }));
        const auto length = digits.find_first_not_of (isHex ? "0123456789abcdefABCDEF" : "0123456789");

        return text.starts_with ('#') && length > 0 && length <= mostDigits && digits[length] == ';';
    }

    bool hasOnlyKnownEntities (std::string_view text)
    {
        for (auto at = text.find ('&'); at != text.npos; at = text.find ('&', at + 1))
            if (! beginsWithEntity (text.substr (at + 1)))
                return false;

        return true;
    }
} // namespace

bool isSafeToParse (std::string_view text)
{
    const bool isPlain = std::all_of (text.begin(), text.end(), [] (char c) { return static_cast<unsigned char> (c) < 0x80; });

    const auto lastChar = text.find_last_not_of (" \t\r\n");
    const bool isWhole  = lastChar != text.npos && text[lastChar] == '>';

    return isPlain && isWhole && std::count (text.begin(), text.end(), '<') <= mostTags && hasOnlyKnownEntities (text)
        && text.find ("<!") == text.npos && text.find ("<?", 1) == text.npos && text.find ("base64:") == text.npos;
}

bool isWholeBase64 (std::string_view text)
{
    const auto dot     = text.find ('.');
    std::size_t length = 0;

    if (dot == text.npos)
        return false;

    const auto [end, error] = std::from_chars (text.data(), text.data() + dot, length);
    return error == std::errc() && end == text.data() + dot && length <= (text.size() - dot) * 3 / 4; // six bits a character
}

} // namespace pulsewright
