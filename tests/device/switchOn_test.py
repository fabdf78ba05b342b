#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""Starts the machine with Debian's kernel, and keeps it in build/device/machine for the other tests."""

import shutil
import sys
import time

from board import cuts, images, machine


def main():
    cuts.parse_arguments(__doc__)
    shutil.rmtree(images.MACHINE, ignore_errors=True)
    images.MACHINE.mkdir(parents=True)
    images.make_machine(images.MACHINE)
    firmware, config = images.MACHINE / "firmware.image", images.MACHINE / "config.image"
    images.make_empty(firmware, machine.FIRMWARE_CHIP)
    images.make_empty(config, machine.CONFIG_CHIP)
    begin = time.monotonic()
    with machine.Machine(images.MACHINE, firmware, config) as device:
        device.keep(images.STATE)
    print(f"switchOn: {time.monotonic() - begin:.0f} seconds until the machine was kept")


if __name__ == "__main__":
    sys.exit(main())
