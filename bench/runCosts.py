# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""The cost of each mode on the example phone apart from time: calls, flushes, bytes, instructions, memory."""

import json
import pathlib
import re
import tempfile

import phones

ROOT = pathlib.Path(__file__).resolve().parent.parent

MODES = ("all", "dev", "pwd", "1", "2")
COLUMNS = ("calls", "opened files", "flushes", "renames", "bytes written", "instructions", "heap blocks", "peak memory, KiB")


def stored_calls():
    """The calls that the tests expect of each mode."""
    return json.loads((ROOT / "tests" / "cost" / "callCosts.json").read_text())


def flushes_of(mode):
    return stored_calls()[f'mode "{mode}", first run']["flushes"]


def under_valgrind(program, mode, options, pattern):
    """The figure that valgrind reports for a first run."""
    with tempfile.TemporaryDirectory() as folder:
        root = phones.make_phone("example", pathlib.Path(folder) / "phone")
        result = phones.run(program, root, mode, ["valgrind"] + options, ["--tmpfs", "/root"], timeout=300)
    return int(re.search(pattern, result.stderr.decode(errors="replace"))[1].replace(",", ""))


def of_modes(program, peak_memory_of):
    """A row for each mode; the calls are those that the tests expect."""
    stored = stored_calls()
    rows = {}
    for mode in MODES:
        rows[mode] = dict(stored[f'mode "{mode}", first run'])
        rows[mode]["instructions"] = under_valgrind(
            program, mode, ["--tool=callgrind", "--callgrind-out-file=/dev/null"], r"Collected : (\d+)")
        rows[mode]["heap blocks"] = under_valgrind(program, mode, ["--tool=memcheck"], r"total heap usage: ([\d,]+) allocs")
        rows[mode]["peak memory, KiB"] = peak_memory_of(mode)
    return rows


def table(rows):
    lines = ["### Cost of a first run on the example phone", "",
             "Calls, flushes and bytes are exact, and the tests check them for each mode (`tests/cost/`).", "",
             "| mode | " + " | ".join(COLUMNS) + " |", "| --- |" + " ---: |" * len(COLUMNS)]
    for mode, row in rows.items():
        lines.append(f"| {mode} | " + " | ".join(f"{row[column]:,}" for column in COLUMNS) + " |")
    return "\n".join(lines) + "\n"
