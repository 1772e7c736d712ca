#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 Tolm
# SPDX-License-Identifier: AGPL-3.0-only

# A five-minute Drum & Bass song rendered offline by the plug-in's processor, beside a sample player that plays
# the song's MIDI file: whole processes, user CPU time, medians of seven runs that take turns.
# Usage: sample_player.sh <pulsewright-cli>
set -eu
export LC_ALL=C # a decimal point
cli=$1
font=/usr/share/sounds/sf2/TimGM6mb.sf2
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

song=(song --genre "Drum & Bass" --structure "Verse / Chorus" --bars 216)
"$cli" "${song[@]}" --midi "$scratch/song.mid" > /dev/null

TIMEFORMAT=%U
for _ in 1 2 3 4 5 6 7; do
    { time fluidsynth -ni -R 0 -C 0 -r 48000 -O float -T wav -F "$scratch/player.wav" "$font" "$scratch/song.mid" > /dev/null 2>&1; } 2>> "$scratch/player"
    { time "$cli" "${song[@]}" --wav "$scratch/song.wav" > /dev/null 2>&1; } 2>> "$scratch/ours"
done

median() { sort -n "$1" | sed -n 4p; }

printf '\n%-34s %-16s %10s s\n' "song of 5 minutes, user CPU time" "sample player" "$(median "$scratch/player")"
printf '%-34s %-16s %10s s %12s\n' "" "plug-in" "$(median "$scratch/ours")" \
    "$(awk "BEGIN { printf \"%.2f\", $(median "$scratch/player") / $(median "$scratch/ours") }")"
