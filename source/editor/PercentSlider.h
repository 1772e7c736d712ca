// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// A slider that shows and takes whole percentages, by mouse and by keyboard.

#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

namespace pulsewright
{

class PercentSlider final : public juce::Slider
{
public:
    PercentSlider();

    /** Shows and reads whole percentages. Call once a parameter is attached: the attachment brings texts of its own. */
    void showPercentages();

    /** Arrow keys move by what is shown, 1, in a gesture of their own, so that a host records it; return
        opens the text box.
    */
    bool keyPressed (const juce::KeyPress& key) override;

    /** The right button belongs to the host's menu. */
    void mouseDown (const juce::MouseEvent& event) override;

    /** Whether a number is being typed. */
    bool isBeingTyped() const { return typedInto() != nullptr; }

    /** The field that a number is being typed into, or null. */
    juce::TextEditor* typedInto() const;

    void lookAndFeelChanged() override;
};

} // namespace pulsewright
