// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Whatever a project hands back as a state: what is taken lies in its ranges, and is taken again the same once saved.

#include "FuzzCheck.h"
#include "StateBytes.h"

#include "processor/PulsewrightAudioProcessor.h"
#include "processor/SavedState.h"

namespace pulsewright::fuzz
{

namespace
{
    /** The parameters, with their ranges. */
    const juce::AudioProcessorValueTreeState& layout()
    {
        // Never destroyed: at the end of the program JUCE's own statics, which they need, go first.
        [[maybe_unused]] static const auto& juceIsUp = *new juce::ScopedJuceInitialiser_GUI;
        static const auto& processor                 = *new PulsewrightAudioProcessor;
        return processor.parameters;
    }

    void checkRanges (const SavedState& state)
    {
        for (const auto* parameter : layout().processor.getParameters())
        {
            const auto* ranged = dynamic_cast<const juce::RangedAudioParameter*> (parameter);
            const auto range   = ranged->getNormalisableRange().getRange();
            int times          = 0;

            for (const auto& child : state.parameters)
                if (child["id"].toString() == ranged->paramID)
                {
                    const auto value = static_cast<float> (child["value"]);
                    check (value >= range.getStart() && value <= range.getEnd(), "a value lies in its parameter's range");
                    ++times;
                }

            check (times > 0, "every parameter has a value");
        }
    }

    void run (FuzzedDataProvider input)
    {
        const bool isFramed = input.ConsumeBool();
        const auto text     = input.ConsumeRemainingBytesAsString();
        auto bytes =
            isFramed ? juce::MemoryBlock (text.data(), text.size()) : framed (juce::String::repeatedString (" ", static_cast<int> (text.size())));

        if (! isFramed)
            bytes.copyFrom (text.data(), 8, text.size()); // behind the header; strings of JUCE's take only text

        const auto state = SavedState::read (bytes.getData(), static_cast<int> (bytes.getSize()), layout());

        if (! state)
            return;

        checkRanges (*state);
        juce::MemoryBlock first, second;
        state->write (first);

        const auto again = SavedState::read (first.getData(), static_cast<int> (first.getSize()), layout());
        check (again.has_value(), "what is saved is taken");
        check (again->seedCounter == state->seedCounter && again->locks == state->locks, "counter and locks come back");
        again->write (second);
        check (first == second, "what is saved comes back, byte for byte");
    }
} // namespace

} // namespace pulsewright::fuzz

extern "C" int LLVMFuzzerTestOneInput (const std::uint8_t* data, std::size_t size)
{
    pulsewright::fuzz::run ({ data, size });
    return 0;
}
