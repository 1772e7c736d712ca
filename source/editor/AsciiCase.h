// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Upper and lower case of the window's own words, which are ASCII. JUCE's depend on the locale: a Turkish one has
// another small I.

#pragma once

#include <juce_core/juce_core.h>

namespace pulsewright
{

namespace asciiCase
{
    constexpr const char* upper = "ABCDEFGHIJKLMNOPQRSTUVWXYZ";
    constexpr const char* lower = "abcdefghijklmnopqrstuvwxyz";
} // namespace asciiCase

inline juce::String upperCased (const juce::String& text)
{
    return text.replaceCharacters (asciiCase::lower, asciiCase::upper);
}

inline juce::String lowerCased (const juce::String& text)
{
    return text.replaceCharacters (asciiCase::upper, asciiCase::lower);
}

} // namespace pulsewright
