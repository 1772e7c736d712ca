// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// The built LV2 in a host of lilv's, beside the built VST3 in JUCE's.

#include "Lv2Host.h"
#include "OfflineHost.h"

#include <gtest/gtest.h>

namespace pulsewright
{

namespace
{
    constexpr double sampleRate = 48000.0;
    constexpr double bpm        = 90.0; // also the opening style's: what is played where the host names none
    constexpr int blockSize     = 480;

    Lv2Host loadLv2()
    {
        return { PULSEWRIGHT_TEST_LV2, "urn:tolm:pulsewright", sampleRate, blockSize };
    }

    double beatsIn (int blocks)
    {
        return blocks * blockSize * bpm / (60.0 * sampleRate);
    }

    /** From beat 0, then, without a stop, from beat 100. */
    constexpr int blocksBeforeSeek = 8000, blocksAfterSeek = 2000;
    constexpr double seekBeat = 100.0;

    std::vector<Lv2Host::Message> playedByVst3()
    {
        OfflineHost host (juce::File (PULSEWRIGHT_TEST_BUNDLE), sampleRate, blockSize);
        host.setParameter ("play_mode", 1.0f);

        for (int block = 0; block < blocksBeforeSeek; ++block)
            host.process ({ .ppq = beatsIn (block), .bpm = bpm }, blockSize);

        for (int block = 0; block < blocksAfterSeek; ++block)
            host.process ({ .ppq = seekBeat + beatsIn (block), .bpm = bpm }, blockSize);

        std::vector<Lv2Host::Message> played;

        for (const auto& [sample, message] : host.recordedMidi())
        {
            // On its way through the VST3, a note-off without a velocity gets one.
            const auto* bytes   = message.getRawData();
            const auto velocity = message.isNoteOff() ? std::uint8_t {} : bytes[2];
            played.push_back ({ sample, { bytes[0], bytes[1], velocity } });
        }

        return played;
    }
} // namespace

TEST (Lv2, PlaysTheSongThatTheVst3PlaysWhateverTheHostSaysOfItsTransport)
{
    const auto expected = playedByVst3();
    ASSERT_GT (expected.size(), 800u);

    struct Manner
    {
        const char* name;
        bool namesBeat, namesTempo, repeatsItself;
    };

    for (const auto& manner : { Manner { "the beat, once", true, true, false },
                                { "the sample, once", false, true, false },
                                { "the sample without a tempo", false, false, false },
                                { "the beat, always", true, true, true } })
    {
        auto host = loadLv2();
        host.setParameter ("play_mode", 1.0f);

        const auto play = [&] (double startBeat, int blocks)
        {
            for (int block = 0; block < blocks; ++block)
                if (block == 0 || manner.repeatsItself)
                    host.process (blockSize,
                                  Lv2Host::Transport { .beat       = startBeat + beatsIn (block),
                                                       .bpm        = bpm,
                                                       .namesBeat  = manner.namesBeat,
                                                       .namesTempo = manner.namesTempo });
                else
                    host.process (blockSize);
        };

        play (0.0, blocksBeforeSeek);
        play (seekBeat, blocksAfterSeek);
        EXPECT_EQ (host.recordedMidi(), expected) << manner.name;

        // Stopped, it stays so; and it does not go on behind anybody's back.
        const auto soFar = host.recordedMidi().size();
        host.process (blockSize, Lv2Host::Transport { .beat = 120.0, .bpm = bpm, .isRolling = false });
        for (int block = 0; block < 100; ++block)
            host.process (blockSize);
        EXPECT_EQ (host.recordedMidi().size(), soFar) << manner.name;
    }
}

TEST (Lv2, AStateComesBackInAnotherInstance)
{
    auto first = loadLv2();
    first.setParameter ("genre", 4.0f);
    first.setParameter ("density", 0.91f);
    first.setParameter ("play_mode", 1.0f);
    first.process (blockSize);
    const auto state = first.save();
    first.restore (state); // the music that belongs to it

    auto second = loadLv2();
    EXPECT_NE (second.save(), state);
    second.restore (state);
    second.process (blockSize);
    EXPECT_EQ (second.save(), state);

    for (auto* host : { &first, &second })
        for (int block = 0; block < 1000; ++block)
            host->process (blockSize, Lv2Host::Transport { .beat = beatsIn (block), .bpm = bpm });

    EXPECT_GT (first.recordedMidi().size(), 100u);
    EXPECT_EQ (second.recordedMidi(), first.recordedMidi());
}

} // namespace pulsewright
