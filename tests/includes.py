#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 Tolm
# SPDX-License-Identifier: AGPL-3.0-only
"""Holds every #include of ours to the table of rooms in docs/architecture.md."""

import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent


def rooms():
    """What each room may include, and whether it knows JUCE."""
    rows = re.findall(r"^\| `([^`]+)` \| ([^|]*)\| (yes|no) \|", (ROOT / "docs/architecture.md").read_text(), re.MULTILINE)
    return {room: ({room, *re.findall("`([^`]+)`", others)}, juce == "yes") for room, others, juce in rows}


def room_of(path, table):
    """The innermost one."""
    name = path.relative_to(ROOT).as_posix()
    return max((room for room in table if name.startswith((room + "/", room + "."))), key=len, default=None)


def complaints(table):
    for path in sorted(each for folder in ("source", "tools", "web") for each in (ROOT / folder).rglob("*.[ch]*")):
        allowed, knows_juce = table.get(room := room_of(path, table), ((), False))
        if room is None:
            yield f"{path.relative_to(ROOT)} is in no room"
            continue

        for name in re.findall('^#include ["<]([^">]+)', path.read_text(), re.MULTILINE):
            places = [folder / name for folder in (path.parent, ROOT / "source", ROOT / "tools") if (folder / name).exists()]
            target = room_of(places[0].resolve(), table) if places else None
            if target is not None and target not in allowed or name.startswith("juce") and not knows_juce:
                yield f"{path.relative_to(ROOT)}: {room} may not include {name}"


TABLE = rooms()
FOUND = list(complaints(TABLE)) if len(TABLE) >= 10 else ["docs/architecture.md has no table of rooms"]
print("\n".join(FOUND) or f"{len(TABLE)} rooms, and no include against their table")
sys.exit(bool(FOUND))
