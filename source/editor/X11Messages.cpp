// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#define JUCE_GUI_BASICS_INCLUDE_XHEADERS 1
#include "X11Messages.h"

#if JUCE_LINUX || JUCE_BSD
#include <X11/Xproto.h>
#include <atomic>
#include <juce_events/native/juce_EventLoopInternal_linux.h>
#include <mutex>
#include <utility>
#endif

namespace pulsewright
{

#if JUCE_LINUX || JUCE_BSD

namespace
{
    using ErrorHook      = Bool (*) (::Display*, XErrorEvent*, xError*);
    using SetErrorHook   = ErrorHook (*) (::Display*, int error, ErrorHook);
    using ExitHandler    = void (*) (::Display*, void*);
    using SetExitHandler = void (*) (::Display*, ExitHandler, void*);

    /** A function of the Xlib that JUCE has loaded, which JUCE does not know; null where it is too old for it. */
    template <typename Function>
    Function findInXlib (const char* name)
    {
        return reinterpret_cast<Function> (juce::DynamicLibrary ("libX11.so.6").getFunction (name));
    }

    Bool ignoreError (::Display*, XErrorEvent*, xError*)
    {
        return False; // Xlib then calls no error handler
    }

    ::Display* displayOfJuce()
    {
        const auto* const system = juce::XWindowSystem::getInstanceWithoutCreating();
        return system != nullptr ? system->getDisplay() : nullptr;
    }

    /** In the place of exit(): Xlib goes on, and answers every further request with nothing. JUCE must no longer wait for
        its connection, which counts as readable from now on. Xlib has locked the display for a thread that will not come
        back; any other, such as the one that closes the display, would wait for ever.
    */
    void goOnWithoutServer (::Display* display, void*)
    {
        const auto& x11 = *juce::X11Symbols::getInstance();
        juce::LinuxEventLoop::unregisterFdCallback (x11.xConnectionNumber (display));
        x11.xUnlockDisplay (display);
    }

    std::mutex survivorsLock;
    int numSurvivors = 0;

    /** What Xlib calls first. Its own handler ends the process: it is left to all other connections. */
    std::atomic<XIOErrorHandler> xlibsIoErrorHandler = nullptr;

    int returnToExitHandler (::Display* display)
    {
        return display == displayOfJuce() ? 0 : xlibsIoErrorHandler.load() (display);
    }

    /** JUCE looks these names up and takes what is not there for a name. */
    void makeMissingAtoms (::Display* display, juce::XWindowSystemUtilities::Atoms& atoms)
    {
        using Atoms = juce::XWindowSystemUtilities::Atoms;

        const std::pair<Atom&, const char*> names[] { { atoms.protocols, "WM_PROTOCOLS" },
                                                      { atoms.protocolList[Atoms::TAKE_FOCUS], "WM_TAKE_FOCUS" },
                                                      { atoms.protocolList[Atoms::DELETE_WINDOW], "WM_DELETE_WINDOW" },
                                                      { atoms.protocolList[Atoms::PING], "_NET_WM_PING" },
                                                      { atoms.changeState, "WM_CHANGE_STATE" },
                                                      { atoms.state, "WM_STATE" },
                                                      { atoms.windowType, "_NET_WM_WINDOW_TYPE" },
                                                      { atoms.windowState, "_NET_WM_STATE" },
                                                      { atoms.windowStateHidden, "_NET_WM_STATE_HIDDEN" } };

        for (const auto& [atom, name] : names)
            if (atom == None)
                atom = Atoms::getCreating (display, name);
    }

    ::Window windowOf (const juce::ComponentPeer& peer)
    {
        return reinterpret_cast<::Window> (peer.getNativeHandle());
    }
} // namespace

void prepareX11Connection()
{
    auto& system = *juce::XWindowSystem::getInstance();

    if (system.getDisplay() == nullptr)
        return;

    const juce::XWindowSystemUtilities::ScopedXLock lock;
    makeMissingAtoms (system.getDisplay(), const_cast<juce::XWindowSystemUtilities::Atoms&> (system.getAtoms()));
}

X11Survival::X11Survival()
{
    const std::scoped_lock lock (survivorsLock);
    auto* const display = displayOfJuce();

    if (++numSurvivors > 1 || display == nullptr)
        return;

    if (const auto setExitHandler = findInXlib<SetExitHandler> ("XSetIOErrorExitHandler")) // of libX11 1.7 or later
        setExitHandler (display, goOnWithoutServer, nullptr);

    // Without a handler Xlib takes its own: the first call puts it in place, the second gives it to us.
    auto* const x11     = juce::X11Symbols::getInstance();
    const auto before   = x11->xSetIOErrorHandler (nullptr);
    xlibsIoErrorHandler = x11->xSetIOErrorHandler (nullptr);

    const bool hostHasOne = before != xlibsIoErrorHandler;
    x11->xSetIOErrorHandler (hostHasOne ? before : returnToExitHandler);
}

X11Survival::~X11Survival()
{
    const std::scoped_lock lock (survivorsLock);

    if (--numSurvivors > 0 || xlibsIoErrorHandler == nullptr)
        return;

    auto* const x11 = juce::X11Symbols::getInstance();

    if (const auto present = x11->xSetIOErrorHandler (nullptr); present != returnToExitHandler)
        x11->xSetIOErrorHandler (present);
}

void ignoreX11ErrorsOfOurConnection()
{
    auto* const display = juce::XWindowSystem::getInstance()->getDisplay();

    if (display == nullptr)
        return;

    if (const auto setErrorHook = findInXlib<SetErrorHook> ("XESetWireToError"))
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

void deliverHeldX11Events()
{
    const auto isHeld = []
    {
        const juce::XWindowSystemUtilities::ScopedXLock lock;
        return juce::X11Symbols::getInstance()->xEventsQueued (displayOfJuce(), QueuedAlready) > 0;
    };

    const auto deliver = []
    {
        if (auto* const display = displayOfJuce())
            juce::LinuxEventLoopInternal::invokeEventLoopCallbackForFd (juce::X11Symbols::getInstance()->xConnectionNumber (display));
    };

    if (displayOfJuce() != nullptr && isHeld())
        juce::MessageManager::callAsync (deliver); // what an event sets off has a turn of the loop to itself
}

#else

void prepareX11Connection()
{}
X11Survival::X11Survival()
{}
X11Survival::~X11Survival()
{}
void ignoreX11ErrorsOfOurConnection()
{}
void offerOnlyCopies (juce::Component&)
{}
void sendX11Message (juce::Component&, const char*)
{}
void deliverHeldX11Events()
{}

#endif

} // namespace pulsewright
