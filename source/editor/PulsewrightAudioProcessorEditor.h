// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// The plug-in's window.

#pragma once

#include "EditorLayout.h"
#include "FileDialog.h"
#include "HostKeyboard.h"
#include "MidiDragButton.h"
#include "PatternGrid.h"
#include "PercentSlider.h"
#include "TakeMenu.h"
#include "Theme.h"
#include "X11Messages.h"

#include "processor/PulsewrightAudioProcessor.h"

#include <variant>

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

    /** What leaves the window as a file. */
    enum class Export
    {
        pattern,
        song
    };

    /** Asks where to save it, and saves it. */
    void exportMidi (Export what);

    /** Writes the file for a drag. @returns no file when it could not be written; the status says why */
    juce::File createDragMidiFile (Export what);

private:
    using ComboAttachment  = juce::AudioProcessorValueTreeState::ComboBoxAttachment;
    using SliderAttachment = juce::AudioProcessorValueTreeState::SliderAttachment;

    // Rows of the window. The attachments are declared last, so that they go first.

    struct ChoiceRow
    {
        juce::Label caption;
        juce::ComboBox box;
        std::unique_ptr<ComboAttachment> attachment;
    };

    struct Knob
    {
        juce::Label caption;
        PercentSlider slider;
        std::unique_ptr<SliderAttachment> attachment;
    };

    struct LaneStrip
    {
        juce::ToggleButton lock;
        PercentSlider probability;
        std::unique_ptr<SliderAttachment> attachment;
    };

    // Construction.
    void addLabel (juce::Label& label,
                   const juce::String& text,
                   float height,
                   int style,
                   juce::Colour colour,
                   juce::Justification justification = juce::Justification::centredLeft);
    void addLabels();
    void addControls();
    void addChoices();
    void addKnobs();
    void addLanes();
    void addSections();
    void addButton (juce::TextButton& button, const char* text, const char* title, const char* help, std::function<void()> action);
    void addControl (juce::Component& control, const juce::String& title, const char* boundParameter = nullptr);

    // What controls do.
    void formChosen();
    void buildChosenSong();
    void macroChanged();
    bool isEchoOfRestore() const noexcept;
    void togglePreview();
    void reportDrag (juce::Button& button, const juce::File& file, bool isStarted);
    void report (juce::Button& button, const juce::String& shown, const juce::String& lasting);
    void writeExport (const juce::File& file, Export what);
    std::variant<DrumPattern, SongArrangement> musicOf (Export what) const;
    Export selectedExport() const;

    // Where the keyboard is.
    void globalFocusChanged (juce::Component* focused) override;
    bool keyPressed (const juce::KeyPress& key, juce::Component*) override { return keyPressed (key); } // in the window around the editor
    void navigateByKeyboard (bool byKeyboard);
    bool isKeyboardWanted() const;
    void leaveKeyboard();
    void returnToTypedNumber();

    // What the timer keeps current.
    void timerCallback() override;
    void refreshSongView();
    void refreshDurationLabel();
    void refreshBuildSongText();
    void refreshStatus();

    PulsewrightAudioProcessor& processor;
    Theme theme;

    juce::Label brandLabel, titleLabel, subtitleLabel, statusLabel;
    std::array<ChoiceRow, EditorLayout::numBoxes> choices;
    juce::TextButton generateButton, buildSongButton, mutateButton, newFillButton, previewButton, saveButton;
    MidiDragButton patternDragButton, songDragButton;
    std::array<Knob, EditorLayout::numMacros> knobs;
    std::array<LaneStrip, EditorLayout::numLanes> lanes;
    std::array<juce::TextButton, EditorLayout::numSections> sectionButtons;
    PatternGrid patternGrid;

    juce::TooltipWindow tooltips { this };
    FileDialog saveDialog;
    TakeMenu takeMenu { processor, *this };

    std::uint32_t lastSeenVersion = 0; // of the processor's change counter
    double lastSliderChangeMs     = 0.0;
    bool regeneratePending        = false;
    int visibleSectionCount       = static_cast<int> (EditorLayout::numSections);

    // Restores as of the last tick and the one before: what moves the knobs in between is their echo.
    std::uint32_t restoresAtLastTick = 0, restoresSettled = 0;

    Session::SongForm formSeen; // that a song was built for last, or that the window opened on

    std::vector<juce::Component*> focusOrder; // in which the controls were added
    SafePointer<juce::Component> listenedWindow;
    HostKeyboard hostKeyboard { *this, [this] { return isKeyboardWanted(); } };
    bool isNavigatedByKeyboard = false;
    juce::Rectangle<int> focusOutline; // empty where none is drawn

    JUCE_DECLARE_NON_COPYABLE_WITH_LEAK_DETECTOR (PulsewrightAudioProcessorEditor)
};

} // namespace pulsewright
