// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "ReferenceCases.h"

#include "PlainDrumKit.h"
#include "processor/kit/DrumSynth.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

namespace pulsewright
{

namespace
{
    constexpr double rate = 48000.0;

    using NoteOns = std::vector<NoteOn>;

    /** Both sides of some samples, and blocks of them. */
    template <typename Sample>
    struct Recording
    {
        explicit Recording (int length) : left (static_cast<std::size_t> (length)), right (left) {}

        SoundBlock<Sample> block (int first, int count) { return { { left.data() + first, right.data() + first }, count }; }
        SoundBlock<Sample> whole() { return block (0, static_cast<int> (left.size())); }
        bool isSilent() const
        {
            return std::ranges::all_of (left, [] (Sample s) { return s == Sample {}; });
        }

        std::vector<Sample> left, right;
    };

    /** A fresh synthesizer's answer to one block of strokes. */
    template <typename Sample = float>
    Recording<Sample> render (const NoteOns& strokes, int kit, int numSamples, const StrokeKernels& kernels = StrokeKernels::best())
    {
        DrumSynth synth;
        synth.setKernels (kernels);
        synth.prepare (rate);
        Recording<Sample> recording (numSamples);
        synth.render (recording.whole(), kit, strokes);
        return recording;
    }
} // namespace

TEST (DrumSynth, SoundsLikeTheReference)
{
    const auto cases = reference::readCases ("sound.json");
    ASSERT_EQ (cases.at ("voices").size(), 36u);

    std::vector<std::size_t> places;
    for (const auto& [first, last] : { std::pair { 0u, 31u }, std::pair { 1000u, 1007u }, std::pair { 2040u, 2047u } })
        for (auto place = first; place <= last; ++place)
            places.push_back (place);

    for (const auto& c : cases.at ("voices"))
    {
        SCOPED_TRACE ("kit " + c.at ("kit").dump() + ", note " + c.at ("note").dump());
        const auto sound = render ({ { 0, c.at ("note"), c.at ("velocity") } }, c.at ("kit"), 2048);

        ASSERT_EQ (c.at ("left").size(), places.size());
        for (std::size_t i = 0; i < places.size(); ++i)
            EXPECT_NEAR (sound.left[places[i]], c.at ("left")[i].get<float>(), 1e-4f) << "sample " << places[i];

        for (std::size_t i = 0; i < c.at ("right").size(); ++i)
            EXPECT_NEAR (sound.right[i], c.at ("right")[i].get<float>(), 1e-4f);

        const auto louder = [] (float a, float b) { return std::abs (a) < std::abs (b); };
        EXPECT_NEAR (std::abs (*std::ranges::max_element (sound.left, louder)), c.at ("peak").get<float>(), 1e-4f);
    }
}

class StrokesWithKernels : public testing::TestWithParam<const StrokeKernels*>
{};

/** Every kit and kind of note, from the first sample to the last one: as the plain form has it. */
TEST_P (StrokesWithKernels, SoundAsInThePlainForm)
{
    constexpr int blockSize = 480;
    Recording<float> block (blockSize), expected (blockSize);

    for (const double sampleRate : { 0.0, 22050.0, 44100.0, 48000.0, 96000.0, 384000.0 })
    {
        DrumSynth synth;
        synth.setKernels (*GetParam());
        synth.prepare (sampleRate);
        plain::DrumKit kit (sampleRate);

        for (int index = 0; index < 4; ++index)
            for (const int note : { 35, 37, 38, 42, 46, 41, 56, 127 })
            {
                const int velocity = 1 + 42 * index;
                kit.start (note, velocity, index);
                NoteOns strokes { { 0, note, velocity } };

                do
                {
                    synth.render (block.whole(), index, strokes);
                    kit.render (expected.left.data(), expected.right.data(), blockSize);
                    strokes.clear();

                    for (const auto& [ours, plain] : { std::pair { &block.left, &expected.left }, std::pair { &block.right, &expected.right } })
                        for (std::size_t i = 0; i < blockSize; ++i)
                        {
                            ASSERT_NEAR ((*plain)[i], (*ours)[i], 1e-6f) << "note " << note << ", rate " << sampleRate;
                            ASSERT_EQ ((*plain)[i] == 0.0f, (*ours)[i] == 0.0f)
                                << "begins or ends elsewhere: note " << note << ", rate " << sampleRate;
                        }
                }
                while (block.left.back() != 0.0f);
            }
    }
}

TEST_P (StrokesWithKernels, AreTheSameForAllBlocksAndSampleTypes)
{
    constexpr int length = 60000;
    NoteOns strokes;

    for (int i = 0; i < 90; ++i) // more strokes than voices: the later ones take the first ones' places
        strokes.push_back ({ i * 53, 30 + i % 30, 1 + i });

    const auto whole = render (strokes, 2, length, *GetParam());
    const auto wide  = render<double> (strokes, 2, length, *GetParam());

    DrumSynth synth;
    synth.setKernels (*GetParam());
    synth.prepare (rate);
    Recording<float> split (length);
    auto next = strokes.begin();

    for (int position = 0, size = 1; position < length; position += size, size = 1 + (size * 7) % 97)
    {
        size = std::min (size, length - position);
        NoteOns ofBlock;

        for (; next != strokes.end() && next->sample < position + size; ++next)
            ofBlock.push_back ({ next->sample - position, next->note, next->velocity });

        auto block = split.block (position, size);
        if (position > length / 2)
            block.sides[1] = nullptr; // mono is the left side
        synth.render (block, 2, ofBlock);
    }

    plain::DrumKit kit (rate);
    next = strokes.begin();

    for (std::size_t i = 0; i < length; ++i)
    {
        for (; next != strokes.end() && next->sample == static_cast<int> (i); ++next)
            kit.start (next->note, next->velocity, 2);

        float left = 0.0f, right = 0.0f;
        kit.render (&left, &right, 1);
        ASSERT_NEAR (whole.left[i], left, 1e-5f) << i;
        ASSERT_NEAR (whole.right[i], right, 1e-5f) << i;
        ASSERT_EQ (split.left[i], whole.left[i]) << i;
        ASSERT_EQ (split.right[i], i <= length / 2 ? whole.right[i] : i > length / 2 + 97 ? 0.0f : split.right[i]) << i;
        ASSERT_EQ (static_cast<float> (wide.left[i]), whole.left[i]) << i;
        ASSERT_EQ (static_cast<float> (wide.right[i]), whole.right[i]) << i;
    }
}

INSTANTIATE_TEST_SUITE_P (Widths,
                          StrokesWithKernels,
                          testing::ValuesIn (StrokeKernels::all().begin(), StrokeKernels::all().end()),
                          [] (const auto& kind)
                          {
                              std::string name (kind.param->name);
                              std::erase (name, '-');
                              return name;
                          });

TEST (KitTables, AdvancedGivesTheBitsOfRepeatedAddition)
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

TEST (DrumSynth, StrokesBeginInTheirBlockOrWithTheNext)
{
    EXPECT_TRUE (DrumSound::of (39, 0).pan == 0.0f && DrumSound::of (41, 0).pan == -DrumSound::of (42, 0).pan) << "panned from 41 up";

    EXPECT_TRUE (render ({ { 0, 36, 100 } }, midiOnly, 64).isSilent());

    // Past the end of the block a stroke starts with the next one.
    DrumSynth synth;
    synth.prepare (rate);
    Recording<float> first (64), second (64);
    synth.render (first.whole(), 0, NoteOns { { 1000, 36, 100 } });
    synth.render (second.whole(), 0, NoteOns {});
    EXPECT_TRUE (first.isSilent());
    EXPECT_EQ (second.left, render ({ { 0, 36, 100 } }, 0, 64).left);
}

TEST (DrumSynth, VoicesFreezeWithoutAKitAndKeepTheirOwn)
{
    const auto whole = render ({ { 0, 36, 100 } }, 1, 256);

    DrumSynth synth;
    synth.prepare (rate);
    Recording<float> first (128), frozen (128), second (128);
    synth.render (first.whole(), 1, NoteOns { { 0, 36, 100 } });
    synth.render (frozen.whole(), midiOnly, NoteOns {});
    synth.render (second.whole(), 3, NoteOns {}); // the stroke began in another kit

    EXPECT_TRUE (frozen.isSilent());
    EXPECT_TRUE (std::ranges::equal (second.left, std::span (whole.left).subspan (128)));
}

TEST (DrumSynth, PrepareSilencesVoicesAndTheNoiseGoesOn)
{
    DrumSynth synth;
    Recording<float> first (64), silent (64), second (64);
    synth.prepare (rate);
    synth.render (first.whole(), 0, NoteOns { { 0, 38, 100 } });
    synth.prepare (rate);
    synth.render (silent.whole(), 0, NoteOns {});
    synth.render (second.whole(), 0, NoteOns { { 0, 38, 100 } });
    EXPECT_TRUE (silent.isSilent());
    EXPECT_NE (second.left, first.left) << "no two strokes are the same, not even across a restart";
}

} // namespace pulsewright
