// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Walks a large, fixed set of music and folds every bit of it into a few lines. Where the lines are the
// same, a seed plays the same song. Nothing but the two libraries and the standard one, so that it runs
// wherever there is a compiler.

#include "export/MidiFileWriter.h"
#include "generation/GenreProfile.h"
#include "generation/GrooveGenerator.h"
#include "generation/SongBuilder.h"

#include <array>
#include <clocale>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <locale>
#include <random>
#include <span>
#include <sstream>
#include <string>
#include <vector>

namespace pulsewright
{

namespace
{
    /** One line of the digest: so many things, and what they fold to by 64-bit FNV-1a. Numbers are taken byte
        by byte, lowest first, whatever their order in memory.
    */
    class Group
    {
    public:
        void add (const auto& thing)
        {
            fold (thing);
            ++count;
        }

        std::string line (const std::string& style, const char* what) const
        {
            char text[80];
            std::snprintf (text, sizeof (text), ", %d %s: %016llx\n", count, what, static_cast<unsigned long long> (hash));
            return style + text;
        }

    private:
        void fold (std::uint64_t value, int bytes = 8)
        {
            for (int i = 0; i < bytes; ++i, value >>= 8)
                hash = (hash ^ (value & 0xFFu)) * 0x00000100000001B3u;
        }

        void fold (double value) { fold (__builtin_bit_cast(std::uint64_t, value)); }

        void fold (const std::vector<std::uint8_t>& bytes)
        {
            for (const auto byte : bytes)
                fold (byte, 1);
        }

        void fold (const std::string& text)
        {
            fold (std::uint64_t { text.size() });
            fold (std::vector<std::uint8_t> (text.begin(), text.end()));
        }

        void fold (const std::vector<DrumHit>& hits)
        {
            for (const auto& hit : hits)
            {
                fold (hit.start);
                fold (hit.length);
                for (const auto number : { hit.note, hit.velocity, static_cast<std::uint32_t> (hit.lane) })
                    fold (std::uint64_t { number });
            }
        }

        void fold (const DrumPattern& pattern)
        {
            fold (pattern.name);
            for (const auto number : { static_cast<std::uint64_t> (pattern.sectionType),
                                       static_cast<std::uint64_t> (pattern.bars),
                                       std::uint64_t { pattern.seed },
                                       std::uint64_t { pattern.hits.size() } })
                fold (number);
            fold (pattern.hits);
        }

        void fold (const SongArrangement& song)
        {
            fold (song.name);
            fold (std::uint64_t { song.totalBars });
            fold (std::uint64_t { song.seed });

            for (const auto& section : song.sections)
            {
                fold (section.name);
                fold (std::uint64_t { section.startBar });
                fold (section.pattern);
            }

            fold (flatten (song));
        }

        int count          = 0;
        std::uint64_t hash = 0xCBF29CE484222325u;
    };

    /** Random settings, the thresholds of the recipes and the values next to them more often than others. */
    struct Lots
    {
        std::mt19937 dice;

        std::uint32_t below (std::uint32_t limit) { return static_cast<std::uint32_t> (dice() % limit); }

        GenerationSettings settings (std::uint32_t genre)
        {
            constexpr std::array landmarks { 0.0f, 0.12f, 0.32f, 0.48f, 0.5f, 0.56f, 0.58f, 0.62f, 0.68f, 0.72f, 0.9f, 1.0f };
            // Fixed: a control that came later is drawn for lines of its own, and these lines stay as they are.
            constexpr std::size_t drawn = 12, firstLane = 8;

            GenerationSettings result;
            auto values = result.values();

            for (auto& value : std::span (values).first<drawn>())
            {
                const float landmark = landmarks[below (landmarks.size())];
                const std::array choices { landmark,
                                           std::nextafter (landmark, 2.0f),
                                           std::nextafter (landmark, -1.0f),
                                           static_cast<float> (below (4096)) / 4096.0f };
                value = choices[below (choices.size())];
            }

            // Whole lanes fall silent often enough; a full one is what players mostly have.
            for (auto& value : std::span (values).subspan<firstLane, drawn - firstLane>())
                if (below (2) == 0)
                    value = 1.0f;

            result.genre = static_cast<Genre> (genre);
            result.setValues (values);
            result.seed = static_cast<std::uint32_t> (dice());
            return result;
        }
    };

    /** One style's lines. Its lots are its own and know of no later style or structure: those move nothing here. */
    std::string digestOf (std::uint32_t genre)
    {
        constexpr std::uint32_t numMutatingGenres = 7, numSongStructures = 4; // fixed, for the same reason

        Lots lots { std::mt19937 (genre + 1) };
        Group patterns, mutations, songs, files;

        for (std::uint32_t type = 0; type < sectionTypeCount; ++type)
            for (std::uint32_t i = 0; i < 500; ++i)
            {
                const auto settings = lots.settings (genre);
                const auto pattern  = GrooveGenerator::generate (settings,
                                                                static_cast<SectionType> (type),
                                                                i == 0 ? 192 : 1 + static_cast<int> (lots.below (8)),
                                                                i % 3);
                patterns.add (pattern);

                if (i % 10 == 0)
                    files.add (MidiFileWriter::bytesOf (pattern, 25 + static_cast<int> (lots.below (300))));

                if (i % 25 != 1)
                    continue;

                for (std::uint32_t locks = 0; locks < 16; ++locks)
                {
                    // Drawn one after the other: compilers disagree about the order of arguments.
                    const auto drawn = lots.below (2 * numMutatingGenres);
                    const auto other = lots.settings (drawn < numMutatingGenres ? drawn : genre);
                    const auto seed  = lots.below (1000);
                    const LaneLocks held { (locks & 1) != 0, (locks & 2) != 0, (locks & 4) != 0, (locks & 8) != 0 };
                    mutations.add (GrooveGenerator::mutate (other, pattern, held, seed));
                }
            }

        for (std::uint32_t i = 0; i < 200; ++i)
        {
            const auto settings = lots.settings (genre);
            const auto song     = SongBuilder::buildSong (settings, static_cast<int> (lots.below (400)), i % numSongStructures);
            songs.add (song);

            if (i % 21 == 0)
                files.add (MidiFileWriter::bytesOf (song, 174));
        }

        const std::string style (nameOf (static_cast<Genre> (genre)));
        const auto& profile = profileOf (static_cast<Genre> (genre));
        return style + ", " + std::to_string (profile.tempoBpm) + " BPM, " + std::to_string (profile.averageSongSeconds) + " seconds\n"
             + patterns.line (style, "patterns") + mutations.line (style, "mutations") + songs.line (style, "songs")
             + files.line (style, "MIDI files");
    }

    constexpr const char* changedMessage =
        "Each of these lines is music that has changed. If that is meant, docs/architecture.md says what it takes:\n%s";
} // namespace

} // namespace pulsewright

/** Usage: pulsewright-music-digest [--locale | FILE]

    Prints the digest. With a file of expected lines, exits with 1 where it differs. --locale takes the locale
    of the environment first, as a host may, and says how it writes numbers.
*/
int main (int argc, char** argv)
{
    const std::string argument (argc > 1 ? argv[1] : "");

    if (argument == "--locale")
    {
        if (std::setlocale (LC_ALL, "") == nullptr)
            return 2;

        std::locale::global (std::locale (""));
        std::fprintf (stderr, "locale %s, where 2.5 is %.1f\n", std::setlocale (LC_ALL, nullptr), 2.5);
    }

    std::string found;
    for (std::uint32_t genre = 0; genre < pulsewright::genreCount; ++genre)
        found += pulsewright::digestOf (genre);

    std::fputs (found.c_str(), stdout);

    if (argument.empty() || argument == "--locale")
        return 0;

    std::ifstream file (argument);
    const std::string expected { std::istreambuf_iterator<char> (file), {} };

    if (found == expected)
        return 0;

    std::string gone, line;
    for (std::istringstream lines (expected); std::getline (lines, line);)
        gone += found.find (line) == std::string::npos ? line + "\n" : "";

    std::fprintf (stderr, pulsewright::changedMessage, gone.c_str());
    return 1;
}
