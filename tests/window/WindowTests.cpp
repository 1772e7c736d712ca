// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// The window on a display, with a pointer and a keyboard (xdotool), and a receiver for what is dragged out.

#include "HostLog.h"
#include "OfflineHost.h"
#include "RealWindow.h"

#include "editor/EditorLayout.h"
#include "editor/Palette.h"
#include "editor/X11Messages.h"
#include "export/MidiFileWriter.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <set>
#include <thread>
#include <tuple>
#include <utility>

namespace pulsewright
{

namespace
{
    /** Counts what would have to be drawn again. */
    struct RepaintCounter final : juce::CachedComponentImage
    {
        explicit RepaintCounter (int& c) : count (c) {}
        void paint (juce::Graphics&) override {}
        bool invalidateAll() override { return ++count, true; }
        bool invalidate (const juce::Rectangle<int>&) override { return ++count, true; }
        void releaseResources() override {}
        int& count;
    };

    /** What the program of the save dialog does; it always knows its version. */
    juce::File answers (juce::String script, const char* version = "exit 0")
    {
        script    = juce::String ("[ \"$1\" = --version ] && ") + version + "\n" + script;
        auto file = juce::File::getSpecialLocation (juce::File::userHomeDirectory).getChildFile ("zenity-answer");
        file.replaceWithText (script);
        return file;
    }

    juce::File home (const char* name)
    {
        return juce::File::getSpecialLocation (juce::File::userHomeDirectory).getChildFile (name);
    }
} // namespace

TEST_F (Window, ClicksDoWhatTheButtonsSay)
{
    click ("Generate groove");
    EXPECT_EQ (processor.getSeedCounter(), 2u);
    click ("New fill");
    EXPECT_EQ (processor.getPattern().name, "Boom Bap Fill");
    click ("lock snare");
    EXPECT_TRUE (processor.isLaneLocked (1));
    click ("Section CHORUS");
    EXPECT_EQ (processor.getPattern().name, "Chorus");
    click ("Build song");
    EXPECT_EQ (processor.getPattern().name, "Intro");
    EXPECT_EQ (find<juce::TextButton> ("Build song").getButtonText(), "BUILD 80-BAR SONG");
    EXPECT_TRUE (find<juce::TextButton> ("Generate groove").getTooltip().contains ("next take 4"));
    click ("Preview");
    EXPECT_TRUE (processor.isPreviewPlaying());
    EXPECT_EQ (find<juce::TextButton> ("Preview").getButtonText(), "STOP PREVIEW");
    click ("Preview");
    EXPECT_FALSE (processor.isPreviewPlaying());
    click ("Mutate");
    EXPECT_EQ (processor.getSeedCounter(), 5u);
    runFor (300);
    EXPECT_EQ (processor.getPattern().name, "Boom Bap Intro") << "the knobs that a mutation moved arm the refresh";
    EXPECT_FALSE (editor->isParentOf (juce::Component::getCurrentlyFocusedComponent())) << "the keyboard is the host's";
}

TEST_F (Window, ItsMenuKeepsTakesAndSendsThem)
{
    const auto plays = [this] (const DrumPattern& pattern) { return comesTrue ([&] { return processor.getPattern() == pattern; }); };
    click ("Generate groove");
    const auto first = processor.getPattern();

    // By keyboard: the code onto the clipboard, and back after another groove.
    run ("xdotool mousemove 1100 140 click 1");
    press ("shift+F10");
    press ("Down Down Return");
    EXPECT_TRUE (comesTrue ([] { return juce::SystemClipboard::getTextFromClipboard().startsWith ("PW1-"); }));
    click ("Generate groove");
    const auto second = processor.getPattern();
    press ("shift+F10");
    press ("Down Down Down Return");
    EXPECT_TRUE (plays (first));

    // By mouse on the grid: the list, the second entry, "Play it".
    const auto grid = find ("Pattern").getScreenBounds().getCentre();
    run ("xdotool mousemove " + juce::String (grid.x) + " " + juce::String (grid.y) + " click 3");
    press ("Down Right Down Right Return");
    EXPECT_TRUE (plays (second));

    // What is no code is said, and changes nothing. The window is away from the upper left corner of the screen.
    editor->setTopLeftPosition (470, 350);
    juce::SystemClipboard::copyTextToClipboard ("PW1-QUITE-WRONG");
    const auto pasteAndHear = [this]
    {
        press ("shift+F10");
        press ("Down Down Down Return");
        ASSERT_TRUE (comesTrue (
            []
            {
                auto* alert = dynamic_cast<juce::AlertWindow*> (juce::Component::getCurrentlyModalComponent());
                return alert != nullptr && alert->hasKeyboardFocus (true);
            }));
        EXPECT_TRUE (editor->getLocalBounds().contains (juce::Component::getCurrentlyModalComponent()->getBounds()));
    };
    const auto isAnswered = [] { return juce::Component::getCurrentlyModalComponent() == nullptr; };
    pasteAndHear();
    press ("Return");
    EXPECT_TRUE (comesTrue (isAnswered));
    EXPECT_TRUE (plays (second));

    // The message goes with the window.
    pasteAndHear();
    editor.reset();
    EXPECT_TRUE (comesTrue (isAnswered));
}

TEST_F (Window, KnobsTurnAndTakeNumbers)
{
    const HostLog log (processor);
    pointAt ("energy");
    pressButton();
    run ("xdotool mousemove_relative -- 0 -20 mousemove_relative -- 0 -20");
    releaseButton();
    const ParameterReader values (processor.parameters);
    EXPECT_GT (values.settingsValues()[1], 0.6f);
    EXPECT_TRUE (log.text.startsWith ("[2=2") && log.text.endsWith ("]2")) << log.text;

    doubleClick ("density", { 0, find ("density").getHeight() / 2 - 10 });
    run ("xdotool key ctrl+a type 33");
    press ("Return");
    EXPECT_FLOAT_EQ (values.settingsValues()[0], 0.33f);
    EXPECT_TRUE (comesTrue ([this] { return processor.getChangeCounter() > 0; }));
    runFor (250);

    // A probability waits for the next generation.
    const auto changes = processor.getChangeCounter();
    pointAt ("Kick probability");
    pressButton();
    run ("xdotool mousemove_relative -- -20 0 mousemove_relative -- -10 0");
    releaseButton();
    EXPECT_LT (values.settingsValues()[8], 1.0f);
    runFor (300);
    EXPECT_EQ (processor.getChangeCounter(), changes);

    for (const auto& [knob, index, value] : { std::tuple { "swing", 3, 0.25f }, { "density", 0, 0.48f } })
    {
        doubleClick (knob);
        EXPECT_FLOAT_EQ (values.settingsValues()[static_cast<std::size_t> (index)], value) << knob;
    }
}

TEST_F (Window, EveryControlWorksByKeyboard)
{
    const auto focused    = [] { return juce::Component::getCurrentlyFocusedComponent(); };
    const auto isOutlined = [this] (const juce::String& title)
    {
        const auto image = editor->createComponentSnapshot (editor->getLocalBounds());
        const auto box   = find (title).getBounds();
        return image.getPixelAt (box.getCentreX(), box.getY() + 1) == palette::textColour;
    };

    // A click leaves the keyboard with the editor, which wants none of its keys.
    run ("xdotool mousemove 1100 140 click 1");
    press ("space Down");
    EXPECT_EQ (focused(), editor.get());
    EXPECT_EQ (processor.getChangeCounter(), 0u);

    press ("Tab Down Down");
    EXPECT_EQ (focused(), &find ("Style"));
    EXPECT_TRUE (isOutlined ("Style"));
    EXPECT_EQ (static_cast<int> (ParameterReader (processor.parameters).genre()), 2);
    EXPECT_EQ (processor.getPattern().name, "Intro") << "a genre builds a song";

    // Sound, playback and length wait for the next request; structure and duration build at once.
    press ("Tab Down Tab Down Tab Down");
    const ParameterReader values (processor.parameters);
    EXPECT_EQ (values.soundKit(), 1);
    EXPECT_TRUE (values.playsFullSong());
    EXPECT_EQ (values.patternBars(), 3);
    EXPECT_EQ (processor.getSeedCounter(), 3u);
    press ("Tab Down Tab Down");
    EXPECT_EQ (processor.getSeedCounter(), 5u);
    EXPECT_EQ (processor.getSong().sections.size(), 6u);
    EXPECT_EQ (processor.getSong().totalBars, processor.getSongBarCount (processor.getEffectiveBpm()));

    // On to GENERATE, BUILD, PREVIEW and the knobs.
    press ("Tab space");
    EXPECT_TRUE (isOutlined ("Generate groove"));
    EXPECT_FALSE (isOutlined ("Style"));
    EXPECT_EQ (processor.getPattern().name, "Dub Verse");
    press ("Tab Return");
    EXPECT_EQ (processor.getPattern().name, "Intro");
    press ("Tab space");
    EXPECT_TRUE (processor.isPreviewPlaying());
    press ("Tab Up Up Tab Return");
    run ("xdotool key ctrl+a type 77");
    press ("Return shift+Tab shift+Tab space");
    EXPECT_FALSE (processor.isPreviewPlaying());
    EXPECT_NEAR (values.settingsValues()[0], 0.5f, 1e-6);
    EXPECT_FLOAT_EQ (values.settingsValues()[1], 0.77f);

    // Backwards to SAVE, which saves the song: that is what plays.
    const auto target = answers ("sleep 1; echo \"$HOME/all keys\"").getSiblingFile ("all keys.mid");
    press ("shift+Tab shift+Tab shift+Tab shift+Tab shift+Tab shift+Tab shift+Tab shift+Tab");
    press ("shift+Tab shift+Tab shift+Tab");
    EXPECT_TRUE (isOutlined ("Save selected MIDI"));
    press ("Return");
    EXPECT_TRUE (comesTrue ([&] { return target.existsAsFile(); }));
    runFor (100);
    EXPECT_EQ (bytesIn (target), MidiFileWriter::bytesOf (processor.getSong(), processor.getEffectiveBpm()));

    // Round again: of the 38 controls, two section buttons are hidden.
    std::set<juce::Component*> stops;
    for (auto* first = focused(); stops.empty() || focused() != first; press ("Tab"))
        ASSERT_TRUE (stops.insert (focused()).second);
    EXPECT_EQ (stops.size(), 36u);

    run ("xdotool mousemove 1100 140 click 1");
    runFor (100);
    EXPECT_FALSE (isOutlined ("Preview") || isOutlined ("density"));
}

/** As a plug-in's window is, inside of a window of the host's. */
TEST_F (Window, TheHostKeepsTheKeyboard)
{
    struct Host final : juce::Component
    {
        bool keyPressed (const juce::KeyPress& key) override { return keys << key.getTextDescription() << ' ', true; }
        juce::String keys;
    } host;

    host.setWantsKeyboardFocus (true);
    host.setBounds (20, 20, 1200, 900);
    host.addToDesktop (juce::ComponentPeer::windowHasTitleBar);
    host.setVisible (true);
    host.toFront (true);
    EXPECT_TRUE (comesTrue ([&] { return host.getPeer()->isFocused(); }));
    runFor (300); // the window manager places it
    editor->addToDesktop (0, host.getPeer()->getNativeHandle());
    editor->setTopLeftPosition (0, 0);
    runFor (100);

    const ParameterReader values (processor.parameters);
    const auto hostGets = [&] (const char* key)
    {
        host.keys.clear();
        runFor (200);
        press (key);
        return host.keys;
    };

    click ("Generate groove");
    run ("xdotool mousemove_relative 400 300 click 1"); // the grid
    EXPECT_EQ (hostGets ("space"), "spacebar ");
    EXPECT_EQ (processor.getSeedCounter(), 2u);

    // Numbers, the menu and a box's list take the keyboard for as long as they are open.
    for (const auto& [knob, index] : { std::pair { "density", 0u }, { "energy", 1u }, { "energy", 1u } })
    {
        const int number = 33 + static_cast<int> (processor.getChangeCounter());
        doubleClick (knob, { 0, find (knob).getHeight() / 2 - 10 });
        run ("xdotool key ctrl+a type " + juce::String (number));
        press ("Return");
        EXPECT_FLOAT_EQ (values.settingsValues()[index], static_cast<float> (number) / 100.0f);
        EXPECT_EQ (hostGets ("space"), "spacebar ");
    }

    run ("xdotool mousemove 700 700 click 3");
    EXPECT_NE (juce::Component::getCurrentlyModalComponent(), nullptr);
    press ("Escape");
    EXPECT_TRUE (comesTrue ([] { return juce::Component::getCurrentlyModalComponent() == nullptr; }));
    EXPECT_EQ (hostGets ("space"), "spacebar ");
    click ("Style");
    press ("Down Return");
    EXPECT_EQ (static_cast<int> (values.genre()), 1);
    EXPECT_EQ (hostGets ("Tab"), "tab ");

    // Tab goes on from a number; escape, or a click, ends it.
    const float energyBefore = values.settingsValues()[1];

    for (const bool byKey : { true, false })
    {
        doubleClick ("density", { 0, find ("density").getHeight() / 2 - 10 });
        press ("Tab Up");
        EXPECT_EQ (juce::Component::getCurrentlyFocusedComponent(), &find ("energy"));
        byKey ? press ("Escape") : click ("lock kick");
        EXPECT_EQ (hostGets ("Up"), "cursor up ");
        EXPECT_NEAR (values.settingsValues()[1], energyBefore + (byKey ? 0.01f : 0.02f), 1e-6);
    }

    editor.reset(); // before the window that it is in
}

// An answer of the X server brings along the events before it: Xlib holds them, and JUCE's loop sees an empty connection.
TEST (HeldX11Events, AreDelivered)
{
    struct Target final : juce::Component
    {
        void mouseDown (const juce::MouseEvent&) override { ++presses; }
        int presses = 0;
    } target;

    target.setBounds (100, 100, 400, 300);
    target.addToDesktop (0);
    target.setVisible (true);
    run ("xdotool mousemove 300 250");
    ASSERT_TRUE (comesTrue ([&] { return target.isMouseOver(); }));

    for (const int presses : { 1, 2, 3 })
    {
        ASSERT_EQ (std::system ("xdotool click 1"), 0); // the message loop does not run meanwhile
        juce::Desktop::getMousePosition();
        deliverHeldX11Events();
        juce::Desktop::getMousePosition(); // as the timer of a tooltip does, in the same turn of the loop
        ASSERT_TRUE (comesTrue ([&] { return target.presses == presses; }));
    }
}

// In a host that leaves errors of X11 to Xlib, as most do: the first one would end this process.
TEST (BundleWindow, DropsArriveAndNoReceiverHarmsTheHost)
{
    struct Row
    {
        const char *program, *manner;
        const char *saysBeforeRelease, *saysAfterwards;
        bool isSong;
    };

    constexpr auto *plain = PULSEWRIGHT_XDND_RECEIVER, *qt = PULSEWRIGHT_QT_RECEIVER;
    const Row rows[] { { plain, "finish", "over", "file:///", true },      { qt, "", "over", "file:///", false },
                       { plain, "XdndEnter", "gone", "gone", true },       { plain, "XdndPosition", "gone", "gone", false },
                       { plain, "XdndDrop", "over", "gone", true },        { plain, "never-finish", "over", "file:///", false },
                       { plain, "never-finish", "over", "file:///", true } };

    const PulsewrightAudioProcessor reference;
    OfflineHost host (juce::File (PULSEWRIGHT_TEST_BUNDLE), 48000.0, 512);
    std::unique_ptr<juce::AudioProcessorEditor> editor (host.plugin().createEditorIfNeeded());
    editor->addToDesktop (0);
    editor->setTopLeftPosition (60, 60);
    editor->setVisible (true);
    runFor (300);
    juce::ChildProcess receiver;
    bool isFirst = true;

    for (const auto& [program, manner, saysBeforeRelease, saysAfterwards, isSong] : rows)
    {
        const auto output = home ("drops.txt");
        const auto says   = [&] (const char* word) { return comesTrue ([&] { return output.loadFileAsString().contains (word); }); };
        output.deleteFile();
        const auto command = juce::String ("exec \"$0\" 1250 100 300 300 \"$1\" > '") + output.getFullPathName() + "'";
        ASSERT_TRUE (receiver.start (juce::StringArray { "sh", "-c", command, program, manner }));
        ASSERT_TRUE (says ("ready")) << manner;

        const EditorLayout layout (1120, 840, 8);
        const auto button       = (isSong ? layout.songDragButton : layout.patternDragButton).getCentre() + editor->getScreenPosition();
        const juce::String pull = " mousemove_relative 20 0 mousemove 1400 200";

        // The first press, move and release arrive together, as in a busy host. A later press may first have to end the
        // previous drag; then that press starts no drag, and the next one does.
        const auto press = "xdotool mousemove " + button.toString().replace (",", "") + " mousedown 1";
        bool isTaken     = false;

        for (int attempt = 0; attempt < 2 && ! isTaken; ++attempt)
        {
            run (press + (isFirst ? pull : ""));

            if (! std::exchange (isFirst, false))
            {
                runFor (200);
                run ("xdotool" + pull);
            }

            isTaken = says (saysBeforeRelease);

            if (! isTaken)
                run ("xdotool mouseup 1");
        }

        ASSERT_TRUE (isTaken) << manner;
        run ("xdotool mouseup 1");
        ASSERT_TRUE (says (saysAfterwards)) << manner;
        runFor (100);
        receiver.kill();

        if (const auto said = output.loadFileAsString(); said.contains ("file:///"))
        {
            const auto uri  = said.fromFirstOccurrenceOf ("file://", false, false).upToFirstOccurrenceOf ("\r\n", false, false);
            const auto file = juce::File (juce::URL::removeEscapeChars (uri));
            EXPECT_TRUE (uri.contains ("/Pulsewright%20MIDI/")) << said;
            EXPECT_EQ (bytesIn (file),
                       isSong ? MidiFileWriter::bytesOf (reference.getSong(), 90) : MidiFileWriter::bytesOf (reference.getPattern(), 90));
        }
    }

    // The last receiver never answers: the window closes in mid-drag.
    editor.reset();
    runFor (300);
}

TEST_F (Window, SavesWhereTheDialogSays)
{
    const auto folder = juce::File::getCurrentWorkingDirectory();
    const auto chosen = home ("my take.txt");
    const auto target = home ("my take.mid");

    answers ("sleep 1; echo '" + chosen.getFullPathName() + "'");
    click ("Save selected MIDI");
    EXPECT_TRUE (comesTrue ([&] { return target.existsAsFile(); }));
    runFor (100);
    EXPECT_EQ (bytesIn (target), MidiFileWriter::bytesOf (processor.getPattern(), 90));
    EXPECT_TRUE (find<juce::TextButton> ("Save selected MIDI").getTooltip().endsWith ("Saved " + target.getFullPathName()));
    EXPECT_EQ (juce::File::getCurrentWorkingDirectory(), folder) << "the working directory is the host's";

    // The name that was typed is free, the one that will be written is not: that one is asked about.
    target.replaceWithText ("precious");
    click ("Save selected MIDI");
    ASSERT_TRUE (comesTrue ([] { return juce::Component::getCurrentlyModalComponent() != nullptr; }));
    EXPECT_EQ (target.loadFileAsString(), "precious");
    juce::Component::getCurrentlyModalComponent()->exitModalState (1);
    runFor (200);
    EXPECT_NE (target.loadFileAsString(), "precious");

    // A place that takes no files, whoever asks.
    answers ("sleep 1; echo /proc/take.mid");
    click ("Save selected MIDI");
    EXPECT_TRUE (comesTrue ([this] { return find<juce::TextButton> ("Save selected MIDI").getTooltip().contains ("Could not"); }));

    // Cancel stays cancel; a program that is gone at once has asked nobody, and JUCE's dialog asks.
    answers ("sleep 1; exit 1");
    click ("Save selected MIDI");
    runFor (1700);
    EXPECT_EQ (juce::Component::getCurrentlyModalComponent(), nullptr);

    // So does it for one that cannot tell its version, however long it takes to fail. The name can be typed at once.
    for (const auto& [script, version] : { std::pair { "exit 127", "exit 0" }, { "sleep 1; exit 1", "exit 127" } })
    {
        answers (script, version);
        click ("Save selected MIDI");
        ASSERT_TRUE (comesTrue ([] { return juce::Component::getCurrentlyModalComponent() != nullptr; }));
        auto* dialog = juce::Component::getCurrentlyModalComponent();
        ASSERT_NE (dynamic_cast<juce::FileChooserDialogBox*> (dialog), nullptr);
        runFor (300);
        EXPECT_NE (dynamic_cast<juce::TextEditor*> (juce::Component::getCurrentlyFocusedComponent()), nullptr);
        if (juce::String (version) == "exit 0")
            dialog->exitModalState (0);
    }

    // The window may close while a dialog is open.
    editor.reset();
    runFor (300);
    EXPECT_EQ (juce::Component::getCurrentlyModalComponent(), nullptr);
}

TEST_F (Window, RestsWhileNothingChanges)
{
    int repaints = 0;
    runFor (1000);
    editor->setCachedComponentImage (new RepaintCounter (repaints));
    repaints         = 0;
    const auto start = std::clock();
    run ("sleep 10");
    EXPECT_EQ (repaints, 0);
    std::printf ("CPU while the window rests: %.2f %%\n", 10.0 * static_cast<double> (std::clock() - start) / CLOCKS_PER_SEC);

    processor.generatePattern (SectionType::fill);
    EXPECT_TRUE (comesTrue ([&] { return repaints > 0; }));
    editor->setCachedComponentImage (nullptr);
}

/** As a host does it: the built bundle, a thread that plays, and a window that comes and goes. */
TEST (BundleWindow, OpensAndClosesWhileItPlays)
{
    const auto openings = juce::SystemStats::getEnvironmentVariable ("PULSEWRIGHT_OPENINGS", "25").getIntValue();
    OfflineHost host (juce::File (PULSEWRIGHT_TEST_BUNDLE), 48000.0, 64);
    host.setParameter ("play_mode", 1.0f);
    std::atomic<bool> stop { false };
    std::thread audio (
        [&]
        {
            for (std::int64_t block = 0; ! stop; ++block)
                host.process ({ .ppq = static_cast<double> (block) * 64 / 48000 * 1.5, .bpm = 90.0 }, 64);
        });

    double first = 0.0, later = 0.0; // milliseconds
    for (int i = 0; i < openings; ++i)
    {
        const auto start = juce::Time::getMillisecondCounterHiRes();
        const std::unique_ptr<juce::AudioProcessorEditor> editor (host.plugin().createEditorIfNeeded());
        ASSERT_NE (editor, nullptr);
        editor->addToDesktop (0);
        editor->setVisible (true);
        EXPECT_EQ (editor->getBounds().withZeroOrigin(), juce::Rectangle<int> (1120, 840));
        (i == 0 ? first : later) += juce::Time::getMillisecondCounterHiRes() - start;
        runFor (i % 10 == 0 ? 200 : 10);
    }

    stop = true;
    audio.join();
    EXPECT_GT (host.recordedMidi().size(), 0u);
    std::printf ("The window opens in %.0f ms, then in %.0f ms\n", first, later / (openings - 1));
}

} // namespace pulsewright
