// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// The window and its processor, on a display or without one.

#pragma once

#include "editor/PulsewrightAudioProcessorEditor.h"

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <vector>

namespace pulsewright
{

/** Lets the window live. Counted in rounds, not by the clock: each handles all that has arrived, however
    busy the machine is.
*/
inline void runFor (int milliseconds)
{
    for (int i = 0; i < milliseconds; i += 10)
        juce::MessageManager::getInstance()->runDispatchLoopUntil (10);
}

inline std::vector<std::uint8_t> bytesIn (const juce::File& file)
{
    juce::MemoryBlock block;
    file.loadFileAsData (block);
    return { block.begin(), block.end() };
}

struct EditorWindow
{
    /** A control by the name that a screen reader would say. */
    template <typename Control = juce::Component>
    Control& find (const juce::String& title) const
    {
        for (auto* child : editor->getChildren())
            if (child->getTitle() == title)
                return dynamic_cast<Control&> (*child);

        throw std::runtime_error ("no control is called " + title.toStdString());
    }

    PulsewrightAudioProcessor processor;
    std::unique_ptr<PulsewrightAudioProcessorEditor> editor = std::make_unique<PulsewrightAudioProcessorEditor> (processor);
};

} // namespace pulsewright
