# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""Shared code of the proofs: their command line, their workers, and their exit status.

By hand: PYTHONPATH=tests/support/python python3 tests/fault/kill_test.py --program build/host/app/kestrune/kestrune
"""

import argparse
import concurrent.futures
import multiprocessing
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

import phones

WORKERS = 2
JOBS_AT_ONCE = 16
SKIPPED = 77
MOST_FAULTS_TOLD = 40

# Mode "dev" is "all" less its last pass: where both are proven, every second case of "dev" is enough. Not with
# `script/test --all`, and not when a mode is chosen.
is_brief = False


def parse_arguments(description, more_modes=()):
    """`more_modes`: additional words that the proof accepts as modes."""
    modes = phones.MODES + more_modes
    parser = argparse.ArgumentParser(description=description)
    parser.add_argument("--program", required=True, type=pathlib.Path)
    parser.add_argument("--phone", choices=sorted(phones.PHONES), default="small")
    parser.add_argument("--mode", action="append", choices=modes)
    arguments = parser.parse_args()
    global is_brief
    is_brief = arguments.mode is None and "KESTRUNE_WHOLE_PROOFS" not in os.environ
    arguments.program = arguments.program.resolve()
    arguments.mode = arguments.mode or list(modes)
    return arguments


def thinned(mode, cases):
    """The cases of a mode that a brief proof takes."""
    return list(cases)[::2] if is_brief and mode == "dev" else list(cases)


def skip(reason):
    print(f"SKIPPED: {reason}")
    sys.exit(SKIPPED)


def skip_without_sandbox(with_strace=True):
    """A machine may lack the tools or forbid them; then nothing can be proven."""
    for tool in ["bwrap"] + (["strace"] if with_strace else []):
        if shutil.which(tool) is None:
            skip(f"{tool} is not installed")
    with tempfile.TemporaryDirectory() as folder:
        for tree in phones.TREES:
            os.mkdir(f"{folder}/{tree}")
        tracer = ["strace", "-D", "-f", "-o", "/dev/null"] if with_strace else []
        tried = subprocess.run(phones.command("/bin/true", folder, [], tracer), capture_output=True, check=False)
    if tried.returncode != 0:
        skip(f"no sandbox here: {tried.stderr.decode(errors='replace').strip()}")


def scratch_folder():
    """In memory if possible: thousands of phones are created, and none of them needs a device."""
    memory = "/dev/shm"
    return tempfile.TemporaryDirectory(prefix="kestrune-", dir=memory if os.access(memory, os.W_OK) else None)


work = None  # the workers' function: they are forks, and inherit it with its data


def do_work(job):
    return work(job)


def in_parallel(function, jobs, at_once=JOBS_AT_ONCE, workers=WORKERS):
    """The results in order. Each worker has its own copy of the state of `function`."""
    global work
    work = function
    with concurrent.futures.ProcessPoolExecutor(workers, multiprocessing.get_context("fork")) as pool:
        yield from pool.map(do_work, jobs, chunksize=at_once)


def end(name, faults, figures):
    """Prints the faults, then the figures; returns the exit status."""
    for fault in faults[:MOST_FAULTS_TOLD]:
        print(fault)
    if len(faults) > MOST_FAULTS_TOLD:
        print(f"... and {len(faults) - MOST_FAULTS_TOLD} more")
    print(f"{name}: {figures}, {f'{len(faults)} FAULTS' if faults else 'nothing lost'}")
    return 1 if faults else 0
