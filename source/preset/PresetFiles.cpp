// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "PresetFiles.h"

#include "LittleEndian.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <string_view>

namespace pulsewright
{

namespace
{
    using namespace std::string_literals;
    using namespace std::string_view_literals;

    //==============================================================================
    // VST3: a header, the chunks, and a list of the chunks; all numbers little-endian.

    constexpr auto fileId                 = "VST3"sv;
    constexpr std::uint32_t formatVersion = 1;
    constexpr auto stateChunk             = "Comp"sv;
    constexpr auto infoChunk              = "Info"sv;
    constexpr auto chunkList              = "List"sv;
    constexpr std::size_t idSize          = 4;
    constexpr std::size_t headerSize      = idSize + 4 + vstClassId.size() + 8;
    constexpr std::size_t entrySize       = idSize + 8 + 8;

    constexpr auto wrapperMark = "JUCEPrivateData"sv;

    /** What the wrapper puts behind a state: its own values, how long they are, and its mark. */
    std::string wrapperTrailer()
    {
        // A value tree with one property: whether the plug-in is bypassed. It is not.
        constexpr auto notBypassed = "JUCEPrivateData\0\1\1Bypass\0\1\1\3\0"sv;

        const auto values = std::string (notBypassed);
        return littleEndian (std::uint64_t { 0 }) + values + littleEndian (std::uint64_t { values.size() }) + std::string (wrapperMark);
    }

    /** What comes before the trailer; all of it where there is none. */
    std::string_view withoutTrailer (std::string_view framed)
    {
        constexpr std::size_t numberSize = 8;

        if (! framed.ends_with (wrapperMark) || framed.size() < wrapperMark.size() + 2 * numberSize)
            return framed;

        framed.remove_suffix (wrapperMark.size());
        const auto length = fromLittleEndian<std::uint64_t> (framed.substr (framed.size() - numberSize));
        framed.remove_suffix (numberSize);

        if (length > framed.size() - numberSize)
            throw BadPreset ("What the plug-in's wrapper has added to this preset is longer than the preset");

        framed.remove_suffix (static_cast<std::size_t> (length) + numberSize);
        return framed;
    }

    std::string xmlText (std::string_view text)
    {
        std::string escaped;

        for (const char c : text)
            escaped += c == '&' ? "&amp;"s : c == '<' ? "&lt;"s : c == '>' ? "&gt;"s : c == '"' ? "&quot;"s : std::string (1, c);

        return escaped;
    }

    std::string infoText (std::string_view name)
    {
        const auto attribute = [] (std::string_view id, std::string_view value)
        { return "  <Attribute id=\"" + std::string (id) + "\" value=\"" + xmlText (value) + "\" type=\"string\"/>\n"; };

        return "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<MetaInfo>\n" + attribute ("MediaType", "VstPreset")
             + attribute ("PlugInCategory", "Instrument|Synth") + attribute ("PlugInName", "Pulsewright") + attribute ("PlugInVendor", "Tolm")
             + attribute ("Name", name) + "</MetaInfo>\n";
    }

    struct Chunk
    {
        std::string_view id;
        std::uint64_t offset, size;
    };

    /** The list at the end of a preset. @throws BadPreset  when it, or a chunk, points outside or overlaps another */
    std::vector<Chunk> chunksOf (std::string_view preset)
    {
        const auto listAt = fromLittleEndian<std::uint64_t> (preset.substr (headerSize - 8));

        if (listAt < headerSize || listAt > preset.size() || preset.size() - listAt < idSize + 4 || preset.substr (listAt, idSize) != chunkList)
            throw BadPreset ("This VST3 preset is cut: its list of chunks is missing");

        auto entries     = preset.substr (listAt + idSize + 4);
        const auto count = fromLittleEndian<std::uint32_t> (preset.substr (listAt + idSize));

        if (count > entries.size() / entrySize)
            throw BadPreset ("This VST3 preset is cut: its list names more chunks than it has");

        std::vector<Chunk> chunks;

        for (std::uint32_t i = 0; i < count; ++i, entries.remove_prefix (entrySize))
            chunks.push_back ({ entries.substr (0, idSize),
                                fromLittleEndian<std::uint64_t> (entries.substr (idSize)),
                                fromLittleEndian<std::uint64_t> (entries.substr (idSize + 8)) });

        for (auto chunk = chunks.begin(); chunk != chunks.end(); ++chunk)
        {
            if (chunk->offset < headerSize || chunk->offset > listAt || chunk->size > listAt - chunk->offset)
                throw BadPreset ("A chunk of this VST3 preset lies outside it");

            for (auto other = chunks.begin(); other != chunk; ++other)
                if (chunk->offset < other->offset + other->size && other->offset < chunk->offset + chunk->size)
                    throw BadPreset ("Two chunks of this VST3 preset overlap");
        }

        return chunks;
    }

    //==============================================================================
    std::string turtleText (std::string_view text)
    {
        std::string escaped;
        for (const char c : text)
            escaped += c == '"' || c == '\\' ? std::string { '\\', c } : c == '\n' ? "\\n"s : std::string (1, c);
        return escaped;
    }

    constexpr auto base64Letters        = ".ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+"sv;
    constexpr std::size_t bitsPerLetter = 6;
} // namespace

//==============================================================================
std::string vstPresetOf (std::string_view state, std::string_view name)
{
    const auto framed = std::string (state) + wrapperTrailer();
    const auto info   = infoText (name);
    const auto infoAt = std::uint64_t { headerSize + framed.size() };
    const auto listAt = infoAt + info.size();
    const auto entry  = [] (std::string_view id, std::uint64_t offset, std::uint64_t size)
    { return std::string (id) + littleEndian (offset) + littleEndian (size); };

    return std::string (fileId) + littleEndian (formatVersion) + std::string (vstClassId) + littleEndian (listAt) + framed + info
         + std::string (chunkList) + littleEndian (std::uint32_t { 2 }) + entry (stateChunk, headerSize, framed.size())
         + entry (infoChunk, infoAt, info.size());
}

std::string stateInVstPreset (std::string_view preset)
{
    if (! preset.starts_with (fileId) || preset.size() < headerSize)
        throw BadPreset ("This is not a VST3 preset");

    if (preset.substr (idSize + 4, vstClassId.size()) != vstClassId)
        throw BadPreset ("This VST3 preset is another plug-in's");

    for (const auto& chunk : chunksOf (preset))
        if (chunk.id == stateChunk)
            return std::string (withoutTrailer (preset.substr (chunk.offset, chunk.size)));

    throw BadPreset ("This VST3 preset holds no state");
}

//==============================================================================
Lv2Presets lv2PresetsOf (const std::vector<NamedState>& presets)
{
    const std::string prefixes = "@prefix lv2:   <http://lv2plug.in/ns/lv2core#> .\n"
                                 "@prefix pset:  <http://lv2plug.in/ns/ext/presets#> .\n"
                                 "@prefix rdfs:  <http://www.w3.org/2000/01/rdf-schema#> .\n"
                                 "@prefix state: <http://lv2plug.in/ns/ext/state#> .\n";

    Lv2Presets files { prefixes, prefixes };

    for (const auto& [name, code, state] : presets)
    {
        const auto subject =
            "\n<" + std::string (lv2Uri) + ":preset:" + code + ">\n\ta pset:Preset ;\n\tlv2:appliesTo <" + std::string (lv2Uri) + "> ;\n";

        files.manifest += subject + "\trdfs:seeAlso <presets.ttl> .\n";
        files.presets += subject + "\trdfs:label \"" + turtleText (name) + "\" ;\n\tstate:state [ <" + std::string (lv2Uri) + ":StateString> \""
                       + base64Of (state) + "\" ] .\n";
    }

    return files;
}

std::string base64Of (std::string_view state)
{
    auto text           = std::to_string (state.size()) + ".";
    std::uint32_t bits  = 0;
    std::size_t numBits = 0;

    const auto writeLetter = [&]
    {
        text += base64Letters[bits & 63u];
        bits >>= bitsPerLetter;
        numBits -= std::min (numBits, bitsPerLetter);
    };

    for (const char c : state)
    {
        bits |= static_cast<std::uint32_t> (static_cast<unsigned char> (c)) << numBits;
        numBits += 8;

        while (numBits >= bitsPerLetter)
            writeLetter();
    }

    if (numBits > 0)
        writeLetter();

    return text;
}

std::string stateInBase64 (std::string_view text)
{
    const auto point   = text.find ('.');
    std::size_t length = 0;

    if (point == text.npos || std::from_chars (text.data(), text.data() + point, length).ptr != text.data() + point || point == 0)
        throw BadPreset ("This is not a state: it does not begin with its length");

    text.remove_prefix (point + 1);

    // 8 bits need at most as many letters; a text that says more than it has is cut.
    if (length > text.size() || (length * 8 + bitsPerLetter - 1) / bitsPerLetter != text.size())
        throw BadPreset ("This state is cut: it does not have the length that it names");

    std::string state;
    std::uint32_t bits  = 0;
    std::size_t numBits = 0;

    for (const char c : text)
    {
        const auto letter = base64Letters.find (c);

        if (letter == base64Letters.npos)
            throw BadPreset ("This is not a state: it has a character that is not allowed");

        bits |= static_cast<std::uint32_t> (letter) << numBits;
        numBits += bitsPerLetter;

        if (numBits >= 8 && state.size() < length)
        {
            state += static_cast<char> (bits & 0xFFu);
            bits >>= 8;
            numBits -= 8;
        }
    }

    return state;
}

} // namespace pulsewright
