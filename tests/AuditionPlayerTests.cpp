// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "processor/audition/AuditionPlayer.h"

#include <gtest/gtest.h>

#include <vector>

namespace pulsewright
{

namespace
{
    constexpr int studio = 0, length = 120000; // samples, at 48000 a second

    /** A hat a quarter of a sample behind every beat, for samples are counted down. */
    std::shared_ptr<const PlaybackData> hats (int beats)
    {
        std::vector<DrumHit> hits;
        for (int beat = 0; beat < beats; ++beat)
            hits.push_back ({ .start = beat + 1e-5, .note = note::closedHat, .lane = DrumLane::hats });
        return makePlaybackData (hits, beats);
    }

    std::vector<float> strokesAt (const std::vector<int>& samples)
    {
        std::vector<NoteOn> strokes;
        for (const int sample : samples)
            strokes.push_back ({ sample, static_cast<int> (note::closedHat), 100 });

        DrumSynth synth;
        synth.prepare (48000.0);
        std::vector<float> left (length), right (length);
        synth.render (SoundBlock<float> { { left.data(), right.data() }, length }, studio, strokes);
        return left;
    }
} // namespace

TEST (AuditionPlayer, ChangesAreHeardFromTheNextWindowOnWithoutAGap)
{
    struct Case
    {
        const char* what;
        int beats;
        Repeat repeat;
        double tempo;
        std::vector<int> strokes;
        bool playsOn;
    };

    // The window after sample 30000 begins at 30208: beat 1.2587.
    const Case cases[] { { "nothing", 4, Repeat::looped, 120.0, { 0, 24000, 48000, 72000, 96000 }, true },
                         { "another tempo", 4, Repeat::looped, 240.0, { 0, 24000, 39104, 51104, 63104, 75104, 87104, 99104, 111104 }, true },
                         { "a longer loop", 8, Repeat::looped, 120.0, { 0, 24000, 48000, 72000, 96000 }, true },
                         { "a song, from its first bar", 3, Repeat::once, 120.0, { 0, 24000, 48000 }, false },
                         { "silence", 0, Repeat::looped, 120.0, { 0, 24000 }, true } };

    for (const auto& [what, beats, repeat, tempo, strokes, playsOn] : cases)
    {
        const Audition change { hats (beats), repeat, tempo };

        for (const int blockSize : { 120, 128, 1000 })
        {
            SCOPED_TRACE (std::string (what) + ", in blocks of " + std::to_string (blockSize));
            AuditionPlayer player;
            player.prepare (48000.0);
            player.set ({ hats (4), Repeat::looped, 120.0 });
            player.start();

            std::vector<float> left (length), right (length);
            for (int done = 0; done < length; done += blockSize)
            {
                if (done + blockSize > 30000)
                    player.set (change);
                player.render (left.data() + done, right.data() + done, std::min (blockSize, length - done), studio);
            }

            EXPECT_TRUE (left == strokesAt (strokes));
            EXPECT_EQ (player.isPlaying(), playsOn);
        }
    }
}

} // namespace pulsewright
