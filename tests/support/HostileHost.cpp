// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// A host that does what no host should, to the built VST3 or LV2. What it does is drawn from a seed, which it prints:
// the same seed does the same again, to the sample.
// Usage: pulsewright-hostile-host BUNDLE [--seed N] [--rounds N | --seconds N]
//        pulsewright-hostile-host BUNDLE --loaded   plays until the X server ends, and on
//        pulsewright-hostile-host LV2 --window      does so with its window open

#include "RawHosts.h"
#include "StateBytes.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#if JUCE_LINUX
#include <X11/Xlib.h>
#elif JUCE_WINDOWS
#include <windows.h>
#endif

namespace pulsewright
{

namespace
{
    constexpr int blocksOfARound = 1000;

    using Dice = std::mt19937;

    int below (Dice& dice, int n)
    {
        return static_cast<int> (dice() % static_cast<unsigned> (n));
    }

    template <std::size_t size>
    double oneOf (Dice& dice, const double (&values)[size])
    {
        return values[dice() % size];
    }

    void require (bool holds, const std::string& law)
    {
        if (! holds)
            throw std::runtime_error (law);
    }

    struct Counts
    {
        std::uint64_t blocks, restores, events, digest;
        bool operator== (const Counts&) const = default;

        template <typename Value>
        void fold (const Value& value)
        {
            const auto* bytes = reinterpret_cast<const unsigned char*> (&value);
            for (std::size_t i = 0; i < sizeof (value); ++i)
                digest = (digest ^ bytes[i]) * 0x100000001b3u; // FNV-1a
        }
    };

    //==============================================================================
    RawBlock anyBlock (Dice& dice)
    {
        constexpr double beats[] { 0.0, 3.99, -1e5, 1e6, 1e18, -1e300, NAN, INFINITY };
        constexpr double tempos[] { 120.0, 0.0, -90.0, 1e-9, 1e300, NAN };

        RawBlock block { .isPlaying = dice() % 4 != 0, .beat = below (dice, 4000) / 7.0, .tempo = 40.0 + below (dice, 260) };
        block.numSamples = dice() % 8 == 0 ? below (dice, largestRawBlock + 1) : below (dice, 600);

        if (dice() % 10 == 0)
            block.beat = oneOf (dice, beats), block.tempo = oneOf (dice, tempos);

        const int numEvents = dice() % 200 == 0 ? below (dice, 5000) : below (dice, 5); // now and then a flood
        for (int i = 0; i < numEvents; ++i)
            block.midi.push_back ({ below (dice, std::max (1, block.numSamples)),
                                    { static_cast<std::uint8_t> (0x80 + below (dice, 0x20)), // note on or off
                                      static_cast<std::uint8_t> (below (dice, 128)),
                                      static_cast<std::uint8_t> (below (dice, 128)) } });
        return block;
    }

    /** Chooses a section, and goes no further. */
    bool isTrigger (const RawEvent& event)
    {
        const auto [status, note, velocity] = event.bytes;
        return status >= 0x90 && note >= 60 && note <= 67 && velocity > 0;
    }

    void play (RawHost& host, Dice& dice, Counts& counts)
    {
        const auto block = anyBlock (dice);
        require (host.play (block), "what comes out is well-formed");

        for (const auto& channel : host.audio)
            for (std::size_t i = 0; i < static_cast<std::size_t> (block.numSamples); ++i)
            {
                require (std::abs (channel[i]) <= 1.0f, "every sample lies within -1 to 1"); // as no NaN does
                counts.fold (channel[i]);
            }

        const auto numPassing = block.midi.size() - static_cast<std::size_t> (std::ranges::count_if (block.midi, isTrigger));
        require (host.midi.size() >= std::min (numPassing, host.mostEvents()), "what comes in goes out");

        for (const auto& event : host.midi)
        {
            require (event.sample >= 0 && event.sample < std::max (1, block.numSamples), "events lie in the block");
            counts.fold (event.sample);
            counts.fold (event.bytes);
        }

        ++counts.blocks;
        counts.events += host.midi.size();
    }

    //==============================================================================
    void requireUnchanged (RawHost& host, const juce::MemoryBlock& state, const std::string& after)
    {
        require (host.save() == state, "nothing has changed after: " + after);
    }

    /** States that a plug-in refuses, and texts that are none. */
    void refuseBadStates (RawHost& host)
    {
        const auto good = host.save();

        for (const auto& [name, bytes] : badStates (good))
        {
            host.restore (bytes);
            requireUnchanged (host, good, name);
        }

        for (const char* text :
             { "", ".", "-1.AAAA", "-2147483648.AAAA", "2000000000.AAAA", "99999999999999999999.A", "8", "8.", "8.....", "x.AAAA" })
        {
            host.restoreText (text);
            requireUnchanged (host, good, text);
        }
    }

    /** A good state with a few bytes changed. What the plug-in makes of it, it takes back, byte for byte. */
    void restoreAny (RawHost& host, juce::MemoryBlock state, Dice& dice, Counts& counts)
    {
        for (int i = below (dice, 4); i > 0; --i)
            state[dice() % state.getSize()] = static_cast<char> (dice() % 128);

        host.restore (state);
        const auto kept = host.save();
        host.restore (kept);
        requireUnchanged (host, kept, "its own state");
        ++counts.restores;
    }

    Counts playRound (const juce::File& bundle, unsigned seed)
    {
        Dice dice (seed);
        Counts counts {};
        const auto host = openRaw (bundle, dice() % 2 == 0 ? 44100.0 : 192000.0);
        const auto good = host->save();
        refuseBadStates (*host);

        for (int i = 0; i < blocksOfARound; ++i)
        {
            play (*host, dice, counts);

            if (dice() % 16 == 0)
                restoreAny (*host, good, dice, counts);
        }

        return counts;
    }

    bool isInMemory (const juce::File& bundle)
    {
#if JUCE_WINDOWS
        return GetModuleHandleW (bundle.getFileName().toWideCharPointer()) != nullptr;
#else
        return juce::File ("/proc/self/maps").loadFileAsString().contains (bundle.getFullPathName());
#endif
    }

#if JUCE_LINUX
    bool isServerThere()
    {
        auto* display = XOpenDisplay (nullptr);
        return display != nullptr && XCloseDisplay (display) == 0;
    }

    /** A window that stays without its maker, so that this process has no connection of its own. */
    unsigned long makeParent()
    {
        auto* display = XOpenDisplay (nullptr);
        require (display != nullptr, "there is a display");
        const auto parent = XCreateSimpleWindow (display, DefaultRootWindow (display), 0, 0, 1120, 840, 0, 0, 0);
        XMapWindow (display, parent);
        XSetCloseDownMode (display, RetainPermanent);
        XCloseDisplay (display);
        return parent;
    }

    /** On a display where nobody has made the names that window managers make, and until it is gone. */
    void outliveServer (const juce::File& bundle, bool withWindow)
    {
        const auto parent = makeParent();
        const auto host   = openRaw (bundle, 48000.0);
        const auto tend   = [&]
        {
            for (int i = 0; i < 50; ++i)
            {
                if (withWindow)
                    host->tendWindow();

                require (host->play ({ .beat = i * 0.1, .numSamples = 512 }), "it plays");
                juce::Thread::sleep (10);
            }
        };

        for (int i = 0; withWindow && i < 5; ++i)
        {
            host->openWindow (parent);
            tend();
            host->closeWindow();
        }

        if (withWindow)
            host->openWindow (parent);

        std::puts ("It runs");
        std::fflush (stdout);

        for (int i = 0; i < 60 && isServerThere(); ++i)
            tend();

        require (! isServerThere(), "the X server ends within half a minute");
        tend();

        if (withWindow)
            host->closeWindow();

        require (! host->save().isEmpty(), "it can be saved");
    }
#endif

    void playRounds (const juce::File& bundle, unsigned seed, int rounds, double seconds)
    {
        using Clock      = std::chrono::steady_clock;
        const auto until = Clock::now() + std::chrono::duration<double> (seconds);

        for (int round = 0; round < rounds || Clock::now() < until; ++round, ++seed)
        {
            std::printf ("--seed %u: ", seed);
            std::fflush (stdout);

            const auto counts = playRound (bundle, seed);
            std::printf ("%llu blocks, %llu restores, %llu events, digest %016llx\n",
                         static_cast<unsigned long long> (counts.blocks),
                         static_cast<unsigned long long> (counts.restores),
                         static_cast<unsigned long long> (counts.events),
                         static_cast<unsigned long long> (counts.digest));

            require (counts.events > 0, "notes are played");
            require (round > 0 || playRound (bundle, seed) == counts, "a seed does the same twice");
            require (! isInMemory (bundle), "the module is unloaded");
        }
    }
} // namespace

} // namespace pulsewright

int main (int argc, char** argv)
{
    const std::vector<std::string> arguments (argv + 1, argv + argc);
    const auto option = [&] (const char* name, unsigned otherwise)
    {
        const auto found = std::ranges::find (arguments, name);
        return found < arguments.end() - 1 ? static_cast<unsigned> (std::stoul (*(found + 1))) : otherwise;
    };

    try
    {
        const auto bundle  = juce::File::getCurrentWorkingDirectory().getChildFile (arguments.at (0));
        const auto seconds = option ("--seconds", 0);

#if JUCE_LINUX
        if (const auto& mode = arguments.back(); mode == "--window" || mode == "--loaded")
            return pulsewright::outliveServer (bundle, mode == "--window"), EXIT_SUCCESS;
#endif

        pulsewright::playRounds (bundle,
                                 option ("--seed", std::random_device()()),
                                 static_cast<int> (option ("--rounds", seconds > 0 ? 0 : 1)),
                                 seconds);
        return EXIT_SUCCESS;
    }
    catch (const std::exception& error)
    {
        std::printf ("\nDoes not hold: %s\n", error.what());
        return EXIT_FAILURE;
    }
}
