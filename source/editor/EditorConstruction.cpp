// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// What the window is made of: its controls, their texts, and what each is bound to.

#include "AsciiCase.h"
#include "Palette.h"
#include "PulsewrightAudioProcessorEditor.h"

namespace pulsewright
{

namespace
{
    constexpr int timerIntervalMs = 83;

    constexpr const char* buildHelp  = "Builds a new song of the chosen form, as long as the tempo at the top right makes it. Before the host has "
                                       "played once, and when a project is opened, that is the style's tempo";
    constexpr const char* tempoHelp  = "The tempo that songs are measured with: the host's once it has played, the style's before";
    constexpr const char* mutateHelp = "Varies the settings and the pattern. The knobs that it moves then make the last take again, in all lanes";
    constexpr const char* lockHelp   = "MUTATE varies the other lanes only, until the knobs that it has moved make the last take again";

    struct MacroInfo
    {
        const char* caption;
        const char* parameter;
        double doubleClickValue;
        const char* help;
    };

    // clang-format off
    constexpr std::array<MacroInfo, EditorLayout::numMacros> macros
    {{
        { "DENSITY",     parameterID::density,      0.48, "How many optional hits are played" },
        { "ENERGY",      parameterID::energy,       0.25, "Loudness, and the length of fills" },
        { "SYNCOPATION", parameterID::syncopation,  0.25, "Weight of off-beat kicks and percussion" },
        { "SWING",       parameterID::swing,        0.25, "Delay of odd sixteenths" },
        { "VARIATION",   parameterID::variation,    0.25, "Ghost notes, rolls and change from bar to bar" },
        { "EXPERIMENT",  parameterID::experimental, 0.25, "Wandering toms, from 32 on" },
        { "TIMING",      parameterID::timing,       0.25, "Humanised timing" },
        { "VELOCITY",    parameterID::velocity,     0.25, "Humanised velocity" }
    }};

    struct LaneInfo
    {
        const char* lock;
        const char* title;
        const char* parameter;
        juce::Colour colour;
    };

    const std::array<LaneInfo, EditorLayout::numLanes> lanes
    {{
        { "LOCK KICK",  "Kick probability",       parameterID::kickProbability,       palette::accentColour },
        { "LOCK SNARE", "Snare probability",      parameterID::snareProbability,      palette::accentColour },
        { "LOCK HATS",  "Hats probability",       parameterID::hatsProbability,       palette::secondaryAccentColour },
        { "LOCK PERC",  "Percussion probability", parameterID::percussionProbability, palette::secondaryAccentColour }
    }};

    // Shown until the first refresh, and on where a song has no sections at all.
    constexpr std::array<const char*, EditorLayout::numSections> sectionTexts
    {
        "INTRO", "VERSE A", "PRE", "CHORUS", "VERSE B", "BREAK", "CHORUS +", "OUTRO"
    };
    // clang-format on

    // The layout knows nothing of the music, and yet has a place for each.
    static_assert (EditorLayout::numMacros == numMacros && EditorLayout::numLanes == laneCount
                   && EditorLayout::numSections == PlaybackSnapshot::numSectionSlots);
} // namespace

PulsewrightAudioProcessorEditor::PulsewrightAudioProcessorEditor (PulsewrightAudioProcessor& owner)
    : AudioProcessorEditor (owner),
      processor (owner),
      patternDragButton ("DRAG PATTERN MIDI", [this] { return createDragMidiFile (false); }),
      songDragButton ("DRAG FULL SONG MIDI", [this] { return createDragMidiFile (true); })
{
    setLookAndFeel (&theme);
    setOpaque (true);
    setTitle ("Pulsewright");
    setFocusContainerType (FocusContainerType::keyboardFocusContainer);

    // A click into a window hands the keyboard to somebody in it: to the editor, which leaves it to the host.
    setWantsKeyboardFocus (true);

    formSeen           = processor.getChosenForm();
    restoresAtLastTick = restoresSettled = processor.getRestoreCount();

    addLabels();
    addBoxes();
    addButtons();
    addMacros();
    addLanes();
    addSections();
    arrangeFocus();
    tooltips.setOpaque (false);      // its corners are round
    addAndMakeVisible (patternGrid); // last, above the others

    setResizable (true, true);
    setResizeLimits (EditorLayout::minWidth, EditorLayout::minHeight, EditorLayout::maxWidth, EditorLayout::maxHeight);
    setSize (EditorLayout::initialWidth, EditorLayout::initialHeight);

    refreshSongView();
    startTimer (timerIntervalMs);
    juce::Desktop::getInstance().addFocusChangeListener (this);
}

PulsewrightAudioProcessorEditor::~PulsewrightAudioProcessorEditor()
{
    stopTimer();
    juce::Desktop::getInstance().removeFocusChangeListener (this);

    if (listenedWindow != nullptr)
        listenedWindow->removeKeyListener (this);

    setLookAndFeel (nullptr);
}

//==============================================================================
void PulsewrightAudioProcessorEditor::addLabel (
    juce::Label& label, const juce::String& text, float height, int style, juce::Colour colour, juce::Justification justification)
{
    label.setText (text, juce::dontSendNotification);
    label.setFont (juce::FontOptions (height, style));
    label.setColour (juce::Label::textColourId, colour);
    label.setJustificationType (justification);
    label.setInterceptsMouseClicks (false, false);
    addAndMakeVisible (label);
}

void PulsewrightAudioProcessorEditor::addLabels()
{
    constexpr auto bold = juce::Font::bold;

    addLabel (brandLabel, "TOLM", 12.0f, bold, palette::backgroundColour, juce::Justification::centred);
    brandLabel.setColour (juce::Label::backgroundColourId, palette::accentColour);
    brandLabel.setColour (juce::Label::outlineColourId, palette::accentColour.brighter (0.25f));

    addLabel (titleLabel, "PULSEWRIGHT", 27.0f, bold, palette::textColour);
    addLabel (subtitleLabel, "GENRE-AWARE DRUM SONG GENERATOR", 11.0f, bold, palette::accentColour);
    addLabel (statusLabel, {}, 11.0f, juce::Font::plain, palette::mutedTextColour, juce::Justification::centredRight);

    // Labels take no clicks, and without them no tooltip.
    statusLabel.setInterceptsMouseClicks (true, false);
    statusLabel.addMouseListener (this, false);
    statusLabel.setMouseClickGrabsKeyboardFocus (false);
    statusLabel.setTooltip (tempoHelp);

    const auto caption = [this] (juce::Label& label, const char* text) { addLabel (label, text, 10.0f, bold, palette::mutedTextColour); };
    caption (styleCaption, "STYLE");
    caption (playbackCaption, "HOST PLAYBACK");
    caption (lengthCaption, "PATTERN LENGTH");
    caption (durationCaption, "SONG DURATION");
    caption (structureCaption, "SONG STRUCTURE");
    caption (kitCaption, "AUDITION SOUND");
}

void PulsewrightAudioProcessorEditor::addControl (juce::Component& control, const juce::String& title, const char* boundParameter)
{
    control.setTitle (title);
    control.setMouseClickGrabsKeyboardFocus (false); // a click leaves the keyboard to the host

    control.addMouseListener (this, true); // for the focus outline and the host's menu

    if (boundParameter != nullptr)
        control.getProperties().set ("parameter", boundParameter);

    addAndMakeVisible (control);
}

void PulsewrightAudioProcessorEditor::addBoxes()
{
    const auto genreNames = processor.parameters.getParameter (parameterID::genre)->getAllValueStrings();
    std::size_t index     = 0;

    const auto add = [&] (juce::ComboBox& box, const char* parameter, const char* title, const juce::StringArray& items, const char* help)
    {
        box.addItemList (items, 1);
        box.setTooltip (help);
        addControl (box, title, parameter);
        comboAttachments[index++] = std::make_unique<ComboAttachment> (processor.parameters, parameter, box);
    };

    // clang-format off
    add (genreBox,         parameterID::genre,         "Style",           genreNames, "The genre's recipe; builds a song");
    add (playModeBox,      parameterID::playMode,      "Host playback",   { "PATTERN LOOP", "FULL SONG" }, "What plays in time with the host, and what is saved");
    add (patternLengthBox, parameterID::patternLength, "Pattern length",  { "1 BAR", "2 BARS", "3 BARS", "4 BARS", "5 BARS", "7 BARS", "8 BARS" }, "Length of the next groove or fill");
    add (songDurationBox,  parameterID::songDuration,  "Song duration",   { "GENRE AVERAGE", "2:00", "2:30", "3:00", "3:30", "4:00", "5:00" }, "Length of the song; builds it");
    add (songStructureBox, parameterID::songStructure, "Song structure",  { "CLASSIC", "VERSE / CHORUS", "CLUB", "MINIMAL" }, "Form of the song; builds it");
    add (soundKitBox,      parameterID::soundKit,      "Audition sound",  { "STUDIO KIT", "808 KIT", "DUSTY KIT", "ELECTRONIC KIT", "MIDI ONLY" }, "The built-in kit, or none");
    // clang-format on

    // After the attachments, which call these when they are made.
    for (auto* box : { &genreBox, &songDurationBox, &songStructureBox })
        box->onChange = [this] { formChosen(); };
}

void PulsewrightAudioProcessorEditor::addButtons()
{
    const auto add = [this] (juce::TextButton& button, const char* text, const char* title, const char* help, std::function<void()> action)
    {
        button.setButtonText (text);
        button.setTooltip (help);
        button.onClick = std::move (action);
        addControl (button, title);
    };

    // clang-format off
    add (generateButton,  "GENERATE GROOVE",       "Generate groove",     "",                                          [this] { processor.generatePattern (SectionType::verse); });
    add (buildSongButton, "BUILD SONG",            "Build song",          buildHelp,                                      [this] { processor.buildSong(); });
    add (mutateButton,    "MUTATE",                "Mutate",              mutateHelp,                                   [this] { processor.mutatePattern(); });
    add (newFillButton,   "NEW FILL",              "New fill",            "Generates a fill of the chosen length",     [this] { processor.generatePattern (SectionType::fill); });
    add (previewButton,   "PLAY PREVIEW",          "Preview",             "Plays without the host",                    [this] { togglePreview(); });
    add (saveButton,      "SAVE SELECTED MIDI...", "Save selected MIDI",  "Saves what HOST PLAYBACK selects",          [this] { exportMidi (playModeBox.getSelectedItemIndex() == 1); });
    // clang-format on

    generateButton.setColour (juce::TextButton::buttonColourId, palette::generateButtonColour);
    buildSongButton.setColour (juce::TextButton::buttonColourId, palette::buildSongButtonColour);

    addControl (patternDragButton, "Drag pattern MIDI");
    addControl (songDragButton, "Drag full song MIDI");

    for (auto* button : { &patternDragButton, &songDragButton })
        button->onDrag = [this, button] (const juce::File& file, bool isStarted) { reportDrag (*button, file, isStarted); };
}

void PulsewrightAudioProcessorEditor::addMacros()
{
    for (std::size_t i = 0; i < macros.size(); ++i)
    {
        const auto& info = macros[i];
        auto& slider     = macroSliders[i];

        addControl (slider, lowerCased (info.caption), info.parameter);
        slider.setTooltip (info.help); // before the text box, which copies it when it is made
        slider.setSliderStyle (juce::Slider::RotaryVerticalDrag);
        slider.setTextBoxStyle (juce::Slider::TextBoxBelow, false, slider.getTextBoxWidth(), slider.getTextBoxHeight());
        addLabel (macroLabels[i], info.caption, 10.0f, juce::Font::bold, palette::mutedTextColour, juce::Justification::centred);

        // The attachment brings texts and a double-click value of its own, and reports its first value.
        sliderAttachments[i] = std::make_unique<SliderAttachment> (processor.parameters, info.parameter, slider);
        slider.setDoubleClickReturnValue (true, info.doubleClickValue, juce::ModifierKeys::altModifier);
        slider.showPercentages();
        slider.onValueChange = [this] { macroChanged(); };
    }
}

void PulsewrightAudioProcessorEditor::addLanes()
{
    for (std::size_t i = 0; i < lanes.size(); ++i)
    {
        const auto& info = lanes[i];
        auto& lock       = lockButtons[i];
        auto& slider     = probabilitySliders[i];
        const auto lane  = static_cast<int> (i);

        lock.setButtonText (info.lock);
        lock.setTooltip (lockHelp);
        lock.setClickingTogglesState (true);
        lock.setToggleState (processor.isLaneLocked (lane), juce::dontSendNotification);
        lock.onClick = [this, lane, &lock] { processor.setLaneLocked (lane, lock.getToggleState()); };
        addControl (lock, lowerCased (info.lock));

        addControl (slider, info.title, info.parameter);
        slider.setTooltip ("Per-instrument generation probability"); // before the text box
        slider.setSliderStyle (juce::Slider::LinearBar);
        slider.setTextBoxStyle (juce::Slider::TextBoxRight, false, slider.getTextBoxWidth(), slider.getTextBoxHeight());
        slider.setColour (juce::Slider::trackColourId, info.colour);
        probabilityAttachments[i] = std::make_unique<SliderAttachment> (processor.parameters, info.parameter, slider);
        slider.showPercentages();
    }
}

void PulsewrightAudioProcessorEditor::addSections()
{
    for (std::size_t i = 0; i < sectionButtons.size(); ++i)
    {
        auto& button = sectionButtons[i];
        button.setButtonText (sectionTexts[i]);
        button.setColour (juce::TextButton::buttonColourId, palette::faceColour);
        button.setColour (juce::TextButton::textColourOffId, palette::mutedTextColour);
        button.setTooltip ("Makes this section the current pattern");
        button.onClick = [this, i] { processor.selectSection (static_cast<int> (i)); };
        addControl (button, "Section " + juce::String (sectionTexts[i]));
    }
}

void PulsewrightAudioProcessorEditor::arrangeFocus()
{
    focusOrder = { &genreBox,        &soundKitBox,    &playModeBox,     &patternLengthBox, &songStructureBox,
                   &songDurationBox, &generateButton, &buildSongButton, &previewButton };

    for (auto& slider : macroSliders)
        focusOrder.push_back (&slider);

    for (std::size_t i = 0; i < lockButtons.size(); ++i)
        focusOrder.insert (focusOrder.end(), { &lockButtons[i], &probabilitySliders[i] });

    focusOrder.insert (focusOrder.end(), { &mutateButton, &newFillButton });

    for (auto& button : sectionButtons)
        focusOrder.push_back (&button);

    focusOrder.insert (focusOrder.end(), { &saveButton, &patternDragButton, &songDragButton });

    for (std::size_t i = 0; i < focusOrder.size(); ++i)
        focusOrder[i]->setExplicitFocusOrder (static_cast<int> (i) + 1);
}

} // namespace pulsewright
