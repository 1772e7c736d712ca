// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// What the audio thread calls: music in, samples out. worklet.js has an instance of the module to itself.

#include "Parcel.h"

#include "processor/audition/AuditionPlayer.h"

#include <emscripten.h>

#include <string>
#include <vector>

namespace
{

struct Sound
{
    pulsewright::AuditionPlayer player;
    pulsewright::Audition chosen;
    std::string parcel;
    std::vector<float> sides; // the left one, then the right one
};

Sound& sound()
{
    static Sound one;
    return one;
}

} // namespace

extern "C"
{
    EMSCRIPTEN_KEEPALIVE void soundPrepare (double sampleRate)
    {
        sound().player.prepare (sampleRate);
    }

    /** Where the bytes of a parcel go. */
    EMSCRIPTEN_KEEPALIVE char* soundParcel (int size)
    {
        sound().parcel.resize (static_cast<std::size_t> (size));
        return sound().parcel.data();
    }

    EMSCRIPTEN_KEEPALIVE void soundTakeParcel()
    {
        sound().chosen = pulsewright::unpacked (sound().parcel, sound().chosen.tempoBpm);
        sound().player.set (sound().chosen);
    }

    EMSCRIPTEN_KEEPALIVE void soundSetTempo (double bpm)
    {
        sound().chosen.tempoBpm = bpm;
        sound().player.set (sound().chosen);
    }

    EMSCRIPTEN_KEEPALIVE void soundStart()
    {
        sound().player.start();
    }

    EMSCRIPTEN_KEEPALIVE void soundStop()
    {
        sound().player.stop();
    }

    EMSCRIPTEN_KEEPALIVE int soundIsPlaying()
    {
        return sound().player.isPlaying() ? 1 : 0;
    }

    EMSCRIPTEN_KEEPALIVE double soundBeat()
    {
        return sound().player.beat();
    }

    /** @returns the left side's samples, with the right side's behind them */
    EMSCRIPTEN_KEEPALIVE const float* soundRender (int numSamples, int kit)
    {
        auto& sides = sound().sides;
        sides.resize (2 * static_cast<std::size_t> (numSamples));
        sound().player.render (sides.data(), sides.data() + numSamples, numSamples, kit);
        return sides.data();
    }
}
