// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// What the window does; EditorConstruction.cpp has what it is made of.

#include "PulsewrightAudioProcessorEditor.h"

#include "AsciiCase.h"
#include "Palette.h"

#include "export/MidiExport.h"

#include <algorithm>

namespace pulsewright
{

namespace
{
    constexpr double restBeforeRegenerationMs = 100.0;

    juce::String asText (const std::string& text)
    {
        return juce::String::fromUTF8 (text.data(), static_cast<int> (text.size()));
    }
} // namespace

juce::AudioProcessorEditor* PulsewrightAudioProcessor::createEditor()
{
    prepareX11Connection();
    return new PulsewrightAudioProcessorEditor (*this);
}

//==============================================================================
void PulsewrightAudioProcessorEditor::resized()
{
    const EditorLayout layout (getWidth(), getHeight(), visibleSectionCount);

    brandLabel.setBounds (layout.brand);
    titleLabel.setBounds (layout.title);
    subtitleLabel.setBounds (layout.subtitle);
    statusLabel.setBounds (layout.status);

    const auto place = [] (juce::Component& caption, juce::Component& control, const EditorLayout::Captioned& bounds)
    {
        caption.setBounds (bounds.caption);
        control.setBounds (bounds.control);
    };

    for (std::size_t i = 0; i < choices.size(); ++i)
        place (choices[i].caption, choices[i].box, layout.boxes[i]);

    generateButton.setBounds (layout.generateButton);
    buildSongButton.setBounds (layout.buildSongButton);
    previewButton.setBounds (layout.previewButton);

    for (std::size_t i = 0; i < knobs.size(); ++i)
        place (knobs[i].caption, knobs[i].slider, layout.macros[i]);

    for (std::size_t i = 0; i < lanes.size(); ++i)
        place (lanes[i].lock, lanes[i].probability, layout.lanes[i]);

    mutateButton.setBounds (layout.mutateButton);
    newFillButton.setBounds (layout.newFillButton);

    // Buttons that are hidden stay where they were.
    for (int i = 0; i < visibleSectionCount; ++i)
        sectionButtons[static_cast<std::size_t> (i)].setBounds (layout.sections[static_cast<std::size_t> (i)]);

    saveButton.setBounds (layout.saveButton);
    patternDragButton.setBounds (layout.patternDragButton);
    songDragButton.setBounds (layout.songDragButton);
    patternGrid.setBounds (layout.grid);
}

void PulsewrightAudioProcessorEditor::paint (juce::Graphics& g)
{
    using Layout = EditorLayout;

    constexpr int headerBottom = Layout::margin + Layout::headerHeight;
    constexpr int macrosLeft   = Layout::margin + Layout::formPanelWidth + Layout::panelGap;
    constexpr int panelTop     = headerBottom + Layout::headerGap;
    constexpr float cornerSize = 9.0f;

    // Panels of these sizes whatever the window's, even where it is too small to hold them.
    const auto paintPanel = [&g] (int x, int width)
    { g.fillRoundedRectangle (juce::Rectangle<int> (x, panelTop, width, Layout::panelHeight).toFloat(), cornerSize); };

    g.fillAll (palette::backgroundColour);

    g.setColour (palette::accentColour.withAlpha (static_cast<juce::uint8> (0x0f)));
    g.fillEllipse (static_cast<float> (getWidth()) - 360.0f, -250.0f, 510.0f, 510.0f);

    if (const int width = getWidth() - 2 * Layout::margin; width > 0)
    {
        g.setColour (palette::outlineColour);
        g.fillRect (Layout::margin, headerBottom, width, 1);
    }

    g.setColour (palette::panelColour);
    paintPanel (Layout::margin, Layout::formPanelWidth);
    paintPanel (macrosLeft, getWidth() - macrosLeft - Layout::margin);
}

//==============================================================================
void PulsewrightAudioProcessorEditor::formChosen()
{
    refreshDurationLabel();
    buildChosenSong();

    // Automation that arrives on this thread tells the box before the value can be read.
    juce::MessageManager::callAsync (
        [safeThis = SafePointer (this)]
        {
            if (safeThis != nullptr)
                safeThis->buildChosenSong();
        });
}

void PulsewrightAudioProcessorEditor::buildChosenSong()
{
    const auto form = processor.getChosenForm();

    if (processor.isRestoring() || form == formSeen)
        return;

    formSeen = form;

    // A restore changes the boxes too; then the song of that form is there already.
    if (! (isEchoOfRestore() && processor.isSongAsChosen()))
        processor.buildSong();
}

// A restore also moves the knobs and starts a refresh; it generates the same music again, and automation that arrives with
// the restore is heard.
void PulsewrightAudioProcessorEditor::macroChanged()
{
    lastSliderChangeMs = juce::Time::getMillisecondCounterHiRes();
    regeneratePending  = true;
}

bool PulsewrightAudioProcessorEditor::isEchoOfRestore() const noexcept
{
    return processor.isRestoring() || processor.getRestoreCount() != restoresSettled;
}

void PulsewrightAudioProcessorEditor::togglePreview()
{
    if (processor.isPreviewPlaying())
        processor.stopPreview();
    else
        processor.startPreview();

    const bool isSilent = processor.isPreviewPlaying() && processor.getSampleRate() <= 0.0;
    report (previewButton, {}, isSilent ? "There is no sound device: nothing plays" : "");
}

//==============================================================================
std::variant<DrumPattern, SongArrangement> PulsewrightAudioProcessorEditor::musicOf (Export what) const
{
    if (what == Export::song)
        return processor.getSong();

    return processor.getPattern();
}

PulsewrightAudioProcessorEditor::Export PulsewrightAudioProcessorEditor::selectedExport() const
{
    return choices[EditorLayout::playback].box.getSelectedItemIndex() == 1 ? Export::song : Export::pattern;
}

void PulsewrightAudioProcessorEditor::exportMidi (Export what)
{
    const auto suggestion = what == Export::song ? midiExport::suggestedSongFile() : midiExport::suggestedPatternFile();
    saveDialog.ask ({ .title = "Save editable MIDI", .extension = ".mid", .suggestion = suggestion },
                    *this,
                    [this, what] (const juce::File& file) { writeExport (file, what); });
}

void PulsewrightAudioProcessorEditor::writeExport (const juce::File& file, Export what)
{
    std::string error;
    const auto save = [&] (const auto& music) { return midiExport::save (file, music, processor.getEffectiveBpm(), error); };

    if (std::visit (save, musicOf (what)))
    {
        takeMenu.noteExport (file);
        report (saveButton, "SAVED  " + file.getFileName(), "Saved " + file.getFullPathName());
    }
    else
        report (saveButton, "EXPORT FAILED  " + asText (error), file.getFullPathName() + ": " + asText (error));
}

juce::File PulsewrightAudioProcessorEditor::createDragMidiFile (Export what)
{
    std::string error;
    const auto write = [&] (const auto& music) { return midiExport::fileForDrag (music, processor.getEffectiveBpm(), error); };
    auto file        = std::visit (write, musicOf (what));

    if (file == juce::File())
        report (what == Export::song ? songDragButton : patternDragButton, "DRAG EXPORT FAILED  " + asText (error), "Drag failed: " + asText (error));

    return file;
}

void PulsewrightAudioProcessorEditor::reportDrag (juce::Button& button, const juce::File& file, bool isStarted)
{
    // JUCE does not say whether anybody has taken the file in the end.
    const auto* outcome =
        isStarted ? "File of the last drag: " : "Drag failed: another program holds the pointer, or the drag before is not over. The file is ";
    report (button, {}, outcome + file.getFullPathName());
    takeMenu.noteExport (file);
}

void PulsewrightAudioProcessorEditor::report (juce::Button& button, const juce::String& shown, const juce::String& lasting)
{
    if (shown.isNotEmpty())
        statusLabel.setText (shown, juce::dontSendNotification);

    // The timer soon overwrites the status line; the button's tooltip keeps the message.
    button.setTooltip ((button.getTooltip().upToFirstOccurrenceOf ("\n", false, false) + "\n" + lasting).trimEnd());
    button.setDescription (lasting);
}

//==============================================================================
void PulsewrightAudioProcessorEditor::timerCallback()
{
    deliverHeldX11Events();
    leaveKeyboard();

    const bool hasRested = juce::Time::getMillisecondCounterHiRes() - lastSliderChangeMs >= restBeforeRegenerationMs;

    if (regeneratePending && hasRested)
    {
        regeneratePending = false;

        if (! processor.isAsBroughtBack())
            processor.regeneratePattern();
    }

    if (lastSeenVersion != processor.getChangeCounter())
        refreshSongView();

    refreshDurationLabel();
    refreshBuildSongText();
    previewButton.setButtonText (processor.isPreviewPlaying() ? "STOP PREVIEW" : "PLAY PREVIEW");
    refreshStatus();

    restoresSettled    = restoresAtLastTick;
    restoresAtLastTick = processor.getRestoreCount();
}

void PulsewrightAudioProcessorEditor::refreshSongView()
{
    // The counter before the copies: it may then be one behind, and the next tick looks again; the other
    // way round a change could be missed.
    const auto version = processor.getChangeCounter();
    const auto pattern = processor.getPattern();
    const auto song    = processor.getSong();

    refreshDurationLabel();

    generateButton.setTooltip ("Generates a groove of the chosen length. Pattern seed " + juce::String (pattern.seed) + ", next take "
                               + juce::String (processor.getSeedCounter()));
    patternGrid.setPattern (pattern);

    visibleSectionCount = juce::jlimit (1, static_cast<int> (sectionButtons.size()), static_cast<int> (song.sections.size()));

    for (std::size_t i = 0; i < sectionButtons.size(); ++i)
    {
        sectionButtons[i].setVisible (static_cast<int> (i) < visibleSectionCount);

        if (i < song.sections.size())
        {
            const auto name = upperCased (asText (song.sections[i].name));
            sectionButtons[i].setButtonText (name);
            sectionButtons[i].setTitle ("Section " + name);
        }
    }

    for (std::size_t lane = 0; lane < lanes.size(); ++lane)
        lanes[lane].lock.setToggleState (processor.isLaneLocked (static_cast<int> (lane)), juce::dontSendNotification);

    refreshBuildSongText();
    resized();
    lastSeenVersion = version;
}

void PulsewrightAudioProcessorEditor::refreshDurationLabel()
{
    const auto [seconds, bars] = processor.getChosenSongLength();
    const auto text =
        "GENRE AVG  " + juce::String (seconds / 60) + ":" + juce::String (seconds % 60).paddedLeft ('0', 2) + "  /  " + juce::String (bars) + " BARS";

    constexpr int firstItem = 1;

    auto& box = choices[EditorLayout::duration].box;

    if (box.getItemText (0) == text)
        return;

    // A box whose selected item gets another text forgets its selection and goes on showing the old one.
    const bool isSelected = box.getSelectedId() == firstItem;
    box.changeItemText (firstItem, text);

    if (isSelected)
        box.setSelectedId (firstItem, juce::dontSendNotification);
}

void PulsewrightAudioProcessorEditor::refreshBuildSongText()
{
    buildSongButton.setButtonText ("BUILD " + juce::String (processor.getChosenSongLength().bars) + "-BAR SONG");
}

void PulsewrightAudioProcessorEditor::refreshStatus()
{
    statusLabel.setText (juce::String (processor.getEffectiveBpm()) + " BPM  |  MIDI OUT CH 10  |  C4-G4 TRIGGER SECTIONS",
                         juce::dontSendNotification);
}

//==============================================================================
void PulsewrightAudioProcessorEditor::globalFocusChanged (juce::Component* focused)
{
    if (focused == this)
        returnToTypedNumber();

    const auto control = std::find_if (focusOrder.begin(), focusOrder.end(), [focused] (auto* c) { return c == focused || c->isParentOf (focused); });

    const auto outline = isNavigatedByKeyboard && control != focusOrder.end() ? (*control)->getBounds() : juce::Rectangle<int>();

    if (outline != focusOutline)
    {
        repaint (focusOutline);
        repaint (outline);
        focusOutline = outline;
    }
}

void PulsewrightAudioProcessorEditor::navigateByKeyboard (bool byKeyboard)
{
    isNavigatedByKeyboard = byKeyboard;
    globalFocusChanged (getCurrentlyFocusedComponent());
}

bool PulsewrightAudioProcessorEditor::isKeyboardWanted() const
{
    const auto isOpen = [] (const juce::Component* control)
    {
        const auto* box    = dynamic_cast<const juce::ComboBox*> (control);
        const auto* slider = dynamic_cast<const PercentSlider*> (control);
        return (box != nullptr && box->isPopupActive()) || (slider != nullptr && slider->isBeingTyped());
    };

    // JUCE's own dialogs open inside the window.
    return isNavigatedByKeyboard || isParentOf (getCurrentlyModalComponent()) || std::ranges::any_of (focusOrder, isOpen);
}

// JUCE gives the keyboard that X11 hands to the window to whoever had it last: to the editor, which has left it to the
// host, also when a number has just been opened.
void PulsewrightAudioProcessorEditor::returnToTypedNumber()
{
    juce::MessageManager::callAsync (
        [safeThis = SafePointer (this)]
        {
            if (safeThis == nullptr || getCurrentlyFocusedComponent() != safeThis)
                return;

            for (auto* control : safeThis->focusOrder)
                if (const auto* slider = dynamic_cast<PercentSlider*> (control); slider != nullptr && slider->isBeingTyped())
                    slider->typedInto()->grabKeyboardFocus();
        });
}

void PulsewrightAudioProcessorEditor::leaveKeyboard()
{
    if (! isKeyboardWanted() && isParentOf (getCurrentlyFocusedComponent()))
        grabKeyboardFocus(); // no control has it without a frame

    hostKeyboard.update();
}

void PulsewrightAudioProcessorEditor::parentHierarchyChanged()
{
    hostKeyboard.windowChanged();

    if (listenedWindow != nullptr)
        listenedWindow->removeKeyListener (this);

    // A key that arrives before anything has the focus is for the window around the editor.
    listenedWindow = getTopLevelComponent() == this ? nullptr : getTopLevelComponent();

    if (listenedWindow != nullptr)
        listenedWindow->addKeyListener (this);
}

void PulsewrightAudioProcessorEditor::paintOverChildren (juce::Graphics& g)
{
    if (! focusOutline.isEmpty())
    {
        g.setColour (palette::textColour);
        g.drawRoundedRectangle (focusOutline.toFloat().reduced (1.5f), 6.0f, 2.0f);
    }
}

bool PulsewrightAudioProcessorEditor::keyPressed (const juce::KeyPress& key)
{
    auto* focused = getCurrentlyFocusedComponent();

    if (key.isKeyCode (juce::KeyPress::tabKey))
    {
        navigateByKeyboard (true);

        if (isParentOf (focused))
            return false; // JUCE goes on to the next control

        (key.getModifiers().isShiftDown() ? focusOrder.back() : focusOrder.front())->grabKeyboardFocus();
        return true;
    }

    if (key == juce::KeyPress (juce::KeyPress::F10Key, juce::ModifierKeys::shiftModifier, 0))
    {
        takeMenu.show (patternGrid.getBounds().getCentre());
        return true;
    }

    if (key == juce::KeyPress::escapeKey && isNavigatedByKeyboard)
    {
        navigateByKeyboard (false);
        return true;
    }

    if (key != juce::KeyPress::spaceKey && key != juce::KeyPress::returnKey)
        return false;

    if (auto* button = dynamic_cast<juce::Button*> (focused))
        button->triggerClick();
    else if (auto* box = dynamic_cast<juce::ComboBox*> (focused))
        box->showPopup();
    else
        return false; // the space bar is the host's

    return true;
}

void PulsewrightAudioProcessorEditor::mouseDown (const juce::MouseEvent& event)
{
    navigateByKeyboard (false);

    // A box's list closes when somebody else gets the keyboard: so it has to have it.
    if (auto* peer = getPeer(); peer != nullptr && isKeyboardWanted())
        peer->grabFocus();

    if (! event.mods.isPopupMenu())
        return;

    if (event.eventComponent == this || event.eventComponent == &statusLabel || event.eventComponent == &patternGrid)
    {
        takeMenu.show (event.getEventRelativeTo (this).getPosition());

        if (auto* peer = getPeer())
            peer->grabFocus(); // for its arrow keys and escape

        return;
    }

    if (getHostContext() == nullptr)
        return;

    for (auto* control = event.eventComponent; control != nullptr && control != this; control = control->getParentComponent())
        if (const auto* parameter = processor.parameters.getParameter (control->getProperties()["parameter"].toString()))
            if (const auto menu = getHostContext()->getContextMenuForParameter (parameter))
                return menu->showNativeMenu (event.getEventRelativeTo (this).getPosition());
}

} // namespace pulsewright
