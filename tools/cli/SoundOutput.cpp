// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "Output.h"
#include "OutputFile.h"

#include "Progress.h"
#include "SoundFile.h"

#include "processor/kit/DrumSynth.h"
#include "processor/playback/PlaybackEngine.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <vector>

namespace pulsewright::cli
{

namespace
{
    constexpr int sampleRate     = 48000;
    constexpr double tailSeconds = 1.0;
    constexpr int blockSize      = 1024;

    /** The note-ons of a block, in the order in which a host would have them. */
    void findStrokes (const PlaybackData& music, const BlockWindow& window, std::vector<NoteOn>& strokes)
    {
        strokes.clear();
        findEvents (music,
                    Repeat::once,
                    window,
                    [&strokes] (const NoteEvent& event)
                    {
                        if (event.status == NoteEvent::noteOn && event.velocity > 0)
                            strokes.push_back ({ event.sampleOffset, event.note, event.velocity });
                    });
        std::ranges::stable_sort (strokes, {}, &NoteOn::sample);
    }
} // namespace

void writeSound (const std::string& target, const SongArrangement& song, int tempoBpm, int kit)
{
    const auto music            = makePlaybackData (std::make_shared<const SongArrangement> (song));
    const double beatsPerSample = tempoBpm / (sampleRate * 60.0);
    const auto totalSamples     = std::llround (song.lengthInBeats() / beatsPerSample) + std::llround (tailSeconds * sampleRate);

    const auto file = openSoundFile (target, sampleRate, static_cast<std::uint32_t> (totalSamples));
    Progress progress ("Playing");
    DrumSynth synth;
    TransportContinuity continuity;
    std::vector<NoteOn> strokes;
    synth.prepare (sampleRate);

    for (std::int64_t position = 0; position < totalSamples; position += blockSize)
    {
        const int numSamples = static_cast<int> (std::min<std::int64_t> (blockSize, totalSamples - position));
        findStrokes (*music, continuity.join (windowAt (static_cast<double> (position) * beatsPerSample, tempoBpm, sampleRate, numSamples)), strokes);

        std::array<std::array<float, blockSize>, 2> sides {};
        synth.render (SoundBlock<float> { { sides[0].data(), sides[1].data() }, numSamples }, kit, strokes);
        file->append (sides[0].data(), sides[1].data(), numSamples);
        progress.show (static_cast<double> (position) / static_cast<double> (totalSamples));
    }

    file->commit();
}

} // namespace pulsewright::cli
