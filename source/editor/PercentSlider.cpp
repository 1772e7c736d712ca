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

    if (key == juce::KeyPress::returnKey)
    {
        showTextBox();
        return true;
    }

    if (! isUp && ! isDown)
        return false;

    const ScopedDragNotification gesture (*this);
    setValue (getValue() + (isUp ? shownStep : -shownStep), juce::sendNotificationSync);
    return true;
}

juce::TextEditor* PercentSlider::typedInto() const
{
    for (auto* child : getChildren())
        if (const auto* number = dynamic_cast<const juce::Label*> (child); number != nullptr && number->isBeingEdited())
            return number->getCurrentTextEditor();

    return nullptr;
}

void PercentSlider::lookAndFeelChanged()
{
    Slider::lookAndFeelChanged(); // makes the text box

    for (auto* child : getChildren())
    {
        child->setWantsKeyboardFocus (false); // one stop for the tab key, not two
        child->setColour (juce::Label::outlineWhenEditingColourId, juce::Colours::transparentBlack);
        child->setColour (juce::TextEditor::focusedOutlineColourId, juce::Colours::transparentBlack);
    }
}

void PercentSlider::mouseDown (const juce::MouseEvent& event)
{
    if (! event.mods.isPopupMenu())
        Slider::mouseDown (event);
}

} // namespace pulsewright
