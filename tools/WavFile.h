// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// A stereo WAV file of 32-bit floats, written block by block from front to back, so that it can go into a pipe.

#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace pulsewright
{

class WavFile
{
public:
    using Sink = std::function<void (std::string_view bytes)>;

    /** Writes the header, which holds the file's length.
        @param writeBytes  takes the next bytes of the file, and throws when it cannot; what it throws passes through
        @param numFrames   how many samples a channel append() is going to bring, at most 500 million (4 GB)
    */
    WavFile (Sink writeBytes, std::uint32_t sampleRate, std::uint32_t numFrames);

    void append (const float* left, const float* right, int numFrames);

private:
    const Sink write;
    std::string bytes; // of one block; a member, so that its memory is used again
};

} // namespace pulsewright
