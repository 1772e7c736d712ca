// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#define JUCE_GUI_BASICS_INCLUDE_XHEADERS 1
#include "X11Messages.h"

namespace pulsewright
{

#if JUCE_LINUX || JUCE_BSD

void sendX11Message (juce::Component& component, const char* type)
{
    const auto* peer = component.getPeer();

    if (peer == nullptr)
        return;

    const auto& x11     = *juce::X11Symbols::getInstance();
    auto* const display = juce::XWindowSystem::getInstance()->getDisplay();
    const juce::XWindowSystemUtilities::ScopedXLock lock;

    XEvent event {};
    event.xclient.type         = ClientMessage;
    event.xclient.window       = reinterpret_cast<::Window> (peer->getNativeHandle());
    event.xclient.message_type = x11.xInternAtom (display, type, False);
    event.xclient.format       = 32;
    x11.xSendEvent (display, event.xclient.window, False, NoEventMask, &event);
    x11.xFlush (display);
}

void deliverHeldX11Events (juce::Component& component)
{
    if (component.getPeer() == nullptr)
        return;

    const auto isHeld = []
    {
        const juce::XWindowSystemUtilities::ScopedXLock lock;
        return juce::X11Symbols::getInstance()->xEventsQueued (juce::XWindowSystem::getInstance()->getDisplay(), QueuedAlready) > 0;
    };

    if (isHeld())
        sendX11Message (component, "PULSEWRIGHT_WAKE_UP"); // comes back over the connection; JUCE then reads everything
}

#else

void sendX11Message (juce::Component&, const char*)
{}
void deliverHeldX11Events (juce::Component&)
{}

#endif

} // namespace pulsewright
