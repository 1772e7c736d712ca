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

#include <array>
#include <cstdlib>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace pulsewright
{

TEST (MidiDragButton, StartsOneDragSixPixelsAway)
{
    int filesMade = 0, drags = 0;
    auto file = juce::File::createTempFile (".mid");
    MidiDragButton button ("DRAG",
                           [&]
                           {
                               ++filesMade;
                               return file;
                           });
    button.setSize (100, 40);
    button.startDrag = [&] (const juce::File& dragged)
    {
        EXPECT_EQ (dragged, file);
        ++drags;
    };

    const auto event = [&] (float x, float y)
    {
        const juce::Point<float> start (10, 10);
        return juce::MouseEvent (juce::Desktop::getInstance().getMainMouseSource(),
                                 { 10 + x, 10 + y },
                                 juce::ModifierKeys::leftButtonModifier,
                                 0,
                                 0,
                                 0,
                                 0,
                                 0,
                                 &button,
                                 &button,
                                 {},
                                 start,
                                 {},
                                 1,
                                 true);
    };

    // One press: no file yet where nothing was written, and none before the sixth pixel.
    button.mouseDown (event (0, 0));
    button.mouseDrag (event (5, 0));
    button.mouseDrag (event (4, 3.7f)); // 5.45, rounded
    EXPECT_EQ (filesMade, 0);
    button.mouseDrag (event (6, 0));
    button.mouseDrag (event (60, 0));
    EXPECT_EQ (std::pair (filesMade, drags), std::pair (1, 0)) << "a file that does not exist is not dragged";

    file.create();
    button.mouseDown (event (0, 0));
    button.mouseDrag (event (4, 3.8f)); // 5.52
    button.mouseDrag (event (70, 0));
    EXPECT_EQ (std::pair (filesMade, drags), std::pair (2, 1));

    file = juce::File();
    button.mouseDown (event (0, 0));
    button.mouseDrag (event (70, 0));
    EXPECT_EQ (std::pair (filesMade, drags), std::pair (3, 1));
    EXPECT_EQ (button.getTooltip(), "Drag this button into the DAW arrangement");
}

TEST (MidiExport, NamesFilesAndWritesThem)
{
    const auto folder = juce::File::getSpecialLocation (juce::File::tempDirectory);
    const auto named  = [&] (const char* name) { return midiExport::withMidiExtension (folder.getChildFile (name)).getFileName(); };
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
        EXPECT_TRUE (midiExport::save (midiExport::withMidiExtension (file), DrumPattern {}, 90, error)) << odd << error;
        EXPECT_GT (file.getSize(), 60) << odd;
        EXPECT_TRUE (file.deleteFile()) << odd;
    }

    // Two hosts that drag the same take at once: each finds the whole file.
    std::array<juce::File, 2> dragged;
    std::array<std::thread, 2> hosts;
    for (std::size_t i = 0; i < 2; ++i)
        hosts[i] = std::thread (
            [&file = dragged[i]]
            {
                std::string failure;
                for (int times = 0; times < 200; ++times)
                    file = midiExport::fileForDrag (DrumPattern {}, 90, failure);
            });
    for (auto& host : hosts)
        host.join();
    EXPECT_EQ (dragged[0], dragged[1]);
    EXPECT_EQ (dragged[0].getSize(), static_cast<juce::int64> (MidiFileWriter::bytesOf (DrumPattern {}, 90).size()));

    Window window;
    auto pattern = window.processor.getPattern();
    pattern.seed = 4294967295u;
    auto song    = window.processor.getSong();
    window.processor.setMaterial (pattern, song);

    for (const bool isSong : { true, false })
    {
        const auto file = window.editor->createDragMidiFile (isSong);
        juce::MemoryBlock bytes;
        ASSERT_TRUE (file.loadFileAsData (bytes));
        const auto expected = isSong ? MidiFileWriter::bytesOf (song, 90) : MidiFileWriter::bytesOf (pattern, 90);
        EXPECT_EQ (bytes, juce::MemoryBlock (expected.data(), expected.size()));
        EXPECT_EQ (file.getFileName(),
                   isSong ? "Pulsewright Song " + juce::String (song.seed) + ".mid" : juce::String ("Pulsewright Pattern 4294967295.mid"));
        EXPECT_TRUE (find<juce::TextButton> (*window.editor, isSong ? "Drag full song MIDI" : "Drag pattern MIDI")
                         .getTooltip()
                         .endsWith (file.getFullPathName()));
    }
}

TEST (MidiExport, DragsThroughNobodyElsesFolder)
{
    const auto scratch  = juce::File::createTempFile ({});
    const auto folder   = scratch.getChildFile ("Pulsewright MIDI");
    const auto precious = scratch.getChildFile ("precious");
    const auto* old     = std::getenv ("TMPDIR");
    const std::string oldFolder (old != nullptr ? old : "");
    precious.createDirectory();
    setenv ("TMPDIR", scratch.getFullPathName().toRawUTF8(), 1);

    struct Case
    {
        const char* what;
        bool isDragged;
        std::function<void()> prepare;
    };

    const Case cases[] { { "nothing there", true, [] {} },
                         { "a link", false, [&] { precious.createSymbolicLink (folder, true); } },
                         { "a file", false, [&] { folder.replaceWithText ("in the way"); } },
                         { "ours, but open to all",
                           false,
                           [&] { EXPECT_TRUE (folder.createDirectory() && chmod (folder.getFullPathName().toRawUTF8(), 0777) == 0); } },
                         { "somebody else's", false, [&] {
                              EXPECT_TRUE (folder.createDirectory() && chown (folder.getFullPathName().toRawUTF8(), 65534, 65534) == 0);
                          } } };

    Window window;

    for (const auto& [what, isDragged, prepare] : cases)
    {
        if (what == std::string ("somebody else's") && geteuid() != 0)
            continue; // only root can give a folder away

        prepare();
        const auto file = window.editor->createDragMidiFile (false);
        EXPECT_EQ (file != juce::File() && file.existsAsFile(), isDragged) << what;
        EXPECT_EQ (find<juce::TextButton> (*window.editor, "Drag pattern MIDI").getTooltip().contains ("Could not open"), ! isDragged) << what;
        EXPECT_EQ (precious.getNumberOfChildFiles (juce::File::findFiles), 0) << what;

        struct stat info
        {};
        EXPECT_TRUE (! isDragged || (stat (folder.getFullPathName().toRawUTF8(), &info) == 0 && (info.st_mode & 0022) == 0)) << what;
        folder.deleteFile();
        folder.deleteRecursively();
    }

    old != nullptr ? setenv ("TMPDIR", oldFolder.c_str(), 1) : unsetenv ("TMPDIR");
    scratch.deleteRecursively();
}

} // namespace pulsewright
