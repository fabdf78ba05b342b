#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""A firmware with BusyBox init on the booted machine, with the installed init script linked as documented: the modes run
before the telephony, the second start does nothing; and starts that are cut, hang, or find `/config` read-only or full.
The same with systemd and the installed units.
"""

import os
import pathlib
import sys

import devicePaths
import phones
import proof
from board import busyBoxRoot, cuts, expected, flash, phone, places, systemdRoot
from model import boot, comparison, oneStep

KIND = "UBIFS"
BLOCKS = 24  # of 64 KiB: quickly full
INITS = {"BusyBox": busyBoxRoot, "systemd": systemdRoot}
START = "kestrune=/boot/kestrune.init\n$kestrune start\n"


class Firmware:
    """The phone with this init, one of the modules `busyBoxRoot` and `systemdRoot`."""

    def __init__(self, arguments, init, folder):
        self.init = init
        self.folder = folder
        self.starts = 0
        self.source = expected.make_phone(folder / "source")
        self.begin = expected.files_of(phones.snapshot(self.source))
        self.end = self.expected_end(arguments.host_program)
        self.board = cuts.Board(folder, arguments.program, self.source, init.add)
        self.content = cuts.make_flash(self.board, KIND, self.source, BLOCKS).read_bytes()

    def expected_end(self, host_program):
        root = phones.make_from(oneStep.without_tmp(phones.snapshot(self.source)), self.folder / "host")
        boot.Boot(host_program, "dash", self.folder / "boot", START).run(root)
        return expected.files_of(phones.snapshot(root))

    def start(self, content, trouble="", afterwards=""):
        """Starts the phone with this content of the flash; returns the files, the log's lines and the flash's changes."""
        image = self.folder / "config.image"
        image.write_bytes(content)
        self.starts += 1
        with self.board.resume(image) as device:
            self.init.start(device, trouble)
            log = device.must(self.init.LOG).decode(errors="replace").splitlines()
            device.must(afterwards or "true")
            found = expected.files_of(phone.entries(device, "/"))
            device.must("sync")
            return found, log, flash.changes_of(device.programmed())


def faults_of_log(log, state, is_silent=False):
    """The telephony starts last and sees this state; kestrune reports before it, or nothing at all."""
    ours = [number for number, line in enumerate(log) if "kestrune:" in line]
    telephony = [number for number, line in enumerate(log) if line == f"telephony: {state}"]
    if len(telephony) != 1:
        return [f"the telephony does not start as {state}: {log[-3:]}"]
    if is_silent:
        return [f"reports of a start that has nothing to do: {log[ours[0]]}"] if ours else []
    return ["kestrune reports after the telephony's start"] if ours and ours[-1] > telephony[0] else []


def told(name, faults):
    print(f"{name}: {'as expected' if not faults else f'{len(faults)} faults'}", flush=True)
    return [f"{name}: {fault}" for fault in faults]


def faults_of_two_starts(firmware):
    """The faults, and the changes of the first start."""
    found, log, changes = firmware.start(firmware.content)
    faults = told("first start", comparison.differences(firmware.end, found) + faults_of_log(log, "migrated"))
    if not any("kestrune:" in line for line in log):
        faults.append("first start: kestrune reports nothing to the log")
    again, log, _ = firmware.start(flash.after(firmware.content, changes))
    return faults + told("second start", comparison.differences(found, again)
                         + faults_of_log(log, "migrated", is_silent=True)), changes


def faults_of_cuts(firmware, changes):
    """A cut in the middle of each mode's commit."""
    faults = []
    chosen = places.chosen(firmware.content, changes, expected.MODES)
    for mode in expected.MODES:
        here = [place for place in chosen if (place.mode, place.kind) == (mode, "rename")]
        place = here[len(here) // 2]
        found, log, _ = firmware.start(flash.after(firmware.content, changes[:place.changes]))
        faults += told(f"cut in mode {mode}", comparison.differences(firmware.end, found) + faults_of_log(log, "migrated"))
    return faults


def may_stay(path, trouble):
    """A mode that is killed may leave the files of its commit."""
    return path == devicePaths.MARKER or (trouble == "hang" and devicePaths.is_of_commit(path))


def faults_of_trouble(firmware, trouble, afterwards=""):
    """The phone starts in spite of it, with all files old or new; and the next start does the rest."""
    found, log, changes = firmware.start(firmware.content, trouble, afterwards)
    states = (firmware.begin, firmware.end)
    faults = [f"{path} is neither old nor new" for path, entry in found.items()
              if not may_stay(path, trouble) and entry not in [state.get(path) for state in states]]
    if trouble == "read-only":
        faults += comparison.differences(firmware.begin, found)
    faults += faults_of_log(log, "pending")
    found, log, _ = firmware.start(flash.after(firmware.content, changes))
    faults += [f"the next start: {fault}" for fault in comparison.differences(firmware.end, found)]
    return told(trouble, faults + faults_of_log(log, "migrated"))


def main():
    arguments = cuts.parse_arguments(__doc__, "--init", INITS)
    os.umask(oneStep.UMASK)
    with proof.scratch_folder() as scratch:
        firmware = Firmware(arguments, INITS[arguments.init], pathlib.Path(scratch))
        faults, changes = faults_of_two_starts(firmware)
        faults += faults_of_cuts(firmware, changes)
        faults += faults_of_trouble(firmware, "read-only")
        faults += faults_of_trouble(firmware, "full", "rm /config/filler")
        faults += faults_of_trouble(firmware, "hang")
    return proof.end("start", faults, f"{firmware.starts} starts with {arguments.init}")


if __name__ == "__main__":
    sys.exit(main())
