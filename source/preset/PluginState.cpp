// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "PluginState.h"

#include "LittleEndian.h"
#include "ParameterIds.h"

#include "generation/GenreProfile.h"
#include "generation/SongBuilder.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace pulsewright
{

namespace
{
    /** The fewest digits that read back as the same number, whatever the locale. The page's standard library writes no floats
        by itself. @param value  an index, or a setting in its steps
    */
    std::string textOf (float value)
    {
        std::int64_t parts = 1; // of one
        const auto counted = [&] { return std::llround (static_cast<double> (value) * static_cast<double> (parts)); };

        while (static_cast<float> (static_cast<double> (counted()) / static_cast<double> (parts)) != value)
            parts *= 10;

        const auto whole = std::to_string (counted() / parts);
        return parts == 1 ? whole : whole + '.' + std::to_string (parts + counted() % parts).substr (1);
    }

    std::string parameterText (std::string_view id, auto value)
    {
        std::string text = "<";
        return text.append (stateParameterElement)
            .append (" id=\"")
            .append (id)
            .append ("\" value=\"")
            .append (textOf (static_cast<float> (value)))
            .append ("\"/>");
    }

    std::string parametersText (const Take& take)
    {
        const auto length = std::find (patternLengths.begin(), patternLengths.end(), take.bars) - patternLengths.begin();
        namespace id      = parameterID;

        auto text = parameterText (id::genre, take.settings.genre) + parameterText (id::playMode, take.kind)
                  + parameterText (id::patternLength, length) + parameterText (id::songDuration, take.duration)
                  + parameterText (id::songStructure, take.structure) + parameterText (id::soundKit, take.kit);

        for (const auto& setting : allSettings)
            text += parameterText (setting.id, take.settings.*setting.field);

        return text;
    }
} // namespace

std::string whyNoState (const Take& take)
{
    const Take opening;

    if (take.kind == Take::Kind::groove && (take.section != opening.section || take.bars != opening.bars || take.stream != opening.stream))
        return "a preset opens with a verse of two bars, and this is another kind of groove or another length";

    auto atStylesTempo     = take;
    atStylesTempo.songBars = 0;
    atStylesTempo.tempo    = profileOf (take.settings.genre).tempoBpm;

    if (take.kind == Take::Kind::song && songBarsOf (take) != songBarsOf (atStylesTempo))
        return "a preset's song is as long as the style's own tempo makes it, " + std::to_string (songBarsOf (atStylesTempo))
             + " bars, and this one has " + std::to_string (songBarsOf (take));

    return {};
}

std::string stateOf (const Take& take)
{
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?> <";
    text.append (stateElement).append (" ").append (stateSeedCounter).append ("=\"").append (std::to_string (take.counter)).append ("\"");

    for (std::uint32_t lane = 0; lane < laneCount; ++lane)
        text.append (" ").append (stateLock).append (std::to_string (lane)).append ("=\"0\"");

    text.append (">").append (parametersText (take)).append ("</").append (stateElement).append (">");

    return littleEndian (stateMagic) + littleEndian (static_cast<std::uint32_t> (text.size())) + text + '\0';
}

} // namespace pulsewright
