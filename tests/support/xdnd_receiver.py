#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 Tolm
# SPDX-License-Identifier: AGPL-3.0-only

"""A window that takes drops by the XDND protocol. It prints "over" when it has agreed to a drop, and what was dropped.

Usage: xdnd_receiver.py X Y WIDTH HEIGHT finish|never-finish|MESSAGE (Debian's Python, which has Xlib)
Like most programs it moves a file where that is offered, and copies it otherwise. With MESSAGE, as XdndEnter, XdndPosition
or XdndDrop, it answers that and goes; it prints "gone" when its window is no more.
"""
import sys

from Xlib import X, Xatom
from Xlib.display import Display
from Xlib.protocol.event import ClientMessage

x, y, width, height = map(int, sys.argv[1:5])
manner = sys.argv[5]
display = Display()
atom = display.get_atom

# Where it is put, whatever the window manager thinks.
window = display.screen().root.create_window(x, y, width, height, 0, X.CopyFromParent, override_redirect=True, background_pixel=0x406080)
window.change_property(atom("XdndAware"), Xatom.ATOM, 32, [5])
window.map()
window.configure(stack_mode=X.Above)


def say(line):
    display.sync()  # whoever reads it may act at once
    print(line, flush=True)


def answer(source, kind, action_place):
    offered = source.get_full_property(atom("XdndActionList"), X.AnyPropertyType)
    move = atom("XdndActionMove")
    values = [window.id, 1, 0, 0, 0]
    values[action_place] = move if offered and move in offered.value else atom("XdndActionCopy")
    source.send_event(ClientMessage(window=source, client_type=atom(kind), data=(32, values)))


say("ready")

while True:
    event = display.next_event()

    if event.type == X.ClientMessage:
        kind, source = display.get_atom_name(event.client_type), display.create_resource_object("window", event.data[1][0])
        if kind == "XdndPosition":
            answer(source, "XdndStatus", 4)
            say("over")
        elif kind == "XdndDrop":
            window.convert_selection(atom("XdndSelection"), atom("text/uri-list"), atom("DROP"), X.CurrentTime)
        if kind == manner:
            display.close()
            print("gone", flush=True)
            break
    elif event.type == X.SelectionNotify and event.property:
        say(window.get_full_property(event.property, X.AnyPropertyType).value.decode())
        if manner != "never-finish":
            answer(source, "XdndFinished", 2)
            display.flush()
