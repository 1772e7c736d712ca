// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "MidiExport.h"

#include "MidiFileWriter.h"

namespace pulsewright::midiExport
{

namespace
{
    juce::File documentFile (const char* name)
    {
        const auto documents = juce::File::getSpecialLocation (juce::File::userDocumentsDirectory);
        return documents == juce::File() ? juce::File::getCurrentWorkingDirectory().getChildFile (name) : documents.getChildFile (name);
    }

    juce::File dragFile (const char* kind, std::uint32_t seed)
    {
        const auto folder = juce::File::getSpecialLocation (juce::File::tempDirectory).getChildFile ("Pulsewright MIDI");
        folder.createDirectory(); // if it cannot be made, writing says so

        return folder.getChildFile ("Pulsewright " + juce::String (kind) + " " + juce::String (seed) + ".mid");
    }
} // namespace

juce::File suggestedSongFile()
{
    return documentFile ("Pulsewright Song.mid");
}

juce::File suggestedPatternFile()
{
    return documentFile ("Pulsewright Pattern.mid");
}

juce::File withMidiExtension (const juce::File& chosen)
{
    return chosen.hasFileExtension ("mid") ? chosen : chosen.withFileExtension ("mid");
}

bool save (const juce::File& file, const SongArrangement& song, int tempoBpm, std::string& errorText)
{
    return MidiFileWriter::saveSongToMidiFile (file.getFullPathName().toStdString(), song, tempoBpm, &errorText);
}

bool save (const juce::File& file, const DrumPattern& pattern, int tempoBpm, std::string& errorText)
{
    return MidiFileWriter::savePatternToMidiFile (file.getFullPathName().toStdString(), pattern, tempoBpm, &errorText);
}

juce::File fileForDrag (const SongArrangement& song, int tempoBpm, std::string& errorText)
{
    const auto file = dragFile ("Song", song.seed);
    return save (file, song, tempoBpm, errorText) ? file : juce::File();
}

juce::File fileForDrag (const DrumPattern& pattern, int tempoBpm, std::string& errorText)
{
    const auto file = dragFile ("Pattern", pattern.seed);
    return save (file, pattern, tempoBpm, errorText) ? file : juce::File();
}

} // namespace pulsewright::midiExport
