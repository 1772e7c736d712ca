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

    //==============================================================================
    /** What a box shows of its parameter's choices. */
    using Texts = juce::StringArray (*) (const juce::StringArray& names);

    juce::StringArray asTheyAre (const juce::StringArray& names)
    {
        return names;
    }

    juce::StringArray inCapitals (const juce::StringArray& names)
    {
        juce::StringArray texts;
        for (const auto& name : names)
            texts.add (upperCased (name));
        return texts;
    }

    juce::StringArray asKits (const juce::StringArray& names)
    {
        auto texts = inCapitals (names);
        for (int kit = 0; kit < midiOnly; ++kit)
            texts.getReference (kit) += " KIT";
        return texts;
    }

    juce::StringArray asPlayback (const juce::StringArray&)
    {
        return { "PATTERN LOOP", "FULL SONG" };
    }

    struct ChoiceInfo
    {
        const char* caption;
        const char* parameter;
        const char* title;
        Texts texts;
        const char* help;
    };

    // clang-format off
    constexpr std::array<ChoiceInfo, EditorLayout::numBoxes> choiceRows // as EditorLayout::Box has them
    {{
        { "STYLE",          parameterID::genre,         "Style",          asTheyAre,  "The genre's recipe; builds a song" },
        { "AUDITION SOUND", parameterID::soundKit,      "Audition sound", asKits,     "The built-in kit, or none" },
        { "HOST PLAYBACK",  parameterID::playMode,      "Host playback",  asPlayback, "What plays in time with the host, and what is saved" },
        { "PATTERN LENGTH", parameterID::patternLength, "Pattern length", inCapitals, "Length of the next groove or fill" },
        { "SONG STRUCTURE", parameterID::songStructure, "Song structure", inCapitals, "Form of the song; builds it" },
        { "SONG DURATION",  parameterID::songDuration,  "Song duration",  inCapitals, "Length of the song; builds it" }
    }};

    struct KnobInfo
    {
        const char* caption;
        float GenerationSettings::* setting;
        double doubleClickValue;
    };

    constexpr std::array<KnobInfo, EditorLayout::numMacros> knobRows
    {{
        { "DENSITY",     &GenerationSettings::density,      0.48 },
        { "ENERGY",      &GenerationSettings::energy,       0.25 },
        { "SYNCOPATION", &GenerationSettings::syncopation,  0.25 },
        { "SWING",       &GenerationSettings::swing,        0.25 },
        { "VARIATION",   &GenerationSettings::variation,    0.25 },
        { "EXPERIMENT",  &GenerationSettings::experimental, 0.25 },
        { "TIMING",      &GenerationSettings::timing,       0.25 },
        { "VELOCITY",    &GenerationSettings::velocity,     0.25 }
    }};

    struct LaneInfo
    {
        const char* lock;
        const char* title;
        float GenerationSettings::* setting;
        juce::Colour colour;
    };

    const std::array<LaneInfo, EditorLayout::numLanes> laneRows
    {{
        { "LOCK KICK",  "Kick probability",       &GenerationSettings::kickProbability,  palette::accentColour },
        { "LOCK SNARE", "Snare probability",      &GenerationSettings::snareProbability, palette::accentColour },
        { "LOCK HATS",  "Hats probability",       &GenerationSettings::hatsProbability,  palette::secondaryAccentColour },
        { "LOCK PERC",  "Percussion probability", &GenerationSettings::percProbability,  palette::secondaryAccentColour }
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
      patternDragButton ("DRAG PATTERN MIDI", [this] { return createDragMidiFile (Export::pattern); }),
      songDragButton ("DRAG FULL SONG MIDI", [this] { return createDragMidiFile (Export::song); })
{
    setLookAndFeel (&theme);
    setOpaque (true);
    setTitle ("Pulsewright");
    setFocusContainerType (FocusContainerType::keyboardFocusContainer);

    // A click into a window gives the keyboard to one of its components: to the editor, which leaves it to the host.
    setWantsKeyboardFocus (true);

    formSeen           = processor.getChosenForm();
    restoresAtLastTick = restoresSettled = processor.getRestoreCount();

    addLabels();
    addControls();
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
}

/** In the order in which tab walks through them. */
void PulsewrightAudioProcessorEditor::addControls()
{
    // clang-format off
    addChoices();
    addButton (generateButton,  "GENERATE GROOVE",       "Generate groove",    "",                                      [this] { processor.generatePattern (SectionType::verse); });
    addButton (buildSongButton, "BUILD SONG",            "Build song",         buildHelp,                               [this] { processor.buildSong(); });
    addButton (previewButton,   "PLAY PREVIEW",          "Preview",            "Plays without the host",                [this] { togglePreview(); });
    addKnobs();
    addLanes();
    addButton (mutateButton,    "MUTATE",                "Mutate",             mutateHelp,                              [this] { processor.mutatePattern(); });
    addButton (newFillButton,   "NEW FILL",              "New fill",           "Generates a fill of the chosen length", [this] { processor.generatePattern (SectionType::fill); });
    addSections();
    addButton (saveButton,      "SAVE SELECTED MIDI...", "Save selected MIDI", "Saves what HOST PLAYBACK selects",      [this] { exportMidi (selectedExport()); });
    addControl (patternDragButton, "Drag pattern MIDI");
    addControl (songDragButton, "Drag full song MIDI");
    // clang-format on

    generateButton.setColour (juce::TextButton::buttonColourId, palette::generateButtonColour);
    buildSongButton.setColour (juce::TextButton::buttonColourId, palette::buildSongButtonColour);

    for (auto* button : { &patternDragButton, &songDragButton })
        button->onDrag = [this, button] (const juce::File& file, bool isStarted) { reportDrag (*button, file, isStarted); };
}

void PulsewrightAudioProcessorEditor::addControl (juce::Component& control, const juce::String& title, const char* boundParameter)
{
    control.setTitle (title);
    control.setMouseClickGrabsKeyboardFocus (false); // a click leaves the keyboard to the host

    control.addMouseListener (this, true); // for the focus outline and the host's menu

    if (boundParameter != nullptr)
        control.getProperties().set ("parameter", boundParameter);

    focusOrder.push_back (&control);
    control.setExplicitFocusOrder (static_cast<int> (focusOrder.size()));
    addAndMakeVisible (control);
}

void PulsewrightAudioProcessorEditor::addButton (
    juce::TextButton& button, const char* text, const char* title, const char* help, std::function<void()> action)
{
    button.setButtonText (text);
    button.setTooltip (help);
    button.onClick = std::move (action);
    addControl (button, title);
}

void PulsewrightAudioProcessorEditor::addChoices()
{
    for (std::size_t i = 0; i < choices.size(); ++i)
    {
        const auto& info                 = choiceRows[i];
        auto& [caption, box, attachment] = choices[i];

        addLabel (caption, info.caption, 10.0f, juce::Font::bold, palette::mutedTextColour);
        box.addItemList (info.texts (processor.parameters.getParameter (info.parameter)->getAllValueStrings()), 1);
        box.setTooltip (info.help);
        addControl (box, info.title, info.parameter);
        attachment = std::make_unique<ComboAttachment> (processor.parameters, info.parameter, box);
    }

    // After the attachments, which call these when they are made.
    for (const auto row : { EditorLayout::style, EditorLayout::duration, EditorLayout::structure })
        choices[row].box.onChange = [this] { formChosen(); };
}

void PulsewrightAudioProcessorEditor::addKnobs()
{
    for (std::size_t i = 0; i < knobs.size(); ++i)
    {
        const auto& info                    = knobRows[i];
        const auto& setting                 = settingOf (info.setting);
        auto& [caption, slider, attachment] = knobs[i];

        addControl (slider, lowerCased (info.caption), setting.id);
        slider.setTooltip (setting.help); // before the text box, which copies it when it is made
        slider.setSliderStyle (juce::Slider::RotaryVerticalDrag);
        slider.setTextBoxStyle (juce::Slider::TextBoxBelow, false, slider.getTextBoxWidth(), slider.getTextBoxHeight());
        addLabel (caption, info.caption, 10.0f, juce::Font::bold, palette::mutedTextColour, juce::Justification::centred);

        // The attachment brings texts and a double-click value of its own, and reports its first value.
        attachment = std::make_unique<SliderAttachment> (processor.parameters, setting.id, slider);
        slider.setDoubleClickReturnValue (true, info.doubleClickValue, juce::ModifierKeys::altModifier);
        slider.showPercentages();
        slider.onValueChange = [this] { macroChanged(); };
    }
}

void PulsewrightAudioProcessorEditor::addLanes()
{
    for (std::size_t i = 0; i < lanes.size(); ++i)
    {
        const auto& info                      = laneRows[i];
        const auto* parameter                 = settingOf (info.setting).id;
        auto& [lock, probability, attachment] = lanes[i];
        const auto lane                       = static_cast<int> (i);

        lock.setButtonText (info.lock);
        lock.setTooltip (lockHelp);
        lock.setClickingTogglesState (true);
        lock.setToggleState (processor.isLaneLocked (lane), juce::dontSendNotification);
        lock.onClick = [this, lane] { processor.setLaneLocked (lane, lanes[static_cast<std::size_t> (lane)].lock.getToggleState()); };
        addControl (lock, lowerCased (info.lock));

        addControl (probability, info.title, parameter);
        probability.setTooltip ("Per-instrument generation probability"); // before the text box
        probability.setSliderStyle (juce::Slider::LinearBar);
        probability.setTextBoxStyle (juce::Slider::TextBoxRight, false, probability.getTextBoxWidth(), probability.getTextBoxHeight());
        probability.setColour (juce::Slider::trackColourId, info.colour);
        attachment = std::make_unique<SliderAttachment> (processor.parameters, parameter, probability);
        probability.showPercentages();
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

} // namespace pulsewright
