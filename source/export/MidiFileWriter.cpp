// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "MidiFileWriter.h"

#include "generation/NearlySorted.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <limits>
#include <span>
#include <utility>

namespace pulsewright
{

namespace
{
    using Bytes = std::vector<std::uint8_t>;

    constexpr std::uint32_t ticksPerQuarter       = 960;
    constexpr std::uint32_t ticksPerBar           = ticksPerQuarter * beatsPerBar;
    constexpr std::uint32_t microsecondsPerMinute = 60'000'000;
    constexpr std::string_view conductorName      = "Pulsewright Conductor";

    constexpr std::uint8_t noteOnChannel10  = 0x99;
    constexpr std::uint8_t noteOffChannel10 = 0x89;

    // clang-format off
    constexpr std::array<std::uint8_t, 6> header        { 0x00, 0x01, 0x00, 0x02, 0x03, 0xC0 };             // format 1, two tracks, 960 ticks
    constexpr std::array<std::uint8_t, 2> nameEvent     { 0xFF, 0x03 };
    constexpr std::array<std::uint8_t, 2> markerEvent   { 0xFF, 0x06 };
    constexpr std::array<std::uint8_t, 3> tempoEvent    { 0xFF, 0x51, 0x03 };
    constexpr std::array<std::uint8_t, 7> fourFourEvent { 0xFF, 0x58, 0x04, 0x04, 0x02, 0x18, 0x08 };       // 24 clocks a click, 8 32nds a quarter
    constexpr std::array<std::uint8_t, 3> endOfTrack    { 0xFF, 0x2F, 0x00 };
    // clang-format on

    //==============================================================================
    void append (Bytes& bytes, std::span<const std::uint8_t> more)
    {
        bytes.insert (bytes.end(), more.begin(), more.end());
    }
    void append (Bytes& bytes, std::string_view text)
    {
        bytes.insert (bytes.end(), text.begin(), text.end());
    }

    void writeBigEndian (Bytes& bytes, std::uint32_t value, int byteCount)
    {
        for (int shift = 8 * (byteCount - 1); shift >= 0; shift -= 8)
            bytes.push_back (static_cast<std::uint8_t> ((value >> shift) & 0xFFu));
    }

    /** Seven bits a byte, most significant first; all bytes but the last have bit 7 set. @returns where they end */
    std::uint8_t* putVariableLength (std::uint8_t* out, std::uint32_t value) noexcept
    {
        if (value >= 1u << 14) // rare: more than 17 beats
            for (int shift = 28; shift > 7; shift -= 7)
                if (value >> shift != 0)
                    *out++ = static_cast<std::uint8_t> ((value >> shift & 0x7Fu) | 0x80u);

        if (value >= 1u << 7)
            *out++ = static_cast<std::uint8_t> ((value >> 7 & 0x7Fu) | 0x80u);

        *out++ = static_cast<std::uint8_t> (value & 0x7Fu);
        return out;
    }

    void writeVariableLength (Bytes& bytes, std::uint32_t value)
    {
        std::array<std::uint8_t, 5> digits {};
        bytes.insert (bytes.end(), digits.data(), putVariableLength (digits.data(), value));
    }

    void writeChunk (Bytes& bytes, std::string_view id, std::span<const std::uint8_t> data)
    {
        append (bytes, id);
        writeBigEndian (bytes, static_cast<std::uint32_t> (data.size()), 4);
        append (bytes, data);
    }

    void writeTextEvent (Bytes& track, std::uint32_t ticksLater, std::span<const std::uint8_t> event, std::string_view text)
    {
        writeVariableLength (track, ticksLater);
        append (track, event);
        writeVariableLength (track, static_cast<std::uint32_t> (text.size()));
        append (track, text);
    }

    //==============================================================================
    /** A channel message in one word, which is quick to sort: its tick, whether it is a note-on, its three bytes. */
    using ChannelEvent = std::uint64_t;

    constexpr int tickPlace = 32, noteOnPlace = 31;

    constexpr ChannelEvent channelEvent (std::uint32_t tick, std::uint8_t status, std::uint32_t data1, std::uint32_t data2) noexcept
    {
        const std::uint32_t isNoteOn = status == noteOnChannel10 ? 1 : 0;
        return std::uint64_t { tick } << tickPlace | isNoteOn << noteOnPlace | std::uint32_t { status } << 16 | (data1 & 0xFFu) << 8
             | (data2 & 0xFFu);
    }

    constexpr bool isWrittenBefore (ChannelEvent a, ChannelEvent b) noexcept
    {
        // A note that ends where its next stroke begins is released first.
        return a >> noteOnPlace < b >> noteOnPlace;
    }

    std::uint32_t tickOf (double beats) noexcept
    {
        constexpr double lastTick = std::numeric_limits<std::uint32_t>::max() - 1.0; // leaves room for a note's one tick

        return static_cast<std::uint32_t> (std::min (lastTick, std::max (0.0, beats) * ticksPerQuarter + 0.5));
    }

    std::vector<ChannelEvent> channelEventsOf (const std::vector<DrumHit>& hits)
    {
        std::vector<ChannelEvent> events;
        events.reserve (hits.size() * 2);

        for (const auto& hit : hits)
        {
            const auto startTick = tickOf (hit.start);
            const auto endTick   = std::max (tickOf (hit.start + hit.length), startTick + 1);

            events.push_back (channelEvent (startTick, noteOnChannel10, hit.note, hit.velocity));
            events.push_back (channelEvent (endTick, noteOffChannel10, hit.note, 0));
        }

        // Stable, so that a file's bytes do not depend on the standard library.
        sortNearlySorted (events, isWrittenBefore);
        return events;
    }

    //==============================================================================
    /** A name at a place. */
    struct Marker
    {
        std::uint32_t tick;
        std::string_view name;
    };

    Bytes conductorTrack (std::uint32_t endTick, std::int32_t tempoBpm, std::span<const Marker> markers)
    {
        const auto tempo = static_cast<std::uint32_t> (std::clamp (tempoBpm, 30, 300));

        Bytes track;
        writeTextEvent (track, 0, nameEvent, conductorName);
        writeVariableLength (track, 0);
        append (track, tempoEvent);
        writeBigEndian (track, microsecondsPerMinute / tempo, 3);
        writeVariableLength (track, 0);
        append (track, fourFourEvent);

        std::uint32_t lastTick = 0;

        for (const auto& marker : markers)
        {
            writeTextEvent (track, marker.tick - lastTick, markerEvent, marker.name);
            lastTick = marker.tick;
        }

        writeVariableLength (track, endTick - lastTick);
        append (track, endOfTrack);
        return track;
    }

    Bytes drumTrack (const std::vector<DrumHit>& hits, std::uint32_t endTick, std::string_view trackName)
    {
        constexpr std::size_t mostEventSize = 5 + 3; // delta time and message

        Bytes track;
        writeTextEvent (track, 0, nameEvent, trackName);

        const auto events      = channelEventsOf (hits);
        const auto begin       = track.size();
        std::uint32_t lastTick = 0;
        track.resize (begin + events.size() * mostEventSize);
        auto* out = track.data() + begin;

        for (const auto event : events)
        {
            const auto tick = static_cast<std::uint32_t> (event >> tickPlace);
            out             = putVariableLength (out, tick - std::exchange (lastTick, tick));

            for (const int place : { 16, 8, 0 })
                *out++ = static_cast<std::uint8_t> (event >> place);
        }

        track.resize (static_cast<std::size_t> (out - track.data()));
        writeVariableLength (track, endTick > lastTick ? endTick - lastTick : 0);
        append (track, endOfTrack);
        return track;
    }

    //==============================================================================
    bool saveBytes (const std::string& path, const Bytes& bytes, std::string* errorText)
    {
        const auto fail = [errorText] (const char* message)
        {
            if (errorText != nullptr)
                *errorText = message;

            return false;
        };

        std::ofstream file (std::filesystem::path (std::u8string (path.begin(), path.end())), std::ios::binary | std::ios::trunc);

        if (! file.is_open())
            return fail (MidiFileWriter::cannotOpenMessage);

        file.write (reinterpret_cast<const char*> (bytes.data()), static_cast<std::streamsize> (bytes.size()));
        file.close(); // a full disk shows only once the buffer has reached it

        return file.good() || fail (MidiFileWriter::cannotCompleteMessage);
    }

    //==============================================================================
    Bytes fileOf (
        const std::vector<DrumHit>& hits, std::int32_t bars, std::int32_t tempoBpm, std::string_view trackName, std::span<const Marker> markers = {})
    {
        const auto endTick   = static_cast<std::uint32_t> (std::max (bars, 1)) * ticksPerBar;
        const auto conductor = conductorTrack (endTick, tempoBpm, markers);
        const auto drums     = drumTrack (hits, endTick, trackName);

        Bytes file;
        file.reserve (conductor.size() + drums.size() + 32);
        writeChunk (file, "MThd", header);
        writeChunk (file, "MTrk", conductor);
        writeChunk (file, "MTrk", drums);
        return file;
    }
} // namespace

//==============================================================================
std::vector<std::uint8_t> MidiFileWriter::buildMidiFileBytes (const std::vector<DrumHit>& hits,
                                                              std::int32_t bars,
                                                              std::int32_t tempoBpm,
                                                              std::string_view trackName)
{
    return fileOf (hits, bars, tempoBpm, trackName);
}

std::vector<std::uint8_t> MidiFileWriter::bytesWithMarkersOf (const SongArrangement& song, std::int32_t tempoBpm)
{
    std::vector<Marker> markers;
    for (const auto& section : song.sections)
        markers.push_back ({ section.startBar * ticksPerBar, section.name });

    return fileOf (flatten (song), static_cast<std::int32_t> (song.totalBars), tempoBpm, song.name, markers);
}

std::vector<std::uint8_t> MidiFileWriter::bytesOf (const DrumPattern& pattern, std::int32_t tempoBpm)
{
    return buildMidiFileBytes (pattern.hits, pattern.bars, tempoBpm, pattern.name);
}

std::vector<std::uint8_t> MidiFileWriter::bytesOf (const SongArrangement& song, std::int32_t tempoBpm)
{
    return buildMidiFileBytes (flatten (song), static_cast<std::int32_t> (song.totalBars), tempoBpm, song.name);
}

bool MidiFileWriter::savePatternToMidiFile (const std::string& path, const DrumPattern& pattern, std::int32_t tempoBpm, std::string* errorText)
{
    return saveBytes (path, bytesOf (pattern, tempoBpm), errorText);
}

bool MidiFileWriter::saveSongToMidiFile (const std::string& path, const SongArrangement& song, std::int32_t tempoBpm, std::string* errorText)
{
    return saveBytes (path, bytesOf (song, tempoBpm), errorText);
}

} // namespace pulsewright
