// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Asks for a file to write or to read, with the platform's dialog where it works.

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
class FileDialog
{
public:
    struct Request
    {
        juce::String title;
        juce::String extension; ///< with its point; a file to write gets it
        juce::File suggestion {};
        bool isToRead = false;
    };

    /** The file with the extension that it must have: groove and groove.txt become groove.mid. */
    static juce::File withExtension (const juce::File& chosen, const juce::String& extension);

    /** Opens the dialog; one that is still open is closed.
        @param chosen  called with the file; where it is to be written, once the user has agreed to
                       replace it where it exists. Not called when the dialog is cancelled
    */
    void ask (Request request, juce::Component& window, std::function<void (const juce::File&)> chosen);

private:
    void open (bool platformsOwn);
    void finished (const juce::File& file, bool platformsOwn);

    std::unique_ptr<juce::FileChooser> chooser;
    juce::ScopedMessageBox question;
    double openedAtMs = 0.0;
    Request request;
    juce::Component::SafePointer<juce::Component> window;
    std::function<void (const juce::File&)> chosen;

    JUCE_DECLARE_WEAK_REFERENCEABLE (FileDialog)
};

} // namespace pulsewright
