// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#define JUCE_GUI_BASICS_INCLUDE_XHEADERS 1
#include "HostKeyboard.h"

#include "X11Messages.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace pulsewright
{

HostKeyboard::HostKeyboard (juce::Component& c, std::function<bool()> wanted) : component (c), isWanted (std::move (wanted))
{}

#if JUCE_LINUX || JUCE_BSD

struct HostKeyboard::X11
{
    static juce::X11Symbols& functions() { return *juce::X11Symbols::getInstance(); }
    static ::Display* display() { return juce::XWindowSystem::getInstance()->getDisplay(); }

    static bool isInsideAnother (::Window window)
    {
        const juce::XWindowSystemUtilities::ScopedXLock lock;
        ::Window root = 0, parent = 0, *children = nullptr;
        unsigned int numChildren = 0;

        if (functions().xQueryTree (display(), window, &root, &parent, &children, &numChildren) == 0)
            return false;

        if (children != nullptr)
            functions().xFree (children);

        return parent != root;
    }

    // What a window does not ask for, X11 hands to the one around it.
    static void selectKeys (::Window window, bool shouldGetKeys)
    {
        const juce::XWindowSystemUtilities::ScopedXLock lock;
        constexpr long keys = KeyPressMask | KeyReleaseMask;
        XWindowAttributes attributes;

        if (functions().xGetWindowAttributes (display(), window, &attributes) != 0)
            functions().xSelectInput (display(), window, shouldGetKeys ? attributes.your_event_mask | keys : attributes.your_event_mask & ~keys);
    }

    // JUCE calls X11 through a table of function pointers. We replace the one that takes the keyboard. Giving it back
    // afterwards would be too late: hosts react as soon as they lose it. JUCE makes a new table when the last plug-in of
    // a process was removed and another one loads.
    static inline juce::X11Symbols::XSetInputFocus setInputFocus = nullptr; // what the table had
    static inline std::vector<HostKeyboard*> keyboards;

    static void replaceFunction()
    {
        if (auto& entry = functions().xSetInputFocus; entry != setInputFocusIfWanted)
            setInputFocus = std::exchange (entry, setInputFocusIfWanted);
    }

    static void setInputFocusIfWanted (::Display* display, ::Window window, int revertTo, ::Time time)
    {
        const auto keyboard = std::ranges::find (keyboards, window, &HostKeyboard::window);

        if (keyboard == keyboards.end() || (*keyboard)->take())
            setInputFocus (display, window, revertTo, time);
    }

    // A box's list takes the keyboard for itself and, closing, leaves it to the window manager.
    static bool isNobodyActive()
    {
        const auto name = functions().xInternAtom (display(), "_NET_ACTIVE_WINDOW", False);
        const juce::XWindowSystemUtilities::GetXProperty active (display(), functions().xDefaultRootWindow (display()), name, 0, 1, false, XA_WINDOW);
        return ! active.success || active.numItems == 0 || *reinterpret_cast<const ::Window*> (active.data) == 0;
    }

    // The window that had the keyboard may be closed; windowChanged() has seen to the error that X11 would report.
    static void giveTo (::Window owner)
    {
        const juce::XWindowSystemUtilities::ScopedXLock lock;
        setInputFocus (display(), owner, RevertToParent, CurrentTime);
        functions().xFlush (display());
    }
};

HostKeyboard::~HostKeyboard()
{
    std::erase (X11::keyboards, this);
}

void HostKeyboard::windowChanged()
{
    const auto* peer   = component.getPeer();
    const auto present = peer != nullptr ? reinterpret_cast<::Window> (peer->getNativeHandle()) : 0;

    if (present == std::exchange (knownWindow, present))
        return;

    std::erase (X11::keyboards, this);
    window = formerOwner = 0;
    getsKeys             = true;

    if (present == 0)
        return;

    // Hosts take windows away while they are asked about, and in most an error of X11 ends the process.
    ignoreX11ErrorsOfOurConnection();

    if (! X11::isInsideAnother (present))
        return;

    window = present;
    X11::replaceFunction();
    X11::keyboards.push_back (this);
    update();
}

bool HostKeyboard::take()
{
    if (! isWanted())
        return false;

    int ignored = 0;

    if (formerOwner == 0)
        X11::functions().xGetInputFocus (X11::display(), &formerOwner, &ignored);

    setGetsKeys (true);
    return true;
}

void HostKeyboard::setGetsKeys (bool shouldGetKeys)
{
    if (shouldGetKeys != std::exchange (getsKeys, shouldGetKeys))
        X11::selectKeys (window, shouldGetKeys);
}

void HostKeyboard::update()
{
    const auto* peer = component.getPeer();

    if (window == 0 || peer == nullptr)
        return;

    if (! isWanted() && formerOwner != 0)
        if (const auto owner = std::exchange (formerOwner, 0); peer->isFocused() || X11::isNobodyActive())
            X11::giveTo (owner);

    setGetsKeys (isWanted() || component.hasKeyboardFocus (true));
}

#else

HostKeyboard::~HostKeyboard() = default;
void HostKeyboard::windowChanged()
{}
void HostKeyboard::update()
{}

#endif

} // namespace pulsewright
