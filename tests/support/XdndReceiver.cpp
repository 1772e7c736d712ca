// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// A window that takes drops by the XDND protocol. It prints "over" when it has agreed to a drop, and what
// was dropped. Like most programs it moves a file where that is offered, and copies it otherwise.
// Usage: xdnd-receiver X Y WIDTH HEIGHT finish|never-finish|MESSAGE
// With MESSAGE, as XdndEnter, XdndPosition or XdndDrop, it answers that and goes; it prints "gone" when its window is no more.

#include <X11/Xatom.h>
#include <X11/Xlib.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace
{
void say (const char* line)
{
    std::puts (line);
    std::fflush (stdout); // whoever reads it waits for it
}

class DropWindow
{
public:
    DropWindow (Display* displayToUse, int x, int y, unsigned width, unsigned height)
        : display (displayToUse), window (make (displayToUse, x, y, width, height))
    {
        const long version = 5;
        XChangeProperty (display, window, atom ("XdndAware"), XA_ATOM, 32, PropModeReplace, reinterpret_cast<const unsigned char*> (&version), 1);
        XMapRaised (display, window);
    }

    void take (const XClientMessageEvent& message)
    {
        source = static_cast<::Window> (message.data.l[0]);

        if (message.message_type == atom ("XdndPosition"))
        {
            answer ("XdndStatus", 4);
            XSync (display, False); // whoever reads the line may release the button at once
            say ("over");
        }
        else if (message.message_type == atom ("XdndDrop"))
        {
            XConvertSelection (display, atom ("XdndSelection"), atom ("text/uri-list"), atom ("DROP"), window, CurrentTime);
        }
    }

    void printDropped (Atom property)
    {
        const auto dropped = propertyOf (window, property);
        say (std::string (dropped.begin(), dropped.end()).c_str());
    }

    void finish() { answer ("XdndFinished", 2); }

private:
    std::vector<long> propertyOf (::Window owner, Atom property) const
    {
        Atom type {};
        int format {};
        unsigned long items {}, left {};
        unsigned char* data = nullptr;
        XGetWindowProperty (display, owner, property, 0, 65536, False, AnyPropertyType, &type, &format, &items, &left, &data);

        std::vector<long> values (items);
        for (std::size_t i = 0; i < items; ++i)
            values[i] = format == 8 ? data[i] : reinterpret_cast<const long*> (data)[i];
        XFree (data);
        return values;
    }

    Atom chosenAction() const
    {
        const auto offered = propertyOf (source, atom ("XdndActionList"));
        const auto move    = atom ("XdndActionMove");
        return std::ranges::count (offered, static_cast<long> (move)) > 0 ? move : atom ("XdndActionCopy");
    }

    static ::Window make (Display* display, int x, int y, unsigned width, unsigned height)
    {
        XSetWindowAttributes attributes {};
        attributes.override_redirect = True; // where it is put, whatever the window manager thinks
        attributes.background_pixel  = 0x406080;

        return XCreateWindow (display,
                              DefaultRootWindow (display),
                              x,
                              y,
                              width,
                              height,
                              0,
                              CopyFromParent,
                              InputOutput,
                              CopyFromParent,
                              CWOverrideRedirect | CWBackPixel,
                              &attributes);
    }

    Atom atom (const char* name) const { return XInternAtom (display, name, False); }

    /** Accepts. @param actionPlace  where the message has its action */
    void answer (const char* type, int actionPlace)
    {
        XEvent event {};
        event.xclient.type                = ClientMessage;
        event.xclient.window              = source;
        event.xclient.message_type        = atom (type);
        event.xclient.format              = 32;
        event.xclient.data.l[0]           = static_cast<long> (window);
        event.xclient.data.l[1]           = 1;
        event.xclient.data.l[actionPlace] = static_cast<long> (chosenAction());
        XSendEvent (display, source, False, NoEventMask, &event);
        XFlush (display);
    }

    Display* const display;
    const ::Window window;
    ::Window source = 0; // that drags
};
} // namespace

int main (int argc, char* argv[])
{
    auto* display = argc > 5 ? XOpenDisplay (nullptr) : nullptr;

    if (display == nullptr)
        return 2;

    const auto number        = [argv] (int i) { return std::atoi (argv[i]); }; // NOLINT(cert-err34-c): the window's tests give numbers
    const bool neverFinishes = std::strcmp (argv[5], "never-finish") == 0;
    const auto lastMessage   = XInternAtom (display, argv[5], False);

    DropWindow window (display, number (1), number (2), static_cast<unsigned> (number (3)), static_cast<unsigned> (number (4)));
    say ("ready");

    for (;;)
    {
        XEvent event;
        XNextEvent (display, &event);

        if (event.type == ClientMessage)
        {
            window.take (event.xclient);

            if (event.xclient.message_type == lastMessage)
            {
                XCloseDisplay (display);
                say ("gone");
                return 0;
            }
        }
        else if (event.type == SelectionNotify && event.xselection.property != 0)
        {
            window.printDropped (event.xselection.property);

            if (! neverFinishes)
                window.finish();
        }
    }
}
