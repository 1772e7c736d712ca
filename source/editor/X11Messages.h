// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// What has to be said to X11 beside JUCE. Message thread only, but for X11Survival; on other platforms these do nothing.

#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

namespace pulsewright
{

/** Makes JUCE's connection to the display fit for a first window; to be called before there is one.

    JUCE looks names up that a window manager usually has made. Where there is none, JUCE would use them unmade, an
    error that ends most hosts: they are made here.
*/
void prepareX11Connection();

/** While one exists, the process survives the end of the X server, if it needs X11 only for plug-ins (a host under Wayland,
    or without a window).

    Where JUCE's connection breaks, Xlib returns to JUCE instead of ending the process. A handler for broken connections
    that the process has installed stays, and has to return, as that of JUCE's apps does. Xlib's own handler ends the
    process, so it is no longer called for JUCE's connection. Thread: any.
*/
struct X11Survival
{
    X11Survival();
    ~X11Survival();
    JUCE_DECLARE_NON_COPYABLE (X11Survival)
};

/** Makes Xlib drop the errors of JUCE's connection to the display, until JUCE closes the connection.

    A program that takes a drag may end at any time, and JUCE then sends to a window that is gone. Xlib gives
    such an error to the error handler of the whole process, which in most hosts ends the process. That handler
    is the host's: it is not touched, and still gets the errors of all other connections. The end of a drag
    undoes nothing, since a receiver may ask for the data later, and end then.
*/
void ignoreX11ErrorsOfOurConnection();

/** Has what is dragged out of a component's window copied.

    JUCE offers to move, copy and link, and then refuses everything but a copy. Many programs choose to move
    a file where that is offered.
*/
void offerOnlyCopies (juce::Component& component);

/** Sends an empty client message to the window that a component is in, as another program would.
    @param type  the name of the message's atom
*/
void sendX11Message (juce::Component& component, const char* type);

/** Delivers input that has arrived but waits inside Xlib.

    JUCE waits for its connection to become readable. A request with a reply (where is the pointer?) made
    just when a click arrives reads the click as well, and then nothing becomes readable: the click would
    wait for whatever comes next. Neither would a message to ourselves help, which the next request may read
    as well: so JUCE is made to read what is there. To be called now and then while a window is open; without
    waiting input it costs no system call.
*/
void deliverHeldX11Events();

} // namespace pulsewright
