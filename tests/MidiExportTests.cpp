// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Files on their way out of the window: the drag buttons, names, folders.

#include "EditorWindow.h"

#include "editor/FileDrag.h"
#include "editor/MidiDragButton.h"
#include "export/MidiExport.h"
#include "export/MidiFileWriter.h"
#include "generation/SongBuilder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace pulsewright
{

namespace
{
    void dragAlong (MidiDragButton& button, std::initializer_list<juce::Point<float>> way)
    {
        const auto mouse = juce::Desktop::getInstance().getMainMouseSource();
        const auto at    = [&] (juce::Point<float> place)
        { return juce::MouseEvent (mouse, place, juce::ModifierKeys::leftButtonModifier, 0, 0, 0, 0, 0, &button, &button, {}, {}, {}, 1, true); };

        button.mouseDown (at ({}));
        for (const auto& place : way)
            button.mouseDrag (at (place));
    }
} // namespace

TEST (MidiDragButton, StartsOneDragSixPixelsAway)
{
    auto file = juce::File::createTempFile (".mid");
    juce::String log;
    MidiDragButton button ("DRAG",
                           [&]
                           {
                               log << "file ";
                               return file;
                           });
    button.setSize (100, 40);
    button.startDrag = [&] (const juce::File& dragged)
    {
        log << (dragged == file ? "drag " : "another file ");
        return true;
    };

    const auto logOf = [&] (std::initializer_list<juce::Point<float>> way)
    {
        log.clear();
        dragAlong (button, way);
        return log;
    };

    EXPECT_EQ (logOf ({ { 5, 0 }, { 4, 3.7f } }), "") << "5.45 pixels";
    EXPECT_EQ (logOf ({ { 4, 3.8f }, { 60, 0 } }), "file ") << "a file that does not exist is not dragged";
    file.create();
    EXPECT_EQ (logOf ({ { 4, 3.8f }, { 60, 0 } }), "file drag ") << "5.52 pixels, and once a press";
    file = juce::File();
    EXPECT_EQ (logOf ({ { 70, 0 } }), "file ");
    EXPECT_EQ (button.getTooltip(), "Drag this button into the DAW arrangement");
}

TEST (MidiExport, NamesFilesAndWritesThem)
{
    const auto folder = juce::File::getSpecialLocation (juce::File::tempDirectory);
    const auto named  = [&] (const char* name) { return FileDialog::withExtension (folder.getChildFile (name), ".mid").getFileName(); };
    EXPECT_EQ (named ("groove"), "groove.mid");
    EXPECT_EQ (named ("groove.MID"), "groove.MID");
    EXPECT_EQ (named ("groove.txt"), "groove.mid");
    EXPECT_EQ (midiExport::suggestedSongFile().getFileName(), "Pulsewright Song.mid");
    EXPECT_EQ (fileUri (juce::File (juce::CharPointer_UTF8 ("/tmp/a b%/\xc3\xbc.mid"))), "file:///tmp/a%20b%25/%C3%BC.mid");

    // What the dialog hands back is a name, not a pattern, a format or a line.
    std::string error;
    for (const auto* odd : { "100% %s %n.mid", "it's \"so\".mid", "two\nlines.mid", " blank .mid", "\xc3\xbc\xe9\xbc\x93.mid", "-rf *.mid" })
    {
        const auto file = folder.getChildFile (juce::CharPointer_UTF8 (odd));
        EXPECT_TRUE (midiExport::save (FileDialog::withExtension (file, ".mid"), DrumPattern {}, 90, error)) << odd << error;
        EXPECT_GT (file.getSize(), 60) << odd;
        EXPECT_TRUE (file.deleteFile()) << odd;
    }

    // Two hosts that drag the same take at once: each finds the whole file.
    const auto dragOften = []
    {
        std::string failure;
        for (int times = 0; times < 200; ++times)
            EXPECT_EQ (bytesIn (midiExport::fileForDrag (DrumPattern {}, 90, failure)), MidiFileWriter::bytesOf (DrumPattern {}, 90)) << failure;
    };
    std::thread other (dragOften);
    dragOften();
    other.join();

    EditorWindow window;
    auto pattern = window.processor.getPattern();
    pattern.seed = 4294967295u;
    auto song    = window.processor.getSong();
    window.processor.setMaterial (pattern, song);

    for (const auto& [isSong, isStarted] : { std::pair (true, true), { true, false }, { false, true } })
    {
        juce::File file;
        auto& button     = window.find<MidiDragButton> (isSong ? "Drag full song MIDI" : "Drag pattern MIDI");
        button.startDrag = [&, begins = isStarted] (const juce::File& dragged) { return file = dragged, begins; };
        dragAlong (button, { { 60, 0 } });
        EXPECT_EQ (bytesIn (file), isSong ? MidiFileWriter::bytesOf (song, 90) : MidiFileWriter::bytesOf (pattern, 90));
        EXPECT_EQ (file.getFileName(), isSong ? "Pulsewright Song " + juce::String (song.seed) + ".mid" : "Pulsewright Pattern 4294967295.mid");
        EXPECT_TRUE (button.getTooltip().endsWith (file.getFullPathName()));
        EXPECT_EQ (button.getTooltip().contains ("Drag failed"), ! isStarted) << button.getTooltip();
    }
}

TEST (MidiExport, RefusesADragFolderOfAnotherUser)
{
    const auto scratch  = juce::File::createTempFile ({});
    const auto folder   = scratch.getChildFile ("Pulsewright MIDI");
    const auto precious = scratch.getChildFile ("precious");
    const auto* old     = std::getenv ("TMPDIR");
    const std::string oldFolder (old != nullptr ? old : "");
    precious.createDirectory();
    setenv ("TMPDIR", scratch.getFullPathName().toRawUTF8(), 1);

    const auto path = folder.getFullPathName().toStdString();

    struct Case
    {
        const char* what;
        bool isDragged;
        std::function<bool()> prepare;
    };

    const Case cases[] { { "nothing there", true, [] { return true; } },
                         { "a link", false, [&] { return precious.createSymbolicLink (folder, true); } },
                         { "a file", false, [&] { return folder.replaceWithText ("in the way"); } },
                         { "ours, but open to a group", true, [&] { return mkdir (path.c_str(), 0755) == 0 && chmod (path.c_str(), 0775) == 0; } },
                         { "somebody else's", false, [&] { return mkdir (path.c_str(), 0755) == 0 && chown (path.c_str(), 65534, 65534) == 0; } } };

    for (const auto& [what, isDragged, prepare] : cases)
    {
        EditorWindow window;

        if (! prepare())
        {
            EXPECT_NE (geteuid(), 0u) << what; // only root can give a folder away
            folder.deleteFile();
            continue;
        }

        const auto file = window.editor->createDragMidiFile (PulsewrightAudioProcessorEditor::Export::pattern);
        EXPECT_EQ (file != juce::File() && file.existsAsFile(), isDragged) << what;
        EXPECT_EQ (window.find<juce::TextButton> ("Drag pattern MIDI").getTooltip().contains ("Could not open"), ! isDragged) << what;
        EXPECT_EQ (precious.getNumberOfChildFiles (juce::File::findFiles), 0) << what;

        struct stat info
        {};
        EXPECT_TRUE (! isDragged || (stat (path.c_str(), &info) == 0 && (info.st_mode & 0022) == 0)) << what;
        folder.deleteFile();
        folder.deleteRecursively();
    }

    old != nullptr ? setenv ("TMPDIR", oldFolder.c_str(), 1) : unsetenv ("TMPDIR");
    scratch.deleteRecursively();
}

} // namespace pulsewright
