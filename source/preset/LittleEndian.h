// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Whole numbers as bytes, the lowest first.

#pragma once

#include <concepts>
#include <cstddef>
#include <string>
#include <string_view>

namespace pulsewright
{

template <std::unsigned_integral Number>
std::string littleEndian (Number number)
{
    std::string bytes;
    for (std::size_t i = 0; i < sizeof (Number); ++i)
        bytes += static_cast<char> (number >> 8 * i);
    return bytes;
}

/** @param bytes  at least as many as the number has */
template <std::unsigned_integral Number>
Number fromLittleEndian (std::string_view bytes)
{
    Number number = 0;
    for (std::size_t i = sizeof (Number); i-- > 0;)
        number = static_cast<Number> (number << 8 | static_cast<unsigned char> (bytes[i]));
    return number;
}

} // namespace pulsewright
