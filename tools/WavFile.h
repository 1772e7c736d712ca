// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// A stereo WAV file of 32-bit floats, written block by block.

#pragma once

#include <juce_audio_formats/juce_audio_formats.h>

#include <memory>
#include <string>

namespace pulsewright
{

class WavFile
{
public:
    /** Opens the file and drops what was in it. @param path  absolute */
    WavFile (const std::string& path, double sampleRate);

    bool wasOpened() const noexcept { return opened; }
    bool isGood() const noexcept { return good; }

    void append (const juce::AudioBuffer<float>& buffer);

    /** Finishes the file. @returns whether all of it has been written */
    bool close();

private:
    juce::FileOutputStream* stream = nullptr; // the writer's
    std::unique_ptr<juce::AudioFormatWriter> writer;
    bool opened = false, good = false;
};

} // namespace pulsewright
