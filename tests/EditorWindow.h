// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// The window as a component, without a display.

#pragma once

#include "editor/PulsewrightAudioProcessorEditor.h"

#include <memory>
#include <stdexcept>

namespace pulsewright
{

/** A control by the name that a screen reader would say. */
template <typename Control = juce::Component>
Control& find (juce::Component& editor, const juce::String& title)
{
    for (auto* child : editor.getChildren())
        if (child->getTitle() == title)
            if (auto* control = dynamic_cast<Control*> (child))
                return *control;

    throw std::runtime_error ("no control is called " + title.toStdString());
}

struct Window
{
    PulsewrightAudioProcessor processor;
    std::unique_ptr<PulsewrightAudioProcessorEditor> editor = std::make_unique<PulsewrightAudioProcessorEditor> (processor);
};

} // namespace pulsewright
