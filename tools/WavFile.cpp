// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "WavFile.h"

#include <bit>
#include <cstddef>
#include <utility>

namespace pulsewright
{

namespace
{
    constexpr std::uint32_t channels      = 2;
    constexpr std::uint32_t bytesPerFrame = channels * sizeof (float);

    void appendLittleEndian (std::string& bytes, std::uint32_t value, int byteCount)
    {
        for (int i = 0; i < byteCount; ++i)
            bytes += static_cast<char> ((value >> (8 * i)) & 0xFFu);
    }

    /** Four bytes that a compiler makes one store of. */
    char* storeSample (char* bytes, float sample) noexcept
    {
        const auto bits = std::bit_cast<std::uint32_t> (sample);

        for (int i = 0; i < 4; ++i)
            *bytes++ = static_cast<char> ((bits >> (8 * i)) & 0xFFu);

        return bytes;
    }

    /** Floats are not PCM: their format chunk ends with the size of an extension, and a fact chunk counts the frames. */
    std::string headerOf (std::uint32_t sampleRate, std::uint32_t numFrames)
    {
        constexpr std::uint32_t floatFormat = 3, formatSize = 18, factSize = 4, chunkHead = 8;
        const auto dataSize = numFrames * bytesPerFrame;
        const auto riffSize = 4 + chunkHead + formatSize + chunkHead + factSize + chunkHead + dataSize;

        std::string bytes;
        const auto text   = [&bytes] (const char* id) { bytes += id; };
        const auto number = [&bytes] (std::uint32_t value, int byteCount) { appendLittleEndian (bytes, value, byteCount); };

        // clang-format off
        text ("RIFF"); number (riffSize, 4);   text ("WAVE");
        text ("fmt "); number (formatSize, 4); number (floatFormat, 2);                number (channels, 2);
                                               number (sampleRate, 4);                 number (sampleRate * bytesPerFrame, 4);
                                               number (bytesPerFrame, 2);              number (8 * sizeof (float), 2);
                                               number (0, 2);
        text ("fact"); number (factSize, 4);   number (numFrames, 4);
        text ("data"); number (dataSize, 4);
        // clang-format on
        return bytes;
    }
} // namespace

WavFile::WavFile (Sink writeBytes, std::uint32_t sampleRate, std::uint32_t numFrames) : write (std::move (writeBytes))
{
    write (headerOf (sampleRate, numFrames));
}

void WavFile::append (const float* left, const float* right, int numFrames)
{
    bytes.resize (static_cast<std::size_t> (numFrames) * bytesPerFrame);

    auto* next = bytes.data();

    for (int i = 0; i < numFrames; ++i)
        next = storeSample (storeSample (next, left[i]), right[i]);

    write (bytes);
}

} // namespace pulsewright
