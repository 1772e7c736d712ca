// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// The files that the command-line tool writes, read back.

#include "CliProgram.h"
#include "PlainDrumKit.h"

#include <cstring>
#include <fstream>
#include <iterator>

namespace pulsewright
{

TEST (Cli, OutputsAreWholeOrNotThere)
{
    struct Script
    {
        std::string commands;
        int exitCode;
        std::string says, leaves; // with sizes, and where links lead
    };

    const std::string brief     = "$T pattern --bars 1 --tempo 300 ";
    const std::string openText  = ": Could not open the destination file. (";
    const std::string midiText  = ": The MIDI file could not be written completely. (";
    const std::string otherText = ": The output could not be written completely. (";

    const std::vector<Script> scripts {
        // What cannot be opened or is full is named; so is the standard output.
        { "$T pattern --midi .", 1, "cli: ." + openText, "" },
        { "$T pattern --json ''", 1, "cli: \"\"" + openText, "" },
        { "$T pattern --wav no/such", 1, "cli: no/such" + openText, "" },
        { "$T window --png no/such", 1, "cli: no/such" + openText, "" },
        { "$T pattern --midi /proc/nothing", 1, "cli: /proc/nothing" + openText, "" },
        { "$T pattern --midi /dev/full", 1, "cli: /dev/full" + midiText, "" },
        { "$T pattern --json /dev/full", 1, "cli: /dev/full" + otherText, "" },
        { "$T pattern --wav /dev/full", 1, "cli: /dev/full" + otherText, "" },
        { "$T window --png /dev/full", 1, "cli: /dev/full" + otherText, "" },
        { "$T pattern --midi - > /dev/full", 1, "cli: standard output" + midiText, "" },
        { "$T pattern > /dev/full", 1, "cli: standard output" + otherText, "" },
        { "$T --help > /dev/full", 1, "cli: standard output" + otherText, "" },
        { "$T song --help >&-", 1, "cli: standard output" + otherText, "" },
        { "$T --version > /dev/full", 1, "cli: standard output" + otherText, "" },
        { "$T pattern --midi a.mid --json - >&-", 1, "cli: standard output" + otherText, "" },

        // A disk that is full before the last byte: the old file stands, and nothing is left beside it.
        { "echo old > a.mid; ulimit -f 1; $T song --midi a.mid", 1, "cli: a.mid" + midiText, "a.mid 4 \n" },
        { "ulimit -f 1350; " + brief + "--wav a.wav", 1, "cli: a.wav" + otherText, "" }, // 58 bytes short

        // Half an LV2 bundle can be made whole.
        { "c=$($T pattern | tail -n 1); ! (ulimit -f 1; $T preset $c --lv2 b 2> /dev/null) && $T preset $c --lv2 b && ls b; rm -r b",
          0,
          "manifest.ttl\npresets.ttl\n",
          "" },

        // A link stays, its file is replaced, or made at the end of the chain; a loop is refused.
        { "echo old > a; ln -s a b; $T pattern --midi b", 0, "", "a 296 \nb 1 a\n" },
        { "ln -s two one; ln -s three two; $T pattern --midi one", 0, "", "one 3 two\nthree 296 \ntwo 5 three\n" },
        { "ln -s two one; ln -s one two; $T pattern --midi one", 1, "cli: one" + openText, "one 3 two\ntwo 3 one\n" },

        // Owner and permissions stay; only root can tell the first from what a new file has.
        { "touch a; chown nobody a 2> /dev/null; stat -c %u a > b; $T pattern --midi a; stat -c %u a | cmp - b && rm a b", 0, "", "" },
        { "touch a; chmod 604 a; $T pattern --midi a; stat -c %a a; rm a", 0, "604", "" },

        { "set -e; touch a; setfacl -m u:nobody:r a; $T pattern --midi a; getfacl -c a | grep nobody; rm a", 0, "user:nobody:r--", "" },

        // The same bytes wherever they go.
        { "set -e; mkfifo p; for o in json midi wav; do " + brief + "--$o a; " + brief + "--$o - | cmp - a; " + brief + "--$o /dev/stdout | cmp - a; "
              + brief + "--$o /dev/null; cmp p a & " + brief + "--$o p; wait $!; done; rm p a; echo same",
          0,
          "same",
          "" },
        { "echo x > a; $T pattern --midi /dev/stdout >> a", 0, "", "a 298 \n" },
        { "echo x > a; $T pattern --midi /dev/fd/3 3>> a", 0, "", "a 298 \n" },
        { "$T pattern --json - --midi a > a", 2, "write to the same place", "a 0 \n" },
        { "(python3 -c 'import os; os.set_blocking (1, False)'; " + brief + "--wav -) | (sleep 0.1; wc -c)", 0, "691258\n", "" },
        { brief + "--json /dev/null --midi /dev/null", 0, "", "" },
        { brief + "--wav a.flac --json /dev/null; soxi -s a.flac; soxi -b a.flac; rm a.flac", 0, "86400\n24\n", "" },
        { brief + "--wav a.wav; [ \"$(soxi -s a.wav; sox a.wav -n 2>&1)\" = 86400 ] && rm a.wav", 0, "", "" },

        // A signal removes what is half done, and ends the tool.
        { "for s in INT TERM HUP; do env --default-signal=INT $T song --bars 384 --tempo 30 --wav a.wav & "
          "until ls -A | grep -q pulse; do sleep 0.01; done; kill -$s $!; wait $! && true; r=\"$r $?\"; done; echo $r",
          0,
          "130 143 129\n",
          "" },
    };

    for (const auto& script : scripts)
    {
        if (! PULSEWRIGHT_HAS_WINDOW && script.commands.starts_with ("$T window"))
            continue;

        const auto folder  = scratch();
        const auto outcome = inFolder (folder, script.commands);
        EXPECT_EQ (outcome.exitCode, script.exitCode) << script.commands << ": " << outcome.output;
        EXPECT_NE (outcome.output.find (script.says), outcome.output.npos) << script.commands << ": " << outcome.output;
        EXPECT_EQ (inFolder (folder, "find . -mindepth 1 -printf '%P %s %l\\n' | sort").output, script.leaves) << script.commands;
        fs::remove_all (folder);
    }
}

//==============================================================================
TEST (Cli, WavFilesAreWhatTheKitMakesOfTheHits)
{
    const auto folder = scratch();
    const auto file   = folder / "take.wav";

    for (int kit = 0; const auto* name : { "Studio", "808", "dusty", "Electronic", "midi only" })
    {
        const auto pattern = jsonFrom<DrumPattern> ("pattern --genre dub --density 0.8 --timing 1 --take 4 --tempo 100 --kit '" + std::string (name)
                                                    + "' --wav " + quoted (file.string()));
        const auto seconds = static_cast<double> (pattern.bars) * 4 * 0.6 + 1.0;

        constexpr std::size_t headerSize = 58; // sox reads the header above
        std::ifstream stream (file, std::ios::binary);
        const std::string bytes (std::istreambuf_iterator<char> (stream), {});
        std::vector<std::array<float, 2>> frames (static_cast<std::size_t> (seconds * 48000));
        ASSERT_EQ (bytes.size(), headerSize + frames.size() * sizeof (frames[0]));
        std::memcpy (frames.data(), bytes.data() + headerSize, frames.size() * sizeof (frames[0]));

        plain::DrumKit drums (48000.0);
        auto hit      = pattern.hits.begin();
        float loudest = 0.0f;

        for (std::size_t i = 0; i < frames.size(); ++i)
        {
            for (; hit != pattern.hits.end() && static_cast<std::size_t> (hit->start * 0.6 * 48000.0) == i; ++hit)
                if (kit < 4)
                    drums.start (static_cast<int> (hit->note), static_cast<int> (hit->velocity), kit);

            float left = 0.0f, right = 0.0f;
            drums.render (&left, &right, 1);
            ASSERT_NEAR (frames[i][0], left, 1e-6f) << name << ", sample " << i;
            ASSERT_NEAR (frames[i][1], right, 1e-6f) << name << ", sample " << i;
            loudest = std::max (loudest, frames[i][0]);
        }

        EXPECT_TRUE (hit == pattern.hits.end());
        EXPECT_EQ (loudest > 0.1f, kit++ < 4);
    }

    fs::remove_all (folder);
}

} // namespace pulsewright
