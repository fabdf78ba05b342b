# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""The program built for a device, run in the sandbox under an emulator, compared with that of the host."""

import argparse
import pathlib

import phones

TOLD_NAME = "/kestrune"  # otherwise the emulator would set the name of the program


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
    """The differences between the two phones: names, kinds, owners, permissions or bytes."""
    first, second = phones.snapshot(one), phones.snapshot(other)
    return sorted(path for path in first.keys() | second.keys() if first.get(path) != second.get(path))


def difference_of_runs(one, other):
    """The differences in exit status and outputs."""
    return [name for name in ("returncode", "stdout", "stderr") if getattr(one, name) != getattr(other, name)]
