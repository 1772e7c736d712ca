#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 Tolm
# SPDX-License-Identifier: AGPL-3.0-only
"""Plays the built plug-in in real hosts, without a display and without a sound card, and compares what comes out.

Usage: play.py ardour|ardour-loop|jalv|qtractor <Pulsewright.vst3 or Pulsewright.lv2> <pulsewright-cli>
Exits with 0 when all is well, with 1 when something is not, with 77 where the host is not installed.
"""

import contextlib
import json
import os
import pathlib
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time

from groove import ANOTHER, GROOVE, LENGTH, SAMPLE_RATE, SAMPLES_PER_BEAT, Failure, find_onsets, find_onsets_faded_in, looped, read_left_channel, require_refusal

HERE = pathlib.Path(__file__).resolve().parent
ARDOUR = "/usr/lib/ardour7"
URI = "urn:tolm:pulsewright"
BLOCK = 1024

# Ardour rounds the position that it gives a VST3 to 1/1920 beat; the plug-in, to a whole sample.
ARDOURS_ROUNDING = SAMPLES_PER_BEAT / 1920 / 2 + 1


def require(what, ok, seen):
    if not ok:
        raise Failure(f"expected {what}; saw {seen}")


def run(command, seconds=60, env=None):
    """Its exit status and what it printed."""
    try:
        done = subprocess.run(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                              errors="replace", timeout=seconds, env=env)
    except subprocess.TimeoutExpired as late:
        raise Failure(f"expected {command[0]} to end; after {seconds} seconds it had not. It printed: {late.stdout}") from late
    return done.returncode, done.stdout


def wait_for(what, condition):
    for _ in range(300):
        if condition():
            return
        time.sleep(0.1)
    raise Failure(f"expected {what}; after 30 seconds there was none")


def prepare(scratch, bundle):
    """The host sees nothing of the user's, no display, and no plug-in but ours."""
    home = scratch / "home"
    folders = {"HOME": home, "XDG_CONFIG_HOME": home / "config", "XDG_CACHE_HOME": home / "cache", "XDG_DATA_HOME": home / "data",
               "XDG_RUNTIME_DIR": home / "runtime", "VST3_PATH": scratch / "vst3", "LV2_PATH": scratch / "lv2"}
    for folder in folders.values():
        folder.mkdir(parents=True, mode=0o700)
    os.environ.update({name: str(folder) for name, folder in folders.items()})
    for name in ("DISPLAY", "WAYLAND_DISPLAY"):
        os.environ.pop(name, None)

    # Where the processor has AVX-512, an export of Ardour 7.3 writes past the end of a buffer, whatever the plug-in,
    # and one run in four crashes. Told of no such processor features, it takes its plain routines.
    os.environ["ARDOUR_FPU_FLAGS"] = "0"

    for source in [bundle] if bundle.suffix == ".vst3" else [bundle, *pathlib.Path("/usr/lib/lv2").glob("*.lv2")]:
        shutil.copytree(source, scratch / bundle.suffix[1:] / source.name)

    # Ardour takes a bundle no older than its scan for a changed one and leaves it out.
    for path in (scratch / "vst3").rglob("*"):
        os.utime(path, (time.time() - 3600,) * 2)


# ======================================================================================================================
def scan_vst3(scratch):
    """What Ardour's scanner finds: its Lua tool does not scan, it reads what is left in the cache here."""
    status, log = run([f"{ARDOUR}/ardour-vst3-scanner", "-v", str(scratch / "vst3/Pulsewright.vst3")], 20,
                      {**os.environ, "LD_LIBRARY_PATH": ARDOUR})
    found = dict(re.findall(r'(\w+)="([^"]*)"', "".join(re.findall("<VST3Info .*", log))))
    require("a scan", status == 0 and found, log)
    ports = " ".join(found[f"n_{kind}puts"] for kind in ("midi_in", "midi_out", "in", "out", "aux_in", "aux_out"))
    require("an instrument with MIDI 1 in, 1 out, audio 0 in, 2 out, sidechain 0 in, 0 out",
            "Instrument" in found["category"] and ports == "1 1 0 2 0 0", found)
    return found["uid"]


def run_ardour(scratch, bundle, script, *arguments, seconds=60):
    plugin = ("VST3", scan_vst3(scratch)) if bundle.suffix == ".vst3" else ("LV2", URI)
    # What Ardour 7.3 says now and then on a busy machine, before it ends.
    busy = "Port already exists: (:Drums/audio_out 1)", "JACK server has been closed"

    for attempt in 1, 2:
        status, log = run(["ardour7-lua", str(HERE / script), *plugin, str(scratch / f"session-{attempt}"), *map(str, arguments)], seconds)
        if status == 0 or not any(text in log for text in busy):
            break
        print(f"Ardour ended with {status}, as it does on a busy machine: tried again. It printed: {log}")

    require("Ardour's session to end well", status == 0, f"{status}. It printed: {log}")
    return log


def play_in_ardour(scratch, bundle, _):
    """Eight bars with a change of tempo, exported; then a rolling transport."""
    change, second = 8, SAMPLE_RATE * 60 / 140  # the beat from which on the tempo is 140; samples a beat
    end = 32

    def sample_of(beat):
        return min(beat, change) * SAMPLES_PER_BEAT + max(0, beat - change) * second

    # Ardour's own presets dither; this one leaves every sample as it is.
    preset = "6fd1c4b4-6d2c-4b0e-9c39-0a5f3f6f6a11"
    presets = scratch / "home/config/ardour7/export"
    presets.mkdir(parents=True)
    (presets / "float.preset").write_text(
        f'<ExportPreset id="{preset}" name="Float"><ExportFormat id="20b4ab09-6452-4cb3-bd66-b921cdbd2942"/> <!-- BWAV 32float -->'
        '<ExportFilename><Field name="timespan" enabled="1"/></ExportFilename></ExportPreset>')

    log = run_ardour(scratch, bundle, "ardour_export.lua", scratch / "export", preset)
    rolled = re.search("^ROLLED (.*)", log, re.MULTILINE)
    require("a rolling transport", rolled, log)
    print(f"ok: on a MIDI track the transport rolls and the plug-in sounds: {rolled[1]}")

    audio = read_left_channel(scratch / "export/groove.wav")
    require(f"{sample_of(end):.0f} samples", len(audio) == round(sample_of(end)), len(audio))
    hits = looped(end + ARDOURS_ROUNDING / second)
    onsets = find_onsets(audio, hits, ARDOURS_ROUNDING, sample_of)
    late = [onset - sample_of(hit[0]) for onset, hit in zip(onsets, hits)]
    print(f"ok: the export of eight bars has the groove's {sum(hit[0] < end for hit in hits)} onsets and no other,"
          f" from {-min(late):.1f} samples early to {max(late):.1f} late")

    def moved(hit, seconds):
        return (hit[0] + seconds * SAMPLE_RATE / second, *hit[1:])

    before, hit, after = hits[: len(hits) // 2], hits[len(hits) // 2], hits[len(hits) // 2 + 1 :]
    for wrong, what in [([moved(each, 0.01) for each in hits], "hits 10 ms late"),
                        (sorted(before + [moved(hit, 0.001)] + after), "one hit 1 ms late"),
                        (before + after, "one hit less"),
                        (sorted(hits + [moved(hit, 0.1)]), "one hit more"),
                        (looped(end, ANOTHER), "another pattern")]:
        require_refusal(audio, wrong, ARDOURS_ROUNDING, sample_of, what)


# ======================================================================================================================
@contextlib.contextmanager
def running(command, **options):
    """A program that is told to end at the end, and has ended then."""
    process = subprocess.Popen(command, stdin=subprocess.PIPE, **options)
    try:
        yield process
    finally:
        process.terminate()
        try:
            process.communicate(timeout=10)
        except subprocess.TimeoutExpired:
            process.kill()
            process.communicate()


@contextlib.contextmanager
def jack(scratch):
    """A JACK server without a sound card, under a name of its own."""
    name = f"pulsewright-{os.getpid()}"
    os.environ.update({"JACK_DEFAULT_SERVER": name, "JACK_NO_START_SERVER": "1", "JACK_NO_AUDIO_RESERVATION": "1"})
    with open(scratch / "jackd.log", "w") as log:
        # On a busy machine a client may be late, and the server is not to throw it out for that.
        with running(["jackd", "-n", name, "-r", "-t", "20000", "-d", "dummy", "-r", str(SAMPLE_RATE), "-p", str(BLOCK)], stdout=log, stderr=log):
            wait_for("a JACK server", lambda: "system:playback_1" in ports())
            yield


def ports():
    return run(["jack_lsp"])[1].split("\n")


def transport(*commands):
    """Commands of jack_transport's, and seconds to wait."""
    with subprocess.Popen(["jack_transport"], stdin=subprocess.PIPE, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, text=True) as process:
        for command in commands:
            if isinstance(command, str):
                process.stdin.write(command + "\n")
                process.stdin.flush()
            time.sleep(command if isinstance(command, (int, float)) else 0.3)
        process.communicate("quit\n")


def note_ons(dump):
    """The note-ons of jack_midi_dump's, as (sample, note, velocity)."""
    lines = re.findall(r"^\s*(\d+): 99 (\w\w) (\w\w) ", pathlib.Path(dump).read_text(), re.MULTILINE)
    return [(int(sample), int(note, 16), int(velocity, 16)) for sample, note, velocity in lines]


def compare_notes(heard, hits, tolerance, what):
    """That the first note-ons are the hits, in time from the first one on. Returns the sample of beat 0.

    On a busy machine JACK loses a cycle now and then: all that follows is then a whole block early or late."""
    heard, wanted = sorted(heard)[: len(hits)], sorted(hits)
    require(f"{len(wanted)} onsets in {what}", len(heard) == len(wanted), f"{len(heard)}, the first ones {heard[:8]}")
    start = heard[0][0] - int(wanted[0][0] * SAMPLES_PER_BEAT)
    lost = 0

    # Hits that are closer than the tolerance may come in another order.
    notes = {note: iter([each for each in heard if each[1] == note]) for note in {hit[1] for hit in wanted}}
    for beat, note, velocity in wanted:
        sample, _, heard_velocity = next(notes[note], (0, note, 0))
        late = sample - start - beat * SAMPLES_PER_BEAT - lost
        cycles = round(late / BLOCK) * BLOCK
        if abs(late - cycles) <= tolerance:
            lost, late = lost + cycles, late - cycles
        require(f"note {note} of beat {beat:.3f} at sample {start + beat * SAMPLES_PER_BEAT:.1f} +- {tolerance} in {what}",
                abs(late) <= tolerance and heard_velocity == velocity and abs(lost) <= 8 * BLOCK, (sample, heard_velocity))

    if lost:
        print(f"JACK lost {lost // BLOCK} cycles in {what}")
    return start


def groove_of(tool, *take):
    """A take, as the tool plays it. A session that was saved before anything was generated comes back with take 1."""
    hits = json.loads(run([tool, "pattern", *take, "--json", "-"])[1])["hits"]
    return {"hits": [[hit["start"], hit["length"], hit["note"], hit["velocity"]] for hit in hits]}


def loop_in_ardour(scratch, bundle, tool):
    """The groove of a preset, where VST3 hosts look for them."""
    presets = scratch / "home/.vst3/presets/Tolm/Pulsewright"
    shutil.copytree(bundle.parents[3] / "presets", presets)
    preset = presets / "Boom Bap - Head Nod.vstpreset"
    code = run([tool, "show", str(preset)])[1].strip()

    passes = int(os.environ.get("PULSEWRIGHT_PASSES", "3"))
    seconds = (passes * LENGTH + 1) * 60 / 90 + 1
    dump = scratch / "midi.txt"
    ready = f"jack_midi_dump -a > '{dump}' 2>/dev/null & echo $! > '{dump}.pid'; sleep 1; jack_connect ':Drums/midi_out 1' midi-monitor:input"

    with jack(scratch):
        run_ardour(scratch, bundle, "ardour_loop.lua", seconds, ready, preset.stem, seconds=seconds + 60)
        os.kill(int(pathlib.Path(f"{dump}.pid").read_text()), signal.SIGTERM)
        time.sleep(0.5)

    heard = note_ons(dump)
    hits = looped(passes * LENGTH, groove_of(tool, "--code", code))
    compare_notes(heard, hits, 2 * ARDOURS_ROUNDING, f"{passes} passes of Ardour's loop")
    print(f"ok: {passes} passes of Ardour's loop, {len(hits)} onsets, each once")


def roll_in_jalv(scratch, bundle, tool):
    """Without a timebase master, so that no tempo is named: the opening style's is 90 BPM, and so is the first preset's."""
    dump = scratch / "midi.txt"
    preset, code = re.search(f"<({URI}:preset:(.*))>", (bundle / "presets.ttl").read_text()).groups()

    with jack(scratch), open(scratch / "jalv.log", "w") as log, running(["jalv", "-n", "pw", "-x", URI], stdout=log, stderr=log) as jalv:
        wait_for("jalv's ports", lambda: "pw:out" in ports())
        with open(dump, "w") as output, running(["jack_midi_dump", "-a"], stdout=output):
            wait_for("a recorder", lambda: "midi-monitor:input" in ports())
            run(["jack_connect", "pw:out", "midi-monitor:input"])
            transport("stop", "locate 0", "play", 6.5, "stop", 1.5)
            jalv.stdin.write(f"presets\npreset {preset}\n".encode())
            jalv.stdin.flush()
            transport("locate 256000", "play", 6.5, "stop")

    heard = note_ons(dump)
    require("onsets", heard, "none")
    second = next((i for i in range(1, len(heard)) if heard[i][0] - heard[i - 1][0] > SAMPLE_RATE), len(heard))

    for roll, groove, what in (heard[:second], GROOVE, "jalv's first roll"), (heard[second:], groove_of(tool, "--code", code), "its roll of a preset"):
        start = compare_notes(roll, looped(LENGTH, groove), 1, what)
        require(f"{what} to begin with a block", start % BLOCK == 0, start)
        print(f"ok: {what}: {len(looped(LENGTH, groove))} onsets, each at its sample")

    presets = (scratch / "jalv.log").read_text().count(f"{URI}:preset:")
    require("21 presets in jalv's list", presets == 21, presets)


def roll_in_qtractor(scratch, _, tool):
    """Loaded from a session's file, rolled, saved, and the saved file loaded and rolled."""
    stub = scratch / "sequencer.so"
    require("a stand-in for the sequencer", run(["cc", "-shared", "-fPIC", "-w", "-o", str(stub), str(HERE / "sequencer.c")])[0] == 0, "an error")
    shutil.copy(HERE / "groove.qtr", scratch)
    session, recorded = scratch / "groove.qtr", scratch / "recorded.wav"

    with jack(scratch), open(scratch / "qtractor.log", "w") as log:
        for what, groove in ("Qtractor's session", GROOVE), ("Qtractor's session, saved and loaded", groove_of(tool, "--take", "1")):
            with running(["qtractor", str(session)], stdout=log, stderr=log,
                         env={**os.environ, "LD_PRELOAD": str(stub), "QT_QPA_PLATFORM": "offscreen"}) as qtractor:
                wait_for("Qtractor's ports", lambda: "Qtractor:Master/out_1" in ports())
                time.sleep(2)
                with subprocess.Popen(["jack_rec", "-f", str(recorded), "-d", "10", "-b", "32", "Qtractor:Master/out_1"],
                                      stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL):
                    time.sleep(0.5)
                    transport("locate 0", "play", 7.5, "stop")

                # It joins a rolling transport late, and fades in.
                onsets = find_onsets_faded_in(read_left_channel(recorded), groove, LENGTH, 2, 2 * BLOCK)
                print(f"ok: {what}: {len(onsets)} onsets, each at its sample")

                before = session.stat().st_mtime_ns
                qtractor.send_signal(signal.SIGUSR1)
                wait_for("a saved session", lambda: session.stat().st_mtime_ns != before)
                time.sleep(0.5)


HOSTS = {"ardour": ("ardour7-lua", play_in_ardour),
         "ardour-loop": ("ardour7-lua", loop_in_ardour),
         "jalv": ("jalv", roll_in_jalv),
         "qtractor": ("qtractor", roll_in_qtractor)}


def main(host, bundle, tool):
    program, play = HOSTS[host]
    needed = [program] if host == "ardour" else [program, "jackd", "jack_midi_dump"]
    for each in needed:
        if not shutil.which(each):
            print(f"Skipped: {each} is not installed.")
            return 77

    for is_last in False, False, True:
        with tempfile.TemporaryDirectory(prefix="pulsewright-hosts-", ignore_cleanup_errors=True) as folder:
            scratch = pathlib.Path(folder)
            try:
                bundle = pathlib.Path(bundle).resolve(strict=True)
                prepare(scratch, bundle)
                play(scratch, bundle, tool)
                return 0
            except Failure as failure:
                print(f"FAILED: {failure}")
                log = scratch / "jackd.log"
                is_busy = "JACK server has been closed" in str(failure) or log.exists() and "XRun" in log.read_text(errors="replace")
                if is_last or not is_busy:
                    return 1
                print("JACK lost cycles or its clients, as it does on a busy machine: tried again with another server")
    return 1


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
