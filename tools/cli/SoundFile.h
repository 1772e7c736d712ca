// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// A stereo sound file that is written from front to back, of the kind that its name asks for.

#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace pulsewright::cli
{

class SoundFile
{
public:
    SoundFile()          = default;
    virtual ~SoundFile() = default;

    SoundFile (const SoundFile&)            = delete;
    SoundFile& operator= (const SoundFile&) = delete;

    /** @throws WriteFailure */
    virtual void append (const float* left, const float* right, int numFrames) = 0;

    /** Gives the file its name, once all frames are in it. @throws WriteFailure */
    virtual void commit() = 0;
};

/** A name that ends with .flac asks for FLAC of 24 bits, one that ends with .ogg for Ogg Vorbis; all others, and "-",
    are WAVs of 32-bit floats.
    @param target      as OutputFile takes it
    @param sampleRate  in hertz
    @param numFrames   that append() is going to bring
    @throws WriteFailure  also for FLAC and Ogg where this tool was built without libsndfile
*/
std::unique_ptr<SoundFile> openSoundFile (const std::string& target, std::uint32_t sampleRate, std::uint32_t numFrames);

} // namespace pulsewright::cli
