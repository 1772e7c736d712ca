#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 Tolm
# SPDX-License-Identifier: AGPL-3.0-only

# Plays the built bundle in Ardour 7, without a display: the scan, a rolling transport, an export.
# Usage: run.sh <Pulsewright.vst3 or Pulsewright.lv2> [folder for scratch files]
# Exits with 0 when all is well, with 1 when something is not, with 77 where there is no Ardour.

set -u -o pipefail

ardour=/usr/lib/ardour7
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
bundle=$(realpath "${1:?"Usage: run.sh <Pulsewright.vst3 or Pulsewright.lv2> [folder for scratch files]"}")

if ! command -v ardour7-lua > /dev/null; then
    echo "Skipped: Ardour 7 is not installed (there is no ardour7-lua)."
    exit 77
fi

scratch=$(mktemp -d "${2:-${TMPDIR:-/tmp}}/pulsewright-ardour.XXXXXX") || exit 1
trap 'rm -rf "$scratch"' EXIT

fail() {
    echo "FAILED: $1"
    exit 1
}

# Ardour sees nothing of the user's, no display, and no plug-in but ours.
export HOME=$scratch/home
export XDG_CONFIG_HOME=$HOME/config XDG_CACHE_HOME=$HOME/cache XDG_DATA_HOME=$HOME/data
export VST3_PATH=$scratch/vst3 LV2_PATH=$scratch/lv2
unset DISPLAY WAYLAND_DISPLAY

# Where the processor has AVX-512, an export of Ardour 7.3 writes past the end of a buffer, whatever the
# plug-in, and one run in four crashes. Told of no such processor features, it takes its plain routines.
export ARDOUR_FPU_FLAGS=0

mkdir -p "$VST3_PATH" "$LV2_PATH" "$XDG_CONFIG_HOME/ardour7/export" "$XDG_CACHE_HOME" "$XDG_DATA_HOME"

scan_vst3() {
    # Ardour takes a bundle no older than its scan for a changed one and leaves it out.
    cp -r "$bundle" "$VST3_PATH/Pulsewright.vst3" || fail "expected a bundle at $bundle"
    find "$VST3_PATH" -exec touch -d '1 hour ago' {} +

    # Ardour's Lua tool does not scan, it reads what is left in the cache here.
    local scan found ports expected
    scan=$(LD_LIBRARY_PATH=$ardour timeout -k 5 20 $ardour/ardour-vst3-scanner -v "$VST3_PATH/Pulsewright.vst3" 2>&1) \
        || fail "expected a scan by $ardour/ardour-vst3-scanner; saw: $scan"

    found=$(grep '<VST3Info ' <<< "$scan")
    attribute() { sed -n "s/.* $1=\"\([^\"]*\)\".*/\1/p" <<< "$found"; }

    [[ $(attribute category) == *Instrument* ]] || fail "expected one plug-in, an instrument; saw: $found"

    ports="MIDI $(attribute n_midi_inputs) in $(attribute n_midi_outputs) out, audio $(attribute n_inputs) in $(attribute n_outputs) out,"
    ports+=" sidechain $(attribute n_aux_inputs) in $(attribute n_aux_outputs) out"
    expected="MIDI 1 in 1 out, audio 0 in 2 out, sidechain 0 in 0 out"
    [[ $ports == "$expected" ]] || fail "expected $expected; saw $ports"
    echo "ok: Ardour's scanner lists an instrument, $ports"
    id=$(attribute uid)
}

# 1. The scan.
case $bundle in
    *.vst3)
        type=VST3
        scan_vst3 ;;
    *.lv2)
        type=LV2 id=urn:tolm:pulsewright # found when the session starts
        cp -r "$bundle" /usr/lib/lv2/*.lv2 "$LV2_PATH" || fail "expected a bundle at $bundle" ;;
    *)
        fail "expected a bundle of .vst3 or .lv2, not $bundle" ;;
esac

# 2. The session, and its export. Ardour's own presets dither; this one leaves every sample as it is.
preset=6fd1c4b4-6d2c-4b0e-9c39-0a5f3f6f6a11
cat > "$XDG_CONFIG_HOME/ardour7/export/float.preset" << END
<ExportPreset id="$preset" name="Float">
  <ExportFormat id="20b4ab09-6452-4cb3-bd66-b921cdbd2942"/> <!-- BWAV 32float Export -->
  <ExportFilename><Field name="timespan" enabled="1"/></ExportFilename>
</ExportPreset>
END

log=$(timeout -k 5 60 ardour7-lua "$here/session.lua" $type "$id" "$scratch/session" "$scratch/export" $preset 2>&1 < /dev/null)
status=$?
[[ $status != 124 ]] || fail "expected Ardour's session to end; after 60 seconds it had not. It printed: $log"
[[ $status == 0 ]] || fail "Ardour's session ended with $status. It printed: $log"

rolled=$(sed -n 's/^ROLLED //p' <<< "$log")
[[ -n $rolled ]] || fail "expected a rolling transport; Ardour printed: $log"
echo "ok: on a MIDI track the transport rolls and the plug-in sounds: $rolled"

# 3. The export against the groove.
timeout -k 5 60 python3 "$here/check_onsets.py" "$scratch/export/groove.wav" "$here/../data/patterns.json" 2>&1 || exit 1
