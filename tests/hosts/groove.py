# SPDX-FileCopyrightText: 2026 Tolm
# SPDX-License-Identifier: AGPL-3.0-only
"""The groove that a new instance plays, and where it is found in recorded sound.

Hits lie a few samples apart and ring over one another, so a loudness detector would miss some. But the sounds are
known: every sound found so far is computed and goes on ringing in `expected`, and the first sample that differs from
it is the next onset. So every hit is found to the sample, and no missing, extra or wrong sound can hide.
"""

import array
import contextlib
import itertools
import json
import math
import pathlib
import struct

SAMPLE_RATE = 48000
BPM = 90
SAMPLES_PER_BEAT = SAMPLE_RATE * 60 / BPM
LENGTH = 8  # beats

# The plug-in computes partly in single precision. The quietest hit is some hundred times as loud.
SAME = 1e-4

KICK, SNARE, SECOND_SNARE, CLOSED_HAT = 36, 38, 40, 42
NAMES = {KICK: "kick", SNARE: "snare", SECOND_SNARE: "second snare", CLOSED_HAT: "closed hat"}

CASES = json.loads((pathlib.Path(__file__).parent / "../data/patterns.json").read_text())["patterns"]
OPENING = {"genre": 0, "section": 1, "bars": 2, "seed": 0, "salt": 3859488806}
GROOVE = next(case["pattern"] for case in CASES if OPENING.items() <= case.items())
ANOTHER = next(case["pattern"] for case in CASES if case["bars"] == 2 and case["pattern"]["name"] != GROOVE["name"])


class Failure(Exception):
    pass


def looped(beats, pattern=GROOVE):
    """The pattern's hits before a beat, as (beat, note, velocity)."""
    hits = [(start + loop * LENGTH, note, velocity)
            for loop in range(int(beats // LENGTH) + 1) for start, _, note, velocity, *_ in pattern["hits"]]
    return [hit for hit in hits if hit[0] < beats]


def read_left_channel(path):
    """A WAV of floats or of 32-bit integers; the wave module of Python knows no floats."""
    data = pathlib.Path(path).read_bytes()
    chunks, position = {}, 12
    while position + 8 <= len(data):
        name, size = struct.unpack_from("<4sI", data, position)
        chunks[name] = data[position + 8 : position + 8 + size]
        position += 8 + size + size % 2

    encoding, channels, rate, _, _, bits = struct.unpack_from("<HHIIHH", chunks[b"fmt "])
    if rate != SAMPLE_RATE or bits != 32:
        raise Failure(f"expected a WAV of 32 bits at {SAMPLE_RATE} Hz; saw {rate} Hz, {bits} bits")
    if encoding == 3:
        return array.array("f", chunks[b"data"])[::channels]
    return array.array("d", (sample / 2**31 for sample in array.array("i", chunks[b"data"])[::channels]))


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


def find_onsets(audio, hits, tolerance, sample_of=lambda beat: beat * SAMPLES_PER_BEAT, known=(), blind=0):
    """The samples at which the hits begin; a Failure when the audio is not these hits, in time.

    A host may fade in: the first `blind` samples are not compared, and the hits in them begin at the `known` ones."""

    def described(hit):
        return f"the {NAMES.get(hit[1], hit[1])} of beat {hit[0]:.3f}, at sample {sample_of(hit[0]):.0f} +- {tolerance:.0f}"

    onsets, ringing = [], []

    for sample, heard in enumerate(audio):
        expected = 0.0
        for sound in tuple(ringing):
            value = next(sound, None)
            if value is None:
                ringing.remove(sound)
            else:
                expected += value

        while sample < blind and len(onsets) < len(known) and known[len(onsets)] == sample:
            onsets.append(sample)
            ringing.append(sound_of(hits[len(onsets) - 1][1], hits[len(onsets) - 1][2], len(onsets)))
            expected += next(ringing[-1])

        # Two hits may begin together.
        while sample >= blind and abs(heard - math.tanh(expected)) > SAME:
            if len(onsets) == len(hits):
                raise Failure(f"expected nothing after {described(hits[-1])}; heard an onset at sample {sample}")

            hit = hits[len(onsets)]
            if abs(sample - sample_of(hit[0])) > tolerance:
                raise Failure(f"expected as hit {len(onsets) + 1} {described(hit)}; heard an onset at sample {sample}")

            onsets.append(sample)
            ringing.append(sound_of(hit[1], hit[2], len(onsets)))
            expected += next(ringing[-1])

    # The rounding may or may not bring the first hits of the next bar into the recording.
    missing = hits[len(onsets) :]
    if missing and sample_of(missing[0][0]) < len(audio) - tolerance:
        raise Failure(f"expected as hit {len(onsets) + 1} {described(missing[0])}; heard nothing more")

    return onsets


def find_onsets_faded_in(audio, pattern, beats, tolerance, blind):
    """The same where a host joins in somewhere and fades in: the first sound is a hit, but nobody knows which."""
    first = next((i for i, value in enumerate(audio) if value != 0.0), None)
    if first is None:
        raise Failure("expected sound; heard silence")

    every = looped(2 * LENGTH + beats, pattern)
    for begin, hit in enumerate(every):
        hits = [(beat - hit[0], note, velocity) for beat, note, velocity in every[begin:] if beat - hit[0] < beats]
        blurred = sum(each[0] * SAMPLES_PER_BEAT < blind for each in hits)
        for lost, *roundings in itertools.product(range(8), *[(0, 1, -1)] * (blurred - 1)):  # a fade begins with silence
            known = [0] + [round(each[0] * SAMPLES_PER_BEAT) + r for each, r in zip(hits[1:], roundings)]
            part = audio[first - lost : first - lost + int(beats * SAMPLES_PER_BEAT)]
            with contextlib.suppress(Failure):
                return find_onsets(part, hits, tolerance, known=known, blind=blind)
        if hit[0] >= LENGTH:
            break

    raise Failure("expected the groove from one of its hits on; heard something else")


def require_refusal(audio, hits, tolerance, sample_of, what):
    """A measurement that lets everything pass would be worth nothing."""
    try:
        find_onsets(audio, hits, tolerance, sample_of)
    except Failure:
        return
    raise Failure(f"expected the measurement to refuse {what}; it let them pass")
