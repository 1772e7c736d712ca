// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// A small LV2 host on lilv: plays the built LV2 by the standard's own library, without JUCE on the host's side.

#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace pulsewright
{

/** Loads a bundle and plays it block by block. Speaks of the transport as real hosts do: when it changes. */
class Lv2Host
{
public:
    /** @throws std::runtime_error  saying what is wrong when the bundle does not load */
    Lv2Host (const std::filesystem::path& bundle, const std::string& uri, double sampleRate, int largestBlock);
    ~Lv2Host();

    struct Transport
    {
        double beat; ///< since the start, in quarter notes
        double bpm;
        bool isRolling  = true;
        bool namesBeat  = true; ///< or the sample alone, as some hosts do
        bool namesTempo = true;
    };

    struct Message
    {
        std::int64_t sample; ///< from the first block on
        std::array<std::uint8_t, 3> bytes;

        bool operator== (const Message&) const = default;
    };

    /** Plays one block. @param news  what the host says of the transport in it: mostly nothing */
    void process (int numSamples, const std::optional<Transport>& news = {});

    const std::vector<Message>& recordedMidi() const noexcept;

    /** Sets a parameter by its symbol, in its own unit. The plug-in sees it in the next block. */
    void setParameter (const std::string& symbol, float value);

    /** The plug-in's state as Turtle. */
    std::string save();
    void restore (const std::string& state);

private:
    struct Impl;
    std::unique_ptr<Impl> impl;
};

} // namespace pulsewright
