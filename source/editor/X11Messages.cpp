// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#define JUCE_GUI_BASICS_INCLUDE_XHEADERS 1
#include "X11Messages.h"

#if JUCE_LINUX || JUCE_BSD
#include <X11/Xproto.h>
#endif

namespace pulsewright
{

#if JUCE_LINUX || JUCE_BSD

namespace
{
    using ErrorHook    = Bool (*) (::Display*, XErrorEvent*, xError*);
    using SetErrorHook = ErrorHook (*) (::Display*, int error, ErrorHook);

    Bool ignoreError (::Display*, XErrorEvent*, xError*)
    {
        return False; // to Xlib: tell nobody
    }

    ::Window windowOf (const juce::ComponentPeer& peer)
    {
        return reinterpret_cast<::Window> (peer.getNativeHandle());
    }
} // namespace

void ignoreX11ErrorsOfOurConnection()
{
    auto* const display = juce::XWindowSystem::getInstance()->getDisplay();
    juce::DynamicLibrary xlib ("libX11.so.6"); // the one that JUCE has loaded

    if (display == nullptr)
        return;

    if (const auto setErrorHook = reinterpret_cast<SetErrorHook> (xlib.getFunction ("XESetWireToError")))
        for (int error = BadRequest; error <= BadImplementation; ++error)
            setErrorHook (display, error, ignoreError);
}

void offerOnlyCopies (juce::Component& component)
{
    const auto* peer = component.getPeer();

    if (peer == nullptr)
        return;

    const auto& system = *juce::XWindowSystem::getInstance();
    const auto& atoms  = system.getAtoms();
    const juce::XWindowSystemUtilities::ScopedXLock lock;

    juce::X11Symbols::getInstance()->xChangeProperty (system.getDisplay(),
                                                      windowOf (*peer),
                                                      atoms.XdndActionList,
                                                      XA_ATOM,
                                                      32, // bits of an item
                                                      PropModeReplace,
                                                      reinterpret_cast<const unsigned char*> (&atoms.XdndActionCopy),
                                                      1);
}

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
    event.xclient.window       = windowOf (*peer);
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

void ignoreX11ErrorsOfOurConnection()
{}
void offerOnlyCopies (juce::Component&)
{}
void sendX11Message (juce::Component&, const char*)
{}
void deliverHeldX11Events (juce::Component&)
{}

#endif

} // namespace pulsewright
