// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Names and places of exported MIDI files, for the save dialog and for drags.

#pragma once

#include "generation/SongArrangement.h"

#include <juce_core/juce_core.h>

#include <string>

/** Thread: message. All of it touches the disk. */
namespace pulsewright::midiExport
{

/** What the save dialog suggests, in the user's documents. */
juce::File suggestedSongFile();
juce::File suggestedPatternFile();

/** Writes a file. @param errorText  receives the writer's message on failure */
bool save (const juce::File& file, const SongArrangement& song, int tempoBpm, std::string& errorText);
bool save (const juce::File& file, const DrumPattern& pattern, int tempoBpm, std::string& errorText);

/** Writes the file for a drag, named by its seed, into a folder of the temporary folder; what was there
    under the name is replaced. A folder that is not ours alone counts as one that cannot be written to.
    @returns no file on failure
*/
juce::File fileForDrag (const SongArrangement& song, int tempoBpm, std::string& errorText);
juce::File fileForDrag (const DrumPattern& pattern, int tempoBpm, std::string& errorText);

} // namespace pulsewright::midiExport
