// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "Output.h"
#include "OutputFile.h"

#include "Progress.h"
#include "SoundFile.h"

#include "processor/audition/AuditionPlayer.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>

namespace pulsewright::cli
{

namespace
{
    constexpr int sampleRate     = 48000;
    constexpr double tailSeconds = 1.0;
} // namespace

void writeSound (const std::string& target, const SongArrangement& song, int tempoBpm, int kit)
{
    const double beatsPerSample = tempoBpm / (sampleRate * 60.0);
    const auto totalSamples     = std::llround (song.lengthInBeats() / beatsPerSample) + std::llround (tailSeconds * sampleRate);

    const auto file = openSoundFile (target, sampleRate, static_cast<std::uint32_t> (totalSamples));
    Progress progress ("Playing");
    AuditionPlayer player;
    player.prepare (sampleRate);
    player.set ({ makePlaybackData (std::make_shared<const SongArrangement> (song)), Repeat::once, static_cast<double> (tempoBpm) });
    player.start();

    constexpr int blockSize = AuditionPlayer::windowSize;
    std::array<std::array<float, blockSize>, 2> sides {};

    for (std::int64_t position = 0; position < totalSamples; position += blockSize)
    {
        const int numSamples = static_cast<int> (std::min<std::int64_t> (blockSize, totalSamples - position));
        player.render (sides[0].data(), sides[1].data(), numSamples, kit);
        file->append (sides[0].data(), sides[1].data(), numSamples);
        progress.show (static_cast<double> (position) / static_cast<double> (totalSamples));
    }

    file->commit();
}

} // namespace pulsewright::cli
