# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""The power cuts of a boot on one file system: each phone is judged after the first cut, starts again, is perhaps cut again at
random, and at the end is compared with an undisturbed one.
"""

import argparse
import collections
import dataclasses
import os
import pathlib
import random
import sys

import proof
from board import expected, flash, images, machine, phone, places
from model import comparison

SEED = 11
MOST_CUTS_OF_A_PHONE = 4
CHANCE_OF_ANOTHER = 0.15


def parse_arguments(description, option=None, choices=()):
    """Ends the test as skipped where there is no machine. With the variable CI, that is a failure. `option` is an additional
    one, which must be one of the choices."""
    parser = argparse.ArgumentParser(description=description.splitlines()[0])
    parser.add_argument("--program", required=True, type=lambda name: pathlib.Path(name).resolve(),
                        help="built for 32-bit ARM, static")
    parser.add_argument("--host-program", required=True, type=lambda name: pathlib.Path(name).resolve())
    if option:
        parser.add_argument(option, required=True, choices=choices)
    arguments = parser.parse_args()
    reason = images.why_not()
    if reason and "CI" in os.environ:
        sys.exit(f"no booted machine: {reason}")
    if reason:
        proof.skip(reason)
    proof.skip_without_sandbox(with_strace=False)
    return arguments


class Board:
    """The images of one program, and a machine that has mounted this firmware."""

    def __init__(self, folder, program, source, add=images.add_busybox):
        """`add` adds the system to the firmware's folder."""
        self.folder = folder
        self.root = folder / "firmware"
        self.firmware = folder / "firmware.image"
        self.state = folder / "state"
        images.make_firmware_folder(self.root, source, program)
        add(self.root)
        self.make_image()

    def install(self, program):
        """Replaces the program."""
        images.install(self.root, program)
        self.make_image()

    def make_image(self):
        images.make_squashfs(self.root, self.firmware)
        config = self.folder / "empty.image"
        images.make_empty(config, machine.CONFIG_CHIP)
        with machine.Machine(images.MACHINE, self.firmware, config, images.STATE) as device:
            phone.mount_firmware(device)
            device.keep(self.state)

    def resume(self, config):
        return machine.Machine(images.MACHINE, self.firmware, config, self.state)


def make_flash(board, kind, source, blocks=None):
    """The chip of /config after its first mount, which writes to all of it. `blocks`: as for `images.make_flash`."""
    image = images.make_flash(kind, source, board.folder, blocks)
    with board.resume(image) as device:
        phone.mount(device, kind)
        device.must("umount /firmware/config && { ! grep -q /flash /proc/mounts || umount /flash; } && sync")
        image.write_bytes(flash.after(image.read_bytes(), flash.changes_of(device.programmed())))
    return image


@dataclasses.dataclass(frozen=True)
class Outcome:
    """Of one phone: what the first cut has lost, how the end differs from an undisturbed one, and the number of cuts."""

    lost: list
    unlike: list
    cuts: int


class Cuts:
    """All cuts of one file system."""

    def __init__(self, board, kind, image, boots):
        self.board = board
        self.kind = kind
        self.image = image.read_bytes()
        self.boots = boots
        self.changes, found = self.start(self.image, image)
        self.faults = [f"{kind}, undisturbed: {fault}" for fault in comparison.differences(boots.end, found)]

    def files(self, device):
        found = expected.files_of(phone.dump(device))
        return self.boots.with_folders(found) if self.kind == "overlay" else found

    def start(self, content, image, judge=lambda found: None):
        """One start of the phone; returns the changes of the flash, and the files at the end."""
        image.write_bytes(content)
        with self.board.resume(image) as device:
            phone.mount(device, self.kind)
            judge(self.files(device))
            phone.start_modes(device)
            found = self.files(device)
            return flash.changes_of(device.programmed()), found

    def places(self, of_each, at_random):
        """So many places of each mode and kind, and so many random bytes."""
        chance = random.Random(SEED)
        kinds = collections.defaultdict(list)
        for place in places.chosen(self.image, self.changes, expected.MODES):
            kinds[place.mode, place.kind].append(place)
        found = [place for _, same in sorted(kinds.items()) for place in chance.sample(same, min(of_each, len(same)))]
        found.sort(key=lambda place: place.changes)
        return found + places.at_random(self.image, self.changes, expected.MODES, at_random, SEED)

    def prove(self, place):
        """Cuts the power there, and perhaps again in the starts that follow. Tries a second time if the machine fails: the
        serial line may lose a whole command, but what the flash causes happens again."""
        name = f"{self.kind}, {told(place)}"
        try:
            return self.cut(place)
        except machine.Failed as reason:
            print(f"{name}: a second try, since {reason}", flush=True)
        try:
            return self.cut(place)
        except machine.Failed as reason:
            return Outcome([], [f"{name}: {reason}"], 1)

    def cut(self, place):
        chance = random.Random(f"{SEED} {place.changes}")
        lost = []
        count = 0
        content, changes, number = self.image, self.changes, place.changes
        while True:
            count += 1
            content = flash.after(content, changes[:number])

            def judge(found):
                if count == 1:
                    lost.extend(self.boots.faults_of_cut(found, place.mode, self.board.folder / "phone"))

            changes, found = self.start(content, self.board.folder / "config.image", judge)
            if count == MOST_CUTS_OF_A_PHONE or not changes or chance.random() > CHANCE_OF_ANOTHER:
                break
            number = chance.randrange(len(changes)) + 1
        unlike = [f"at the end {fault}" for fault in comparison.differences(self.boots.end, found)]
        name = f"{self.kind}, {told(place)}, {count} cuts: "
        return Outcome([name + fault for fault in lost], [name + fault for fault in unlike], count)


def told(place):
    return f"cut in mode {place.mode}, {place.kind}, after {place.changes} bytes"
