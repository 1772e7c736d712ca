// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "MidiDragButton.h"

#include "FileDrag.h"

namespace pulsewright
{

namespace
{
    constexpr int dragStartDistance = 5; // pixels that a press may wander and still be a press
}

MidiDragButton::MidiDragButton (const juce::String& label, std::function<juce::File()> provider)
    : TextButton (label), fileProvider (std::move (provider))
{
    setTooltip ("Drag this button into the DAW arrangement");

    startDrag = [this] (const juce::File& file) { return startFileDrag (file, *this); };
}

void MidiDragButton::mouseDown (const juce::MouseEvent& event)
{
    dragStarted = false;
    endUnansweredFileDrag (*this);
    TextButton::mouseDown (event);
}

void MidiDragButton::mouseDrag (const juce::MouseEvent& event)
{
    if (! dragStarted && ! isFileDragUnderWay (*this) && event.getDistanceFromDragStart() > dragStartDistance)
    {
        dragStarted     = true;
        const auto file = fileProvider();

        if (file != juce::File() && file.existsAsFile())
            onDrag (file, startDrag (file));
    }

    TextButton::mouseDrag (event);
}

} // namespace pulsewright
