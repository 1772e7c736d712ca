// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "TakeCode.h"

#include "SongBuilder.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <span>
#include <vector>

namespace pulsewright
{

namespace
{
    constexpr std::size_t numDataLetters  = 40;
    constexpr std::size_t numCheckLetters = 6;
    constexpr std::size_t numLetters      = numDataLetters + numCheckLetters;
    constexpr std::size_t lettersPerGroup = 5;
    constexpr int bitsPerLetter           = 5;

    /** The settings that a code of this version carries; those after them in the table have their defaults. */
    constexpr auto codedSettings = std::span (allSettings).first<numCodedSettings>();
    constexpr auto laterSettings = std::span (allSettings).subspan<numCodedSettings>();

    float defaultOf (const Setting& setting) noexcept
    {
        return snapPercent (GenerationSettings().*setting.field);
    }

    bool hasLaterDefaults (const GenerationSettings& settings) noexcept
    {
        const auto hasDefault = [&] (const auto& setting) { return settings.*setting.field == defaultOf (setting); };
        return std::all_of (laterSettings.begin(), laterSettings.end(), hasDefault);
    }

    //==============================================================================
    // The layout: both directions go through it, so that it stands once.

    /** @param bits  what is done with a field: its width, the values that it may have, and where it is in the take */
    void eachField (auto& bits, auto& take)
    {
        bits.field (1, 0, 1, take.kind);
        bits.field (5, 0, genreCount - 1, take.settings.genre);

        for (const auto& setting : codedSettings)
            bits.thousandths (10, take.settings.*setting.field);

        if (take.kind == Take::Kind::groove)
        {
            bits.field (4, 0, sectionTypeCount - 1, take.section);
            bits.field (8, DrumPattern::minBars, DrumPattern::maxBars, take.bars);
            bits.sectionSeed (4, take.stream);
        }
        else
        {
            bits.field (9, 0, SongBuilder::maxBars, take.songBars);
            bits.zeros (7);
        }

        bits.field (3, 0, songStructureCount - 1, take.structure);
        bits.field (4, 0, songDurations.size() - 1, take.duration);
        bits.field (9, Take::minTempo, Take::maxTempo, take.tempo);
        bits.field (3, 0, Take::kitCount - 1, take.kit);
        bits.field (32, 0, 0xFFFFFFFFu, take.counter);
        bits.zeros (7);
    }

    constexpr std::uint32_t lastSectionSeed = 8; // as it is written: 0 for none, 1 for the first section

    using Letters = std::vector<std::uint8_t>; // 0 to 31 each

    /** Packs fields, the highest bit first. */
    class Writer
    {
    public:
        void field (int width, std::uint32_t least, std::uint32_t most, auto value)
        {
            const auto number = static_cast<std::uint32_t> (value);
            fits              = fits && number >= least && number <= most;
            append (width, number - least);
        }

        void thousandths (int width, float value)
        {
            const auto number = std::lround (value * 1000.0f);
            fits              = fits && snapPercent (value) == value;
            append (width, static_cast<std::uint32_t> (number));
        }

        void sectionSeed (int width, std::uint32_t seed)
        {
            field (width, 0, lastSectionSeed, seed == 0 ? 0 : seed - SongBuilder::firstSectionSeed + 1);
        }
        void zeros (int width) { append (width, 0); }

        /** The letters; nothing where a value was outside its range. */
        std::optional<Letters> letters() const { return fits ? std::optional (packed) : std::nullopt; }

    private:
        void append (int width, std::uint32_t value)
        {
            for (int bit = width - 1; bit >= 0; --bit, ++count)
            {
                if (count % bitsPerLetter == 0)
                    packed.push_back (0);
                packed.back() = static_cast<std::uint8_t> (static_cast<unsigned> (packed.back()) << 1 | (value >> bit & 1u));
            }
        }

        Letters packed;
        int count = 0;
        bool fits = true;
    };

    /** Takes them out again. */
    class Reader
    {
    public:
        explicit Reader (std::span<const std::uint8_t> lettersToRead) : letters (lettersToRead) {}

        template <typename Value>
        void field (int width, std::uint32_t least, std::uint32_t most, Value& value)
        {
            const auto number = next (width);
            fits              = fits && number <= most - least;
            value             = static_cast<Value> (number + least);
        }

        void thousandths (int width, float& value)
        {
            const auto number = next (width);
            fits              = fits && number <= 1000;
            value             = snapPercent (static_cast<float> (number) * settingInterval);
        }

        void sectionSeed (int width, std::uint32_t& seed)
        {
            std::uint32_t number = 0;
            field (width, 0, lastSectionSeed, number);
            seed = number == 0 ? 0 : number - 1 + SongBuilder::firstSectionSeed;
        }

        void zeros (int width) { fits = next (width) == 0 && fits; }

        bool allFit() const noexcept { return fits; }

    private:
        std::uint32_t next (int width)
        {
            std::uint32_t value = 0;

            for (int bit = 0; bit < width; ++bit, ++position)
            {
                const auto letter = letters[static_cast<std::size_t> (position / bitsPerLetter)];
                value             = value << 1 | (letter >> (bitsPerLetter - 1 - position % bitsPerLetter) & 1u);
            }

            return value;
        }

        std::span<const std::uint8_t> letters;
        int position = 0;
        bool fits    = true;
    };

    //==============================================================================
    // The letters and the checksum are those of Bech32m, with "pw" before the "1" (P. Wuille, "BIP 350", 2020): it finds
    // any four wrong letters.

    constexpr std::string_view alphabet = "QPZRY9X8GF2TVDW0S3JN54KHCE6MUA7L";
    static_assert (alphabet.size() == 1u << bitsPerLetter);

    constexpr std::uint32_t checkedSum = 0x2BC830A3u;

    constexpr std::uint32_t addLetter (std::uint32_t sum, std::uint32_t letter) noexcept
    {
        constexpr std::array<std::uint32_t, bitsPerLetter> generator { 0x3B6A57B2u, 0x26508E6Du, 0x1EA119FAu, 0x3D4233DDu, 0x2A1462B3u };

        const auto top = sum >> 25;
        sum            = (sum & 0x1FFFFFFu) << bitsPerLetter ^ letter;

        for (std::size_t bit = 0; bit < generator.size(); ++bit)
            sum ^= (top >> bit & 1u) != 0 ? generator[bit] : 0u;

        return sum;
    }

    std::uint32_t checkSum (std::span<const std::uint8_t> letters) noexcept
    {
        std::uint32_t sum = 1;

        for (const std::uint32_t prefix : std::initializer_list<std::uint32_t> { 'p' >> 5u, 'w' >> 5u, 0u, 'p' & 31u, 'w' & 31u })
            sum = addLetter (sum, prefix);
        for (const auto letter : letters)
            sum = addLetter (sum, letter);

        return sum;
    }

    /** What one wrong letter does to the sum. */
    struct Slip
    {
        std::uint32_t change;
        std::size_t place;
        std::uint8_t difference; ///< the bits by which the letter is another
    };

    std::vector<Slip> allSlips()
    {
        std::vector<Slip> slips;

        for (std::size_t place = 0; place < numLetters; ++place)
            for (std::uint32_t difference = 1; difference < alphabet.size(); ++difference)
            {
                auto change = difference;
                for (auto rest = numLetters - 1 - place; rest > 0; --rest)
                    change = addLetter (change, 0);
                slips.push_back ({ change, place, static_cast<std::uint8_t> (difference) });
            }

        std::sort (slips.begin(), slips.end(), [] (const auto& a, const auto& b) { return a.change < b.change; });
        return slips;
    }

    /** The one or two letters that are likely to be wrong; none when there are more. */
    std::vector<Slip> likelySlips (std::uint32_t change)
    {
        const auto slips  = allSlips();
        const auto search = [&slips] (std::uint32_t wanted)
        {
            const auto found =
                std::lower_bound (slips.begin(), slips.end(), wanted, [] (const auto& slip, auto value) { return slip.change < value; });
            return found != slips.end() && found->change == wanted ? &*found : nullptr;
        };

        if (const auto* slip = search (change))
            return { *slip };

        for (const auto& first : slips)
            if (const auto* second = search (change ^ first.change); second != nullptr && second->place > first.place)
                return { first, *second };

        return {};
    }

    //==============================================================================
    std::string quoted (char c)
    {
        return c > ' ' && c < 127 ? std::string ("\"") + c + "\"" : "a sign that is no letter";
    }

    /** The last group has one letter more. */
    constexpr std::size_t groupOf (std::size_t place) noexcept
    {
        return std::min (place, numLetters - 2) / lettersPerGroup;
    }

    /** Where a letter stands, as a person counts. */
    std::string placeText (std::size_t place)
    {
        const auto group = groupOf (place);
        return "letter " + std::to_string (place - group * lettersPerGroup + 1) + " of group " + std::to_string (group + 1);
    }

    std::string typingError (std::span<const std::uint8_t> letters)
    {
        const auto slips = likelySlips (checkSum (letters) ^ checkedSum);
        std::string text = "There is a typing error in this code";

        for (std::size_t i = 0; i < slips.size(); ++i)
        {
            const auto typed = letters[slips[i].place];
            text += (i == 0 ? ": " : ", and ") + placeText (slips[i].place) + ", " + quoted (alphabet[typed]) + ", may have been "
                  + quoted (alphabet[typed ^ slips[i].difference]);
        }

        return text;
    }

    constexpr char upperCase (char c) noexcept
    {
        return c >= 'a' && c <= 'z' ? static_cast<char> (c - 'a' + 'A') : c;
    }

    constexpr bool isSeparator (char c) noexcept
    {
        return c == ' ' || c == '-' || (c >= '\t' && c <= '\r') || static_cast<unsigned char> (c) > 126; // as the dashes of mail programs
    }

    /** The letters that count, in capitals. */
    std::string withoutSeparators (std::string_view code)
    {
        std::string text;

        for (const char c : code)
            if (! isSeparator (c))
                text += upperCase (c);

        return text;
    }

    /** Checks the version. @returns what follows it */
    std::string_view withoutPrefix (std::string_view text)
    {
        if (! text.starts_with ("PW") || text.size() < 3 || text[2] < '1' || text[2] > '9')
            throw BadTakeCode ("This is not a take's code: those begin with PW1-");

        if (text[2] != '1')
            throw BadTakeCode ("This code is of a later version of Pulsewright");

        return text.substr (3);
    }

    Letters lettersIn (std::string_view text)
    {
        if (text.size() != numLetters)
            throw BadTakeCode ("A code has " + std::to_string (numLetters) + " letters after PW1, this one has " + std::to_string (text.size()));

        Letters letters;

        for (std::size_t place = 0; place < text.size(); ++place)
        {
            const auto found = alphabet.find (text[place]);

            if (found == std::string_view::npos)
                throw BadTakeCode ("There is a typing error in this code: " + placeText (place) + ", " + quoted (text[place]) + ", is in no code");

            letters.push_back (static_cast<std::uint8_t> (found));
        }

        return letters;
    }
} // namespace

//==============================================================================
std::optional<std::string> codeOf (const Take& take)
{
    Writer writer;
    eachField (writer, take);
    auto letters = writer.letters();

    if (! letters || ! hasLaterDefaults (take.settings) || take.settings.seed != saltOf (take.counter))
        return {};

    letters->resize (numLetters);
    const auto sum = checkSum (*letters) ^ checkedSum;

    for (std::size_t i = 0; i < numCheckLetters; ++i)
        (*letters)[numDataLetters + i] = static_cast<std::uint8_t> (sum >> bitsPerLetter * static_cast<int> (numCheckLetters - 1 - i) & 31u);

    std::string code = "PW1";

    for (std::size_t place = 0; place < numLetters; ++place)
    {
        if (place == groupOf (place) * lettersPerGroup)
            code += '-';
        code += alphabet[(*letters)[place]];
    }

    return code;
}

Take takeOf (std::string_view code)
{
    const auto text    = withoutSeparators (code);
    const auto letters = lettersIn (withoutPrefix (text));

    if (checkSum (letters) != checkedSum)
        throw BadTakeCode (typingError (letters));

    Take take;
    Reader reader (letters);
    eachField (reader, take);
    take.settings.seed = saltOf (take.counter);

    for (const auto& setting : laterSettings)
        take.settings.*setting.field = defaultOf (setting);

    const bool isBuildable = take.songBars == 0 || take.songBars >= SongBuilder::minBars;

    if (! reader.allFit() || ! isBuildable)
        throw BadTakeCode ("This code is of a later version of Pulsewright");

    return take;
}

} // namespace pulsewright
