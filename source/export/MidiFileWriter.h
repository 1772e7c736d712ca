// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Writes patterns and songs as Standard MIDI Files: format 1, 960 ticks a quarter, drums on channel 10.

#pragma once

#include "generation/SongArrangement.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace pulsewright
{

/** Builds the bytes of a file and saves them. No state: any thread. */
struct MidiFileWriter
{
    static constexpr const char* cannotOpenMessage     = "Could not open the destination file.";
    static constexpr const char* cannotCompleteMessage = "The MIDI file could not be written completely.";

    /** A whole file in memory.

        @param hits       times in beats from the start of the file; only the low eight bits of note
                          and velocity are written
        @param bars       where the tracks end; counts below 1 count as 1
        @param tempoBpm   clamped to 30..300
        @param trackName  its bytes are copied as they are
    */
    static std::vector<std::uint8_t> buildMidiFileBytes (const std::vector<DrumHit>& hits,
                                                         std::int32_t bars,
                                                         std::int32_t tempoBpm,
                                                         std::string_view trackName);

    /** The bytes that savePatternToMidiFile() and saveSongToMidiFile() write. */
    static std::vector<std::uint8_t> bytesOf (const DrumPattern& pattern, std::int32_t tempoBpm);
    static std::vector<std::uint8_t> bytesOf (const SongArrangement& song, std::int32_t tempoBpm);

    /** The same file with the sections' names as markers in its first track. */
    static std::vector<std::uint8_t> bytesWithMarkersOf (const SongArrangement& song, std::int32_t tempoBpm);

    /** Writes the file, replacing what is there. Blocks on the disk.

        @param path       in UTF-8; other bytes are taken as they are where the system allows it
        @param errorText  if given, receives one of the two messages above on failure
        @returns          false when the file could not be opened (nothing is written) or not be
                          written to its end (a part of it may be left)
    */
    static bool savePatternToMidiFile (const std::string& path, const DrumPattern& pattern, std::int32_t tempoBpm, std::string* errorText = nullptr);

    static bool saveSongToMidiFile (const std::string& path, const SongArrangement& song, std::int32_t tempoBpm, std::string* errorText = nullptr);
};

} // namespace pulsewright
