// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// What the page calls: its controls as tables, its buttons as functions, its files as bytes.

#include "PageText.h"
#include "Parcel.h"

#include "export/MidiFileWriter.h"
#include "generation/GenreProfile.h"
#include "generation/SongBuilder.h"
#include "generation/TakeCode.h"
#include "preset/ParameterIds.h"
#include "preset/PluginState.h"
#include "preset/PresetFiles.h"
#include "processor/kit/DrumSound.h"
#include "session/MacroNudges.h"
#include "session/Session.h"

#include <emscripten.h>

#include <algorithm>
#include <numeric>
#include <string>
#include <vector>

namespace pulsewright
{

namespace
{
    struct Page
    {
        Session session;
        Choices chosen;
        Take::Kind played = Take::Kind::groove;
        LaneLocks locks {};
        std::string input, output;
    };

    Page& page()
    {
        static Page one;
        return one;
    }

    //==============================================================================
    // The lists.

    using Names = std::vector<std::string>;

    template <typename NameOf>
    Names namesBelow (std::uint32_t count, NameOf&& nameOf)
    {
        Names names;
        for (std::uint32_t i = 0; i < count; ++i)
            names.emplace_back (nameOf (i));
        return names;
    }

    std::string barsText (std::uint32_t length)
    {
        const auto bars = patternLengths[length];
        return std::to_string (bars) + (bars == 1 ? " bar" : " bars");
    }

    std::uint32_t lengthIndex (std::int32_t bars)
    {
        return static_cast<std::uint32_t> (std::find (patternLengths.begin(), patternLengths.end(), bars) - patternLengths.begin());
    }

    /** A list that the player chooses from. */
    struct ChoiceRow
    {
        const char *id, *name, *help;
        Names (*names)();
        std::uint32_t (*get) (const Page&);
        void (*set) (Page&, std::uint32_t);
    };

    void chooseStyle (Page& on, std::uint32_t style)
    {
        on.chosen.settings.genre = static_cast<Genre> (style);
        on.chosen.tempo          = profileOf (on.chosen.settings.genre).tempoBpm;
    }

    // clang-format off
    const std::array<ChoiceRow, 6> choiceRows
    {{
        { parameterID::genre, "Style", "The genre's recipe and tempo; builds a song",
            [] { return namesBelow (genreCount, [] (auto i) { return nameOf (static_cast<Genre> (i)); }); },
            [] (const Page& on) { return static_cast<std::uint32_t> (on.chosen.settings.genre); }, chooseStyle },
        { parameterID::songStructure, "Song structure", "Form of the song; builds it",
            [] { return namesBelow (songStructureCount, SongBuilder::structureName); },
            [] (const Page& on) { return on.chosen.structure; }, [] (Page& on, std::uint32_t i) { on.chosen.structure = i; } },
        { parameterID::songDuration, "Song duration", "Length of the song; builds it",
            [] { return namesBelow (songDurations.size(), [] (auto i) { return songDurations[i].name; }); },
            [] (const Page& on) { return on.chosen.duration; }, [] (Page& on, std::uint32_t i) { on.chosen.duration = i; } },
        { parameterID::patternLength, "Pattern length", "Length of the next groove or fill",
            [] { return namesBelow (patternLengths.size(), barsText); },
            [] (const Page& on) { return lengthIndex (on.chosen.patternBars); }, [] (Page& on, std::uint32_t i) { on.chosen.patternBars = patternLengths[i]; } },
        { parameterID::soundKit, "Kit", "The built-in sounds, or none",
            [] { return namesBelow (kitNames.size(), [] (auto i) { return kitNames[i]; }); },
            [] (const Page& on) { return on.chosen.kit; }, [] (Page& on, std::uint32_t i) { on.chosen.kit = i; } },
        { parameterID::playMode, "Playback", "What plays, and what a link and a preset hold",
            [] { return Names { "Pattern loop", "Full song" }; },
            [] (const Page& on) { return static_cast<std::uint32_t> (on.played); }, [] (Page& on, std::uint32_t i) { on.played = static_cast<Take::Kind> (i); } }
    }};
    // clang-format on

    std::string tablesText()
    {
        const auto choice = [] (const ChoiceRow& row)
        {
            return json::object (json::member ("id", json::text (row.id)) + json::member ("name", json::text (row.name))
                                 + json::member ("help", json::text (row.help)) + json::member ("names", json::array (row.names(), json::text)));
        };
        const auto setting = [] (const Setting& row)
        {
            return json::object (json::member ("id", json::text (row.id)) + json::member ("name", json::text (row.name))
                                 + json::member ("help", json::text (row.help)) + json::member ("isMacro", row.isMacro ? "true" : "false"));
        };
        const auto lanes = namesBelow (laneCount, [] (auto i) { return nameOf (static_cast<DrumLane> (i)); });

        return json::object (json::member ("choices", json::array (choiceRows, choice))
                             + json::member ("settings", json::array (allSettings, setting)) + json::member ("lanes", json::array (lanes, json::text))
                             + json::member ("minTempo", json::number (Take::minTempo)) + json::member ("maxTempo", json::number (Take::maxTempo)));
    }

    //==============================================================================
    // What is shown.

    std::string hitText (const DrumHit& hit)
    {
        return "[" + json::number (hit.start) + "," + json::number (static_cast<std::uint32_t> (hit.lane)) + "," + json::number (hit.velocity) + "]";
    }

    std::string patternText (const DrumPattern& pattern)
    {
        return json::object (json::member ("name", json::text (pattern.name)) + json::member ("bars", json::number (pattern.bars))
                             + json::member ("hits", json::array (pattern.hits, hitText)));
    }

    std::string songText (const SongArrangement& song)
    {
        const auto section = [] (const SongSection& each)
        { return json::object (json::member ("name", json::text (each.name)) + json::member ("bars", json::number (each.pattern.bars))); };

        return json::object (json::member ("name", json::text (song.name)) + json::member ("bars", json::number (song.totalBars))
                             + json::member ("sections", json::array (song.sections, section)));
    }

    /** The take that is played, at the tempo and with the kit of now; nothing if it has no code. */
    std::optional<Take> chosenTake (const Page& of)
    {
        auto take = of.session.takeOf (of.played);

        if (! take)
            return take;

        // Of a song the tempo also decides the length, and this one has its length already.
        if (take->kind == Take::Kind::song && take->tempo != of.chosen.tempo)
            take->songBars = static_cast<std::int32_t> (of.session.song()->totalBars);

        take->tempo = of.chosen.tempo;
        take->kit   = of.chosen.kit;
        return take;
    }

    std::string codeText (const Page& of)
    {
        const auto take = chosenTake (of);
        return take ? codeOf (*take).value_or ("") : "";
    }

    std::string stateText (const Page& of)
    {
        const auto choice  = [&of] (const ChoiceRow& row) { return json::number (row.get (of)); };
        const auto earlier = [] (const KeptTake& kept)
        { return json::object (json::member ("id", json::number (kept.id)) + json::member ("text", json::text (describe (kept)))); };

        const auto& chosen = of.chosen;
        const auto seconds = SongBuilder::durationSeconds (chosen.settings.genre, chosen.duration);

        return json::object (
            json::member ("choices", json::array (choiceRows, choice))
            + json::member ("values", json::array (chosen.settings.values(), [] (float value) { return json::number (value); }))
            + json::member ("locks", json::array (of.locks, [] (bool isLocked) { return std::string (isLocked ? "true" : "false"); }))
            + json::member ("tempo", json::number (chosen.tempo)) + json::member ("pattern", patternText (of.session.pattern()))
            + json::member ("song", songText (*of.session.song()))
            + json::member ("nextSongBars", json::number (SongBuilder::songBars (seconds, chosen.tempo)))
            + json::member ("code", json::text (codeText (of))) + json::member ("takes", json::array (of.session.earlierTakes(), earlier)));
    }

    //==============================================================================
    // What is done.

    /** The controls move to what made a take. */
    void adopt (Page& on, const Take& take)
    {
        on.chosen.settings  = take.settings;
        on.chosen.structure = take.structure;
        on.chosen.duration  = take.duration;
        on.chosen.tempo     = take.tempo;
        on.chosen.kit       = take.kit;
        on.played           = take.kind;

        if (take.kind == Take::Kind::groove && lengthIndex (take.bars) < patternLengths.size())
            on.chosen.patternBars = take.bars;
    }

    void moveTo (Page& on, const Setting& setting, float value)
    {
        on.chosen.settings.*setting.field = snapPercent (value);
    }

    void mutate (Page& on)
    {
        const auto seed = on.session.takeMutationSeed();
        MacroNudges nudges (seed);

        for (const auto& setting : allSettings)
            if (setting.isMacro)
                moveTo (on, setting, nudges.nudged (on.chosen.settings.*setting.field));

        on.session.mutate (on.chosen, on.locks, seed);
    }

    bool answers (Page& on, std::string text)
    {
        on.output = std::move (text);
        return true;
    }

    bool refuses (Page& on, std::string why)
    {
        on.output = std::move (why);
        return false;
    }

    bool openCode (Page& on)
    {
        try
        {
            const auto made = Session::made (takeOf (on.input));
            on.session.playPasted (made);
            adopt (on, made.take);
            return true;
        }
        catch (const BadTakeCode& error)
        {
            return refuses (on, error.what());
        }
    }

    bool makePreset (Page& on)
    {
        const auto take = chosenTake (on);
        const auto why  = take ? whyNoState (*take) : "a mutation depends on the groove before it";

        if (! why.empty())
            return refuses (on, "A preset cannot keep this take: " + why + ".");

        return answers (on, vstPresetOf (stateOf (*take), on.input));
    }

    bool makeMidi (Page& on, bool isSong)
    {
        const auto bytes =
            isSong ? MidiFileWriter::bytesOf (*on.session.song(), on.chosen.tempo) : MidiFileWriter::bytesOf (on.session.pattern(), on.chosen.tempo);
        return answers (on, { bytes.begin(), bytes.end() });
    }

    std::string packedMusic (const Page& of)
    {
        if (of.played == Take::Kind::song)
            return packed (flatten (*of.session.song()), of.session.song()->lengthInBeats(), Repeat::once);

        return packed (of.session.pattern().hits, of.session.pattern().lengthInBeats(), Repeat::looped);
    }
} // namespace

} // namespace pulsewright

//==============================================================================
// Answers lie in one buffer, until the next call that has one. Those that may refuse return 0 then, with the reason there.

using namespace pulsewright;

extern "C"
{
    EMSCRIPTEN_KEEPALIVE const char* pageOutput()
    {
        return page().output.data();
    }

    EMSCRIPTEN_KEEPALIVE int pageOutputSize()
    {
        return static_cast<int> (page().output.size());
    }

    /** Where a text for the next call goes. */
    EMSCRIPTEN_KEEPALIVE char* pageInput (int size)
    {
        page().input.resize (static_cast<std::size_t> (size));
        return page().input.data();
    }

    EMSCRIPTEN_KEEPALIVE int pageOpen()
    {
        for (const auto& setting : allSettings)
            moveTo (page(), setting, page().chosen.settings.*setting.field);

        page().session.open (page().chosen, 0);
        return 1;
    }

    EMSCRIPTEN_KEEPALIVE int pageTables()
    {
        return answers (page(), tablesText());
    }

    EMSCRIPTEN_KEEPALIVE int pageState()
    {
        return answers (page(), stateText (page()));
    }

    /** A song of another form is built at once, as in the window. */
    EMSCRIPTEN_KEEPALIVE int pageChoose (int row, int index)
    {
        auto& on = page();
        choiceRows[static_cast<std::size_t> (row)].set (on, static_cast<std::uint32_t> (index));

        if (! on.session.isSongAsChosen (on.chosen))
            on.session.buildSong (on.chosen);
        return 1;
    }

    EMSCRIPTEN_KEEPALIVE int pageSetValue (int setting, double value)
    {
        moveTo (page(), allSettings[static_cast<std::size_t> (setting)], static_cast<float> (value));
        return 1;
    }

    EMSCRIPTEN_KEEPALIVE int pageSetTempo (int bpm)
    {
        page().chosen.tempo = std::clamp (bpm, Take::minTempo, Take::maxTempo);
        return 1;
    }

    EMSCRIPTEN_KEEPALIVE int pageSetLock (int lane, int isLocked)
    {
        page().locks[static_cast<std::size_t> (lane)] = isLocked != 0;
        return 1;
    }

    EMSCRIPTEN_KEEPALIVE int pageGenerate (int isFill)
    {
        page().session.generate (page().chosen, isFill != 0 ? SectionType::fill : SectionType::verse);
        return 1;
    }

    EMSCRIPTEN_KEEPALIVE int pageMutate()
    {
        mutate (page());
        return 1;
    }

    /** After a setting has moved. */
    EMSCRIPTEN_KEEPALIVE int pageRegenerate()
    {
        if (! page().session.isAsBroughtBack (page().chosen.settings))
            page().session.regenerate (page().chosen);
        return 1;
    }

    EMSCRIPTEN_KEEPALIVE int pageBuildSong()
    {
        page().session.buildSong (page().chosen);
        return 1;
    }

    EMSCRIPTEN_KEEPALIVE int pageSelectSection (int index)
    {
        return page().session.selectSection (static_cast<std::size_t> (index)) ? 1 : 0;
    }

    EMSCRIPTEN_KEEPALIVE int pagePlayEarlier (int id)
    {
        const auto kept = page().session.bringBack (static_cast<std::uint32_t> (id));

        if (! kept)
            return refuses (page(), "This take is no longer kept.");

        page().session.playAgain (*kept);
        adopt (page(), kept->take);
        return 1;
    }

    /** Of the code in the input. */
    EMSCRIPTEN_KEEPALIVE int pageOpenCode()
    {
        return openCode (page());
    }

    EMSCRIPTEN_KEEPALIVE int pageMidi (int isSong)
    {
        return makeMidi (page(), isSong != 0);
    }

    /** A .vstpreset with the name in the input. */
    EMSCRIPTEN_KEEPALIVE int pagePreset()
    {
        return makePreset (page());
    }

    /** For soundTakeParcel(). */
    EMSCRIPTEN_KEEPALIVE int pageMusic()
    {
        return answers (page(), packedMusic (page()));
    }
}
