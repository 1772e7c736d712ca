// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// A window that takes drops by the XDND protocol. It prints "over" when it has agreed to a drop, and what
// was dropped, a line each.
// Usage: xdnd-receiver X Y WIDTH HEIGHT [never-finish]

#include <X11/Xatom.h>
#include <X11/Xlib.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

int main (int argc, char* argv[])
{
    auto* display = argc > 4 ? XOpenDisplay (nullptr) : nullptr;

    if (display == nullptr)
        return 2;

    const bool neverFinishes = argc > 5 && std::strcmp (argv[5], "never-finish") == 0;
    const auto atom          = [display] (const char* name) { return XInternAtom (display, name, False); };
    const auto number        = [argv] (int i) { return std::atoi (argv[i]); }; // NOLINT(cert-err34-c): the window's tests give numbers

    XSetWindowAttributes attributes {};
    attributes.override_redirect = True; // where it is put, whatever the window manager thinks
    attributes.background_pixel  = 0x406080;

    const auto window = XCreateWindow (display,
                                       DefaultRootWindow (display),
                                       number (1),
                                       number (2),
                                       static_cast<unsigned> (number (3)),
                                       static_cast<unsigned> (number (4)),
                                       0,
                                       CopyFromParent,
                                       InputOutput,
                                       CopyFromParent,
                                       CWOverrideRedirect | CWBackPixel,
                                       &attributes);

    const long version = 5;
    XChangeProperty (display, window, atom ("XdndAware"), XA_ATOM, 32, PropModeReplace, reinterpret_cast<const unsigned char*> (&version), 1);
    XMapRaised (display, window);
    std::puts ("ready");
    std::fflush (stdout);

    ::Window source = 0;

    const auto answer = [&] (const char* type, long accepts, Atom action)
    {
        XEvent event {};
        event.xclient.type                                                  = ClientMessage;
        event.xclient.window                                                = source;
        event.xclient.message_type                                          = atom (type);
        event.xclient.format                                                = 32;
        event.xclient.data.l[0]                                             = static_cast<long> (window);
        event.xclient.data.l[1]                                             = accepts;
        event.xclient.data.l[std::strcmp (type, "XdndStatus") == 0 ? 4 : 2] = static_cast<long> (action);
        XSendEvent (display, source, False, NoEventMask, &event);
        XFlush (display);
    };

    for (;;)
    {
        XEvent event;
        XNextEvent (display, &event);

        if (event.type == ClientMessage)
        {
            source          = static_cast<::Window> (event.xclient.data.l[0]);
            const auto type = event.xclient.message_type;

            if (type == atom ("XdndPosition"))
            {
                answer ("XdndStatus", 1, atom ("XdndActionCopy"));
                XSync (display, False); // whoever reads the line may release the button at once
                std::puts ("over");
                std::fflush (stdout);
            }
            else if (type == atom ("XdndDrop"))
                XConvertSelection (display, atom ("XdndSelection"), atom ("text/uri-list"), atom ("DROP"), window, CurrentTime);
        }
        else if (event.type == SelectionNotify && event.xselection.property != 0)
        {
            Atom type {};
            int format {};
            unsigned long items {}, left {};
            unsigned char* data = nullptr;
            XGetWindowProperty (display, window, event.xselection.property, 0, 65536, True, AnyPropertyType, &type, &format, &items, &left, &data);
            std::printf ("%.*s\n", static_cast<int> (items), reinterpret_cast<const char*> (data));
            std::fflush (stdout);
            XFree (data);

            if (! neverFinishes)
                answer ("XdndFinished", 1, atom ("XdndActionCopy"));
        }
    }
}
