#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Fails where a room of the house includes one above or beside it that it has no business with, or folders go round."""

import re
import sys
from graphlib import CycleError, TopologicalSorter
from pathlib import Path

ROOT = Path(__file__).resolve().parents[1]
GROUND = {"libs", "net", "threads"}
KNOWS = {
    "libs": set(), "net": set(), "threads": set(), "controls": set(), "platform": set(),
    "protocol": GROUND,
    "daemon": GROUND | {"platform", "protocol"},
    "config": {"daemon"},
    "ui": GROUND | {"config", "controls", "daemon", "platform"},
    "app": {"daemon", "platform", "ui"},
    "service": GROUND | {"config", "protocol"},
}
WITHOUT_QT = GROUND | {"protocol", "service"}


def includes(room):
    """Every file of the room with what it includes."""
    for file in sorted(path for path in (ROOT / room).rglob("*") if path.suffix in (".cpp", ".h")):
        for included in re.findall(r'^#include ["<]([^">]+)[">]', file.read_text(), re.MULTILINE):
            yield file.relative_to(ROOT), included


def main():
    faults, folders = [], {}
    for room in KNOWS:
        for file, included in includes(room):
            target = Path(included)
            if room in WITHOUT_QT and re.match(r"Qt?[A-Z]", included):
                faults.append(f"{file} includes Qt: {included}")
            if target.parts[0] not in KNOWS:
                continue
            if target.parts[0] not in KNOWS[room] | {room}:
                faults.append(f"{file} includes {included}")
            if target.parent != file.parent:
                folders.setdefault(str(file.parent), set()).add(str(target.parent))
    try:
        TopologicalSorter(folders).prepare()
    except CycleError as circle:
        faults.append("folders go round: " + " -> ".join(circle.args[1]))
    sys.exit("\n".join(faults) or 0)


if __name__ == "__main__":
    main()
