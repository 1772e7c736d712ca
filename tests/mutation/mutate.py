#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 Tolm
# SPDX-License-Identifier: AGPL-3.0-only

"""Do the tests notice when the music is wrong?

Changes the generator, the file writer and the playback engine in one small place at a time (a mutant),
builds the core tests against it and says which mutants no test has noticed. The music digest notices
whatever changes the music, but cannot say what is right: it is counted apart.

Mutants are drawn by lot, every file of an area having the same share as far as it holds so many: but the
generator's headers, for which everything has to be built again, an eighth of it. The same seed draws the same
mutants from the same sources. One that does not compile counts for nothing, and the next one is drawn for it.
"""

import argparse
import concurrent.futures
import itertools
import json
import os
import queue
import random
import re
import resource
import shutil
import signal
import subprocess
import sys
import time
from collections import Counter
from pathlib import Path
from typing import NamedTuple

ROOT = Path(__file__).resolve().parents[2]
WORK = ROOT / "build" / "mutation"
FOUND = WORK / "results.json"

AREAS = {
    "generator": ["source/generation/*.cpp", "source/generation/*.h"],
    "writer": ["source/export/MidiFileWriter.cpp"],
    "engine": ["source/processor/Playback*.cpp", "source/processor/Playback*.h",
               "source/processor/playback/PreviewTransport.h", "source/processor/playback/SnapshotExchange.h"],
}
TREE = ["CMakeLists.txt", "CMakePresets.json", "cmake", "source", "plain", "tests", "tools/MusicDigest.cpp"]

TOKEN = re.compile(r"""
    (?P<skip>   //[^\n]* | /\*.*?\*/ | ^[ \t]*\#[^\n]* | "(?:\\.|[^"\\\n])*" | static_assert\s*\([^;]*; | [^\n]*\.reserve[ ]\([^\n]*; | operator\s*[^\s\w(]+ )
  | (?P<number> (?<![\w.]) (?: 0[xX][\da-fA-F'.]+(?:[pP][+-]?\d+)? | (?:\d[\d']*\.?\d*|\.\d+)(?:[eE][+-]?\d+)? ) [fFuUlL]* )
  | (?P<char>   '(?:\\.|[^'\\\n])+' )
  | (?P<word>   [A-Za-z_]\w* )
  | (?P<op>     <=> | <<= | >>= | \+\+ | -- | -> | :: | && | \|\| | << | >> | [-+*/%<>=!&|^]= | [-+*/%<>=!&|^] )
""", re.VERBOSE | re.MULTILINE | re.DOTALL)

# The spaces that the format of the sources puts around binary operators tell them from everything else
# that is written with the same characters: pointers, references, template arguments, signs.
BINARY = {
    "+": ["-"], "-": ["+"], "*": ["/"], "/": ["*"], "%": ["*"],
    "<": ["<=", ">"], "<=": ["<", ">="], ">": [">=", "<"], ">=": [">", "<="],
    "==": ["!="], "!=": ["=="], "&&": ["||"], "||": ["&&"],
    "+=": ["-="], "-=": ["+="], "<<": [">>"], ">>": ["<<"], "&": ["|"], "|": ["&"], "^": ["|"],
}

# A statement on a line of its own that calls or assigns, and nothing that declares.
STATEMENT = re.compile(r"^[ \t]+((?:\+\+|\*)?[\w.:>\[\]-]+(?: \(\*?\w+\))?(?: (?:[-+*|&^]?=) .*|\s?\(.*\));)[ \t]*(?://.*)?$", re.MULTILINE)
RETURN = re.compile(r"\breturn (?!\{\};)([^;{}]+);")


class Mutant(NamedTuple):
    file: str
    begin: int
    end: int
    new: str
    place: str
    old: str

    def __str__(self):
        return f"{self.file}:{self.place}  {self.old}  ->  {self.new or '(gone)'}"


def another_number(text):
    """The next integer, or a float that is a quarter larger."""
    body = re.fullmatch(r"(.*?)([uUlL]*|[fF])", text)
    is_hex = text[:2].lower() == "0x"

    if is_hex and "p" not in text.lower():
        body = re.fullmatch(r"(.*?)([uUlL]*)", text)
        return hex(int(body[1].replace("'", ""), 16) + 1) + body[2]
    if is_hex:
        return f"({text} * 1.25{body[2]})"
    if "." in body[1] or "e" in body[1].lower():
        value = float(body[1].replace("'", ""))
        return repr(value * 1.25 if value else 0.0625) + body[2]
    return str(int(body[1].replace("'", "")) + 1) + body[2]


def mutants_of(name):
    text = (ROOT / name).read_text()
    found = []
    skipped = []

    def add(begin, end, new):
        place = f"{text.count(chr(10), 0, begin) + 1}:{begin - text.rfind(chr(10), 0, begin)}"
        found.append(Mutant(name, begin, end, new, place, " ".join(text[begin:end].split())))

    for token in TOKEN.finditer(text):
        kind, value, begin, end = token.lastgroup, token[0], token.start(), token.end()
        spaced = text[begin - 1] in " \n" and text[end:end + 1] in (" ", "\n")

        if kind == "skip":
            skipped.append((begin, end))
        elif kind == "number":
            add(begin, end, another_number(value))
        elif kind == "word" and value in ("true", "false"):
            add(begin, end, "false" if value == "true" else "true")
        elif kind == "op" and value in ("++", "--"):
            add(begin, end, "--" if value == "++" else "++")
        elif kind == "op" and value == "!":
            add(begin, end, "")
        elif kind == "op" and value in BINARY and spaced and not text[:begin].endswith("template "):
            for new in BINARY[value]:
                add(begin, end, new)

    def is_code(begin):
        return not any(b <= begin < e for b, e in skipped)

    for statement in STATEMENT.finditer(text):
        before = text[:statement.start()].rstrip()
        whole = statement[1].count("(") == statement[1].count(")") and (before.endswith((";", "{", "}", ")", ":", "else")) or not is_code(len(before) - 1))
        if whole and is_code(statement.start(1)) and not re.match(r"(return|using|namespace|throw)\b", statement[1]):
            add(statement.start(1), statement.end(1), ";")

    for statement in RETURN.finditer(text):
        if is_code(statement.start()):
            add(statement.start(1), statement.end(1), "{}")

    return found


def drawn(area, seed):
    """All mutants of an area, shuffled, the files taking turns."""
    files = sorted({str(path.relative_to(ROOT)) for pattern in AREAS[area] for path in ROOT.glob(pattern)})
    turns = []

    for name in files:
        mutants = mutants_of(name)
        random.Random(f"{seed} {name}").shuffle(mutants)
        every = 8 if name.startswith("source/generation/") and name.endswith(".h") else 1
        turns += [(turn * every, name, mutant) for turn, mutant in enumerate(mutants)]

    return [mutant for _, _, mutant in sorted(turns, key=lambda t: t[:2])]


# ==============================================================================
def put(path, text):
    """Writes only what differs: whatever was not touched is not built again."""
    if not path.exists() or path.read_bytes() != text:
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(text)


def run(command, timeout):
    """None for a timeout, or the exit status. A mutant may ask for all the memory there is."""
    def limits():
        resource.setrlimit(resource.RLIMIT_AS, (4 << 30, 4 << 30))
        resource.setrlimit(resource.RLIMIT_CORE, (0, 0))

    process = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, start_new_session=True, preexec_fn=limits)
    try:
        return process.wait(timeout)
    except subprocess.TimeoutExpired:
        os.killpg(process.pid, signal.SIGKILL)
        process.wait()
        return None


class Scratch:
    """A copy of the tree with a build of its own."""

    def __init__(self, number):
        self.tree = WORK / f"tree-{number}"
        self.build = self.tree / "build"

        for name in TREE:
            source = ROOT / name
            for path in [source] if source.is_file() else sorted(source.rglob("*")):
                if path.is_file():
                    put(self.tree / path.relative_to(ROOT), path.read_bytes())

        # Without warnings: what they would have said is no test's merit.
        self.must(["cmake", "--preset", "core", "-B", str(self.build), "-DCMAKE_CXX_FLAGS=-w", "-DCMAKE_CXX_FLAGS_RELEASE=-O1"], self.tree)
        self.must(self.ninja())
        self.timeouts = {}

        for name, command in self.tests().items():
            begin = time.monotonic()
            if run(command, 300) != 0:
                sys.exit(f"The {name} fails without any mutant: {' '.join(command)}")
            self.timeouts[name] = 10 + 5 * (time.monotonic() - begin)

    def must(self, command, folder=None):
        result = subprocess.run(command, cwd=folder, capture_output=True, text=True, check=False)
        if result.returncode != 0:
            sys.exit(result.stdout[-4000:] + result.stderr[-4000:])

    def ninja(self):
        return ["ninja", "-C", str(self.build), "-j1", "pulsewright_core_tests", "pulsewright-music-digest"]

    def tests(self):
        return {
            "unit tests": [str(self.build / "tests" / "pulsewright_core_tests"), "--gtest_brief=1", "--gtest_fail_fast"],
            "digest": [str(self.build / "tests" / "pulsewright-music-digest"), str(self.tree / "tests" / "data" / "music-digest.txt")],
        }

    def killer_of(self, mutant):
        """What notices the mutant: a test, "timeout", "" if nothing does, or None if it does not compile."""
        file = self.tree / mutant.file
        whole = (ROOT / mutant.file).read_text()
        file.write_text(whole[:mutant.begin] + mutant.new + whole[mutant.end:])

        try:
            # The objects of the unchanged files are in the compiler cache; those of mutants have no place there.
            if subprocess.run(self.ninja(), env={**os.environ, "CCACHE_READONLY": "1"}, capture_output=True, check=False).returncode != 0:
                return None

            for name, command in self.tests().items():
                status = run(command, self.timeouts[name])
                if status is None:
                    return "timeout"
                if status != 0:
                    return name
            return ""
        finally:
            file.write_text(whole)


# ==============================================================================
def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--count", type=int, default=80, help="mutants of an area (80)")
    parser.add_argument("--seed", type=int, default=1, help="of the lot (1)")
    parser.add_argument("--area", choices=AREAS, action="append", help="only this one; may be repeated")
    parser.add_argument("--jobs", type=int, default=1, help="copies of the tree to work in at once (1)")
    parser.add_argument("--least", type=float, default=90, help="fail under so many per cent noticed (90)")
    parser.add_argument("--survivors", action="store_true", help="only those that no unit test noticed the last time")
    parser.add_argument("--list", action="store_true", help="only say which would be drawn")
    options = parser.parse_args()
    areas = options.area or list(AREAS)

    if options.survivors:
        last = json.loads(FOUND.read_text())
        pools = {a: [Mutant(*m) for m, killer in last.get(a, []) if killer in ("", "digest")] for a in areas}
    else:
        pools = {a: drawn(a, options.seed) for a in areas}

    if options.list:
        for area in areas:
            print(f"{area}: {len(pools[area])} mutants", *pools[area][:options.count], sep="\n  ")
        return 0

    scratches = queue.Queue()
    for number in range(options.jobs):
        scratches.put(Scratch(number))

    def killer_of(mutant):
        scratch = scratches.get()
        try:
            return scratch.killer_of(mutant)
        finally:
            scratches.put(scratch)

    results = {}
    begin = time.monotonic()

    with concurrent.futures.ThreadPoolExecutor(options.jobs) as workers:
        for area in areas:
            results[area] = []
            pool = iter(pools[area])
            wanted = len(pools[area]) if options.survivors else options.count

            while len(results[area]) < wanted:
                batch = list(itertools.islice(pool, min(wanted - len(results[area]), 4 * options.jobs)))
                if not batch:
                    break
                for mutant, killer in zip(batch, workers.map(killer_of, batch)):
                    if killer is not None:
                        results[area].append((mutant, killer))
                        print(f"{time.monotonic() - begin:6.0f} s  {killer or 'SURVIVES':10}  {mutant}", flush=True)

    if not options.survivors:
        FOUND.write_text(json.dumps(results, indent=0))

    # --------------------------------------------------------------------------
    def share(part, whole):
        return f"{100.0 * part / whole:5.1f} %" if whole else "-"

    rows = {area: Counter(killer for _, killer in results[area]) for area in areas}
    rows["all"] = sum(rows.values(), Counter())
    print(f"\n{'area':10} {'mutants':>8} {'unit tests':>11} {'timeout':>8} {'digest':>7} {'alive':>6}   {'without the digest':>18} {'with it':>9}")

    for area, row in rows.items():
        mutants = row.total()
        noticed = row["unit tests"] + row["timeout"]
        print(f"{area:10} {mutants:8} {row['unit tests']:11} {row['timeout']:8} {row['digest']:7} {row['']:6}"
              f"   {share(noticed, mutants):>18} {share(noticed + row['digest'], mutants):>9}")

    for title, which in (("Noticed by the digest alone:", "digest"), ("Not noticed:", "")):
        alive = [mutant for area in areas for mutant, killer in results[area] if killer == which]
        if alive:
            print(f"\n{title}", *alive, sep="\n  ")

    total = rows["all"]
    return 0 if total.total() == 0 or 100.0 * (total.total() - total[""]) / total.total() >= options.least else 1


if __name__ == "__main__":
    sys.exit(main())
