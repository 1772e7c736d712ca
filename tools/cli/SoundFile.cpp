// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "SoundFile.h"

#include "OutputFile.h"

#include "WavFile.h"

#include <algorithm>
#include <string_view>

#if PULSEWRIGHT_HAS_SNDFILE
#include <cstring>
#include <exception>
#include <sndfile.h>
#include <vector>
#endif

namespace pulsewright::cli
{

namespace
{
    bool endsIgnoringCase (std::string_view text, std::string_view end) noexcept
    {
        const auto lower = [] (char c) { return c >= 'A' && c <= 'Z' ? static_cast<char> (c - 'A' + 'a') : c; };
        return text.size() >= end.size() && std::ranges::equal (text.substr (text.size() - end.size()), end, {}, lower);
    }

    class FloatWav final : public SoundFile
    {
    public:
        FloatWav (const std::string& target, std::uint32_t sampleRate, std::uint32_t numFrames)
            : output (target), wav ([this] (auto bytes) { output.write (bytes); }, sampleRate, numFrames)
        {}

        void append (const float* left, const float* right, int numFrames) override { wav.append (left, right, numFrames); }
        void commit() override { output.commit(); }

    private:
        OutputFile output;
        WavFile wav;
    };

#if PULSEWRIGHT_HAS_SNDFILE

    /** Compressed in memory, since its header is written last, and pipes do not seek. */
    class CompressedSound final : public SoundFile
    {
        struct Memory
        {
            std::string bytes;
            std::size_t place = 0;
            bool isFull       = false;
        };

    public:
        CompressedSound (const std::string& targetName, int format, std::uint32_t sampleRate, std::uint32_t numFrames)
            : name (targetName), output (targetName), framesLeft (numFrames)
        {
            SF_INFO info {};
            info.samplerate = static_cast<int> (sampleRate);
            info.channels   = 2;
            info.format     = format;

            static SF_VIRTUAL_IO access { lengthOf, seek, nullptr, write, tell };
            file.reset (sf_open_virtual (&access, SFM_WRITE, &info, this));

            if (file == nullptr)
                fail();
        }

        void append (const float* left, const float* right, int numFrames) override
        {
            frames.clear();

            for (int i = 0; i < numFrames; ++i)
                frames.insert (frames.end(), { left[i], right[i] });

            framesLeft -= sf_writef_float (file.get(), frames.data(), numFrames);
        }

        void commit() override
        {
            if (framesLeft != 0)
                fail();

            file.reset(); // its own answer says nothing: what counts are the frames, and what the memory took

            if (memory.isFull)
                fail();

            output.write (memory.bytes);
            output.commit();
        }

    private:
        struct Closes
        {
            void operator() (SNDFILE* open) const noexcept { sf_close (open); }
        };

        [[noreturn]] void fail() const
        {
            throw WriteFailure (name + ": " + OutputFile::cannotCompleteMessage + " (" + sf_strerror (file.get()) + ")");
        }

        static CompressedSound& self (void* user) noexcept { return *static_cast<CompressedSound*> (user); }
        static sf_count_t lengthOf (void* user) noexcept { return static_cast<sf_count_t> (self (user).memory.bytes.size()); }
        static sf_count_t tell (void* user) noexcept { return static_cast<sf_count_t> (self (user).memory.place); }

        static sf_count_t seek (sf_count_t offset, int whence, void* user) noexcept
        {
            const auto base          = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? tell (user) : lengthOf (user);
            self (user).memory.place = static_cast<std::size_t> (std::max<sf_count_t> (0, base + offset));
            return tell (user);
        }

        /** Called by a library in C: nothing is thrown through it. */
        static sf_count_t write (const void* data, sf_count_t count, void* user) noexcept
        {
            auto& [bytes, place, isFull] = self (user).memory;
            const auto size              = static_cast<std::size_t> (count);

            try
            {
                bytes.resize (std::max (bytes.size(), place + size));
            }
            catch (const std::exception&)
            {
                isFull = true;
                return 0;
            }

            std::memcpy (bytes.data() + place, data, size);
            place += size;
            return count;
        }

        const std::string name;
        OutputFile output;
        sf_count_t framesLeft;
        Memory memory;
        std::vector<float> frames;
        std::unique_ptr<SNDFILE, Closes> file;
    };

#endif

    std::unique_ptr<SoundFile> openCompressed ([[maybe_unused]] const std::string& target,
                                               [[maybe_unused]] bool isFlac,
                                               [[maybe_unused]] std::uint32_t sampleRate,
                                               [[maybe_unused]] std::uint32_t numFrames)
    {
#if PULSEWRIGHT_HAS_SNDFILE
        return std::make_unique<CompressedSound> (target,
                                                  isFlac ? SF_FORMAT_FLAC | SF_FORMAT_PCM_24 : SF_FORMAT_OGG | SF_FORMAT_VORBIS,
                                                  sampleRate,
                                                  numFrames);
#else
        throw WriteFailure (target + ": This tool was built without FLAC and Ogg; give the file another name than .flac or .ogg");
#endif
    }
} // namespace

std::unique_ptr<SoundFile> openSoundFile (const std::string& target, std::uint32_t sampleRate, std::uint32_t numFrames)
{
    const bool isFlac = endsIgnoringCase (target, ".flac");

    if (isFlac || endsIgnoringCase (target, ".ogg"))
        return openCompressed (target, isFlac, sampleRate, numFrames);

    return std::make_unique<FloatWav> (target, sampleRate, numFrames);
}

} // namespace pulsewright::cli
