#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 Tolm
# SPDX-License-Identifier: AGPL-3.0-only

# From outside, on a display without a window manager: the app's settings and its end, and hosts whose X server dies.
# Usage: outside.sh PULSEWRIGHT HOSTILE-HOST LV2 VST3
set -u
app=$1 host=$2 lv2=$3 vst3=$4 failed=0

scratch=$(mktemp -d)
trap 'kill $server 2>/dev/null; rm -rf "$scratch"' EXIT
export HOME=$scratch/home TMPDIR=$scratch LC_ALL=C.UTF-8 XDG_CONFIG_HOME=$scratch/config
mkdir -p "$HOME/.config" "$XDG_CONFIG_HOME"
settings=$XDG_CONFIG_HOME/Pulsewright.settings log=$scratch/log

Xvfb -screen 0 1600x1200x24 -displayfd 1 > "$scratch/display" 2>/dev/null & server=$!
for _ in $(seq 100); do [ -s "$scratch/display" ] && break; sleep 0.1; done
DISPLAY=:$(<"$scratch/display")
export DISPLAY

expect() { local what=$1; shift; "$@" || { echo "FAILED: $what"; cat "$log"; failed=1; }; }

# Opens the app and ends it. Usage: app_until COMMAND..., which gets the app's process as its last argument
# A search fails when a window closes while it looks (BadWindow), so that it is repeated.
app_until() {
    "$app" 2> "$log" & local process=$!
    expect "the app shows its window" timeout 20 sh -c 'until xdotool search --name "^Pulsewright" > /dev/null 2>&1; do sleep 0.1; done'
    "$@" $process
    wait $process
    expect "the app ends in good order" [ $? = 0 ]
}

holds_state() { grep -q 'name="filterState" val="[0-9]*\.' "$settings"; }

# What is new is saved by itself, for the app may be killed.
rm -f "$settings"
until_saved() { for _ in $(seq 100); do holds_state 2> /dev/null && break; sleep 0.1; done; cp "$settings" "$scratch/early"; kill -TERM "$1"; }
app_until until_saved
expect "the state is saved while the app runs" grep -q 'name="filterState"' "$scratch/early"

# What earlier versions kept is taken along, and SIGTERM saves. A terminal that closes sends SIGHUP twice.
rm "$settings"
hang_up() { kill -HUP "$1"; sleep 0.01; kill -HUP "$1"; }
app_until hang_up
expect "two signals at once save the state" holds_state
rm "$settings"
app_until kill -TERM
expect "SIGTERM saves the state" holds_state
mv "$settings" "$HOME/.config/"
app_until kill -TERM
expect "the settings of an earlier version are taken along" grep -q windowX "$settings"
expect "which are not touched" [ -f "$HOME/.config/Pulsewright.settings" ]

# Settings that would end the app.
good=$(<"$settings") number=0
for bad in "$(sed 's/name="filterState" val="[^"]*"/name="filterState" val="-1.AAAA"/' <<< "$good")" \
           "$(sed 's/name="filterState" val="[^"]*"/name="filterState" val="3.AAAA"/' <<< "$good")" \
           "${good/<\/PROPERTIES>/<VALUE name=\"filterState\" val=\"3.AAAA\"/></PROPERTIES>}" \
           "<?xml version=\"1.0\"?><PROPERTIES>$(printf '<a>%.0s' $(seq 100000))</PROPERTIES>" \
           "${good%???}" PROP CPRP; do
    printf '%s' "$bad" > "$settings"
    app_until kill -TERM
    number=$((number + 1))
    aside=$settings.bad$([ $number = 1 ] || echo $number)
    expect "bad settings are kept" [ "$(cat "$aside")" = "$bad" ]
    expect "the app says so" grep -qF "${aside##*/}" "$log"
    expect "it starts with default settings" holds_state
done

rm "$settings"
mkfifo "$settings"
app_until kill -TERM
expect "a pipe is set aside" grep -q "are not a file" "$log"

XDG_CONFIG_HOME=/dev/null/settings app_until kill -TERM
expect "settings that cannot be written are told" grep -q "cannot be written to /dev/null/settings/Pulsewright.settings" "$log"

# The X server dies: under the app, which saves, and under hosts that only have it for their plug-ins.
hosts=()
for plugin in "$lv2 --window" "$lv2 --loaded" "$vst3 --loaded"; do
    log_of_host=$log.${#hosts[@]}
    "$host" "${plugin% *}" "${plugin##* }" > "$log_of_host" 2>&1 & hosts+=($!)
    for _ in $(seq 200); do grep -q runs "$log_of_host" && break; sleep 0.1; done
done
rm "$settings"
end_server() { sleep 1; kill $server; }
app_until end_server
expect "the app saves when its display is gone" holds_state
for i in "${!hosts[@]}"; do
    wait "${hosts[i]}" || { failed=1; echo "FAILED: host $i lives on"; cat "$log.$i"; }
done

exit $failed
