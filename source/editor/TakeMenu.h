// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// The window's own menu: takes that come back, codes, presets, and the last file.

#pragma once

#include "FileDialog.h"

#include "processor/PulsewrightAudioProcessor.h"

#include <juce_gui_basics/juce_gui_basics.h>

namespace pulsewright
{

/** Thread: message. */
class TakeMenu
{
public:
    TakeMenu (PulsewrightAudioProcessor& owner, juce::Component& window);
    ~TakeMenu() { message.deleteAndZero(); }

    /** Opens the menu inside the window. @param at  where, in the window's coordinates */
    void show (juce::Point<int> at);

    /** The file that was saved or dragged last, for *Reveal* and *Copy its path*. */
    void noteExport (const juce::File& file) { lastExport = file; }

private:
    juce::PopupMenu menu();
    juce::PopupMenu earlierTakes();
    void addCopy (juce::PopupMenu& menu, const juce::String& text, const std::optional<Take>& take);

    void paste();
    void savePreset();
    void loadPreset();
    void complain (const juce::String& title, const juce::String& text);
    void showMessage (const juce::String& title, const juce::String& text);

    PulsewrightAudioProcessor& processor;
    juce::Component& window;
    FileDialog dialog;
    juce::Component::SafePointer<juce::AlertWindow> message; // deletes itself when it is answered; the next one replaces it
    juce::File lastExport;

    JUCE_DECLARE_WEAK_REFERENCEABLE (TakeMenu)
};

} // namespace pulsewright
