// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// The plug-in's window.

#pragma once

#include "EditorLayout.h"
#include "HostKeyboard.h"
#include "MidiDragButton.h"
#include "PatternGrid.h"
#include "PercentSlider.h"
#include "SaveDialog.h"
#include "Theme.h"

#include "processor/PulsewrightAudioProcessor.h"

namespace pulsewright
{

/** Shows what the processor has and asks it for more. It holds no music: it polls the processor's
    change counter and copies what it draws. Thread: message.
*/
class PulsewrightAudioProcessorEditor final : public juce::AudioProcessorEditor,
                                              private juce::FocusChangeListener,
                                              private juce::KeyListener,
                                              private juce::Timer
{
public:
    using Theme       = pulsewright::Theme;
    using PatternGrid = pulsewright::PatternGrid;

    explicit PulsewrightAudioProcessorEditor (PulsewrightAudioProcessor& owner);
    ~PulsewrightAudioProcessorEditor() override;

    void resized() override;
    void paint (juce::Graphics& g) override;
    void paintOverChildren (juce::Graphics& g) override;
    void parentHierarchyChanged() override;
    bool keyPressed (const juce::KeyPress& key) override;
    void mouseDown (const juce::MouseEvent& event) override;

    /** Asks where to save the song or the current pattern, and saves it. */
    void exportMidi (bool isSong);

    /** Writes the file for a drag. @returns no file when it could not be written; the status says why */
    juce::File createDragMidiFile (bool isSong);

private:
    using ComboAttachment  = juce::AudioProcessorValueTreeState::ComboBoxAttachment;
    using SliderAttachment = juce::AudioProcessorValueTreeState::SliderAttachment;

    // Construction.
    void addLabel (juce::Label& label,
                   const juce::String& text,
                   float height,
                   int style,
                   juce::Colour colour,
                   juce::Justification justification = juce::Justification::centredLeft);
    void addLabels();
    void addBoxes();
    void addButtons();
    void addMacros();
    void addLanes();
    void addSections();
    void arrangeFocus();
    void addControl (juce::Component& control, const juce::String& title, const char* boundParameter = nullptr);

    // What controls do.
    void formChosen();
    void buildChosenSong();
    void macroChanged();
    bool isEchoOfRestore() const noexcept;
    void togglePreview();
    void reportDrag (juce::Button& button, const juce::File& file, bool isStarted);
    void report (juce::Button& button, const juce::String& shown, const juce::String& lasting);
    void writeExport (const juce::File& file, bool isSong);

    // Where the keyboard is.
    void globalFocusChanged (juce::Component* focused) override;
    bool keyPressed (const juce::KeyPress& key, juce::Component*) override { return keyPressed (key); } // in the window around the editor
    void navigateByKeyboard (bool byKeyboard);
    bool isKeyboardWanted() const;
    void leaveKeyboard();

    // What the timer keeps current.
    void timerCallback() override;
    void refreshSongView();
    void refreshDurationLabel();
    void refreshBuildSongText();
    void refreshStatus();

    PulsewrightAudioProcessor& processor;
    Theme theme;

    juce::Label brandLabel, titleLabel, subtitleLabel, statusLabel;
    juce::Label styleCaption, playbackCaption, lengthCaption, durationCaption, structureCaption, kitCaption;
    juce::ComboBox genreBox, playModeBox, patternLengthBox, songDurationBox, songStructureBox, soundKitBox;
    juce::TextButton generateButton, buildSongButton, mutateButton, newFillButton, previewButton, saveButton;
    MidiDragButton patternDragButton, songDragButton;
    std::array<PercentSlider, EditorLayout::numMacros> macroSliders;
    std::array<juce::Label, EditorLayout::numMacros> macroLabels;
    std::array<juce::ToggleButton, EditorLayout::numLanes> lockButtons;
    std::array<PercentSlider, EditorLayout::numLanes> probabilitySliders;
    std::array<juce::TextButton, EditorLayout::numSections> sectionButtons;
    PatternGrid patternGrid;

    // Declared after what they bind, so that they go first.
    std::array<std::unique_ptr<ComboAttachment>, EditorLayout::numBoxes> comboAttachments;
    std::array<std::unique_ptr<SliderAttachment>, EditorLayout::numMacros> sliderAttachments;
    std::array<std::unique_ptr<SliderAttachment>, EditorLayout::numLanes> probabilityAttachments;

    juce::TooltipWindow tooltips { this };
    SaveDialog saveDialog;

    std::uint32_t lastSeenVersion = 0; // of the processor's change counter
    double lastSliderChangeMs     = 0.0;
    bool regeneratePending        = false;
    int visibleSectionCount       = static_cast<int> (EditorLayout::numSections);

    // Restores as of the last tick and the one before: what moves the knobs in between is their echo.
    std::uint32_t restoresAtLastTick = 0, restoresSettled = 0;

    PulsewrightAudioProcessor::SongForm formSeen; // that a song was built for last, or that the window opened on

    std::vector<juce::Component*> focusOrder;
    SafePointer<juce::Component> listenedWindow;
    HostKeyboard hostKeyboard { *this, [this] { return isKeyboardWanted(); } };
    bool isNavigatedByKeyboard = false;
    juce::Rectangle<int> focusOutline; // empty where none is drawn

    JUCE_DECLARE_NON_COPYABLE_WITH_LEAK_DETECTOR (PulsewrightAudioProcessorEditor)
};

} // namespace pulsewright
