// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Walks a large, fixed set of music and folds every bit of it into a few lines. Where the lines are the
// same, a seed plays the same song. Nothing but the two libraries and the standard one, so that it runs
// wherever there is a compiler.

#include "export/MidiFileWriter.h"
#include "generation/GrooveGenerator.h"
#include "generation/SongBuilder.h"

#include <array>
#include <bit>
#include <clocale>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <limits>
#include <locale>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace pulsewright
{

namespace
{
    //==============================================================================
    /** FNV-1a with 64 bits. Numbers are taken byte by byte, lowest first, whatever their order in memory. */
    class Fingerprint
    {
    public:
        void add (std::uint8_t byte) noexcept { hash = (hash ^ byte) * 0x00000100000001B3u; }

        void add (std::uint32_t value) noexcept { addBytes (value, 4); }
        void add (std::uint64_t value) noexcept { addBytes (value, 8); }
        void add (std::int32_t value) noexcept { add (static_cast<std::uint32_t> (value)); }
        void add (double value) noexcept { add (std::bit_cast<std::uint64_t> (value)); }

        void add (std::string_view text) noexcept
        {
            add (std::uint64_t { text.size() });

            for (const auto character : text)
                add (static_cast<std::uint8_t> (character));
        }

        void add (const std::vector<std::uint8_t>& bytes) noexcept
        {
            add (std::uint64_t { bytes.size() });

            for (const auto byte : bytes)
                add (byte);
        }

        void add (const std::vector<DrumHit>& hits) noexcept
        {
            add (std::uint64_t { hits.size() });

            for (const auto& hit : hits)
            {
                add (hit.start);
                add (hit.length);
                add (hit.note);
                add (hit.velocity);
                add (static_cast<std::uint32_t> (hit.lane));
            }
        }

        void add (const DrumPattern& pattern) noexcept
        {
            add (std::string_view (pattern.name));
            add (static_cast<std::uint32_t> (pattern.sectionType));
            add (pattern.bars);
            add (pattern.seed);
            add (pattern.hits);
        }

        void add (const SongArrangement& song) noexcept
        {
            add (std::string_view (song.name));
            add (song.totalBars);
            add (song.seed);
            add (std::uint64_t { song.sections.size() });

            for (const auto& section : song.sections)
            {
                add (std::string_view (section.name));
                add (section.startBar);
                add (section.pattern);
            }
        }

        /** Sixteen digits, made by hand: a stream would ask the locale. */
        std::string text() const
        {
            std::string digits;

            for (int shift = 60; shift >= 0; shift -= 4)
                digits += "0123456789abcdef"[(hash >> shift) & 0xFu];

            return digits;
        }

    private:
        void addBytes (std::uint64_t value, int count) noexcept
        {
            for (int i = 0; i < count; ++i)
                add (static_cast<std::uint8_t> ((value >> (8 * i)) & 0xFFu));
        }

        std::uint64_t hash = 0xCBF29CE484222325u;
    };

    /** One line of the digest: so many things, and what they fold to. */
    class Group
    {
    public:
        explicit Group (std::string_view nameToUse) : name (nameToUse) {}

        template <typename Thing>
        void add (const Thing& thing)
        {
            fingerprint.add (thing);
            ++count;
        }

        std::string line() const { return name + " " + std::to_string (count) + " " + fingerprint.text(); }

    private:
        std::string name;
        std::uint64_t count = 0;
        Fingerprint fingerprint;
    };

    //==============================================================================
    // What the music is made of. The last values of the tables lie outside of what there is.

    constexpr std::uint32_t farOut = 0xFFFFFFFFu;

    // clang-format off
    constexpr std::array<std::uint32_t, genreCount + 2>       genres   { 0, 1, 2, 3, 4, 5, 6, genreCount, farOut };
    constexpr std::array<std::uint32_t, sectionTypeCount + 2> sections { 0, 1, 2, 3, 4, 5, 6, 7, 8, sectionTypeCount, farOut };

    constexpr std::array patternBars    { -1, 0, 1, 2, 3, 4, 7, 8, 16, 192, 193 };
    constexpr std::array songLengths    { -1, 0, 1, 16, 17, 23, 32, 61, 64, 100, 128, 191, 383, 384, 385 };
    constexpr std::array songStructures { 0u, 1u, 2u, 3u, songStructureCount, songStructureCount + 1, farOut };
    constexpr std::array tempos         { -1, 29, 30, 74, 90, 120, 133, 174, 299, 300, 301 };

    constexpr std::array seeds { 0u, 1u, 100u, 0x7FFFFFFFu, 0x80000000u, farOut };
    constexpr std::array salts { 0u, 1u, GenerationSettings::defaultSalt, farOut };

    constexpr std::array<float GenerationSettings::*, GenerationSettings::numValues> controls
    {
        &GenerationSettings::density,          &GenerationSettings::energy,           &GenerationSettings::syncopation,
        &GenerationSettings::swing,            &GenerationSettings::variation,        &GenerationSettings::experimental,
        &GenerationSettings::timing,           &GenerationSettings::velocity,         &GenerationSettings::kickProbability,
        &GenerationSettings::snareProbability, &GenerationSettings::hatsProbability,  &GenerationSettings::percProbability
    };
    // clang-format on

    /** A value and its neighbours on both sides: a comparison that is off by one bit confuses them. */
    void appendAround (std::vector<float>& values, float value, int neighbours)
    {
        values.push_back (value);

        float below = value, above = value;

        for (int i = 0; i < neighbours; ++i)
        {
            values.push_back (below = std::nextafter (below, -1.0f));
            values.push_back (above = std::nextafter (above, 2.0f));
        }
    }

    /** What a control may be set to: ends, far outs, halves that round, and all that the generator compares with. */
    std::vector<float> levelsOfControls()
    {
        using Limits = std::numeric_limits<float>;

        // clang-format off
        std::vector<float> levels { -Limits::infinity(), -1.0f, -0.0f, 0.0f, Limits::denorm_min(), 0x1p-24f, 0.1f, 0.25f, 0.46875f,
                                    0.5f, 0.53125f, 0.9f, 1.5f, Limits::infinity(), Limits::quiet_NaN() };
        // clang-format on

        for (const auto threshold : { 0.2f, 0.32f, 0.4f, 0.56f, 0.6f, 0.62f, 0.68f, 0.72f, 0.8f, 1.0f })
            appendAround (levels, threshold, 1);

        return levels;
    }

    //==============================================================================
    DrumPattern patternOf (const GenerationSettings& settings, std::uint32_t section, std::int32_t bars, std::uint32_t seed)
    {
        return GrooveGenerator::generate (settings, static_cast<SectionType> (section), bars, seed);
    }

    /** Takes with dice of their own. No two draws in one expression: compilers differ in which comes first. */
    class Takes
    {
    public:
        explicit Takes (std::uint32_t seed) : dice (seed) {}

        /** A genre's settings, three controls in four at a percentage, the others at a level. */
        GenerationSettings settingsOf (std::uint32_t genre)
        {
            std::array<float, GenerationSettings::numValues> values {};

            for (auto& value : values)
                value = next (4) > 0 ? static_cast<float> (next (1001)) * 0.001f : levels[next (static_cast<std::uint32_t> (levels.size()))];

            GenerationSettings settings;
            settings.genre = static_cast<Genre> (genre);
            settings.seed  = saltOf (next (1000));
            settings.setValues (values);
            return settings;
        }

        DrumPattern patternOf (std::uint32_t genre, std::uint32_t section)
        {
            const auto settings = settingsOf (genre);
            return pulsewright::patternOf (settings, section, 4, next (farOut));
        }

        DrumPattern mutationOf (const DrumPattern& pattern, const LaneLocks& locks, std::uint32_t genre)
        {
            const auto settings = settingsOf (genre);
            return GrooveGenerator::mutate (settings, pattern, locks, next (farOut));
        }

    private:
        std::uint32_t next (std::uint32_t count) { return static_cast<std::uint32_t> (dice() % count); }

        std::mt19937 dice;
        const std::vector<float> levels = levelsOfControls();
    };

    /** A genre's settings with one control moved, in the way that hosts move it. */
    GenerationSettings withControl (std::uint32_t genre, std::size_t control, float value)
    {
        GenerationSettings settings;
        settings.genre = static_cast<Genre> (genre);

        std::array<float, GenerationSettings::numValues> values {};

        for (std::size_t i = 0; i < controls.size(); ++i)
            values[i] = i == control ? value : settings.*controls[i];

        settings.setValues (values);
        return settings;
    }

    template <typename Action>
    void forEachGenreAndSection (Action&& action)
    {
        for (const auto genre : genres)
            for (const auto section : sections)
                action (genre, section);
    }

    //==============================================================================
    void addLengthsAndSeeds (Group& group, std::uint32_t genre, std::uint32_t section)
    {
        GenerationSettings settings;
        settings.genre = static_cast<Genre> (genre);

        for (const auto bars : patternBars)
            group.add (patternOf (settings, section, bars, 1));

        for (const auto seed : seeds)
            for (const auto salt : salts)
            {
                settings.seed = salt;
                group.add (patternOf (settings, section, 2, seed));
            }
    }

    void addEveryControl (Group& group, std::uint32_t genre, std::uint32_t section)
    {
        static const auto levels = levelsOfControls();

        for (std::size_t control = 0; control < controls.size(); ++control)
            for (const auto level : levels)
                group.add (patternOf (withControl (genre, control, level), section, 2, 1));
    }

    /** Density and energy where the section's offset carries them to a threshold. */
    void addThresholdsOfSection (Group& group, std::uint32_t genre, std::uint32_t section)
    {
        constexpr std::size_t density = 0, energy = 1;
        constexpr int neighbours = 3;

        const auto offset = energyOffsetOf (static_cast<SectionType> (section));
        std::vector<float> densities, energies;
        appendAround (densities, 0.56f - 0.55f * offset, neighbours);

        for (const auto threshold : { 0.2f, 0.4f, 0.6f, 0.8f, 1.0f })
            appendAround (energies, threshold - offset, neighbours);

        for (const auto value : densities)
            group.add (patternOf (withControl (genre, density, value), section, 2, 1));

        for (const auto value : energies)
            group.add (patternOf (withControl (genre, energy, value), section, 2, 1));
    }

    /** Controls that nobody clamped on their way to the generator. */
    void addUnclampedControls (Group& group, std::uint32_t genre, std::uint32_t section)
    {
        for (const auto control : controls)
            for (const auto value : { -1000.0f, -0.5f, 1.5f, 1000.0f })
            {
                GenerationSettings settings;
                settings.genre    = static_cast<Genre> (genre);
                settings.*control = value;
                group.add (patternOf (settings, section, 2, 1));
            }
    }

    /** A lane that is off stays silent even when the dice show 0, as with this seed they do at the first kick. */
    void addSilencedKick (Group& group)
    {
        constexpr std::uint32_t seedThatThrowsZero = 20618508;

        GenerationSettings settings;
        settings.kickProbability = 0.0f;
        group.add (patternOf (settings, static_cast<std::uint32_t> (SectionType::verse), 1, seedThatThrowsZero));
    }

    Group patterns()
    {
        Group group ("patterns");
        Takes takes (1);

        for (const auto section : sections)
            group.add (static_cast<double> (energyOffsetOf (static_cast<SectionType> (section))));

        addSilencedKick (group);

        forEachGenreAndSection (
            [&] (auto genre, auto section)
            {
                addLengthsAndSeeds (group, genre, section);
                addEveryControl (group, genre, section);
                addThresholdsOfSection (group, genre, section);
                addUnclampedControls (group, genre, section);

                for (int take = 0; take < 500; ++take)
                    group.add (takes.patternOf (genre, section));
            });

        return group;
    }

    //==============================================================================
    LaneLocks locksOf (std::uint32_t bits) noexcept
    {
        return { (bits & 1) != 0, (bits & 2) != 0, (bits & 4) != 0, (bits & 8) != 0 };
    }

    /** A pattern that no generator made: hits outside of it, hits that only their order tells apart, and no lane. */
    DrumPattern strangePattern()
    {
        DrumPattern pattern;
        pattern.name = "Str\xC3\xA4nge";
        pattern.bars = 0;

        // clang-format off
        pattern.hits =
        {
            { -1.0,  0.1, note::kick,      100, DrumLane::kick },
            { 99.0,  0.1, note::snare,       0, DrumLane::snare },
            {  0.0,  0.1, note::lowTom,     60, DrumLane::perc },
            {  0.02, 0.1, note::lowTom,     60, DrumLane::perc }, // just not doubled
            {  1.0,  0.3, note::closedHat,  70, DrumLane::perc },
            {  1.0,  0.2, note::closedHat,  70, DrumLane::hats },
            {  1.0,  0.1, note::closedHat,  70, DrumLane::kick },
            {  1.01, 0.1, note::closedHat, 300, DrumLane::hats },
            {  2.0,  0.1, 300,             100, static_cast<DrumLane> (farOut) },
            { -0.0, -1.0, 0,                 1, DrumLane::perc }
        };
        // clang-format on

        return pattern;
    }

    Group mutations()
    {
        Group group ("mutations");
        Takes takes (2);

        forEachGenreAndSection (
            [&] (auto genre, auto section)
            {
                for (std::uint32_t locks = 0; locks < 16; ++locks)
                {
                    const auto before = takes.patternOf (genre, section);
                    const auto once   = takes.mutationOf (before, locksOf (locks), genre);

                    group.add (once);
                    group.add (takes.mutationOf (once, locksOf (15 - locks), genre));
                    group.add (takes.mutationOf (strangePattern(), locksOf (locks), genre));
                }
            });

        return group;
    }

    //==============================================================================
    Group songs()
    {
        Group group ("songs");
        Takes takes (3);

        for (const auto genre : genres)
        {
            for (const auto structure : songStructures)
                for (const auto bars : songLengths)
                {
                    const auto song = SongBuilder::buildSong (takes.settingsOf (genre), bars, structure);
                    group.add (song);
                    group.add (flatten (song));
                }

            for (std::uint32_t duration = 0; duration <= songDurationCount; ++duration)
                group.add (SongBuilder::durationSeconds (static_cast<Genre> (genre), duration));
        }

        for (const auto structure : songStructures)
            group.add (SongBuilder::structureName (structure));

        // Every tempo and second that a host and a player may ask for, and some that they may not.
        for (int tempo = -1; tempo <= 301; ++tempo)
            for (int seconds = -1; seconds <= 601; seconds += 2)
                group.add (SongBuilder::songBars (seconds, tempo));

        return group;
    }

    //==============================================================================
    /** The bytes of a file that went by the disk, where a text mode or a locale would leave its traces. */
    template <typename Save>
    std::vector<std::uint8_t> savedBytes (Save&& save)
    {
        const std::string path = "pulsewright-music-digest.mid";
        std::string error;

        if (! save (path, &error))
            throw std::runtime_error (path + ": " + error);

        std::ifstream file (path, std::ios::binary);
        const std::string bytes { std::istreambuf_iterator<char> (file), {} };
        file.close();
        std::remove (path.c_str());
        return { bytes.begin(), bytes.end() };
    }

    /** Hits where no tick is, or none that a file can hold. */
    std::vector<DrumHit> hitsOutOfTime()
    {
        using Limits = std::numeric_limits<double>;

        std::vector<DrumHit> hits;

        for (const auto start : { -Limits::infinity(), -1e300, -0.5, -0.0, 0.5 / 960.0, 4473924.266, 4473925.0, 1e300, Limits::infinity() })
            for (const auto length : { -1.0, 0.0, 0.5 / 960.0, 1e9, Limits::quiet_NaN() })
                hits.push_back ({ start, length, 255, 256, DrumLane::kick });

        return hits;
    }

    Group midiFiles()
    {
        Group group ("midi-files");
        Takes takes (4);

        forEachGenreAndSection (
            [&] (auto genre, auto section)
            {
                for (const auto tempo : tempos)
                    group.add (MidiFileWriter::bytesOf (takes.patternOf (genre, section), tempo));
            });

        for (const auto genre : genres)
            for (const auto structure : songStructures)
                group.add (MidiFileWriter::bytesOf (SongBuilder::buildSong (takes.settingsOf (genre), 64, structure), 120));

        group.add (MidiFileWriter::bytesOf (strangePattern(), 120));
        group.add (MidiFileWriter::buildMidiFileBytes (hitsOutOfTime(), -1, 120, std::string (300, '\xFF')));

        const auto pattern = patternOf (takes.settingsOf (0), 8, 16, 10);
        const auto song    = SongBuilder::buildSong (takes.settingsOf (4), 64, 0);
        group.add (savedBytes ([&] (auto& path, auto* error) { return MidiFileWriter::savePatternToMidiFile (path, pattern, 120, error); }));
        group.add (savedBytes ([&] (auto& path, auto* error) { return MidiFileWriter::saveSongToMidiFile (path, song, 120, error); }));

        return group;
    }

    //==============================================================================
    /** Takes the locale of the environment, as a host may, and says how it writes numbers. */
    void adoptLocale()
    {
        if (std::setlocale (LC_ALL, "") == nullptr)
            throw std::runtime_error ("The environment asks for a locale that is not there.");

        std::locale::global (std::locale (""));

        std::ostringstream number;
        number << 1234567.5;
        std::fprintf (stderr, "locale %s, where 2.5 is %.1f and 1234567.5 is %s\n", std::setlocale (LC_ALL, nullptr), 2.5, number.str().c_str());
    }

    std::string contentsOf (const std::string& path)
    {
        std::ifstream file (path); // as text, for the sake of line ends

        if (! file)
            throw std::runtime_error ("Could not read " + path);

        return { std::istreambuf_iterator<char> (file), {} };
    }

    constexpr const char* changedMessage = R"(
The music has changed: a seed no longer plays what it played.

expected
%s
found
%s
If nobody meant it to change, look for what did it. If somebody did, it must be done knowingly, for
songs that players have kept will sound different. It takes two things in the same commit: an entry
marked **music** in CHANGELOG.md, and a new digest:

    pulsewright-music-digest > tests/data/music-digest.txt
)";

    /** Prints the digest and, given a file, holds it against that. */
    int run (const std::vector<std::string>& arguments)
    {
        std::string expectedFile;

        for (const auto& argument : arguments)
        {
            if (argument == "--locale")
                adoptLocale();
            else
                expectedFile = argument;
        }

        const auto digest = patterns().line() + "\n" + mutations().line() + "\n" + songs().line() + "\n" + midiFiles().line() + "\n";
        std::fputs (digest.c_str(), stdout);

        if (expectedFile.empty())
            return 0;

        const auto expected = contentsOf (expectedFile);

        if (expected == digest)
            return 0;

        std::fprintf (stderr, changedMessage, expected.c_str(), digest.c_str());
        return 1;
    }
} // namespace

} // namespace pulsewright

//==============================================================================
/** Usage: pulsewright-music-digest [--locale] [FILE]

    Prints the digest. With a file of expected lines, exits with 1 where it differs; with 2 when
    something went wrong. --locale takes the locale of the environment first.
*/
int main (int argc, char** argv)
{
    try
    {
        return pulsewright::run ({ argv + 1, argv + argc });
    }
    catch (const std::exception& error)
    {
        std::fprintf (stderr, "%s\n", error.what());
        return 2;
    }
}
