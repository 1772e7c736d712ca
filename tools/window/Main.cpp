// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Renders the plug-in's own window as a PNG, without a display. `pulsewright-cli window` runs it, which itself needs
// no windows' libraries.
// Usage: pulsewright-window WIDTH HEIGHT SCALE GENRE TAKE > FILE

#include "processor/PulsewrightAudioProcessor.h"
#include "processor/SavedState.h"

#include <cstdio>
#include <memory>

#if JUCE_WINDOWS
#include <fcntl.h>
#include <io.h>
#endif

namespace pulsewright
{

namespace
{
    /** Puts a processor into the state of a project that was saved at a take. */
    void restoreTake (PulsewrightAudioProcessor& processor, const juce::var& genre, std::uint32_t take)
    {
        const juce::ValueTree parameters (SavedState::type, {}, { { "PARAM", { { "id", parameterID::genre }, { "value", genre } } } });
        juce::MemoryBlock bytes;
        SavedState { .seedCounter = take, .locks = {}, .parameters = parameters }.write (bytes);
        processor.setStateInformation (bytes.getData(), static_cast<int> (bytes.getSize()));
    }

    juce::Image pictureOf (PulsewrightAudioProcessor& processor, int width, int height, float scale)
    {
        const std::unique_ptr<juce::AudioProcessorEditor> editor (processor.createEditor());
        editor->setSize (width, height);

        // The status line is the timer's: it has run once by then, however slow the machine. Timers go off in the
        // order in which they are due.
        constexpr int afterFirstTickMs = 150;
        bool hasTicked                 = false;
        juce::Timer::callAfterDelay (afterFirstTickMs, [&hasTicked] { hasTicked = true; });

        while (! hasTicked)
            juce::MessageManager::getInstance()->runDispatchLoopUntil (10);

        return editor->createComponentSnapshot (editor->getLocalBounds(), true, scale);
    }
} // namespace

} // namespace pulsewright

int main (int argc, char* argv[])
{
    if (argc != 6)
    {
        std::fprintf (stderr, "usage: %s WIDTH HEIGHT SCALE GENRE TAKE > FILE\n", argv[0]);
        return 2;
    }

#if JUCE_WINDOWS
    _setmode (_fileno (stdout), _O_BINARY);
#endif

    const juce::ScopedJuceInitialiser_GUI juceIsUp;
    const juce::StringArray values (argv + 1, argc - 1);

    pulsewright::PulsewrightAudioProcessor processor;
    pulsewright::restoreTake (processor, values[3].getIntValue(), static_cast<std::uint32_t> (values[4].getLargeIntValue()));
    const auto picture = pulsewright::pictureOf (processor, values[0].getIntValue(), values[1].getIntValue(), values[2].getFloatValue());

    juce::MemoryOutputStream png;
    juce::PNGImageFormat().writeImageToStream (picture, png);
    const bool isWritten = std::fwrite (png.getData(), 1, png.getDataSize(), stdout) == png.getDataSize() && std::fflush (stdout) == 0;
    return isWritten ? 0 : 1;
}
