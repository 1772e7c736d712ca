// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "MidiDragButton.h"

#include "UnansweredDrag.h"

namespace pulsewright
{

namespace
{
    constexpr int dragStartDistance = 5; // pixels that a press may wander and still be a press
}

juce::String fileUri (const juce::File& file)
{
    juce::StringArray parts;
    parts.addTokens (file.getFullPathName(), "/", {});

    for (auto& part : parts)
        part = juce::URL::addEscapeChars (part, true);

    return "file://" + parts.joinIntoString ("/");
}

MidiDragButton::MidiDragButton (const juce::String& label, std::function<juce::File()> provider)
    : TextButton (label), fileProvider (std::move (provider))
{
    setTooltip ("Drag this button into the DAW arrangement");

    startDrag = [this] (const juce::File& file)
    {
    // On X11 the text given here is what the receiver gets, so it has to be an address.
#if JUCE_LINUX
        juce::DragAndDropContainer::performExternalDragDropOfFiles ({ fileUri (file) }, false, this);
#else
        juce::DragAndDropContainer::performExternalDragDropOfFiles ({ file.getFullPathName() }, false, this);
#endif
    };
}

void MidiDragButton::mouseDown (const juce::MouseEvent& event)
{
    dragStarted = false;
    endUnansweredDrag (*this);
    TextButton::mouseDown (event);
}

void MidiDragButton::mouseDrag (const juce::MouseEvent& event)
{
    if (! dragStarted && event.getDistanceFromDragStart() > dragStartDistance)
    {
        dragStarted     = true;
        const auto file = fileProvider();

        if (file != juce::File() && file.existsAsFile())
            startDrag (file);
    }

    TextButton::mouseDrag (event);
}

} // namespace pulsewright
