#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""Proves the proofs: a program without one step of the commit must fail the proof of that step.

Each mutant is one source file with one piece of text replaced, compiled from a copy and linked with the libraries of
the build under test. The program itself has no switch for it.
"""

import argparse
import concurrent.futures
import pathlib
import shutil
import subprocess
import sys
import tempfile

import phones
import proof
from model import mutants

HERE = pathlib.Path(__file__).resolve().parent
ROOT = phones.PROJECT
MAIN = ROOT / "app/kestrune/kestrune/main.cpp"
FAULTS = "FAULTS"  # in the last line of a proof that found some; an aborted proof proves nothing
MOST_SHOWN = 200
COMPILE = ["c++", "-std=c++17", "-O0", "-D_FILE_OFFSET_BITS=64", "-D_TIME_BITS=64"] + [
    f"-I{ROOT / folder}" for folder in ("platform/include", "platform/src", "platform/host", "app/kestrune/kestrune")]


def mutated(mutant):
    text = (ROOT / "platform" / "src" / mutant.source).read_text()
    if text.count(mutant.old) != 1:
        raise SystemExit(f"mutants: {mutant.source} no longer has exactly one «{mutant.old}»")
    return text.replace(mutant.old, mutant.new)


def build(mutant, objects, main, folder):
    """Compiles the mutant and replaces its source's object in the library."""
    copy = folder / mutant.source
    copy.write_text(mutated(mutant))
    platform = shutil.copy(objects / "platform/libkestrune-platform.a", folder)
    subprocess.run(["ar", "d", platform, f"{mutant.source}.o"], check=True)
    program = folder / "kestrune"
    subprocess.run(COMPILE + [str(main), str(copy), str(objects / "app/kestrune/libkestrune-app.a"), platform]
                   + ["-ltinyxml", "-lpugixml", "-lnettle", "-o", str(program)], check=True)
    return program


def shown(told):
    """The first fault that the proof found, or the reason why it found none."""
    lines = told.splitlines()
    return next((line for line in lines if FAULTS in told and ": " in line), lines[-1])[:MOST_SHOWN]


class Mutants:
    def __init__(self, objects, main):
        self.objects = objects
        self.main = main

    def prove(self, mutant):
        """The exit status of the proof, which must fail, and its last line of output."""
        with tempfile.TemporaryDirectory() as folder:
            program = build(mutant, self.objects, self.main, pathlib.Path(folder))
            command = [sys.executable, "-B", str(HERE / mutant.proof[0]), "--program", str(program), *mutant.proof[1:]]
            result = subprocess.run(command, capture_output=True, check=False)
        return result.returncode, (result.stdout + result.stderr).decode(errors="replace").strip()


def parse_arguments():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--program", required=True, type=pathlib.Path)
    parser.add_argument("--only", action="append", help="the name of a mutant")
    return parser.parse_args()


def main():
    arguments = parse_arguments()
    chosen = [mutant for mutant in mutants.MUTANTS if not arguments.only or mutant.name in arguments.only]
    objects = arguments.program.resolve().parent.parent.parent
    for mutant in chosen:
        mutated(mutant)
    found = skipped = 0
    with tempfile.TemporaryDirectory() as folder, concurrent.futures.ThreadPoolExecutor(proof.WORKERS) as workers:
        object_of_main = pathlib.Path(folder) / "main.o"
        subprocess.run(COMPILE + ["-c", str(MAIN), "-o", str(object_of_main)], check=True)
        results = workers.map(Mutants(objects, object_of_main).prove, chosen)
        for mutant, (status, told) in zip(chosen, results):
            if status == proof.SKIPPED:
                print(told)
                skipped += 1
                continue
            is_found = status != 0 and FAULTS in told
            found += is_found
            verdict = "found" if is_found else "NOT found"
            print(f"{verdict}: {mutant.name}, by {' '.join(mutant.proof)}: {shown(told)}", flush=True)
    print(f"mutants: {found} of {len(chosen)} taken-out steps found")
    if skipped:
        return proof.SKIPPED
    return 0 if found == len(chosen) else 1


if __name__ == "__main__":
    sys.exit(main())
