// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// What a project may hand back as a state, made of a fuzzer's bytes.

#pragma once

#include "FuzzCheck.h"
#include "StateBytes.h"

namespace pulsewright::fuzz
{

/** ASCII; JUCE's strings may not be given anything that is not text. */
inline juce::String anyText (FuzzedDataProvider& input)
{
    juce::String text;
    for (const auto byte : input.ConsumeRandomLengthString (12))
        text << juce::String::charToString (static_cast<juce::juce_wchar> (byte & 0x7F));

    return text;
}

inline juce::MemoryBlock framedBytes (const std::string& bytes)
{
    auto state = framed (juce::String::repeatedString (" ", static_cast<int> (bytes.size())));
    state.copyFrom (bytes.data(), 8, bytes.size()); // behind the header
    return state;
}

/** A well-formed state with any texts for values: numbers, nearly numbers, what is missing or there twice. */
inline juce::MemoryBlock anyState (FuzzedDataProvider& input, const juce::AudioProcessor& ours)
{
    static constexpr const char* usual[] { "0", "1", "0.48", "-0", "99", "nan", "-nan", "inf", "1e999", "1e-999", "0x1p4", "", " 3", "4294967298" };

    const auto anyValue = [&input] { return input.ConsumeBool() ? juce::String (input.PickValueInArray (usual)) : anyText (input); };
    const auto escaped  = [] (const juce::String& text) { return text.replace ("&", "&amp;").replace ("<", "&lt;").replace ("\"", "&quot;"); };

    juce::String attributes, children;

    for (const auto* name : { "seedCounter", "lock0", "lock1", "lock2", "lock3", "later" })
        if (input.ConsumeBool())
            attributes << name << "=\"" << escaped (anyValue()) << "\" ";

    for (const auto* parameter : ours.getParameters())
        for (int times = input.ConsumeIntegralInRange (0, 2); times > 0; --times)
            if (const auto* withID = dynamic_cast<const juce::AudioProcessorParameterWithID*> (parameter))
                children << parameterElement (withID->paramID.toRawUTF8(), escaped (anyValue()));

    return framed (stateText (attributes, children));
}

/** A state that was saved, with bytes changed, taken out and put in. */
inline juce::MemoryBlock damagedState (FuzzedDataProvider& input, juce::MemoryBlock state)
{
    while (input.remaining_bytes() > 0 && state.getSize() > 0)
    {
        const auto place = input.ConsumeIntegralInRange<std::size_t> (0, state.getSize() - 1);

        switch (input.ConsumeIntegralInRange (0, 2))
        {
            case 0: state[place] = input.ConsumeIntegral<char>(); break;
            case 1: state.removeSection (place, input.ConsumeIntegralInRange<std::size_t> (1, 40)); break;
            default:
            {
                const auto text = input.ConsumeRandomLengthString (40);
                state.insert (text.data(), text.size(), place);
            }
        }
    }

    return state;
}

/** @param ours  whose parameters a state may name
    @param good  a state that was saved, to damage
*/
inline juce::MemoryBlock anyBytes (FuzzedDataProvider& input, const juce::AudioProcessor& ours, const juce::MemoryBlock& good)
{
    switch (input.ConsumeIntegralInRange (0, 3))
    {
        case 0: return anyState (input, ours);
        case 1: return damagedState (input, good);
        case 2: return framedBytes (input.ConsumeRemainingBytesAsString());
        default:
        {
            const auto bytes = input.ConsumeRemainingBytes<char>();
            return { bytes.data(), bytes.size() };
        }
    }
}

} // namespace pulsewright::fuzz
