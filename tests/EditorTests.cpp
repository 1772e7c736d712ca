// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// The window as a component, without a display.

#include "EditorWindow.h"
#include "HostLog.h"
#include "StateBytes.h"

#include "editor/Palette.h"

#include <gtest/gtest.h>

#include <set>
#include <thread>

namespace pulsewright
{

namespace
{
    using Bounds = juce::Rectangle<int>;

    void set (PulsewrightAudioProcessor& processor, const char* id, float plainValue)
    {
        auto* parameter = processor.parameters.getParameter (id);
        parameter->setValueNotifyingHost (parameter->convertTo0to1 (plainValue));
    }
} // namespace

//==============================================================================
TEST (EditorLayout, FollowsTheArithmetic)
{
    const EditorLayout initial (1120, 840, 8), smallest (900, 720, 8), largest (1500, 1050, 6), one (1120, 840, 1);

    // clang-format off
    const std::vector<std::pair<Bounds, Bounds>> expected {
        { initial.brand,              { 20, 32, 58, 28 } },    { initial.title,             { 88, 20, 220, 52 } },
        { initial.subtitle,           { 308, 28, 270, 36 } },  { initial.status,            { 578, 20, 522, 52 } },
        { initial.boxes[EditorLayout::style].caption,      { 36, 103, 218, 15 } },  { initial.boxes[EditorLayout::style].control,     { 36, 118, 218, 28 } },
        { initial.boxes[EditorLayout::kit].control,        { 36, 163, 218, 25 } },  { initial.boxes[EditorLayout::playback].control,  { 36, 206, 218, 26 } },
        { initial.boxes[EditorLayout::length].control,     { 36, 249, 218, 25 } },  { initial.boxes[EditorLayout::structure].control, { 36, 291, 218, 25 } },
        { initial.boxes[EditorLayout::duration].control,   { 36, 333, 218, 25 } },  { initial.generateButton,    { 36, 361, 106, 31 } },
        { initial.buildSongButton,    { 147, 361, 107, 31 } }, { initial.previewButton,     { 36, 396, 218, 30 } },
        { initial.macros[0].caption,  { 296, 99, 99, 24 } },   { initial.macros[0].control, { 298, 123, 95, 318 } },
        { initial.macros[7].caption,  { 989, 99, 101, 24 } },  { initial.macros[7].control, { 991, 123, 97, 318 } },
        { initial.lanes[1].caption,   { 148, 465, 128, 26 } }, { initial.lanes[1].control,  { 151, 491, 122, 26 } },
        { initial.mutateButton,       { 544, 465, 105, 52 } }, { initial.newFillButton,     { 657, 465, 105, 52 } },
        { initial.sections[0],        { 23, 527, 129, 31 } },  { initial.sections[7],       { 968, 527, 129, 31 } },
        { initial.saveButton,         { 20, 780, 170, 40 } },  { initial.patternDragButton, { 198, 780, 180, 40 } },
        { initial.songDragButton,     { 386, 780, 190, 40 } }, { initial.grid,              { 20, 568, 1080, 202 } },
        { smallest.macros[0].caption, { 296, 99, 71, 24 } },   { smallest.macros[7].caption, { 793, 99, 77, 24 } },
        { smallest.sections[7],       { 772, 527, 105, 31 } }, { smallest.grid,             { 20, 568, 860, 82 } },
        { largest.sections[5],        { 1238, 527, 239, 31 } }, { largest.grid,             { 20, 568, 1460, 412 } },
        { one.sections[0],            { 23, 527, 1074, 31 } }
    };
    // clang-format on

    for (std::size_t i = 0; i < expected.size(); ++i)
        EXPECT_EQ (expected[i].first, expected[i].second) << i << ": " << expected[i].first.toString();

    const EditorLayout tiny (10, 10, 8); // nothing turns negative
    EXPECT_TRUE (tiny.grid.getWidth() >= 0 && tiny.grid.getHeight() >= 0 && tiny.macros[7].control.getWidth() >= 0);
}

TEST (Editor, PutsItsChildrenThere)
{
    EditorWindow window;
    EXPECT_EQ (window.editor->getBounds(), Bounds (0, 0, 1120, 840));

    for (const auto& [width, height] : { std::pair { 900, 720 }, { 1120, 840 }, { 1500, 1050 } })
    {
        window.editor->setSize (width, height);
        const EditorLayout layout (width, height, 8);
        EXPECT_EQ (window.find ("Style").getBounds(), layout.boxes[EditorLayout::style].control);
        EXPECT_EQ (window.find ("velocity").getBounds(), layout.macros[7].control);
        EXPECT_EQ (window.find ("Percussion probability").getBounds(), layout.lanes[3].control);
        EXPECT_EQ (window.find ("Section OUTRO").getBounds(), layout.sections[7]);
        EXPECT_EQ (window.find ("Drag full song MIDI").getBounds(), layout.songDragButton);
        EXPECT_EQ (window.find ("Pattern").getBounds(), layout.grid);
    }

    window.editor->setBoundsConstrained ({ 0, 0, 3000, 3000 });
    EXPECT_EQ (window.editor->getBounds(), Bounds (0, 0, 1500, 1050));
    window.editor->setBoundsConstrained ({ 0, 0, 300, 300 });
    EXPECT_EQ (window.editor->getBounds(), Bounds (0, 0, 900, 720));
    window.editor->setSize (1500, 1050);

    // Fewer sections share the row; the buttons that are left over are hidden and stay where they are.
    const auto before = window.find ("Section OUTRO").getBounds();
    set (window.processor, parameterID::songStructure, 3.0f);
    runFor (200);
    EXPECT_EQ (window.find ("Section MAIN B").getBounds(), EditorLayout (1500, 1050, 4).sections[2]);
    EXPECT_TRUE (window.find ("Section MAIN B").isVisible());

    int hidden = 0;
    for (auto* child : window.editor->getChildren())
        hidden += ! child->isVisible() && child->getBounds() == before ? 1 : 0;
    EXPECT_EQ (hidden, 1);
}

TEST (Editor, DrawsWhatItShows)
{
    EditorWindow window;
    DrumPattern pattern;
    pattern.bars = 1;
    pattern.name = "";
    pattern.hits = { { .start = 2.0, .note = 36, .velocity = 127, .lane = DrumLane::kick },
                     { .start = 1.0, .velocity = 90, .lane = static_cast<DrumLane> (9) } };
    window.processor.setMaterial (pattern, {});
    runFor (200);
    const auto image = window.editor->createComponentSnapshot (window.editor->getLocalBounds());

    const EditorLayout layout (1120, 840, 1);
    const auto at = [&] (int x, int y) { return image.getPixelAt (x, y); };
    EXPECT_EQ (at (5, 835), palette::backgroundColour);
    EXPECT_EQ (at (500, 72), palette::outlineColour);
    EXPECT_EQ (at (30, 440), palette::panelColour);
    EXPECT_EQ (at (layout.generateButton.getX() + 8, layout.generateButton.getY() + 4), palette::generateButtonColour);
    EXPECT_EQ (at (layout.saveButton.getX() + 8, layout.saveButton.getY() + 4), palette::faceColour);

    // The hit on beat 2 lies in the middle of the kick's row: 76 + 994 / 2, 43 + 151 / 8.
    EXPECT_EQ (at (layout.grid.getX() + 76 + 497, layout.grid.getY() + 43 + 18), palette::accentColour);

    // The line of beat 1, a quarter of the way.
    EXPECT_EQ (at (layout.grid.getX() + 76 + 248, layout.grid.getY() + 43 + 18), palette::outlineColour.brighter (0.15f));

    // Every box and knob has its name above it. A song without sections: the first button alone, with its old text.
    std::set<juce::String> texts;
    for (auto* child : window.editor->getChildren())
        if (const auto* label = dynamic_cast<juce::Label*> (child))
            texts.insert (label->getText());

    EXPECT_TRUE (texts.contains ("90 BPM  |  MIDI OUT CH 10  |  C4-G4 TRIGGER SECTIONS"));
    for (auto* child : window.editor->getChildren())
    {
        const auto* slider = dynamic_cast<juce::Slider*> (child);
        const bool isNamed = dynamic_cast<juce::ComboBox*> (child) != nullptr || (slider != nullptr && slider->isRotary());
        EXPECT_TRUE (! isNamed || texts.contains (child->getTitle().toUpperCase())) << child->getTitle();
    }

    EXPECT_EQ (window.find<juce::TextButton> ("Section INTRO").getButtonText(), "INTRO");
    EXPECT_EQ (window.find ("Pattern").getDescription(), "CURRENT PATTERN, 1 bars  /  2 notes");
}

//==============================================================================
TEST (Editor, ChoicesBuildSongsAndOpeningChangesNothing)
{
    EditorWindow window;
    auto& processor = window.processor;
    processor.selectSection (4);
    window.editor.reset();
    const auto pattern = processor.getPattern();
    const auto changes = processor.getChangeCounter();

    window.editor = std::make_unique<PulsewrightAudioProcessorEditor> (processor);
    runFor (350);
    EXPECT_EQ (processor.getChangeCounter(), changes);
    EXPECT_EQ (processor.getPattern(), pattern);

    // The host's automation chooses too; these build nothing.
    set (processor, parameterID::songStructure, 2.0f);
    runFor (50);
    EXPECT_EQ (processor.getSong().sections.size(), 6u);
    for (const auto* id : { parameterID::playMode, parameterID::patternLength, parameterID::soundKit, "kick_probability" })
        set (processor, id, id == std::string_view ("kick_probability") ? 0.5f : 1.0f);
    runFor (350);
    EXPECT_EQ (processor.getSeedCounter(), 2u);
    EXPECT_EQ (processor.getChangeCounter(), changes + 1);
}

TEST (Editor, KnobsRegenerateOnceTheyRest)
{
    EditorWindow window;
    auto& density      = window.find<PercentSlider> ("density");
    const auto changes = window.processor.getChangeCounter();

    for (int i = 0; i < 10; ++i)
    {
        density.setValue (0.1 + 0.05 * i, juce::sendNotificationSync);
        runFor (30);
    }
    EXPECT_EQ (window.processor.getChangeCounter(), changes);
    runFor (300);
    EXPECT_EQ (window.processor.getChangeCounter(), changes + 1);

    // Nobody has prepared the processor, as without a sound device.
    auto& preview = window.find<juce::TextButton> ("Preview");
    preview.onClick();
    EXPECT_TRUE (preview.getTooltip().endsWith ("no sound device: nothing plays")) << preview.getTooltip();
    preview.onClick();
    EXPECT_FALSE (preview.getTooltip().contains ("sound device"));

    // A mutation moves the knobs, and so it gives way to the refresh.
    window.find<juce::Button> ("Mutate").onClick();
    EXPECT_EQ (window.processor.getPattern().name, "Boom Bap Verse Mutated");
    runFor (300);
    EXPECT_EQ (window.processor.getPattern().name, "Boom Bap Verse");
}

TEST (Editor, ARestoreBuildsNoSong)
{
    PulsewrightAudioProcessor source;
    for (int i = 0; i < 14; ++i)
        source.getParameters()[i]->setValueNotifyingHost (0.7f);
    source.setLaneLocked (1, true);
    source.buildSong();
    source.buildSong();
    const auto state = saved (source);
    PulsewrightAudioProcessor expected;
    restore (expected, state);

    for (const bool fromAnotherThread : { false, true })
    {
        EditorWindow window;
        runFor (200);

        if (fromAnotherThread)
            std::thread ([&] { restore (window.processor, state); }).join();
        else
            restore (window.processor, state);

        runFor (500);
        const auto changes = window.processor.getChangeCounter();
        EXPECT_EQ (window.processor.getSeedCounter(), 3u) << fromAnotherThread;
        EXPECT_EQ (window.processor.getPattern(), expected.getPattern());
        EXPECT_EQ (window.processor.getSong(), expected.getSong());

        // What it shows has followed, and a choice builds a song again.
        EXPECT_TRUE (window.find<juce::ToggleButton> ("lock snare").getToggleState());
        EXPECT_NEAR (window.find<PercentSlider> ("swing").getValue(), 0.7, 1e-6);
        window.find<juce::ComboBox> ("Style").setSelectedItemIndex (0, juce::sendNotificationSync);
        window.find<PercentSlider> ("swing").setValue (0.2, juce::sendNotificationSync);
        EXPECT_EQ (window.processor.getSeedCounter(), 4u);
        runFor (300);
        EXPECT_EQ (window.processor.getChangeCounter(), changes + 2);

        // So is automation that follows at once.
        restore (window.processor, state);
        set (window.processor, "density", 0.9f);
        runFor (500);
        PulsewrightAudioProcessor automated;
        restore (automated, state);
        set (automated, "density", 0.9f);
        automated.regeneratePattern();
        EXPECT_EQ (window.processor.getSong(), automated.getSong());
    }
}

TEST (Editor, TheDurationBoxShowsTheLengthAndKeepsItsChoice)
{
    EditorWindow window;
    auto& box = window.find<juce::ComboBox> ("Song duration");
    EXPECT_EQ (box.getText(), "GENRE AVG  3:30  /  80 BARS");
    EXPECT_EQ (box.getSelectedId(), 1);

    set (window.processor, parameterID::genre, 2.0f);
    runFor (200);
    EXPECT_EQ (box.getText(), "GENRE AVG  4:30  /  84 BARS");
    EXPECT_EQ (box.getSelectedId(), 1);

    box.setSelectedItemIndex (3, juce::sendNotificationSync);
    EXPECT_EQ (box.getText(), "3:00");
    EXPECT_EQ (box.getItemText (0), "GENRE AVG  3:00  /  56 BARS") << "the chosen length, not the average";
}

//==============================================================================
TEST (Editor, EveryControlCanBeReachedAndHasAName)
{
    EditorWindow window;
    std::set<juce::String> titles;

    for (auto* child : window.editor->getChildren())
        if (child->getWantsKeyboardFocus())
        {
            EXPECT_TRUE (child->isAccessible() && child->getTitle().isNotEmpty() && titles.insert (child->getTitle()).second) << child->getName();
            EXPECT_TRUE (dynamic_cast<juce::SettableTooltipClient*> (child)->getTooltip().isNotEmpty()) << child->getTitle();
            EXPECT_FALSE (child->getMouseClickGrabsKeyboardFocus()) << child->getTitle();
        }

    EXPECT_EQ (titles.size(), 6u + 6u + 2u + 8u + 4u + 4u + 8u);

    // A knob's number hides a part of it, a bar's all of it.
    for (const auto* title : { "density", "Kick probability" })
    {
        auto& slider = window.find<PercentSlider> (title);
        EXPECT_EQ (dynamic_cast<juce::Label&> (*slider.getChildComponent (0)).getTooltip(), slider.getTooltip()) << title;
    }
}

} // namespace pulsewright
