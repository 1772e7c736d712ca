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

    auto negativeLength = good;
    for (std::size_t i = 4; i < 8; ++i)
        negativeLength[i] = static_cast<char> (0xff);

    auto overlong = framed (many ("??a>", 12000)); // the parser takes C0 BC for <
    for (std::size_t i = 8; i + 4 < overlong.getSize(); i += 4)
        overlong.copyFrom ("\xc0\xbc", static_cast<int> (i), 2);

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
        { "cut after an element",     framed ("<PulsewrightState seedCounter=\"9\"><PARAM id=\"swing\" value=\"1\"/>") },
        { "an open quote",            framed ("<PulsewrightState seedCounter=\"9>") },
        { "deep inside ours",         framed (stateText ("", many ("<a>", 20000))) },
        { "deep",                     framed (many ("<a>", 20000)) },
        { "'/>' inside an attribute", framed (many ("<a b='/>'>", 6000)) },
        { "closed inside a value",    framed (many ("<a b=\"</a>\">", 5000)) },
        { "deep behind a header",     framed ("<?xml '?>" + many ("<a>", 20000) + "'?>") },
        { "deep behind a quote",      framed ("<r><b></b '>" + many ("<a>", 20000) + "'>") },
        { "deep behind a bare value", framed ("<r><b c=x'>" + many ("<a>", 20000)) },
        { "deep behind a comment",    framed ("<r><b <!--'--> >" + many ("<a>", 20000)) },
        { "deep in overlong UTF-8",   overlong },
        { "entities in the header",   framed ("<?xml '?><!DOCTYPE x [<!ENTITY a \"x&a;\">]><PulsewrightState>&a;</PulsewrightState>'?>") },
        { "entities",                 framed ("<!DOCTYPE x [<!ENTITY a \"aaaa\"><!ENTITY b \"&a;&a;\">]>" + stateText ("seedCounter=\"9\"")) },
        { "entities without an end",  framed ("<PulsewrightState seedCounter=\"9\">" + many ("&", 65000) + "</PulsewrightState>") },
        { "markup in an entity",      framed (stateText ("seedCounter=\"9\"", "&<a>&#x;")) },
        { "binary without end",       framed (stateText ("seedCounter=\"9\" base64:x=\"-1.\"")) },
        { "binary, a gigabyte",       framed (stateText ("", "<PARAM id=\"swing\" value=\"1\" base64:x=\"1000000000.\"/>")) },
        { "binary and a number",      framed (stateText ("base64:seedCounter=\"1.A\" seedCounter=\"5\"")) },
        { "enormous",                 framed (stateText ("", many ("<PARAM id=\"density\" value=\"1\"/>", 100000))) },
        { "over 64 KiB",              framed (stateText ("later='" + many ("a", 65536) + "'")) }
    };
    // clang-format on
}

} // namespace pulsewright
