#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 Tolm
# SPDX-License-Identifier: AGPL-3.0-only

# The built VST3 in Steinberg's validator, plain and extensive, and the built LV2 before LV2's own.
# Usage: run.sh VALIDATOR Pulsewright.vst3 Pulsewright.lv2

set -u -o pipefail
validator=$1 vst3=$2 lv2=$3 failed=0

complain() { echo "FAILED: $*"; failed=1; }

# A program without a name is required, and fails one test of either kind.
known='ERROR: Programlist 000->Program 000: has no name!!!'

for kind in plain extensive; do
    options=()
    [ $kind = plain ] || options=(-e)
    log=$("$validator" "${options[@]}" "$vst3" 2>&1)
    result=$(sed -n 's/^Result: //p' <<< "$log")
    [[ $result =~ ^[0-9]+\ tests\ passed,\ 1\ tests\ failed$ ]] || complain "the validator, $kind: $result"
    others=$(grep '^ERROR' <<< "$log" | grep -vxF "$known")
    [ -z "$others" ] || complain "the validator, $kind: $others"
    echo "The VST3's validator, $kind: $result (the program without a name)"
done

log=$(sord_validate $(find /usr/lib/lv2 -name '*.ttl') "$lv2"/*.ttl 2>&1) && ! grep -q '^error' <<< "$log" || complain "sord_validate: $log"
echo "sord_validate: $(tail -n 1 <<< "$log")"

# As far as a linter for LV2 would look: what the module shows, what the Turtle promises.
symbols=$(nm -D --defined-only "$lv2"/*.so | awk '$2 ~ /[TDBRV]/ { print $3 }' | sort | paste -sd' ')
[ "$symbols" = "lv2_descriptor lv2ui_descriptor" ] || complain "expected two symbols of the module, saw: $symbols"

for promise in 'doap:license <' 'lv2:hardRTCapable' 'pg:mainOutput' 'doap:maintainer' 'lv2:minorVersion'; do
    grep -qF "$promise" "$lv2/dsp.ttl" || complain "expected $promise in the LV2's Turtle"
done

exit $failed
