// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "WavFile.h"

namespace pulsewright
{

WavFile::WavFile (const std::string& path, double sampleRate)
{
    auto file = std::make_unique<juce::FileOutputStream> (juce::File (juce::String::fromUTF8 (path.c_str())));
    opened    = file->openedOk();

    if (opened && file->getFile().getSize() > 0)
        opened = file->setPosition (0) && file->truncate().wasOk();

    if (! opened)
        return;

    constexpr int channels = 2, bits = 32; // 32 bits are floats
    stream = file.get();
    writer.reset (juce::WavAudioFormat().createWriterFor (stream, sampleRate, channels, bits, {}, 0));
    good = writer != nullptr;

    if (good)
        static_cast<void> (file.release()); // the writer's now
}

void WavFile::append (const juce::AudioBuffer<float>& buffer)
{
    good = good && writer->writeFromAudioSampleBuffer (buffer, 0, buffer.getNumSamples()) && stream->getStatus().wasOk();
}

bool WavFile::close()
{
    if (writer != nullptr)
    {
        // Flushing writes the header again, with the lengths.
        good = writer->flush() && good && stream->getStatus().wasOk();
        writer.reset();
    }

    return good;
}

} // namespace pulsewright
