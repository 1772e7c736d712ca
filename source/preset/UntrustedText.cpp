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
    constexpr std::ptrdiff_t mostMarks = 256; // of tags, and of entities: a state of ours has some twenty tags

    /** "&name;", which begins a search; "&#65;" is at most twelve digits long. */
    std::ptrdiff_t numNamedEntities (std::string_view text)
    {
        std::ptrdiff_t count = 0;

        for (auto at = text.find ('&'); at != text.npos; at = text.find ('&', at + 1))
            count += text.substr (at + 1, 1) == "#" ? 0 : 1;

        return count;
    }
} // namespace

bool isSafeToParse (std::string_view text)
{
    const bool isPlain = std::all_of (text.begin(), text.end(), [] (char c) { return static_cast<unsigned char> (c) < 0x80; });

    const auto lastChar = text.find_last_not_of (" \t\r\n");
    const bool isWhole  = lastChar != text.npos && text[lastChar] == '>';

    return isPlain && isWhole && std::count (text.begin(), text.end(), '<') <= mostMarks && numNamedEntities (text) <= mostMarks
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
