// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Reads a MIDI file and forgives nothing: one byte too many, or one quantity longer than it has to be, is an error.

#pragma once

#include <cstdint>
#include <map>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace pulsewright::fuzz
{

struct MidiTrack
{
    struct Event
    {
        std::uint32_t tick;
        std::uint8_t status; ///< 0xFF for a meta event
        std::uint8_t type;   ///< of a meta event
        std::string data;    ///< what follows: two bytes of a note, or a meta event's content

        bool operator== (const Event&) const = default;
    };

    std::vector<Event> events; ///< without the end of the track
    std::uint32_t endTick = 0;
};

struct MidiFile
{
    std::uint32_t format = 0, ticksPerQuarter = 0;
    std::vector<MidiTrack> tracks;
};

/** Knows notes and meta events, each with its own status byte, which is all that a drum file may have. */
class StrictMidiReader
{
public:
    /** @param dataMask  the bits that a note and a velocity may have
        @throws std::runtime_error  with the reason, when the bytes are not such a file
    */
    static MidiFile read (std::span<const std::uint8_t> bytes, std::uint8_t dataMask = 0x7F)
    {
        StrictMidiReader reader { bytes, dataMask };
        return reader.readFile();
    }

private:
    StrictMidiReader (std::span<const std::uint8_t> bytesToRead, std::uint8_t mask) : bytes (bytesToRead), dataMask (mask) {}

    static void require (bool holds, const char* what)
    {
        if (! holds)
            throw std::runtime_error (what);
    }

    std::span<const std::uint8_t> take (std::size_t count)
    {
        require (count <= bytes.size(), "the bytes end too early");
        const auto taken = bytes.first (count);
        bytes            = bytes.subspan (count);
        return taken;
    }

    std::string takeText (std::size_t count)
    {
        const auto taken = take (count);
        return { taken.begin(), taken.end() };
    }

    std::uint8_t takeByte() { return take (1)[0]; }

    std::uint32_t takeBigEndian (std::size_t byteCount)
    {
        std::uint32_t value = 0;
        for (const auto byte : take (byteCount))
            value = value << 8 | byte;

        return value;
    }

    std::uint32_t takeVariableLength()
    {
        constexpr int longest = 4; // bytes
        std::uint32_t value   = 0;

        for (int i = 0; i < longest; ++i)
        {
            const auto byte = takeByte();
            require (i > 0 || byte != 0x80, "a quantity begins with a needless byte");
            value = value << 7 | (byte & 0x7Fu);

            if (byte < 0x80)
                return value;
        }

        throw std::runtime_error ("a quantity has more than four bytes");
    }

    StrictMidiReader takeChunk (std::string_view id)
    {
        require (takeText (4) == id, "a chunk has another name");
        const auto length = takeBigEndian (4);
        return { take (length), dataMask };
    }

    //==============================================================================
    MidiFile readFile()
    {
        auto header = takeChunk ("MThd");
        MidiFile file;
        file.format           = header.takeBigEndian (2);
        const auto trackCount = header.takeBigEndian (2);
        file.ticksPerQuarter  = header.takeBigEndian (2);
        require (header.bytes.empty(), "the header is too long");

        for (std::uint32_t i = 0; i < trackCount; ++i)
            file.tracks.push_back (takeChunk ("MTrk").readTrack());

        require (bytes.empty(), "there are bytes behind the last track");
        return file;
    }

    MidiTrack readTrack()
    {
        MidiTrack track;
        std::map<std::pair<int, std::uint8_t>, int> sounding; // by channel and note
        std::uint64_t tick = 0;

        for (;;)
        {
            tick += takeVariableLength();
            require (tick <= UINT32_MAX, "a tick does not fit into 32 bits");
            auto event = takeEvent (static_cast<std::uint32_t> (tick));

            if (event.status == 0xFF && event.type == 0x2F)
            {
                require (event.data.empty(), "the end of the track has content");
                break;
            }

            if (event.status != 0xFF)
            {
                auto& count = sounding[{ event.status & 0x0F, static_cast<std::uint8_t> (event.data[0]) }];
                count += (event.status & 0xF0) == 0x90 ? 1 : -1;
                require (count >= 0, "a note ends that does not sound");
            }

            track.events.push_back (std::move (event));
        }

        for (const auto& [note, count] : sounding)
            require (count == 0, "a note does not end");

        require (bytes.empty(), "there are bytes behind the end of the track");
        track.endTick = static_cast<std::uint32_t> (tick);
        return track;
    }

    MidiTrack::Event takeEvent (std::uint32_t tick)
    {
        const auto status = takeByte();

        if (status == 0xFF)
        {
            const auto type = takeByte();
            require (type < 0x80, "a meta event has no type");
            const auto length = takeVariableLength();
            return { tick, status, type, takeText (length) };
        }

        require ((status & 0xF0) == 0x90 || (status & 0xF0) == 0x80, "an event is neither a note nor a meta event");
        auto data = takeText (2);

        for (const auto byte : data)
            require ((static_cast<std::uint8_t> (byte) & ~dataMask) == 0, "a note or a velocity has too many bits");

        return { tick, status, 0, std::move (data) };
    }

    std::span<const std::uint8_t> bytes;
    std::uint8_t dataMask;
};

} // namespace pulsewright::fuzz
