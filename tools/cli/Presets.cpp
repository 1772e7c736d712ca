// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "Presets.h"

#include "InputFile.h"
#include "MidiTakes.h"
#include "OutputFile.h"
#include "TakeOptions.h"

#include "generation/GenreProfile.h"
#include "generation/SongBuilder.h"
#include "generation/TakeCode.h"
#include "preset/LittleEndian.h"
#include "preset/ParameterIds.h"
#include "preset/PluginState.h"
#include "preset/PresetFiles.h"
#include "processor/kit/DrumSound.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <vector>

namespace pulsewright::cli
{

namespace
{
    //==============================================================================
    // The text of a state, as the plug-in writes it: no entities, no markup in values.

    /** The value of an attribute; empty where a tag has none of this name. */
    std::string_view attributeIn (std::string_view tag, std::string_view name)
    {
        const auto start = tag.find (std::string (" ").append (name).append ("=\""));

        if (start == tag.npos)
            return {};

        const auto value = tag.substr (start + name.size() + 3);
        return value.substr (0, value.find ('"'));
    }

    /** From a tag's beginning to its end; empty where there is none. */
    std::string_view tagIn (std::string_view text, std::string_view name, std::size_t from = 0)
    {
        const auto start = text.find (std::string ("<").append (name), from);
        return start == text.npos ? std::string_view() : text.substr (start, text.find ('>', start) - start);
    }

    double numberIn (std::string_view text)
    {
        double number = 0.0;
        std::from_chars (text.data(), text.data() + text.size(), number);
        return number;
    }

    /** A parameter's value, 0 where the state lacks it. */
    double valueOf (std::string_view text, std::string_view id)
    {
        double value = 0.0;

        for (auto tag = tagIn (text, stateParameterElement); ! tag.empty();
             tag      = tagIn (text, stateParameterElement, static_cast<std::size_t> (tag.data() - text.data()) + tag.size()))
            if (attributeIn (tag, "id") == id)
                value = numberIn (attributeIn (tag, "value"));

        return value;
    }

    /** Truncated into the choices, as the plug-in reads it. */
    std::uint32_t choiceOf (std::string_view text, std::string_view id, std::size_t count)
    {
        return static_cast<std::uint32_t> (std::clamp (valueOf (text, id), 0.0, static_cast<double> (count - 1)));
    }

    /** The take that a restore of this state plays. */
    Take takeInText (std::string_view text)
    {
        Take take { .kind = static_cast<Take::Kind> (choiceOf (text, parameterID::playMode, 2)) };

        for (const auto& setting : allSettings)
            take.settings.*setting.field = snapPercent (static_cast<float> (valueOf (text, setting.id)));

        take.settings.genre = static_cast<Genre> (choiceOf (text, parameterID::genre, genreCount));
        take.structure      = choiceOf (text, parameterID::songStructure, songStructureCount);
        take.duration       = choiceOf (text, parameterID::songDuration, songDurations.size());
        take.kit            = choiceOf (text, parameterID::soundKit, kitNames.size());
        take.tempo          = profileOf (take.settings.genre).tempoBpm;
        take.counter        = static_cast<std::uint32_t> (numberIn (attributeIn (tagIn (text, stateElement), stateSeedCounter)));
        take.settings.seed  = saltOf (take.counter);
        return take;
    }

    std::string_view textOfState (std::string_view state)
    {
        constexpr std::size_t headerSize = 8;

        if (state.size() <= headerSize || fromLittleEndian<std::uint32_t> (state) != stateMagic || tagIn (state, stateElement).empty())
            throw BadPreset ("This holds no state of Pulsewright");

        return state.substr (headerSize);
    }

    /** The states in base64 that a text holds: an LV2 preset or several, a session, the app's settings. */
    std::vector<std::string> statesInText (std::string_view text)
    {
        std::vector<std::string> states;

        for (const std::string_view mark : { ":StateString> \"", "name=\"filterState\" val=\"" })
            for (auto start = text.find (mark); start != text.npos; start = text.find (mark, start + 1))
            {
                const auto value = text.substr (start + mark.size());
                states.push_back (stateInBase64 (value.substr (0, value.find ('"'))));
            }

        if (states.empty())
            throw BadPreset ("This is no preset and no state of Pulsewright");

        return states;
    }

    std::vector<std::string> statesIn (const std::string& bytes)
    {
        if (bytes.starts_with ("VST3"))
            return { stateInVstPreset (bytes) };

        return bytes.starts_with (littleEndian (stateMagic)) ? std::vector { bytes } : statesInText (bytes);
    }

    void refuseSearchOptions (const CommandLine& line)
    {
        for (const auto& option : optionsOf (show))
            if (! option.hasPlace() && line.has (option.name))
                throw BadArgument (option.name + ": counts for MIDI files only; this file holds its settings");
    }

    //==============================================================================
    void writeLv2 (const std::string& folder, const NamedState& preset)
    {
        std::error_code error;
        std::filesystem::create_directories (folder, error);

        if (error)
            throw WriteFailure (folder + ": no folder could be made there (" + error.message() + ")");

        // A bundle that is there may be anybody's, the plug-in's own too.
        if (std::filesystem::exists (folder + "/manifest.ttl", error))
            throw WriteFailure (folder + ": holds an LV2 bundle already; each preset needs a new folder");

        const auto files = lv2PresetsOf ({ preset });
        writeOutput (folder + "/presets.ttl", files.presets);
        writeOutput (folder + "/manifest.ttl", files.manifest); // makes it a bundle
    }
} // namespace

void writePresets (const CommandLine& line)
{
    const auto take = takeOfCode (line, "CODE");

    if (! line.has ("--vstpreset") && ! line.has ("--lv2") && ! line.has ("--state"))
        throw BadArgument ("preset: nothing to write; --vstpreset, --lv2 or --state says what");

    if (line.has ("--name") && ! line.has ("--vstpreset") && ! line.has ("--lv2"))
        throw BadArgument ("--name: a state has no name; only --vstpreset and --lv2 write one");

    if (const auto why = whyNoState (take); ! why.empty())
        throw BadArgument ("CODE: no preset can hold this take: " + why);

    const auto style = std::string (nameOf (take.settings.genre)) + " " + std::to_string (take.counter);
    const NamedState preset { line.has ("--name") ? line.text ("--name") : style, codeOf (take).value(), stateOf (take) };

    if (line.has ("--vstpreset"))
        writeOutput (line.text ("--vstpreset"), vstPresetOf (preset.state, preset.name));

    if (line.has ("--state"))
        writeOutput (line.text ("--state"), preset.state);

    if (line.has ("--lv2"))
        writeLv2 (line.text ("--lv2"), preset);
}

std::string codeInFile (const CommandLine& line)
{
    constexpr std::size_t largest = 1 << 24; // a session with a few plug-ins

    const auto name  = line.text ("FILE");
    const auto bytes = bytesOfFile (name, largest);

    if (bytes.starts_with ("MThd"))
        return codeOfMidiFile (line, bytes);

    try
    {
        refuseSearchOptions (line);

        std::string codes;
        for (const auto& state : statesIn (bytes))
            codes.append (codes.empty() ? "" : "\n").append (codeOf (takeInText (textOfState (state))).value());
        return codes;
    }
    catch (const BadPreset& error)
    {
        throw BadArgument (name + ": " + error.what());
    }
}

} // namespace pulsewright::cli
