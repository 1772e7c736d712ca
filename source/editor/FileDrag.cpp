// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "FileDrag.h"

#include "X11Messages.h"

namespace pulsewright
{

namespace
{
    const juce::Identifier draggingPeer ("draggingPeer"); // of the window: the id of the peer that a drag left from
} // namespace

void startFileDrag (const juce::File& file, juce::Component& source)
{
    auto* window = source.getTopLevelComponent();

    // On X11 the text given here is what the receiver gets, so it has to be an address.
#if JUCE_LINUX || JUCE_BSD
    const auto name = fileUri (file);
#else
    const auto name = file.getFullPathName();
#endif

    if (const auto* peer = source.getPeer())
        window->getProperties().set (draggingPeer, static_cast<int> (peer->getUniqueID()));

    const auto isOver = [window = juce::Component::SafePointer<juce::Component> (window)]
    {
        if (window != nullptr)
            window->getProperties().remove (draggingPeer);
    };

    if (! juce::DragAndDropContainer::performExternalDragDropOfFiles ({ name }, false, &source, isOver))
        isOver();
}

bool isFileDragUnderWay (juce::Component& source)
{
    const auto* peer = source.getPeer();
    const auto* from = source.getTopLevelComponent()->getProperties().getVarPointer (draggingPeer);
    return peer != nullptr && from != nullptr && *from == juce::var (static_cast<int> (peer->getUniqueID()));
}

void endUnansweredFileDrag (juce::Component& source)
{
#if JUCE_LINUX || JUCE_BSD
    // A receiver may owe its answer to where the pointer is as well, though the drag is over: JUCE waits for it.
    sendX11Message (source, "XdndStatus");

    if (isFileDragUnderWay (source))
        sendX11Message (source, "XdndFinished");
#else
    source.getTopLevelComponent()->getProperties().remove (draggingPeer);
#endif
}

juce::String fileUri (const juce::File& file)
{
    juce::StringArray parts;
    parts.addTokens (file.getFullPathName(), "/", {});

    for (auto& part : parts)
        part = juce::URL::addEscapeChars (part, true);

    return "file://" + parts.joinIntoString ("/");
}

} // namespace pulsewright
