# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""What the host's program makes of the same phone: the phones between the modes of a boot, and the judgement of a phone
after a power cut.
"""

import pathlib

import devicePaths
import phones
from model import boot, comparison, oneStep

MODES = ("1", "2", "all")
STEP_FILES = (devicePaths.USER_INI, devicePaths.ACCOUNT_16)
INIT = "kestrune=/boot/kestrune.init\n"
STARTS = (INIT + "$kestrune start 1\n", "lay-new-settings\n", INIT + "$kestrune start 2\n", INIT + "$kestrune start all\n")


def make_phone(root):
    """The small phone of the proofs, with the upgrade's marker, and with the hand-over file in /tmp."""
    oneStep.make_marked_phone("small", root)
    (root / devicePaths.MARKER[1:]).write_text("".join(f"{mode}\n" for mode in MODES))
    return root


def files_of(phone):
    """The part of the phone that survives a power cut."""
    return {path: entry for path, entry in phone.items() if path.startswith("/config")}


class Boots:
    """The phones of an undisturbed boot, made by the program of the host."""

    def __init__(self, program, scratch):
        scratch = pathlib.Path(scratch)
        self.program = program
        root = make_phone(scratch / "expected")
        (root / devicePaths.HAND_OVER[1:]).unlink()
        self.begin = phones.snapshot(root)
        self.phones = [files_of(self.begin)]  # then one after each start
        for number, start in enumerate(STARTS):
            boot.Boot(program, "dash", scratch / f"boot{number}", start).run(root)
            self.phones.append(files_of(phones.snapshot(root)))
        self.end = self.phones[-1]

    def faults_of_cut(self, found, mode, root):
        """The one sentence: as before the mode or as after it, once the next run has started. `root` is a folder for it."""
        before, after = {"1": (0, 1), "2": (1, 3), "all": (3, 4)}[mode]
        settled = found
        if oneStep.needs_next_run(found):
            phones.make_from({**self.of_firmware(), **found}, root)
            oneStep.settle(self.program, root)
            settled = files_of(phones.snapshot(root))
        states = [oneStep.kept(phone, is_power_cut=True) for phone in self.phones]
        seen = oneStep.kept(settled, is_power_cut=True)
        if seen in (states[before], states[after]):
            return []
        if mode == "2" and without_step(seen) == without_step(states[before]):
            return []  # the firmware's own step, which is repeated
        nearest = min((comparison.differences(states[number], seen) for number in (before, after)), key=len)
        return [f"neither as before mode {mode} nor as after it: " + "; ".join(nearest)]

    def with_folders(self, found):
        """When the first file of a folder changes, an overlay copies the folder, and the kernel does not flush the copy's
        attributes: a power cut may leave it without permission bits. Its files are whole, and root still reaches them."""
        return {path: self.begin[path] if is_unfinished_copy(entry) and path in self.begin else entry
                for path, entry in found.items()}

    def of_firmware(self):
        return {path: entry for path, entry in self.begin.items() if not path.startswith("/config")}


def is_unfinished_copy(entry):
    return entry.kind == "folder" and entry.mode == 0


def without_step(phone):
    """The step's files, also under the names that it gives them first."""
    return {path: entry for path, entry in phone.items() if path.removesuffix(".new") not in STEP_FILES}
