# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""Runs with little memory: 64 MiB more address space than an empty program."""

import functools
import subprocess

ROOM = 64 << 20
EMPTY_PROGRAM = "/bin/true"
MOST_OF_EMPTY = 64 << 20
PRECISION = 64 << 10


def limited(limit):
    return ("prlimit", f"--as={limit}")


def runs_within(limit):
    return subprocess.run([*limited(limit), EMPTY_PROGRAM], capture_output=True, check=False).returncode == 0


@functools.lru_cache(maxsize=None)
def of_empty_program():
    """The minimum with which it runs."""
    too_little, enough = 0, MOST_OF_EMPTY
    while enough - too_little > PRECISION:
        middle = (too_little + enough) // 2
        too_little, enough = (too_little, middle) if runs_within(middle) else (middle, enough)
    return enough


@functools.lru_cache(maxsize=None)
def wrapper(program):
    """Starts the program with that limit; without a limit if it has a sanitizer, which needs terabytes."""
    if b"__asan_init" in program.read_bytes():
        return ()
    return limited(of_empty_program() + ROOM)
