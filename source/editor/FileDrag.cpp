// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "FileDrag.h"

#include "X11Messages.h"

namespace pulsewright
{

namespace
{
    // Properties of the window.
    const juce::Identifier draggingPeer ("draggingPeer"); // the id of the peer that a drag left from
    const juce::Identifier overruled ("overruled");       // present if we have ended the drag in the receiver's place

    /** Answers for the receiver, when the last position message of a finished drag was not answered: JUCE would wait for
        that answer in the next drag. Do not call this during a drag, or JUCE ignores the true answer.
    */
    void answerForReceiver (juce::Component& window)
    {
        sendX11Message (window, "XdndStatus");
    }
} // namespace

bool startFileDrag (const juce::File& file, juce::Component& source)
{
    auto* window = source.getTopLevelComponent();
    ignoreX11ErrorsOfOurConnection();
    offerOnlyCopies (source);

    // On X11 the text given here is what the receiver gets: a list of addresses, each of which ends its line (RFC 2483).
#if JUCE_LINUX || JUCE_BSD
    const auto name = fileUri (file) + "\r\n";
#else
    const auto name = file.getFullPathName();
#endif

    if (const auto* peer = source.getPeer())
        window->getProperties().set (draggingPeer, static_cast<int> (peer->getUniqueID()));

    const auto isOver = [window = juce::Component::SafePointer<juce::Component> (window)]
    {
        if (window == nullptr)
            return;

        window->getProperties().remove (draggingPeer);

        if (! window->getProperties().remove (overruled))
            answerForReceiver (*window);
    };

    // Where it is refused, the next press ends whatever is in the way.
    return juce::DragAndDropContainer::performExternalDragDropOfFiles ({ name }, false, &source, isOver);
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
    if (! isFileDragUnderWay (source))
        return;

    auto& window = *source.getTopLevelComponent();
    window.getProperties().set (overruled, true);
    answerForReceiver (window);
    sendX11Message (window, "XdndFinished");
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
