// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "MidiExport.h"

#include "MidiFileWriter.h"
#include "PrivateFolder.h"

#include <filesystem>
#include <system_error>

namespace pulsewright::midiExport
{

namespace
{
    juce::File documentFile (const char* name)
    {
        const auto documents = juce::File::getSpecialLocation (juce::File::userDocumentsDirectory);
        return documents == juce::File() ? juce::File::getCurrentWorkingDirectory().getChildFile (name) : documents.getChildFile (name);
    }

    std::filesystem::path pathOf (const juce::File& file)
    {
        return reinterpret_cast<const char8_t*> (file.getFullPathName().toRawUTF8());
    }

    template <typename Music>
    juce::File writeForDrag (const Music& music, const char* kind, int tempoBpm, std::string& errorText)
    {
        const auto folder = juce::File::getSpecialLocation (juce::File::tempDirectory).getChildFile ("Pulsewright MIDI");
        auto file         = folder.getChildFile ("Pulsewright " + juce::String (kind) + " " + juce::String (music.seed) + ".mid");

        if (! makePrivateFolder (folder))
        {
            errorText = MidiFileWriter::cannotOpenMessage;
            return {};
        }

        // Beside it first: a host that still reads what was dragged of the same take before finds all of it.
        const juce::TemporaryFile written (file);

        if (! save (written.getFile(), music, tempoBpm, errorText))
            return {};

        // Not JUCE's, which copies where it cannot rename: a reader could see half a file.
        std::error_code error;
        std::filesystem::rename (pathOf (written.getFile()), pathOf (file), error);

        // Windows replaces no file that somebody reads. Most often it is the one that would take its place.
        if (error && ! file.hasIdenticalContentTo (written.getFile()))
        {
            errorText = MidiFileWriter::cannotOpenMessage;
            return {};
        }

        return file;
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
    return writeForDrag (song, "Song", tempoBpm, errorText);
}

juce::File fileForDrag (const DrumPattern& pattern, int tempoBpm, std::string& errorText)
{
    return writeForDrag (pattern, "Pattern", tempoBpm, errorText);
}

} // namespace pulsewright::midiExport
