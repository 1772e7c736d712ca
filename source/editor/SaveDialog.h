// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Asks where to save a MIDI file, with the platform's dialog where it works.

#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

#include <functional>
#include <memory>

namespace pulsewright
{

/** Thread: message.

    On Linux the platform's dialog is a program that JUCE starts. In a host that brings libraries of
    its own (it sets the library path) that program may end at once without having shown anything,
    which looks like a cancelled dialog; then JUCE's own dialog opens instead.
*/
class SaveDialog
{
public:
    /** Opens the dialog; one that is still open is closed.
        @param chosen  called with the file that will be written, once the user has agreed to
                       replace it where it exists; not called when the dialog is cancelled
    */
    void ask (const juce::File& suggestion, juce::Component& window, std::function<void (const juce::File&)> chosen);

private:
    void open (bool platformsOwn);
    void finished (const juce::File& file, bool platformsOwn);

    std::unique_ptr<juce::FileChooser> chooser;
    juce::ScopedMessageBox question;
    double openedAtMs = 0.0;
    juce::File suggestion;
    juce::Component::SafePointer<juce::Component> window;
    std::function<void (const juce::File&)> chosen;

    JUCE_DECLARE_WEAK_REFERENCEABLE (SaveDialog)
};

} // namespace pulsewright
