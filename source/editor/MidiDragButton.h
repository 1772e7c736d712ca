// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// A button that is dragged out of the window as a MIDI file.

#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

#include <functional>

namespace pulsewright
{

class MidiDragButton final : public juce::TextButton
{
public:
    /** @param provider  called once a drag; returns the file to drag, or none to drag nothing */
    MidiDragButton (const juce::String& label, std::function<juce::File()> provider);

    void mouseDown (const juce::MouseEvent& event) override;
    void mouseDrag (const juce::MouseEvent& event) override;

    /** Hands the file to the window system. @returns whether the drag has begun. Replaced in tests. */
    std::function<bool (const juce::File&)> startDrag;

    /** Told of each file that was to be dragged, and whether the drag has begun. */
    std::function<void (const juce::File&, bool isStarted)> onDrag = [] (const juce::File&, bool) {};

private:
    std::function<juce::File()> fileProvider;
    bool dragStarted = false;
};

} // namespace pulsewright
