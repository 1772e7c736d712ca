// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "HostLog.h"
#include "ReferenceCases.h"
#include "StateBytes.h"
#include "TransportPlayHead.h"

#include "processor/PulsewrightAudioProcessor.h"

#include <cmath>
#include <limits>
#include <map>
#include <random>

namespace pulsewright
{

namespace
{
    constexpr double rate = 48000.0;

    void set (PulsewrightAudioProcessor& processor, const char* id, float plainValue)
    {
        auto* parameter = processor.parameters.getParameter (id);
        parameter->setValueNotifyingHost (parameter->convertTo0to1 (plainValue));
    }

    /** The settings that the processor's parameters stand for, with a salt. */
    GenerationSettings settingsOf (const PulsewrightAudioProcessor& processor, std::uint32_t salt)
    {
        const ParameterReader values (processor.parameters);
        GenerationSettings settings;
        settings.genre = values.genre();
        settings.setValues (values.settingsValues());
        settings.seed = salt;
        return settings;
    }

    using Messages = std::initializer_list<juce::MidiMessage>;

    /** A processor that is played block by block. */
    struct Player
    {
        explicit Player (PulsewrightAudioProcessor& p) : processor (p)
        {
            processor.setPlayHead (&playHead);
            processor.prepareToPlay (rate, 512);
        }

        ~Player() { processor.setPlayHead (nullptr); }

        void play (int numSamples, Messages incoming = {})
        {
            midi.clear();
            for (const auto& message : incoming)
                midi.addEvent (message, static_cast<int> (message.getTimeStamp()));

            buffer.setSize (2, numSamples);
            processor.processBlock (buffer, midi);
        }

        /** Goes on for a second and gives the note-ons. */
        std::vector<int> nextNotes (Messages incoming = {})
        {
            play (static_cast<int> (rate), incoming);
            std::vector<int> notes;
            for (const auto event : midi)
                if (event.getMessage().isNoteOn() && event.getMessage().getChannel() == 10)
                    notes.push_back (event.getMessage().getNoteNumber());
            return notes;
        }

        /** The same from a beat of a host that rolls: two beats. */
        std::vector<int> notesFrom (double ppq, Messages incoming = {})
        {
            playHead.moveTo ({ .ppq = ppq, .bpm = 120.0 });
            return nextNotes (incoming);
        }

        PulsewrightAudioProcessor& processor;
        TransportPlayHead playHead;
        juce::AudioBuffer<float> buffer;
        juce::MidiBuffer midi;
    };

    std::vector<int> notesIn (const DrumPattern& pattern, double from, double to)
    {
        std::vector<int> notes;
        for (const auto& hit : pattern.hits)
            if (hit.start >= from && hit.start < to)
                notes.push_back (static_cast<int> (hit.note));
        return notes;
    }

    juce::MidiMessage trigger (int slot, int velocity = 100, int channel = 3)
    {
        return juce::MidiMessage (0x8F + channel, 60 + slot, velocity);
    }
} // namespace

//==============================================================================
TEST (Processor, IsWhatHostsExpect)
{
    PulsewrightAudioProcessor processor;
    EXPECT_FALSE (processor.isMidiEffect() || processor.supportsMPE());
    EXPECT_EQ (processor.getNumPrograms(), 1);
    EXPECT_EQ (processor.getProgramName (0) + processor.getBus (false, 0)->getName(), "Output");

    juce::String names;
    for (int note = 0; note < 128; ++note)
        if (const auto name = processor.getNameForMidiNoteNumber (note, 10))
            names << note << " " << *name << ", ";

    EXPECT_EQ (names,
               "36 Kick, 37 Side Stick, 38 Snare, 40 Second Snare, 42 Closed Hat, 45 Low Tom, 46 Open Hat, 47 Mid Tom, 50 High Tom, "
               "60 Section 1, 61 Section 2, 62 Section 3, 63 Section 4, 64 Section 5, 65 Section 6, 66 Section 7, 67 Section 8, ");

    const auto supports = [&] (const juce::AudioChannelSet& set)
    {
        juce::AudioProcessor::BusesLayout layout;
        layout.outputBuses.add (set);
        return processor.checkBusesLayoutSupported (layout);
    };
    EXPECT_TRUE (supports (juce::AudioChannelSet::mono()) && supports (juce::AudioChannelSet::stereo()));
    EXPECT_FALSE (supports (juce::AudioChannelSet::disabled()) || supports (juce::AudioChannelSet::quadraphonic()));
}

TEST (Processor, OpensWithATwoBarVerseAndASong)
{
    const PulsewrightAudioProcessor processor;
    const auto settings = settingsOf (processor, GenerationSettings::defaultSalt);

    EXPECT_EQ (processor.getPattern(), GrooveGenerator::generate (settings, SectionType::verse, 2, 0));
    EXPECT_EQ (processor.getSong(), SongBuilder::buildSong (settings, 80, 0));
    EXPECT_EQ (processor.getSeedCounter(), 1u);
}

TEST (Processor, OperationsTakeTheirSaltsFromTheCounter)
{
    PulsewrightAudioProcessor processor;
    set (processor, parameterID::patternLength, 5.0f);
    set (processor, parameterID::songStructure, 2.0f);
    set (processor, parameterID::genre, 3.0f);

    const auto take = [&] (std::uint32_t counter, SectionType type)
    { return GrooveGenerator::generate (settingsOf (processor, saltOf (counter)), type, 7, 0); };

    processor.generatePattern (SectionType::fill);
    EXPECT_EQ (processor.getPattern(), take (1, SectionType::fill));
    processor.generatePattern (SectionType::verse);
    EXPECT_EQ (processor.getPattern(), take (2, SectionType::verse));
    EXPECT_EQ (processor.getSeedCounter(), 3u);

    // A refresh keeps take, type and length, whatever length is chosen now.
    set (processor, parameterID::patternLength, 0.0f);
    set (processor, "density", 0.9f);
    processor.regeneratePattern();
    EXPECT_EQ (processor.getPattern(), take (2, SectionType::verse));
    EXPECT_EQ (processor.getSong(), SongBuilder::buildSong (settingsOf (processor, saltOf (2)), 124, 2));
    EXPECT_EQ (processor.getSeedCounter(), 3u);

    processor.buildSong();
    const auto song = processor.getSong();
    EXPECT_EQ (song, SongBuilder::buildSong (settingsOf (processor, saltOf (3)), 124, 2));
    EXPECT_EQ (processor.getPattern(), song.sections.front().pattern);
    EXPECT_EQ (processor.getPattern().name, "DJ Intro");

    processor.selectSection (3);
    EXPECT_EQ (processor.getPattern(), song.sections[3].pattern);

    const auto count = processor.getChangeCounter();
    for (const int noSection : { -1, 6, 1000 })
        processor.selectSection (noSection);
    EXPECT_EQ (processor.getChangeCounter(), count);
    EXPECT_EQ (count, 5u);
}

TEST (Processor, MutationNudgesFirstAndKeepsTheSalt)
{
    PulsewrightAudioProcessor processor;
    set (processor, parameterID::genre, 3.0f);
    processor.generatePattern (SectionType::verse);
    processor.setLaneLocked (0, true);
    processor.setLaneLocked (9, true);
    const auto before = processor.getPattern();
    const auto song   = processor.getSong();

    processor.mutatePattern();

    EXPECT_EQ (processor.getSeedCounter(), 3u);
    EXPECT_EQ (processor.getPattern(), GrooveGenerator::mutate (settingsOf (processor, saltOf (1)), before, { true, false, false, false }, 3));
    EXPECT_EQ (processor.getPattern().name, "House Verse Mutated");
    EXPECT_EQ (processor.getSong(), song);
    EXPECT_TRUE (processor.isLaneLocked (0));
    EXPECT_FALSE (processor.isLaneLocked (1) || processor.isLaneLocked (9) || processor.isLaneLocked (-1));
}

TEST (Processor, NudgesAreTheReferenceNudgesInsideGestures)
{
    std::map<std::uint32_t, std::vector<double>> cases // seeds that must not turn negative, by the 48-bit generator that POSIX describes
        { { 2147483648u, { 0.362, 0.694, 0.506, 0.261, 0.191, 0.263, 0.070, 0.033 } },
          { 4294967295u, { 0.665, 0.777, 0.573, 0.114, 0.445, 0.272, 0.237, 0.136 } } };
    for (const auto& c : reference::readCases ("nudges.json"))
        cases[c.at ("seed")] = c.at ("after").get<std::vector<double>>();

    for (const auto& [seed, after] : cases)
    {
        PulsewrightAudioProcessor processor;
        restore (processor, framed (stateText ("seedCounter=\"" + juce::String (seed - 1) + "\"")));

        const HostLog log (processor);
        processor.mutatePattern();

        const auto values = ParameterReader (processor.parameters).settingsValues();
        for (std::size_t i = 0; i < after.size(); ++i)
            EXPECT_NEAR (values[i], std::round (after[i] * 1000.0) / 1000.0, 1e-6) << allSettings[i].id << ", seed " << seed;

        EXPECT_EQ (log.text, "[1=1]1[2=2]2[3=3]3[4=4]4[5=5]5[6=6]6[7=7]7[8=8]8!");
    }
}

TEST (Processor, ARestoreBringsBackSettingsLocksAndCounter)
{
    PulsewrightAudioProcessor original, copy;
    int i = 0;
    for (auto* p : original.getParameters())
        p->setValueNotifyingHost (0.05f + 0.05f * static_cast<float> (++i));

    original.setLaneLocked (2, true);
    original.generatePattern (SectionType::fill);
    original.buildSong();
    original.mutatePattern();
    copy.setLaneLocked (0, true);
    const auto state = saved (original);

    // The music is that of the counter, always as a two-bar verse; a restore takes no counter.
    for (int again = 0; again < 2; ++again)
    {
        restore (copy, state);
        const auto settings = settingsOf (original, saltOf (4));
        EXPECT_EQ (saved (copy), state);
        EXPECT_EQ (copy.getSeedCounter(), 4u);
        EXPECT_TRUE (copy.isLaneLocked (2) && ! copy.isLaneLocked (0));
        EXPECT_EQ (copy.getPattern(), GrooveGenerator::generate (settings, SectionType::verse, 2, 0));
        EXPECT_EQ (
            copy.getSong(),
            SongBuilder::buildSong (settings, copy.getSongBarCount (copy.getEffectiveBpm()), ParameterReader (copy.parameters).songStructure()));
    }

    const auto changes = copy.getChangeCounter();
    restore (copy, {});
    restore (copy, framed ("<SomebodyElse/>"));
    EXPECT_EQ (saved (copy), state);
    EXPECT_EQ (copy.getChangeCounter(), changes) << "what is no state changes nothing";

    for (i = 0; i < 18; ++i)
        EXPECT_FLOAT_EQ (copy.getParameters()[i]->getValue(), original.getParameters()[i]->getValue()) << i;
}

//==============================================================================
TEST (Processor, TempoIsTheHostsWhileItIsSensible)
{
    PulsewrightAudioProcessor processor;
    Player player (processor);
    EXPECT_EQ (processor.getEffectiveBpm(), 90);

    const std::pair<double, int> tempos[] { { 120.4, 120 }, { 120.5, 121 }, { 30.0, 30 },          { 29.9, 90 }, { 300.0, 300 },
                                            { 300.5, 90 },  { -120.0, 90 }, { std::nan (""), 90 }, { 95.0, 95 } };

    for (const auto& [host, shown] : tempos)
    {
        player.playHead.moveTo ({ .ppq = 0.0, .bpm = host });
        player.play (64);
        EXPECT_EQ (processor.getEffectiveBpm(), shown) << host;
    }

    // A transport that stands still says nothing; a host without a tempo plays on with the last one.
    for (const auto& transport : { Transport { .isPlaying = false, .ppq = 0.0, .bpm = 200.0 }, Transport { .ppq = 0.0 } })
    {
        player.playHead.moveTo (transport);
        player.play (64);
        EXPECT_EQ (processor.getEffectiveBpm(), 95);
    }
    EXPECT_EQ (processor.getSongBarCount (95), 84);
}

TEST (Processor, PlaysOnlyWhileTheTransportRolls)
{
    PulsewrightAudioProcessor processor;
    Player player (processor);
    const auto pattern = processor.getPattern();

    EXPECT_TRUE (player.nextNotes().empty()) << "no position";
    EXPECT_EQ (player.notesFrom (0.0), notesIn (pattern, 0.0, 2.0));
    EXPECT_GT (player.buffer.getMagnitude (0, 48000), 0.1f);

    player.playHead.moveTo ({ .isPlaying = false });
    EXPECT_TRUE (player.nextNotes().empty());

    // Played by hand, and passed on, with the transport standing.
    player.play (256, { juce::MidiMessage::noteOn (1, 38, static_cast<juce::uint8> (99)).withTimeStamp (7.0) });
    EXPECT_EQ (player.midi.getNumEvents(), 1);
    EXPECT_EQ (player.midi.getFirstEventTime(), 7);
    EXPECT_GT (player.buffer.getMagnitude (0, 256), 0.1f);
}

TEST (Processor, TriggersChooseTheSection)
{
    PulsewrightAudioProcessor processor;
    set (processor, parameterID::songStructure, 3.0f); // four sections
    processor.buildSong();
    Player player (processor);
    const auto song = processor.getSong();
    const auto slot = [&] (std::size_t i) { return notesIn (song.sections[i].pattern, 0.0, 2.0); };

    EXPECT_EQ (player.notesFrom (0.0), slot (0));
    EXPECT_EQ (player.notesFrom (0.0, { trigger (1), trigger (2).withTimeStamp (9.0) }), slot (2)) << "the last one, for the whole block";

    // None of these is a trigger, and all pass: 59 and 68, velocity 0, a note-off, on any channel.
    for (const auto& message : { trigger (-1, 100, 10), trigger (8, 100, 10), trigger (0, 0), juce::MidiMessage::noteOff (3, 60) })
    {
        player.playHead.moveTo ({ .isPlaying = false });
        player.play (64, { message });
        EXPECT_EQ (player.midi.getNumEvents(), 1);
        EXPECT_EQ (player.notesFrom (0.0), slot (2));
    }

    EXPECT_TRUE (player.notesFrom (0.0, { trigger (6) }).empty()) << "no such section";

    player.notesFrom (0.0, { trigger (3) });

    // A refresh keeps it; a selection, a mutation, a groove or a song drops it.
    processor.regeneratePattern();
    EXPECT_EQ (player.notesFrom (0.0), slot (3));
    processor.selectSection (1);
    EXPECT_EQ (player.notesFrom (0.0), slot (1));

    for (int change = 0; change < 3; ++change)
    {
        player.notesFrom (0.0, { trigger (7) });
        change == 0 ? processor.mutatePattern() : change == 1 ? processor.generatePattern (SectionType::fill) : processor.buildSong();
        EXPECT_EQ (player.notesFrom (0.0), notesIn (processor.getPattern(), 0.0, 2.0));
    }
}

TEST (Processor, PreviewRunsOnItsOwnClock)
{
    PulsewrightAudioProcessor processor;
    Player player (processor);
    const auto pattern = processor.getPattern();

    EXPECT_FALSE (processor.startPreview());
    player.playHead.moveTo ({ .ppq = 6.0, .bpm = 222.0 });
    EXPECT_EQ (player.nextNotes(), notesIn (pattern, 0.0, 1.5)) << "the host is not asked";
    EXPECT_EQ (player.nextNotes(), notesIn (pattern, 1.5, 3.0));
    EXPECT_EQ (processor.getEffectiveBpm(), 90);

    // It loops until it is stopped, and starts again from the first beat.
    for (int i = 0; i < 60; ++i)
        player.play (static_cast<int> (rate));
    EXPECT_TRUE (processor.isPreviewPlaying());
    processor.stopPreview();
    EXPECT_FALSE (processor.isPreviewPlaying());
    processor.startPreview();
    EXPECT_EQ (player.nextNotes(), notesIn (pattern, 0.0, 1.5));

    // The mode is the one it was started in, and an empty slot holds it where it is.
    processor.setMaterial (pattern, SongBuilder::buildSong ({}, 16, 3));
    set (processor, parameterID::playMode, 1.0f);
    EXPECT_EQ (player.nextNotes(), notesIn (pattern, 1.5, 3.0));
    player.nextNotes ({ trigger (7) });
    processor.setMaterial (pattern, processor.getSong());
    EXPECT_EQ (player.nextNotes(), notesIn (pattern, 3.0, 4.5));
    processor.stopPreview();

    // A song ends by itself, with its last note-offs.
    EXPECT_TRUE (processor.startPreview());
    std::size_t messages = 0;
    int blocks           = 0;
    for (; processor.isPreviewPlaying() && blocks < 1000; ++blocks)
    {
        player.play (static_cast<int> (rate));
        messages += static_cast<std::size_t> (player.midi.getNumEvents());
    }

    EXPECT_EQ (messages, 2 * flatten (processor.getSong()).size());
    EXPECT_EQ (blocks, 43); // 64 beats are 42.67 seconds
}

} // namespace pulsewright
