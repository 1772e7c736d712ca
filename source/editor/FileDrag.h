// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Drags files out of the window. Message thread only.

#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

namespace pulsewright
{

/** Hands a file to the window system to be dragged, as a copy.
    @param source  the pressed component, shown in a window
    @returns whether the drag has begun; it does not while another program holds the pointer
*/
bool startFileDrag (const juce::File& file, juce::Component& source);

/** @returns whether a file dragged out of the source's window is still on its way, or lies with a receiver
    that has not said that it is done
*/
bool isFileDragUnderWay (juce::Component& source);

/** On X11 a drag is over when the receiver says so, and until then JUCE starts no other from the same
    window: one careless receiver would end all dragging. This says it in the receiver's place; the drag
    is over a few messages later. Call it on a press, which shows that nothing is being dragged any more.
*/
void endUnansweredFileDrag (juce::Component& source);

/** A file's address as other programs understand it: blanks, per cent signs and what is not ASCII escaped. */
juce::String fileUri (const juce::File& file);

} // namespace pulsewright
