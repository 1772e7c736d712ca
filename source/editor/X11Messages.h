// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// What has to be said to X11 beside JUCE. Message thread only; on other platforms these do nothing.

#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

namespace pulsewright
{

/** Sends an empty client message to the window that a component is in, as another program would.
    @param type  the name of the message's atom
*/
void sendX11Message (juce::Component& component, const char* type);

/** Gets input moving that has arrived but waits inside Xlib.

    JUCE waits for its connection to become readable. A request with a reply (where is the pointer?) made
    just when a click arrives reads the click as well, and then nothing becomes readable: the click would
    wait for whatever comes next. To be called now and then while the component's window is open; without
    waiting input it costs no system call.
*/
void deliverHeldX11Events (juce::Component& component);

} // namespace pulsewright
