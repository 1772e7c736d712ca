// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Ends a drag out of the window that its receiver has left hanging.

#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

namespace pulsewright
{

/** On X11 a drag is over when the receiver says so, and until then JUCE starts no other from the same
    window: one careless receiver would end all dragging. This says it in the receiver's place. Call it
    when a new press shows that nothing is being dragged any more; elsewhere it does nothing.
*/
void endUnansweredDrag (juce::Component& source);

} // namespace pulsewright
