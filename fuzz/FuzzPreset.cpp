// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Codes and preset files with anything changed in them: refused with a reason, or read without harm.

#include "FuzzCheck.h"
#include "RandomTake.h"

#include "generation/TakeCode.h"
#include "preset/PluginState.h"
#include "preset/PresetFiles.h"

namespace pulsewright::fuzz
{

namespace
{
    /** Some bytes overwritten, cut out or put in, or other bytes altogether. @returns how many letters were overwritten; -1 for more than that */
    int change (std::string& text, FuzzedDataProvider& input)
    {
        int overwritten = 0;

        for (int changes = input.ConsumeIntegralInRange (0, 8); changes > 0; --changes)
        {
            const auto place = input.ConsumeIntegralInRange<std::size_t> (0, text.size());
            const auto kind  = input.ConsumeIntegralInRange (0, 4);

            if (kind < 3 && place < text.size())
                text[place] = input.ConsumeIntegral<char>(), overwritten += overwritten < 0 ? 0 : 1;
            else if (kind < 4)
                text.insert (place, input.ConsumeRandomLengthString (20)), overwritten = -1;
            else
                text.erase (place, input.ConsumeIntegralInRange<std::size_t> (0, text.size())), overwritten = -1;
        }

        if (input.ConsumeIntegralInRange (0, 7) == 0)
            text = input.ConsumeRemainingBytesAsString(), overwritten = -1;

        return overwritten;
    }

    /** What a reader makes of a text, or nothing where it refuses it. */
    template <typename Bad, typename Reader>
    auto readOrRefused (Reader&& reader, const std::string& text) -> std::optional<decltype (reader (text))>
    {
        try
        {
            return reader (text);
        }
        catch (const Bad& error)
        {
            check (error.what()[0] != 0, "a refusal says why");
            return {};
        }
    }

    void readCode (const Take& take, FuzzedDataProvider& input)
    {
        auto text          = codeOf (take).value();
        const auto changed = change (text, input);
        const auto read    = readOrRefused<BadTakeCode> (takeOf, text);

        check (changed != 0 || read == take, "a code is read");
        check (! read || changed < 0 || changed > 4 || *read == take, "up to four wrong letters are found");
        check (! read || takeOf (codeOf (*read).value()) == *read, "what is read has a code");
    }

    void readPresets (Take take, FuzzedDataProvider& input)
    {
        const auto state = stateOf (take);

        for (const bool isVst : { true, false })
        {
            const auto reader  = isVst ? stateInVstPreset : stateInBase64;
            auto text          = isVst ? vstPresetOf (state, "name") : base64Of (state);
            const auto changed = change (text, input);
            const auto read    = readOrRefused<BadPreset> (reader, text);

            check (changed != 0 || read == state, "a preset is read");
            check (! read || read->size() <= text.size(), "no preset holds more than its file");
        }
    }
} // namespace

} // namespace pulsewright::fuzz

extern "C" int LLVMFuzzerTestOneInput (const std::uint8_t* data, std::size_t size)
{
    FuzzedDataProvider input (data, size);
    std::mt19937 dice (input.ConsumeIntegral<std::uint32_t>());
    const auto take = pulsewright::randomTake (dice);

    if (input.ConsumeBool())
        pulsewright::fuzz::readCode (take, input);
    else
        pulsewright::fuzz::readPresets (take, input);

    return 0;
}
