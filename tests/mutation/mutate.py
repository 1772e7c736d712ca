#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 Tolm
# SPDX-License-Identifier: AGPL-3.0-only

"""Do the tests notice a fault? Changes one operator, number or statement at a time and runs the tests.

Usage: mutate.py [NUMBER [AREA...]]     by default 100 changes, spread evenly over all areas and their sources

Clang's parser says what is an operator, so the layout of the sources does not matter. The same sources and number
give the same changes. A change that does not compile counts for nothing; the one behind it takes its place. What the
music digest alone notices is counted apart: it says that the music has changed, not what is right.
"""

import os
import re
import resource
import shutil
import subprocess
import sys
import time
from pathlib import Path

from clang.cindex import CursorKind as Kind
from clang.cindex import Index

ROOT = Path(__file__).resolve().parents[2]
TREE = ROOT / "build" / "mutation"
JUCE = os.environ.get("JUCE_DIR", f"{ROOT}/.deps/juce-8.0.6")

# The sources, the preset, and the programs that may notice, each with a filter of its tests.
CORE, DIGEST, KIT_TESTS = "pulsewright_core_tests", "pulsewright-music-digest", "*Strokes*:DrumSynth*:KitTables*"
PLUGIN, WINDOW = "pulsewright_plugin_tests", "pulsewright_window_tests"
AREAS = {
    "generation": ("generation/*", "core", {CORE: f"-{KIT_TESTS}", DIGEST: None}),
    "writer": ("export/MidiFileWriter.cpp", "core", {CORE: "*Midi*:*Track*", DIGEST: None}),
    "playback": ("processor/playback/*", "core", {CORE: f"-{KIT_TESTS}"}),
    "kit": ("processor/kit/*", "core", {CORE: KIT_TESTS}),
    "state": ("processor/SavedState.cpp", "release", {"pulsewright_state_tests": "*"}),
    "session": ("session/*", "release", {PLUGIN: "Processor*:PlayedTakes*"}),
    "editor": ("editor/[EP]*.cpp", "release", {PLUGIN: "Editor*", WINDOW: "Window.*"}),
}

PARSE = ["-xc++", "-std=c++20", "-Isource", f"-I{JUCE}/modules", "-DJUCE_GLOBAL_MODULE_SETTINGS_INCLUDED=1", "-DPULSEWRIGHT_X86_KERNELS"]
OTHER = {"+": ["-"], "-": ["+"], "*": ["/"], "/": ["*"], "%": ["*"], "<": ["<=", ">"], "<=": ["<", ">="], ">": [">=", "<"], ">=": [">", "<="],
         "==": ["!="], "!=": ["=="], "&&": ["||"], "||": ["&&"], "+=": ["-="], "-=": ["+="], "<<": [">>"], ">>": ["<<"], "&": ["|"], "|": ["&"],
         "^": ["|"], "!": [""], "++": ["--"], "--": ["++"], "true": ["false"], "false": ["true"]}


def other_number(text):
    """The next integer, or a float that is a quarter larger."""
    digits = text.rstrip("uUlL") if text[:2].lower() == "0x" else text.rstrip("uUlLfF")
    suffix = text[len(digits):]
    if "." in digits or "p" in digits or ("e" in digits and digits[:2].lower() != "0x"):
        return f"({text} * 1.25{suffix})" if digits.strip("0.") else "0.0625" + suffix
    return str(int(digits.replace("'", ""), 0) + 1) + suffix


def mutants_of(path):
    """Changes of a file, as (first byte, byte behind, new text)."""
    text, found = path.read_bytes(), set()

    def replace(extent, *texts):
        found.update((extent.start.offset, extent.end.offset, new) for new in texts)

    def visit(cursor, is_statement=False):
        try:
            kind, parts = cursor.kind, list(cursor.get_children())
        except ValueError:  # newer than the parser's Python module
            return
        if kind == Kind.FIELD_DECL:  # what a field is before anything is stored in it is mostly never seen
            return
        code = text[cursor.extent.start.offset:cursor.extent.end.offset].decode()
        if kind == Kind.STATIC_ASSERT or kind == Kind.CALL_EXPR and re.search(r"(reserve|ensureSize) \(", code):
            return

        operators = []
        if is_statement and kind.is_expression():
            replace(cursor.extent, "")
        if kind == Kind.RETURN_STMT and parts and code != "return {}":
            replace(parts[0].extent, "{}")
        elif kind in (Kind.INTEGER_LITERAL, Kind.FLOATING_LITERAL) and re.match(r"[\d.]", code):
            replace(cursor.extent, other_number(code))
        elif kind == Kind.CXX_BOOL_LITERAL_EXPR:
            replace(cursor.extent, *OTHER[code])
        elif kind == Kind.UNARY_OPERATOR:
            operators = [token for token in cursor.get_tokens() if token.spelling in ("!", "++", "--")]
        elif len(parts) > 1 and (kind in (Kind.BINARY_OPERATOR, Kind.COMPOUND_ASSIGNMENT_OPERATOR) or cursor.spelling.startswith("operator")):
            operators = [token for token in cursor.get_tokens() if token.extent.start.offset >= parts[0].extent.end.offset]

        for token in operators[:1]:
            replace(token.extent, *OTHER.get(token.spelling, []))
        for number, part in enumerate(parts):
            visit(part, kind == Kind.COMPOUND_STMT or kind in (Kind.IF_STMT, Kind.CXX_FOR_RANGE_STMT) and number > 0)

    for cursor in Index.create().parse(str(path), PARSE).cursor.get_children():
        if cursor.location.file and cursor.location.file.name == str(path):
            visit(cursor)
    return sorted(found)


# ======================================================================================================================
def must(*command):
    done = subprocess.run(command, cwd=TREE, capture_output=True, text=True)
    if done.returncode != 0:
        sys.exit(done.stdout[-4000:] + done.stderr[-4000:])


def ninja(build, tests):
    return ["ninja", "-C", str(build), f"-j{os.cpu_count()}", *tests]


def failing(build, tests, seconds):
    """The first program that notices something, or ""."""
    def limit_memory():
        resource.setrlimit(resource.RLIMIT_AS, (8 << 30, 8 << 30))

    for program, chosen in tests.items():
        arguments = ["--gtest_brief=1", "--gtest_fail_fast", f"--gtest_filter={chosen}"] if chosen else [str(TREE / "tests/data/music-digest.txt")]
        display = [str(TREE / "tests/window/run.sh")] if program == WINDOW else []
        try:
            subprocess.run([*display, str(build / "tests" / program), *arguments], capture_output=True, timeout=seconds, preexec_fn=limit_memory, check=True)
        except subprocess.SubprocessError:
            return program
    return ""


def noticed_by(path, mutant, build, tests, seconds):
    """The program that notices a mutant, "" where none does, None where it does not compile."""
    begin, end, new = mutant
    whole = path.read_bytes()
    path.write_bytes(whole[:begin] + new.encode() + whole[end:])
    try:
        built = subprocess.run(ninja(build, tests), env={**os.environ, "CCACHE_READONLY": "1"}, capture_output=True)
        return failing(build, tests, seconds) if built.returncode == 0 else None
    finally:
        path.write_bytes(whole)


def described(path, mutant):
    before, old = path.read_text()[:mutant[0]], path.read_bytes()[mutant[0]:mutant[1]].decode()
    return f"{path.relative_to(TREE)}:{before.count(chr(10)) + 1}  {' '.join(old.split())}  ->  {mutant[2] or '(gone)'}"


def survey(area, share):
    """Prints and returns what notices each of the changes."""
    sources, preset, tests = AREAS[area]
    build, results = TREE / "build" / preset, []

    # Without warnings, and quick to build: what a compiler would have said is no test's merit.
    must("cmake", "--preset", preset, f"-DJUCE_DIR={JUCE}", "-DCMAKE_CXX_FLAGS=-w", *(["-DCMAKE_CXX_FLAGS_RELEASE=-O1"] if preset == "core" else []))
    must(*ninja(build, tests))
    begin = time.monotonic()
    if broken := failing(build, tests, 300):
        sys.exit(f"{broken} fails without any change")
    seconds = 10 + 5 * (time.monotonic() - begin)

    pool = [(path, mutant) for path in sorted(TREE.glob(f"source/{sources}")) for mutant in mutants_of(path)]
    for slot in range(min(share, len(pool))):
        for path, mutant in pool[slot * len(pool) // share:(slot + 1) * len(pool) // share]:
            if (by := noticed_by(path, mutant, build, tests, seconds)) is not None:
                results.append(by)
                print(f"{area:10} {by or 'NOT NOTICED':25} {described(path, mutant)}", flush=True)
                break
    return results


def main(number=100, *areas):
    shutil.rmtree(TREE, ignore_errors=True)
    shutil.copytree(ROOT, TREE, symlinks=True, ignore=shutil.ignore_patterns("build", "out", ".git", ".deps"))
    results = {area: survey(area, int(number) // len(areas or AREAS)) for area in areas or AREAS}
    everything = [by for found in results.values() for by in found]

    print(f"\n{'area':10} {'changes':>8} {'noticed':>8} {'without the digest':>19}")
    for area, found in {**results, "all": everything}.items():
        noticed = len(found) - found.count("")
        print(f"{area:10} {len(found):8} {noticed / len(found):8.1%} {(noticed - found.count(DIGEST)) / len(found):19.1%}")
    return 1 if everything.count("") > len(everything) / 5 else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
