# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""No include goes upward: each folder includes only from itself and from the folders listed for it, and inside a folder of
the tools no two files include each other, directly or through others. docs/architecture.md has the same list as a picture.
"""

import re
import sys
from graphlib import CycleError, TopologicalSorter
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
PLATFORM = ["platform/include"]
APP = ["app/kestrune/phone", "app/kestrune/xmlTranslator", "app/kestrune/kestrune"]
IMAGE = ["platform/host", "tools/phoneImage"]
ROOMS = ["steps", "items", "table", "changes", "secrets", "shown", "warnings", "output", "fleet"]  # in the order of a value's way to a report

MAY_INCLUDE = {
    "platform/include": [],
    "platform/host": PLATFORM,
    "platform/src": PLATFORM + ["platform/host"],
    "app/kestrune/phone": PLATFORM,
    "app/kestrune/xmlTranslator": PLATFORM + APP[:1],
    "app/kestrune/kestrune": PLATFORM + APP[:2],
    "tools/phoneImage": PLATFORM + ["platform/host"],
    "tools/tableCheck": PLATFORM + APP + IMAGE,
    "tools/preview": PLATFORM + APP + IMAGE + [f"tools/preview/{room}" for room in ROOMS],
    "bench": PLATFORM + APP,
}
for number, room in enumerate(ROOMS):
    MAY_INCLUDE[f"tools/preview/{room}"] = PLATFORM + APP + IMAGE + [f"tools/preview/{lower}" for lower in ROOMS[:number]]


def sources():
    """Every header and source of the listed folders."""
    return [path for folder in MAY_INCLUDE for path in sorted((ROOT / folder).iterdir()) if path.suffix in (".h", ".cpp")]


def included(path):
    """The project's headers that a file includes; what no folder may give it counts as a fault."""
    allowed = [str(path.parent.relative_to(ROOT))] + MAY_INCLUDE[str(path.parent.relative_to(ROOT))]
    folders = [ROOT / folder for folder in allowed]
    for name in re.findall(r'^#include "(.+)"$', path.read_text(), re.MULTILINE):
        found = [folder / Path(name).name for folder in folders
                 if (folder / Path(name).name).exists() and str(folder / Path(name).name).endswith("/" + name)]
        if not found:
            yield None, f"{path.relative_to(ROOT)} includes {name}, which is on no floor below it"
        else:
            yield found[0], None


def main():
    files = sources()
    faults = []
    below = {}
    for path in files:
        for header, fault in included(path):
            if fault:
                faults.append(fault)
            elif header.parent == path.parent and header.stem != path.stem:
                below.setdefault(path.with_suffix(""), set()).add(header.with_suffix(""))
    try:
        TopologicalSorter(below).prepare()
    except CycleError as error:
        faults.append("a circle: " + " -> ".join(str(file.relative_to(ROOT)) for file in error.args[1]))
    print(*faults, sep="\n")
    print(f"layout: {len(files)} files looked at, {len(faults)} upward includes")
    sys.exit(bool(faults))


main()
