# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""The libraries in the programs: those that docs/licences.md lists, and those that a build really used."""

import collections
import functools
import os
import pathlib
import re
import subprocess

ROOT = pathlib.Path(__file__).resolve().parents[3]
COLUMNS = ("static program", "shared program", "host tools")
PROGRAM = "app/kestrune/kestrune"
TOOLS = ("tools/preview/kestrune-preview", "tools/preview/kestrune-preview-steps", "tools/tableCheck/kestrune-table-check")

# A row of the page. uses: for each column "linked", "shared", "headers" or nothing.
Listed = collections.namedtuple("Listed", "name version licence uses")
# What a program uses. package, version: the Debian package that the build used.
Used = collections.namedtuple("Used", "package version use")


def output_of(*command):
    return subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True, env={**os.environ, "LC_ALL": "C"}).stdout


def listed():
    """The table of the page, by Debian source package."""
    rows = {}
    for line in (ROOT / "docs" / "licences.md").read_text().splitlines():
        cells = [cell.strip() for cell in line.strip("|").split("|")]
        if len(cells) == 4 + len(COLUMNS) and cells[1].startswith("`"):
            name, source, version, licence = (cell.strip("`") for cell in cells[:4])
            rows[source] = Listed(name, version, licence, dict(zip(COLUMNS, cells[4:])))
    return rows


@functools.cache
def installed():
    """For each installed Debian package, as dpkg names it: its name, its source package and its version."""
    text = output_of("dpkg-query", "-W", "-f", "${binary:Package} ${Package} ${source:Package} ${Version}\n")
    return {line.split()[0]: line.split()[1:] for line in text.splitlines() if len(line.split()) == 4}


def source_of(package):
    """Debian's packages for its cross compilers repeat native ones, whose source they do not name."""
    native = re.sub(r"-\w+-cross$", "", package)
    return next(source for name, source, _ in installed().values() if name == native)


def by_source(patterns):
    """The Debian packages that contain these files, by source package, with their versions."""
    if not patterns:
        return {}
    found = {}
    owners = {line.rsplit(": ", 1)[0].split(", ")[0] for line in output_of("dpkg", "-S", *sorted(patterns)).splitlines()}
    for owner in sorted(owners):
        package, _, version = installed()[owner]
        found.setdefault(source_of(package), (package, version))
    return found


def headers(build, folders):
    """The system's headers that were read to compile the objects in these folders."""
    found, counts = set(), False
    for line in output_of("ninja", "-C", str(build), "-t", "deps").splitlines():
        if ": #deps " in line:
            counts = line.startswith(folders) and line.endswith("(VALID)")
        elif counts and line.startswith("    /usr/"):
            found.add(os.path.realpath(line.strip()))
    return found


def linked_archives(program):
    """The system's archives of which the linker's map says that the program contains a part; none without a map."""
    path = program.with_name(program.name + ".map")
    if not path.exists():
        return set()
    included = path.read_text(errors="replace").split("\nMemory Configuration")[0]
    return {os.path.realpath(name) for name in re.findall(r"(?m)^(/usr/\S+\.a)\(", included)}


def needed(program):
    """The shared libraries that the program loads, as patterns of their paths."""
    return {f"*/{name}" for name in re.findall(r"\(NEEDED\).*\[(.*)\]", output_of("readelf", "-dW", str(program)))}


def libraries_of(build, programs, folders):
    """What these programs use, by Debian source package: Used."""
    compiled = by_source(headers(build, folders))
    linked = by_source(set().union(*(linked_archives(build / program) for program in programs)))
    shared = by_source(set().union(*(needed(build / program) for program in programs)))
    return {source: Used(*package, "shared" if source in shared else "linked" if source in linked else "headers")
            for source, package in {**shared, **linked, **compiled}.items()}


def used(build):
    """What the programs of this build use: for each column of the page a dictionary by Debian source package."""
    build = pathlib.Path(build)
    program = "shared program" if needed(build / PROGRAM) else "static program"
    found = {program: libraries_of(build, [PROGRAM], ("app/", "platform/"))}
    if all((build / tool).exists() for tool in TOOLS):
        found["host tools"] = libraries_of(build, TOOLS, ("app/", "platform/", "tools/"))
    return found
