// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Whatever a project hands back as a state: the plug-in is whole afterwards, and what it then saves brings it back.

#include "MusicChecks.h"
#include "StateBytes.h"

#include "processor/PulsewrightAudioProcessor.h"

#include "generation/GrooveGenerator.h"

#include <cmath>

namespace pulsewright::fuzz
{

namespace
{
    /** JUCE, and the one instance that everything is done to. No window, and no one runs the message loop. */
    struct Plugin
    {
        const juce::ScopedJuceInitialiser_GUI juceIsUp;
        PulsewrightAudioProcessor processor;
        const juce::MemoryBlock opening = saved (processor);
    };

    Plugin& plugin()
    {
        static Plugin instance;
        return instance;
    }

    //==============================================================================
    /** ASCII; JUCE's strings may not be given anything that is not text. */
    juce::String anyText (FuzzedDataProvider& input)
    {
        juce::String text;
        for (const auto byte : input.ConsumeRandomLengthString (12))
            text << juce::String::charToString (static_cast<juce::juce_wchar> (byte & 0x7F));

        return text;
    }

    juce::MemoryBlock framedBytes (const std::string& bytes)
    {
        auto state = framed (juce::String::repeatedString (" ", static_cast<int> (bytes.size())));
        state.copyFrom (bytes.data(), 8, bytes.size()); // behind the header
        return state;
    }

    /** A well-formed state with any texts for values: numbers, nearly numbers, what is missing or there twice. */
    juce::MemoryBlock anyState (FuzzedDataProvider& input)
    {
        static constexpr const char* usual[] {
            "0", "1", "0.48", "-0", "99", "nan", "-nan", "inf", "1e999", "1e-999", "0x1p4", "", " 3", "4294967298"
        };

        const auto anyValue = [&input] { return input.ConsumeBool() ? juce::String (input.PickValueInArray (usual)) : anyText (input); };
        const auto escaped  = [] (const juce::String& text) { return text.replace ("&", "&amp;").replace ("<", "&lt;").replace ("\"", "&quot;"); };

        juce::String attributes, children;

        for (const auto* name : { "seedCounter", "lock0", "lock1", "lock2", "lock3", "later" })
            if (input.ConsumeBool())
                attributes << name << "=\"" << escaped (anyValue()) << "\" ";

        for (auto* parameter : plugin().processor.getParameters())
            for (int times = input.ConsumeIntegralInRange (0, 2); times > 0; --times)
                if (const auto* ranged = dynamic_cast<juce::RangedAudioParameter*> (parameter))
                    children << parameterElement (ranged->paramID.toRawUTF8(), escaped (anyValue()));

        return framed (stateText (attributes, children));
    }

    /** A state that was saved, with bytes changed, taken out and put in. */
    juce::MemoryBlock damagedState (FuzzedDataProvider& input)
    {
        auto state = plugin().opening;

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

    juce::MemoryBlock anyBytes (FuzzedDataProvider& input)
    {
        switch (input.ConsumeIntegralInRange (0, 3))
        {
            case 0: return anyState (input);
            case 1: return damagedState (input);
            case 2: return framedBytes (input.ConsumeRemainingBytesAsString());
            default:
            {
                const auto bytes = input.ConsumeRemainingBytes<char>();
                return { bytes.data(), bytes.size() };
            }
        }
    }

    //==============================================================================
    void checkParameters (const PulsewrightAudioProcessor& processor)
    {
        for (auto* parameter : processor.getParameters())
        {
            const auto value = parameter->getValue();
            check (std::isfinite (value) && value >= 0.0f && value <= 1.0f, "a parameter is a number from 0 to 1");

            const auto* ranged = dynamic_cast<juce::RangedAudioParameter*> (parameter);
            const auto stored  = processor.parameters.getRawParameterValue (ranged->paramID)->load();
            const auto& range  = ranged->getNormalisableRange();
            check (stored >= range.start && stored <= range.end, "what the generator reads lies in the parameter's range");
        }
    }

    /** The music that a restore gives: that of the settings and the counter, a two-bar verse. */
    void checkMusic (const PulsewrightAudioProcessor& processor)
    {
        const ParameterReader values (processor.parameters);
        GenerationSettings settings;
        settings.genre = values.genre();
        settings.setValues (values.settingsValues());
        settings.seed = saltOf (processor.getSeedCounter());

        const auto song = processor.getSong();
        checkGenerated (processor.getPattern());
        checkSong (song);
        check (processor.getPattern() == GrooveGenerator::generate (settings, SectionType::verse, 2, 0), "the pattern is that of the counter");
        check (! song.sections.empty() && song.seed == settings.seed, "the song is that of the counter");
    }

    struct Heard
    {
        DrumPattern pattern;
        SongArrangement song;
        std::uint32_t counter;
        std::array<bool, laneCount> locks;

        bool operator== (const Heard&) const = default;
    };

    Heard heardFrom (const PulsewrightAudioProcessor& p)
    {
        return { p.getPattern(),
                 p.getSong(),
                 p.getSeedCounter(),
                 { p.isLaneLocked (0), p.isLaneLocked (1), p.isLaneLocked (2), p.isLaneLocked (3) } };
    }

    void run (FuzzedDataProvider input)
    {
        auto& [juceIsUp, processor, opening] = plugin();
        restore (processor, opening); // so that an input does the same whatever came before it

        const auto restores = processor.getRestoreCount();
        restore (processor, anyBytes (input));
        checkParameters (processor);
        checkMusic (processor);

        const auto first = saved (processor);
        const auto heard = heardFrom (processor);
        check (processor.getRestoreCount() != restores || first == opening, "what is refused changes nothing");

        // Through the opening state again: a save that were refused must not pass for one that was taken.
        restore (processor, opening);
        restore (processor, first);
        check (saved (processor) == first, "what is saved comes back, byte for byte");
        check (heardFrom (processor) == heard, "what is saved brings back the music");
        checkParameters (processor);
    }
} // namespace

} // namespace pulsewright::fuzz

extern "C" int LLVMFuzzerTestOneInput (const std::uint8_t* data, std::size_t size)
{
    pulsewright::fuzz::run ({ data, size });
    return 0;
}
