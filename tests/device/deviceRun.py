# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""The program built for a device, run in the sandbox under an emulator, and the host's own beside it."""

import argparse
import pathlib

import phones

TOLD_NAME = "/kestrune"  # an emulated program would otherwise be told the emulator's idea of its name


def parse_arguments(description):
    parser = argparse.ArgumentParser(description=description)
    parser.add_argument("--program", required=True, type=pathlib.Path)
    parser.add_argument("--emulator", required=True)
    parser.add_argument("--host-program", required=True, type=pathlib.Path)
    return parser.parse_args()


def run_on_device(arguments, root, mode):
    return phones.run(arguments.program.resolve(), root, mode, wrapper=[arguments.emulator, "-0", TOLD_NAME])


def run_on_host(arguments, root, mode):
    return phones.run(arguments.host_program.resolve(), root, mode)


def difference_of_phones(one, other):
    """What is not the same on the two phones: names, kinds, owners, permissions or bytes."""
    first, second = phones.snapshot(one), phones.snapshot(other)
    return sorted(path for path in first.keys() | second.keys() if first.get(path) != second.get(path))


def difference_of_runs(one, other):
    """Which of exit status and outputs are not the same."""
    return [name for name in ("returncode", "stdout", "stderr") if getattr(one, name) != getattr(other, name)]
