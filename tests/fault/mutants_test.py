#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""Proves the proofs: a program with one protection taken out must fail the proof that is there for it.

Each mutant is the saving code with one piece of text replaced, compiled from a copy and linked in front of the libraries of
the build under test. The program itself has no switch for it.
"""

import argparse
import dataclasses
import pathlib
import shlex
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parent.parent


@dataclasses.dataclass(frozen=True)
class Mutant:
    """One protection taken out of `source`, and the proof that must notice."""

    name: str
    source: str
    old: str
    new: str
    proof: tuple


MUTANTS = (
    Mutant("no fsync of the file", "fileReplacement.cpp", " || fsync(file.Number()) != 0", "",
           ("powerCut_test.py", "--mode", "fix-ups-only")),
    Mutant("no fsync of the folder", "fileReplacement.cpp", "(void)fsync(folder.Number());", ";",
           ("powerCut_test.py", "--mode", "fix-ups-only")),
    Mutant("no exclusive creation", "fileReplacement.cpp", "O_CREAT | O_EXCL", "O_CREAT", ("oneWayToWrite_test.py",)),
    Mutant("writing in place", "fileReplacement.cpp", 'destination + ".kestrune-new"', "destination",
           ("kill_test.py", "--mode", "fix-ups-only")),
    Mutant("temporary file left behind", "fileReplacement.cpp", "(void)unlink(path_.c_str());", ";",
           ("failingCalls_test.py", "--mode", "fix-ups-only")),
    Mutant("write result ignored", "fileBytes.cpp", "if (count <= 0)\n            return false;",
           "if (count <= 0)\n            return true;", ("failingCalls_test.py", "--mode", "fix-ups-only")),
)


def build(mutant, objects, folder):
    """Compiles the mutant and links it; its definitions come before the library's."""
    source = ROOT / "platform" / "src" / mutant.source
    text = source.read_text()
    if text.count(mutant.old) != 1:
        raise SystemExit(f"mutants: {mutant.source} no longer has exactly one «{mutant.old}»")
    copy = folder / mutant.source
    copy.write_text(text.replace(mutant.old, mutant.new))

    libraries = [objects / "app/kestrune/libkestrune-app.a", objects / "platform/libkestrune-platform.a"]
    includes = ["platform/include", "platform/src", "app/kestrune/kestrune"]
    program = folder / "kestrune"
    subprocess.run(["c++", "-std=c++17", "-O1", "-D_FILE_OFFSET_BITS=64", "-D_TIME_BITS=64"]
                   + [f"-I{ROOT / include}" for include in includes]
                   + [str(ROOT / "app/kestrune/kestrune/main.cpp"), str(copy)] + [str(library) for library in libraries]
                   + ["-ltinyxml", "-lpugixml", "-lnettle", "-o", str(program)], check=True)
    return program


def is_found(mutant, program):
    """Whether the proof fails for the mutant, as it must; what it could not prove here is no finding."""
    proof = [sys.executable, str(HERE / mutant.proof[0]), "--program", str(program)] + list(mutant.proof[1:])
    result = subprocess.run(proof, capture_output=True, check=False)
    if result.returncode == 77:
        print(result.stdout.decode(errors="replace").strip())
        raise SystemExit(77)
    if result.returncode == 0:
        print(f"NOT found: {mutant.name}, by {shlex.join(mutant.proof)}")
    return result.returncode != 0


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--program", required=True, type=pathlib.Path)
    arguments = parser.parse_args()
    objects = arguments.program.resolve().parent.parent.parent

    found = 0
    for mutant in MUTANTS:
        with tempfile.TemporaryDirectory() as folder:
            if is_found(mutant, build(mutant, objects, pathlib.Path(folder))):
                found += 1
                print(f"found: {mutant.name}, by {mutant.proof[0]}")
    print(f"mutants: {found} of {len(MUTANTS)} taken-out protections found")
    return 0 if found == len(MUTANTS) else 1


if __name__ == "__main__":
    sys.exit(main())
