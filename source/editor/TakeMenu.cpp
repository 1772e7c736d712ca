// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "TakeMenu.h"

#include "generation/TakeCode.h"
#include "preset/PluginState.h"
#include "preset/PresetFiles.h"

namespace pulsewright
{

namespace
{
    constexpr const char* presetExtension = ".vstpreset";
    constexpr juce::int64 largestPreset   = 1 << 20; // ours has some 3 kilobytes
    constexpr const char* noCode          = "no code: a mutation depends on the groove before it";

    juce::String asText (const std::string& text)
    {
        return juce::String::fromUTF8 (text.data(), static_cast<int> (text.size()));
    }
} // namespace

TakeMenu::TakeMenu (PulsewrightAudioProcessor& owner, juce::Component& editorWindow) : processor (owner), window (editorWindow)
{}

void TakeMenu::show (juce::Point<int> at)
{
    const auto target = juce::Rectangle<int> (1, 1).withPosition (window.localPointToGlobal (at));
    menu().showMenuAsync (juce::PopupMenu::Options().withTargetComponent (window).withTargetScreenArea (target).withParentComponent (&window));
}

juce::PopupMenu TakeMenu::menu()
{
    juce::PopupMenu menu;
    menu.setLookAndFeel (&window.getLookAndFeel());
    menu.addSectionHeader ("Pulsewright " JucePlugin_VersionString ", next take " + juce::String (processor.getSeedCounter()));
    menu.addSubMenu ("Earlier takes", earlierTakes());
    addCopy (menu, "Copy this take", processor.getChosenTake());
    menu.addItem ("Paste a take", [this] { paste(); });
    menu.addSeparator();
    menu.addItem ("Save preset...", [this] { savePreset(); });
    menu.addItem ("Load preset...", [this] { loadPreset(); });
    menu.addSeparator();
    menu.addItem ("Reveal last export", lastExport.existsAsFile(), false, [this] { lastExport.revealToUser(); });
    menu.addItem ("Copy its path",
                  lastExport != juce::File(),
                  false,
                  [this] { juce::SystemClipboard::copyTextToClipboard (lastExport.getFullPathName()); });
    return menu;
}

juce::PopupMenu TakeMenu::earlierTakes()
{
    juce::PopupMenu all;

    for (const auto& kept : processor.getEarlierTakes())
    {
        juce::PopupMenu one;
        one.addItem ("Play it", [this, id = kept.id] { processor.playEarlierTake (id); });
        addCopy (one, "Copy", kept.take.kind == Take::Kind::song ? kept.songTake : kept.patternTake);
        all.addSubMenu (asText (describe (kept)), one);
    }

    return all;
}

void TakeMenu::addCopy (juce::PopupMenu& menu, const juce::String& text, const std::optional<Take>& take)
{
    const auto code = take ? codeOf (*take) : std::nullopt;

    if (code)
        menu.addItem (text, [code = asText (*code)] { juce::SystemClipboard::copyTextToClipboard (code); });
    else
        menu.addItem (text + " (" + noCode + ")", false, false, nullptr);
}

//==============================================================================
void TakeMenu::paste()
{
    try
    {
        processor.playTake (takeOf (juce::SystemClipboard::getTextFromClipboard().toStdString()));
    }
    catch (const BadTakeCode& error)
    {
        complain ("Paste a take", asText (error.what()));
    }
}

void TakeMenu::savePreset()
{
    const auto take = processor.getChosenTake();
    const auto why  = take ? whyNoState (*take) : noCode;

    if (! take || ! why.empty())
        return complain ("Save preset", "A preset cannot keep this take: " + asText (why) + ".");

    dialog.ask ({ .title      = "Save preset",
                  .extension  = presetExtension,
                  .suggestion = juce::File::getSpecialLocation (juce::File::userDocumentsDirectory)
                                    .getChildFile ("Pulsewright take")
                                    .withFileExtension (presetExtension) },
                window,
                [this, state = stateOf (*take)] (const juce::File& file)
                {
                    const auto preset = vstPresetOf (state, file.getFileNameWithoutExtension().toStdString());
                    if (! file.replaceWithData (preset.data(), preset.size()))
                        complain ("Save preset", "The preset could not be written: " + file.getFullPathName());
                });
}

void TakeMenu::loadPreset()
{
    dialog.ask ({ .title = "Load preset", .extension = presetExtension, .isToRead = true },
                window,
                [this] (const juce::File& file)
                {
                    try
                    {
                        juce::MemoryBlock bytes;

                        if (file.getSize() > largestPreset || ! file.loadFileAsData (bytes))
                            throw BadPreset ("This file cannot be read as a preset");

                        const auto state    = stateInVstPreset ({ static_cast<const char*> (bytes.getData()), bytes.getSize() });
                        const auto restores = processor.getRestoreCount();
                        processor.setStateInformation (state.data(), static_cast<int> (state.size()));

                        if (processor.getRestoreCount() == restores)
                            throw BadPreset ("The state in this preset is not one of Pulsewright's");

                        processor.tellHostStateChanged();
                    }
                    catch (const BadPreset& error)
                    {
                        complain ("Load preset", asText (error.what()) + ": " + file.getFullPathName());
                    }
                });
}

void TakeMenu::complain (const juce::String& title, const juce::String& text)
{
    // A menu that has closed hands the keyboard back where it was; the message opens after that, and takes it.
    juce::MessageManager::callAsync (
        [self = juce::WeakReference (this), title, text]
        {
            if (self != nullptr)
                self->showMessage (title, text);
        });
}

void TakeMenu::showMessage (const juce::String& title, const juce::String& text)
{
    message.deleteAndZero();
    message = window.getLookAndFeel().createAlertWindow (title, text, "OK", {}, {}, juce::MessageBoxIconType::WarningIcon, 1, &window);

    // JUCE would take it from the desktop only when it is visible there: it would keep its place on the screen, which may
    // lie outside the window, and a window manager that has seen it could leave the keyboard to nobody.
    message->removeFromDesktop();
    window.addAndMakeVisible (message.getComponent());
    message->setCentrePosition (window.getLocalBounds().getCentre());
    message->enterModalState (true, nullptr, true);
}

} // namespace pulsewright
