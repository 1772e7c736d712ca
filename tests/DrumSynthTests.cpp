// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "ReferenceCases.h"

#include "PlainDrumKit.h"
#include "processor/DrumSynth.h"

#include <cmath>
#include <memory>

namespace pulsewright
{

namespace
{
    constexpr double rate = 48000.0;

    juce::MidiBuffer noteAt (int position, int note, int velocity = 100)
    {
        juce::MidiBuffer midi;
        midi.addEvent (juce::MidiMessage::noteOn (10, note, static_cast<juce::uint8> (velocity)), position);
        return midi;
    }

    /** A fresh synthesizer's answer to one block of MIDI. */
    template <typename Sample = float>
    juce::AudioBuffer<Sample> render (
        const juce::MidiBuffer& midi, int kit, int numSamples, int numChannels = 2, const StrokeKernels& kernels = StrokeKernels::best())
    {
        DrumSynth synth;
        synth.setKernels (kernels);
        synth.prepare (rate);
        juce::AudioBuffer<Sample> buffer (numChannels, numSamples);
        buffer.clear();
        synth.render (buffer, midi, kit);
        return buffer;
    }

    bool isSilent (const juce::AudioBuffer<float>& buffer, int from, int to)
    {
        return buffer.getMagnitude (from, to - from) == 0.0f;
    }
} // namespace

TEST (DrumSynth, SoundsLikeTheReference)
{
    const auto cases = reference::readCases ("sound.json");
    ASSERT_EQ (cases.at ("voices").size(), 36u);

    std::vector<int> places;
    for (const auto& [first, last] : { std::pair { 0, 31 }, std::pair { 1000, 1007 }, std::pair { 2040, 2047 } })
        for (int place = first; place <= last; ++place)
            places.push_back (place);

    for (const auto& c : cases.at ("voices"))
    {
        SCOPED_TRACE ("kit " + c.at ("kit").dump() + ", note " + c.at ("note").dump());
        const auto buffer = render (noteAt (0, c.at ("note"), c.at ("velocity")), c.at ("kit"), 2048);

        ASSERT_EQ (c.at ("left").size(), places.size());
        for (std::size_t i = 0; i < places.size(); ++i)
            EXPECT_NEAR (buffer.getSample (0, places[i]), c.at ("left")[i].get<float>(), 1e-4f) << "sample " << places[i];

        for (int i = 0; i < static_cast<int> (c.at ("right").size()); ++i)
            EXPECT_NEAR (buffer.getSample (1, i), c.at ("right")[static_cast<std::size_t> (i)].get<float>(), 1e-4f);

        EXPECT_NEAR (buffer.getMagnitude (0, 0, 2048), c.at ("peak").get<float>(), 1e-4f);
    }
}

class StrokesWithKernels : public testing::TestWithParam<const StrokeKernels*>
{};

/** Every kit, kind of note and velocity, from the first sample to the last one: as the plain form has it. */
TEST_P (StrokesWithKernels, AreThePlainOnes)
{
    constexpr int blockSize = 480;
    juce::AudioBuffer<float> block (2, blockSize);
    std::array<std::array<float, blockSize>, 2> expected;

    for (const double sampleRate : { 0.0, 22050.0, 44100.0, 48000.0, 96000.0, 384000.0 })
    {
        DrumSynth synth;
        synth.setKernels (*GetParam());
        synth.prepare (sampleRate);
        plain::DrumKit kit (sampleRate);

        for (int index = 0; index < 4; ++index)
            for (const int note : { 35, 37, 38, 42, 46, 41, 56, 127 })
                for (const int velocity : { 1, 64, 127 })
                {
                    kit.start (note, velocity, index);
                    auto midi     = noteAt (0, note, velocity);
                    bool hasEnded = false;

                    while (! hasEnded)
                    {
                        synth.render (block, midi, index);
                        kit.render (expected[0].data(), expected[1].data(), blockSize);
                        midi.clear();

                        for (std::size_t side = 0; side < 2; ++side)
                            for (int i = 0; i < blockSize; ++i)
                            {
                                const float plain = expected[side][static_cast<std::size_t> (i)];
                                const float ours  = block.getSample (static_cast<int> (side), i);
                                ASSERT_NEAR (plain, ours, 1e-6f) << "note " << note << ", rate " << sampleRate;
                                ASSERT_EQ (plain == 0.0f, ours == 0.0f) << "begins or ends elsewhere: note " << note << ", rate " << sampleRate;
                            }

                        hasEnded = isSilent (block, blockSize - 1, blockSize);
                    }
                }
    }
}

TEST_P (StrokesWithKernels, AreTheSameForAllBlocksAndSampleTypes)
{
    constexpr int length = 60000;
    juce::MidiBuffer midi;

    for (int i = 0; i < 90; ++i) // more strokes than voices: the later ones take the first ones' places
        midi.addEvent (juce::MidiMessage::noteOn (1 + i % 16, 30 + i % 30, static_cast<juce::uint8> (1 + i)), i * 53);

    const auto whole  = render (midi, 2, length, 2, *GetParam());
    const auto wide   = render<double> (midi, 2, length, 2, *GetParam());
    const auto narrow = render (midi, 2, length, 1, *GetParam());

    // And whatever the host makes of denormal numbers: none occur.
    auto noDenormals   = std::make_unique<juce::ScopedNoDenormals>();
    const auto flushed = render (midi, 2, length, 2, *GetParam());
    noDenormals.reset();

    DrumSynth synth;
    synth.setKernels (*GetParam());
    synth.prepare (rate);
    juce::AudioBuffer<float> split (2, length);

    for (int position = 0, size = 1; position < length; position += size, size = 1 + (size * 7) % 97)
    {
        size = std::min (size, length - position);
        juce::AudioBuffer<float> block (split.getArrayOfWritePointers(), 2, position, size);
        juce::MidiBuffer blockMidi;
        blockMidi.addEvents (midi, position, size, -position);
        synth.render (block, blockMidi, 2);
    }

    plain::DrumKit kit (rate);
    auto stroke = midi.begin();

    for (int i = 0; i < length; ++i)
    {
        for (; stroke != midi.end() && (*stroke).samplePosition == i; ++stroke)
            kit.start ((*stroke).getMessage().getNoteNumber(), (*stroke).getMessage().getVelocity(), 2);

        float left = 0.0f, right = 0.0f;
        kit.render (&left, &right, 1);
        ASSERT_NEAR (whole.getSample (0, i), left, 1e-5f) << i;
        ASSERT_NEAR (whole.getSample (1, i), right, 1e-5f) << i;

        ASSERT_EQ (split.getSample (0, i), whole.getSample (0, i)) << i;
        ASSERT_EQ (split.getSample (1, i), whole.getSample (1, i)) << i;
        ASSERT_EQ (flushed.getSample (0, i), whole.getSample (0, i)) << i;
        ASSERT_EQ (static_cast<float> (wide.getSample (0, i)), whole.getSample (0, i)) << i;
        ASSERT_EQ (narrow.getSample (0, i), whole.getSample (0, i)) << "mono is the left side, " << i;
    }
}

INSTANTIATE_TEST_SUITE_P (Widths,
                          StrokesWithKernels,
                          testing::ValuesIn (StrokeKernels::all().begin(), StrokeKernels::all().end()),
                          [] (const auto& kind)
                          { return juce::String (kind.param->name).retainCharacters ("ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789").toStdString(); });

TEST (KitTables, ClocksAreSums)
{
    for (const double step : { 1.0 / 44100.0, 1.0 / 48000.0, 1.0 / 11025.0, 1.0 / 65536.0, 3.0 / 131072.0, 1.0 / 384001.5, 1e-7, 0.3 })
    {
        double clock = 0.0;

        for (std::int64_t count = 0; count < 300000; ++count, clock += step)
            if (count < 200 || count % 1009 == 0)
            {
                ASSERT_EQ (advanced (0.0, step, count), clock) << step << ", " << count;
                ASSERT_EQ (advanced (advanced (0.0, step, count / 3), step, count - count / 3), clock) << step << ", " << count;
            }
    }
}

TEST (DrumSynth, OnlyNoteOnsSound)
{
    EXPECT_TRUE (DrumSound::of (39, 0).pan == 0.0f && DrumSound::of (41, 0).pan == -DrumSound::of (42, 0).pan) << "panned from 41 up";

    juce::MidiBuffer midi;
    midi.addEvent (juce::MidiMessage (0x99, 36, 0), 0); // a note-on with velocity 0 is a note-off
    midi.addEvent (juce::MidiMessage::noteOff (10, 36), 1);
    midi.addEvent (juce::MidiMessage::controllerEvent (10, 7, 100), 2);
    EXPECT_TRUE (isSilent (render (midi, 0, 64), 0, 64));
    EXPECT_TRUE (isSilent (render (noteAt (0, 36), 4, 64), 0, 64)) << "MIDI Only";

    // Past the end of the block a stroke starts with the next one.
    DrumSynth synth;
    synth.prepare (rate);
    juce::AudioBuffer<float> buffer (2, 64);
    buffer.clear();
    synth.render (buffer, noteAt (1000, 36), 0);
    EXPECT_TRUE (isSilent (buffer, 0, 64));
    synth.render (buffer, {}, 0);
    EXPECT_EQ (buffer.getSample (0, 0), render (noteAt (0, 36), 0, 1).getSample (0, 0));
}

TEST (DrumSynth, VoicesFreezeWithoutAKitAndKeepTheirOwn)
{
    const auto whole = render (noteAt (0, 36), 1, 256);

    DrumSynth synth;
    synth.prepare (rate);
    juce::AudioBuffer<float> first (2, 128), frozen (2, 128), second (2, 128);
    frozen.clear();
    synth.render (first, noteAt (0, 36), 1);
    synth.render (frozen, {}, midiOnly);
    synth.render (second, {}, 3); // the stroke began in another kit

    EXPECT_TRUE (isSilent (frozen, 0, 128));
    for (int i = 0; i < 128; ++i)
        ASSERT_EQ (second.getSample (0, i), whole.getSample (0, 128 + i));
}

TEST (DrumSynth, PrepareSilencesVoicesAndTheNoiseGoesOn)
{
    DrumSynth synth;
    juce::AudioBuffer<float> first (2, 64), silent (2, 64), second (2, 64);
    synth.prepare (rate);
    synth.render (first, noteAt (0, 38), 0);
    synth.prepare (rate);
    synth.render (silent, {}, 0);
    synth.render (second, noteAt (0, 38), 0);
    EXPECT_TRUE (isSilent (silent, 0, 64));
    EXPECT_NE (second.getSample (0, 5), first.getSample (0, 5)) << "no two strokes are the same, not even across a restart";
}

} // namespace pulsewright
