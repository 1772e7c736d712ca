// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "MidiFileReader.h"

#include <algorithm>
#include <string_view>
#include <tuple>

namespace pulsewright
{

namespace
{
    //==============================================================================
    /** Takes bytes off the front. */
    class Reader
    {
    public:
        explicit Reader (std::span<const std::uint8_t> bytesToRead) : bytes (bytesToRead) {}

        bool isAtEnd() const noexcept { return bytes.empty(); }

        std::span<const std::uint8_t> take (std::size_t count)
        {
            if (count > bytes.size())
                throw BadMidiFile ("the MIDI file is cut off, or it is none");

            const auto taken = bytes.first (count);
            bytes            = bytes.subspan (count);
            return taken;
        }

        std::uint32_t number (std::size_t numBytes)
        {
            std::uint32_t value = 0;
            for (const auto byte : take (numBytes))
                value = (value << 8) | byte;
            return value;
        }

        std::uint8_t byte() { return take (1).front(); }
        std::uint8_t peek() { return Reader (*this).byte(); }

        std::uint32_t variableLength()
        {
            std::uint32_t value = 0;

            for (int i = 0; i < 4; ++i)
            {
                const auto next = byte();
                value           = (value << 7) | (next & 0x7Fu);

                if (next < 0x80)
                    return value;
            }

            throw BadMidiFile ("the MIDI file has a time that is longer than four bytes");
        }

    private:
        std::span<const std::uint8_t> bytes;
    };

    bool hasName (std::span<const std::uint8_t> chunk, std::string_view name) noexcept
    {
        return std::ranges::equal (chunk.first (std::min (chunk.size(), name.size())),
                                   name,
                                   [] (auto a, auto b) { return a == static_cast<std::uint8_t> (b); });
    }

    std::size_t dataBytesOf (std::uint8_t status)
    {
        const auto kind = status & 0xF0u;

        if (status >= 0xF0)
            throw BadMidiFile ("the MIDI file has a message that files may not have");

        return kind == 0xC0 || kind == 0xD0 ? 1 : 2;
    }

    /** @returns where the track ends, in ticks */
    std::uint64_t readTrack (Reader track, std::vector<MidiNote>& notes)
    {
        constexpr std::uint8_t meta = 0xFF, endOfTrack = 0x2F;

        std::uint64_t tick   = 0;
        std::uint8_t running = 0;

        while (! track.isAtEnd())
        {
            tick += track.variableLength();
            const auto status = track.peek() >= 0x80 ? track.byte() : running;

            if (status < 0x80)
                throw BadMidiFile ("the MIDI file has data where a message should begin");

            if (status == meta)
            {
                const auto type = track.byte();
                track.take (track.variableLength());

                if (type == endOfTrack)
                    break;
            }
            else if (status == 0xF0 || status == 0xF7)
                track.take (track.variableLength());
            else
            {
                running         = status;
                const auto data = track.take (dataBytesOf (status));

                if (const auto kind = status & 0xF0; kind == 0x80 || kind == 0x90)
                {
                    const bool isOn = kind == 0x90 && data[1] > 0;
                    notes.push_back ({ tick, isOn, static_cast<std::uint8_t> (status & 0x0F), data[0], isOn ? data[1] : std::uint8_t { 0 } });
                }
            }
        }

        return tick;
    }
} // namespace

bool isMidiFile (std::span<const std::uint8_t> bytes) noexcept
{
    return bytes.size() >= 4 && hasName (bytes, "MThd");
}

MidiFile readMidiFile (std::span<const std::uint8_t> bytes)
{
    if (! isMidiFile (bytes))
        throw BadMidiFile ("this is no MIDI file");

    Reader file (bytes.subspan (4));
    Reader header (file.take (file.number (4)));
    header.take (4); // format and number of tracks
    const auto division = header.number (2);

    if ((division & 0x8000u) != 0)
        throw BadMidiFile ("the MIDI file counts its time in frames of SMPTE; only beats can be compared");

    if (division == 0)
        throw BadMidiFile ("the MIDI file has a beat of no ticks");

    MidiFile read;
    read.ticksPerBeat = division;

    while (! file.isAtEnd())
    {
        const auto name = file.take (4);
        const Reader chunk (file.take (file.number (4)));

        if (hasName (name, "MTrk"))
            read.endTick = std::max (read.endTick, readTrack (chunk, read.notes));
    }

    std::ranges::stable_sort (read.notes, {}, [] (const MidiNote& note) { return std::tuple (note.tick, note.isOn, note.channel, note.note); });
    return read;
}

} // namespace pulsewright
