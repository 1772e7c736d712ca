#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 Tolm
# SPDX-License-Identifier: AGPL-3.0-only
#
# The app for Windows on a screen, under Wine: its window after a click on GENERATE GROOVE, and its end by its close button.
# Usage: under_wine.sh Pulsewright.exe PICTURE.png; the display and the folder of Wine are the caller's.
set -uo pipefail

readonly app=$1 picture=$2
# In the window: two buttons, a place without a tooltip, and where the editor begins.
readonly generate=(93 406) close=(1112 14) nothing=(700 14) editor=1120x840+1+27

wine "$app" & process=$!

# JUCE makes the window more than once before it has its size, and then draws it.
is_drawn() {
    window=$(xdotool search --onlyvisible --name '^Pulsewright' | tail -n 1)
    [ -n "$window" ] && import -window "$window" "$picture" && identify -format '%w %k' "$picture" | awk '{ exit ! ($1 == 1122 && $2 > 500) }'
}
for _ in {1..60}; do is_drawn 2> /dev/null && break; sleep 0.5; done
is_drawn || { echo "The app draws no window." >&2; exit 1; }

# The pointer stays on the button for less than a tooltip needs.
xdotool mousemove --window "$window" "${generate[@]}" click 1
xdotool mousemove --window "$window" "${nothing[@]}"
sleep 2
import -window "$window" -crop "$editor" +repage "$picture"

xdotool mousemove --window "$window" "${close[@]}" click 1
timeout 20 tail --pid=$process -f /dev/null || { echo "The app does not close." >&2; exit 1; }
