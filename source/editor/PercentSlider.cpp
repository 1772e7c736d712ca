// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "PercentSlider.h"

#include "processor/Parameters.h"

namespace pulsewright
{

PercentSlider::PercentSlider()
{
    setWantsKeyboardFocus (true);
    setMouseClickGrabsKeyboardFocus (false);
}

void PercentSlider::showPercentages()
{
    textFromValueFunction = [] (double value) { return percentText (static_cast<float> (value)); };
    valueFromTextFunction = [] (const juce::String& text) { return static_cast<double> (percentValue (text)); };
    updateText();
}

bool PercentSlider::keyPressed (const juce::KeyPress& key)
{
    constexpr double shownStep = 0.01;

    const bool isUp   = key == juce::KeyPress::upKey || key == juce::KeyPress::rightKey;
    const bool isDown = key == juce::KeyPress::downKey || key == juce::KeyPress::leftKey;

    if (! isUp && ! isDown)
        return Slider::keyPressed (key);

    const ScopedDragNotification gesture (*this);
    setValue (getValue() + (isUp ? shownStep : -shownStep), juce::sendNotificationSync);
    return true;
}

void PercentSlider::mouseDown (const juce::MouseEvent& event)
{
    if (! event.mods.isPopupMenu())
        Slider::mouseDown (event);
}

} // namespace pulsewright
