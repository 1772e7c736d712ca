// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Leaves the keyboard to the host that a window is embedded in.

#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

#include <functional>

namespace pulsewright
{

/** On X11 JUCE takes the keyboard with every click into its window, and the keys that are pressed while the
    pointer is over it arrive there too: the host's space bar is dead. While one of these exists, a window
    that is inside another program's has the keyboard only as long as it wants keys, or when the host gave
    it. It does nothing for windows of their own, and nothing on other platforms. Thread: message.
*/
class HostKeyboard
{
public:
    /** @param component in the window; the window need not be open yet
        @param isWanted  whether the window wants keys at present
    */
    HostKeyboard (juce::Component& component, std::function<bool()> isWanted);
    ~HostKeyboard();

    /** To be called when the window may have been opened or closed. */
    void windowChanged();

    /** Gives back what is no longer wanted, to the window that had it. To be called now and then. */
    void update();

private:
    struct X11;

    bool take();
    void setGetsKeys (bool shouldGetKeys);

    juce::Component& component;
    std::function<bool()> isWanted;

    // X11 windows, or 0
    unsigned long knownWindow = 0; // ours
    unsigned long window      = 0; // ours too, where it is inside another
    unsigned long formerOwner = 0; // of the keyboard, which we took from it
    bool getsKeys             = true;

    JUCE_DECLARE_NON_COPYABLE (HostKeyboard)
};

} // namespace pulsewright
