#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 Tolm
# SPDX-License-Identifier: AGPL-3.0-only
"""Finds the onsets in the exported WAV and compares them with the groove. Usage: <wav> <patterns.json>

Hits lie a few samples apart and ring over one another, so a loudness detector would miss some. But
the sounds are known: every sound found so far is computed and goes on ringing in `expected`, and
the first sample that differs from it is the next onset. So every hit is found to the sample, and no
missing, extra or wrong sound can hide.
"""

import array
import json
import math
import pathlib
import struct
import sys

SAMPLE_RATE = 48000
BEATS = 8 * 4
SAMPLES_PER_BEAT = SAMPLE_RATE * 60 / 90

# Ardour rounds the position it tells to the nearest 1/1920 beat; the plug-in, to a whole sample.
TOLERANCE = SAMPLES_PER_BEAT / 1920 / 2 + 1

# The plug-in computes partly in single precision. The quietest hit is some hundred times as loud.
SAME = 1e-4

KICK, SNARE, SECOND_SNARE, CLOSED_HAT = 36, 38, 40, 42
NAMES = {KICK: "kick", SNARE: "snare", SECOND_SNARE: "second snare", CLOSED_HAT: "closed hat"}


class Failure(Exception):
    pass


def read_left_channel(path):
    """The wave module of Python knows no floats."""
    data = pathlib.Path(path).read_bytes()
    chunks, position = {}, 12
    while position + 8 <= len(data):
        name, size = struct.unpack_from("<4sI", data, position)
        chunks[name] = data[position + 8 : position + 8 + size]
        position += 8 + size + size % 2

    encoding, channels, rate, _, _, bits = struct.unpack_from("<HHIIHH", chunks[b"fmt "])
    if (encoding, channels, rate, bits) != (3, 2, SAMPLE_RATE, 32):
        raise Failure(f"expected a stereo WAV of floats at {SAMPLE_RATE} Hz; "
                      f"saw encoding {encoding}, {channels} channels, {rate} Hz, {bits} bits")

    return array.array("f", chunks[b"data"])[::2]


def sound_of(note, velocity, stroke):
    """The left channel of a kick, snare or closed hat of the default kit; strokes count from 1."""
    decay = {KICK: 6.0, CLOSED_HAT: 42.0}.get(note, 13.0)
    level = 0.36 * velocity / 127
    fade, silent = math.exp(-decay / SAMPLE_RATE), level * 0.00008
    radians = 2 * math.pi / SAMPLE_RATE
    sweep, sweep_fade = 72.0, math.exp(-28.0 / SAMPLE_RATE)
    state = ((stroke * 104729 + note * 7919) & 0xFFFFFFFF) ^ 0x9E3779B9
    phase = last_noise = 0.0

    while level >= silent:
        if note == KICK:
            phase += radians * (50.0 + sweep)
            sweep *= sweep_fade
            yield level * math.sin(phase)
        else:
            state = (state * 1664525 + 1013904223) & 0xFFFFFFFF
            noise = (state >> 8) * (2 / 16777215) - 1

            if note == CLOSED_HAT:
                yield level * 0.48 * (noise - 0.92 * last_noise) * 1.18  # panned to the left
                last_noise = noise
            else:
                phase += radians * 185.0
                yield level * (0.72 * noise + 0.32 * math.sin(phase))

        level *= fade


def find_onsets(audio, hits):
    """The samples at which the hits begin; a Failure when the audio is not these hits, in time."""

    def described(hit):
        return f"the {NAMES.get(hit[1], hit[1])} of beat {hit[0]:.3f}, at sample {hit[0] * SAMPLES_PER_BEAT:.0f} +- {TOLERANCE:.0f}"

    onsets, ringing = [], []

    for sample, heard in enumerate(audio):
        expected = 0.0
        for sound in tuple(ringing):
            value = next(sound, None)
            if value is None:
                ringing.remove(sound)
            else:
                expected += value

        # Two hits may begin together.
        while abs(heard - math.tanh(expected)) > SAME:
            if len(onsets) == len(hits):
                raise Failure(f"expected nothing after {described(hits[-1])}; heard an onset at sample {sample}")

            hit = hits[len(onsets)]
            if abs(sample - hit[0] * SAMPLES_PER_BEAT) > TOLERANCE:
                raise Failure(f"expected as hit {len(onsets) + 1} {described(hit)}; heard an onset at sample {sample}")

            onsets.append(sample)
            ringing.append(sound_of(hit[1], hit[2], len(onsets)))
            expected += next(ringing[-1])

    # The rounding may or may not bring the first hits of the next bar into the export.
    missing = hits[len(onsets) :]
    if missing and missing[0][0] * SAMPLES_PER_BEAT < len(audio) - TOLERANCE:
        raise Failure(f"expected as hit {len(onsets) + 1} {described(missing[0])}; heard nothing more")

    return onsets


def looped(pattern):
    """The hits of the whole export as (beat, note, velocity), and those that may just reach into its end."""
    length = pattern["bars"] * 4
    last = BEATS + TOLERANCE / SAMPLES_PER_BEAT
    hits = [(start + loop * length, note, velocity)
            for loop in range(BEATS // length + 1) for start, _, note, velocity, _ in pattern["hits"]]
    return [hit for hit in hits if hit[0] < last]


def require_refusal(audio, hits, what):
    try:
        find_onsets(audio, hits)
    except Failure:
        return
    raise Failure(f"expected the measurement to refuse {what}; it let them pass")


def main(wav, patterns):
    cases = json.loads(pathlib.Path(patterns).read_text())["patterns"]
    opening = {"genre": 0, "section": 1, "bars": 2, "seed": 0, "salt": 3859488806}
    groove = next(case["pattern"] for case in cases if opening.items() <= case.items())
    another = next(case["pattern"] for case in cases if case["bars"] == 2 and case["pattern"]["name"] != groove["name"])

    audio = read_left_channel(wav)
    if len(audio) != BEATS * SAMPLES_PER_BEAT:
        raise Failure(f"expected eight bars, {BEATS * SAMPLES_PER_BEAT:.0f} samples; saw {len(audio)}")

    hits = looped(groove)
    onsets = find_onsets(audio, hits)
    late = [onset - hit[0] * SAMPLES_PER_BEAT for onset, hit in zip(onsets, hits)]
    print(f"ok: the export of eight bars has the groove's {sum(hit[0] < BEATS for hit in hits)} onsets and no other,"
          f" from {-min(late):.1f} samples early to {max(late):.1f} late")

    # A measurement that lets everything pass would be worth nothing.
    def moved(hit, seconds):
        return (hit[0] + seconds * SAMPLE_RATE / SAMPLES_PER_BEAT, *hit[1:])

    middle = len(hits) // 2
    before, hit, after = hits[:middle], hits[middle], hits[middle + 1 :]
    require_refusal(audio, [moved(each, 0.01) for each in hits], "hits 10 ms late")
    require_refusal(audio, sorted(before + [moved(hit, 0.001)] + after), "one hit 1 ms late")
    require_refusal(audio, before + after, "one hit less")
    require_refusal(audio, sorted(hits + [moved(hit, 0.1)]), "one hit more")
    require_refusal(audio, looped(another), "another pattern")
    print("ok: it is told from hits 10 ms late, one hit 1 ms late, one hit less, one hit more, and another pattern")


if __name__ == "__main__":
    try:
        main(*sys.argv[1:])
    except Failure as failure:
        sys.exit(f"FAILED: {failure}")
