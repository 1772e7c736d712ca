// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Saved states, good and bad, as bytes.

#pragma once

#include <juce_audio_processors/juce_audio_processors.h>

#include <string>
#include <vector>

namespace pulsewright
{

inline juce::MemoryBlock saved (juce::AudioProcessor& processor)
{
    juce::MemoryBlock state;
    processor.getStateInformation (state);
    return state;
}

inline void restore (juce::AudioProcessor& processor, const juce::MemoryBlock& state)
{
    processor.setStateInformation (state.getData(), static_cast<int> (state.getSize()));
}

/** A text in the binary frame that states have: a magic number, the length, the text, a zero. */
inline juce::MemoryBlock framed (const juce::String& text)
{
    juce::MemoryOutputStream stream;
    stream.writeInt (0x21324356);
    stream.writeInt (static_cast<int> (text.getNumBytesAsUTF8()));
    stream.write (text.toRawUTF8(), text.getNumBytesAsUTF8() + 1);
    return stream.getMemoryBlock();
}

inline juce::String parameterElement (const char* id, const juce::String& value)
{
    return "<PARAM id=\"" + juce::String (id) + "\" value=\"" + value + "\"/>";
}

inline juce::String stateText (const juce::String& attributes, const juce::String& children = {})
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?> <PulsewrightState " + attributes + ">" + children + "</PulsewrightState>";
}

struct BadState
{
    std::string name;
    juce::MemoryBlock bytes;
};

/** What a host may hand over in the place of a state; none of it may change anything.
    @param good  a state of ours, some of which are made from it
*/
inline std::vector<BadState> badStates (const juce::MemoryBlock& good)
{
    const auto many = [] (const char* text, int times) { return juce::String::repeatedString (text, times); };

    auto hugeLength = good;
    for (std::size_t i = 4; i < 8; ++i)
        hugeLength[i] = static_cast<char> (i < 7 ? 0xff : 0x7f);

    auto negativeLength = hugeLength;
    negativeLength[7]   = static_cast<char> (0xff);

    auto otherMagic = good;
    otherMagic[0]   = 'X';

    // clang-format off
    return {
        { "empty",                    {} },
        { "only a header",            { good.getData(), 8 } },
        { "cut short",                { good.getData(), good.getSize() / 2 } },
        { "no state at all",          { "garbage that is no state at all", 31 } },
        { "zeros",                    juce::MemoryBlock (5000, true) },
        { "another magic number",     otherMagic },
        { "a negative length",        negativeLength },
        { "an empty text",            framed ("") },
        { "another plug-in's",        framed ("<SomebodyElse seedCounter=\"9\"/>") },
        { "another spelling",         framed ("<pulsewrightstate seedCounter=\"9\"/>") },
        { "an open tag",              framed ("<PulsewrightState seedCounter=\"9\"") },
        { "a cut closing tag",        framed (stateText ("seedCounter=\"9\"").dropLastCharacters (5)) },
        { "an open quote",            framed ("<PulsewrightState seedCounter=\"9>") },
        { "deep inside ours",         framed (stateText ("", many ("<a>", 20000))) },
        { "deep",                     framed (many ("<a>", 20000)) },
        { "closed to a careless eye", framed (many ("<a b='/>'>", 6000)) },
        { "closed inside a value",    framed (many ("<a b=\"</a>\">", 5000)) },
        { "entities",                 framed ("<!DOCTYPE x [<!ENTITY a \"aaaa\"><!ENTITY b \"&a;&a;\">]>" + stateText ("seedCounter=\"9\"")) },
        { "enormous",                 framed (stateText ("", many ("<PARAM id=\"density\" value=\"1\"/>", 100000))) }
    };
    // clang-format on
}

} // namespace pulsewright
