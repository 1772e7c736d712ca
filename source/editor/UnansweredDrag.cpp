// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "UnansweredDrag.h"

#if JUCE_LINUX
#include <X11/Xlib.h>
#endif

namespace pulsewright
{

void endUnansweredDrag ([[maybe_unused]] juce::Component& source)
{
#if JUCE_LINUX
    auto* peer = source.getPeer();
    juce::DynamicLibrary x11; // loaded by JUCE already; not linked, for machines without a display

    if (peer == nullptr || ! x11.open ("libX11.so.6"))
        return;

    const auto openDisplay  = reinterpret_cast<decltype (&XOpenDisplay)> (x11.getFunction ("XOpenDisplay"));
    const auto internAtom   = reinterpret_cast<decltype (&XInternAtom)> (x11.getFunction ("XInternAtom"));
    const auto sendEvent    = reinterpret_cast<decltype (&XSendEvent)> (x11.getFunction ("XSendEvent"));
    const auto closeDisplay = reinterpret_cast<decltype (&XCloseDisplay)> (x11.getFunction ("XCloseDisplay"));

    // A connection of our own: JUCE's is its own.
    auto* display =
        openDisplay != nullptr && internAtom != nullptr && sendEvent != nullptr && closeDisplay != nullptr ? openDisplay (nullptr) : nullptr;

    if (display == nullptr)
        return;

    // A receiver may owe its answer to where the pointer is as well: nothing is accepted, and it is over.
    for (const auto* message : { "XdndStatus", "XdndFinished" })
    {
        XEvent event {};
        event.xclient.type         = ClientMessage;
        event.xclient.window       = reinterpret_cast<::Window> (peer->getNativeHandle());
        event.xclient.message_type = internAtom (display, message, False);
        event.xclient.format       = 32;
        sendEvent (display, event.xclient.window, False, NoEventMask, &event);
    }

    closeDisplay (display); // sends what is waiting
#endif
}

} // namespace pulsewright
