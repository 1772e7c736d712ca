// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Whatever a project hands back as a state: the plug-in is whole afterwards, and what it then saves brings it back.

#include "MusicChecks.h"
#include "StateInputs.h"

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
        restore (processor, anyBytes (input, processor, opening));
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
