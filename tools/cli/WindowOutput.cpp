// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "Output.h"
#include "OutputFile.h"

#include "processor/PulsewrightAudioProcessor.h"

#include <memory>

namespace pulsewright::cli
{

namespace
{
    /** Puts a processor into the state of a project that was saved at a take. */
    void restoreTake (PulsewrightAudioProcessor& processor, const WindowPicture& picture)
    {
        juce::XmlElement state ("PulsewrightState");
        state.setAttribute ("seedCounter", juce::String (picture.take));

        auto* genre = state.createNewChildElement ("PARAM");
        genre->setAttribute ("id", parameterID::genre);
        genre->setAttribute ("value", picture.genre);

        juce::MemoryBlock bytes;
        juce::AudioProcessor::copyXmlToBinary (state, bytes);
        processor.setStateInformation (bytes.getData(), static_cast<int> (bytes.getSize()));
    }
} // namespace

void writeWindowPicture (const std::string& target, const WindowPicture& picture)
{
    const juce::ScopedJuceInitialiser_GUI juceIsUp;

    PulsewrightAudioProcessor processor;
    restoreTake (processor, picture);

    const std::unique_ptr<juce::AudioProcessorEditor> editor (processor.createEditor());
    editor->setSize (picture.width, picture.height);

    // The status line is the timer's: it has run once by then, however slow the machine. Timers go off in the
    // order in which they are due.
    constexpr int afterFirstTickMs = 150;
    bool hasTicked                 = false;
    juce::Timer::callAfterDelay (afterFirstTickMs, [&hasTicked] { hasTicked = true; });

    while (! hasTicked)
        juce::MessageManager::getInstance()->runDispatchLoopUntil (10);

    const auto image = editor->createComponentSnapshot (editor->getLocalBounds(), true, picture.scale);
    juce::MemoryOutputStream png;
    juce::PNGImageFormat().writeImageToStream (image, png);
    writeOutput (target, { static_cast<const char*> (png.getData()), png.getDataSize() });
}

} // namespace pulsewright::cli
