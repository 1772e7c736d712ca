// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// What the tool makes of a pattern or a song: text for people, JSON for programs, sound.

#pragma once

#include "generation/Take.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace pulsewright::cli
{

/** Music, and where it came from. */
template <typename Material>
struct Made
{
    Take take;
    std::optional<std::string> code; ///< nothing where the take has none, or is not all that decides the music
    Material material;
};

/** A grid of four lanes and sixteenth columns, four bars a row; or a table of the sections. Within 80 columns. */
std::string textForPeople (const Made<DrumPattern>& pattern, bool inColour);
std::string textForPeople (const Made<SongArrangement>& song, bool inColour);

/** A message as a terminal may show it: control characters and bytes that are no UTF-8 become "\\x1b". */
std::string onOneLine (std::string_view message);

/** Doubles are printed so that they read back to the same bits. */
std::string jsonText (const Made<DrumPattern>& pattern);
std::string jsonText (const Made<SongArrangement>& song);

/** One of the grooves that a search has found. */
struct FoundGroove
{
    double distance; ///< in hits
    Made<DrumPattern> groove;
};

/** @param searched  how many grooves were looked at */
std::string jsonText (std::uint64_t searched, std::span<const FoundGroove> nearest);

/** A line for each, with the command that repeats it: sorted by their characters, lines of several searches are in the
    order of one. Then the nearest as a grid.
*/
std::string listText (std::span<const FoundGroove> nearest, bool inColour);

/** Plays the song once with the plug-in's own playback and kit, and writes it: 48 kHz, stereo, as long as the music
    and exactly one second more. Shows progress on a terminal.
    @param target  as openSoundFile() takes it
    @param kit     0 to 4
    @throws WriteFailure
*/
void writeSound (const std::string& target, const SongArrangement& song, int tempoBpm, int kit);

/** What `window` renders. */
struct WindowPicture
{
    int width = 0, height = 0; ///< pixels at scale 1
    float scale        = 1.0f;
    int genre          = 0;
    std::uint32_t take = 1;
};

/** Has the plug-in's own editor rendered, without a display, and writes it as a PNG. @throws WriteFailure */
void writeWindowPicture (const std::string& target, const WindowPicture& picture);

} // namespace pulsewright::cli
