# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""Every file of the phone is truncated at every byte, and at every second byte filled with zero bytes from there on
(above 4 KiB at samples). A sanitizer build reports nothing, any other build has 64 MiB more address space than an
empty program, a damaged file is handled as its format requires, and all other files end as in an ordinary run."""

import dataclasses
import fnmatch
import functools
import os
import pathlib
import re
import sys

import devicePaths
import phones
import proof
from model import addressSpace, comparison, iniText

WHOLE_BELOW = 4096
SAMPLES_ABOVE = 800
POSITIONS_PER_JOB = 8

SANITIZER_REPORT = re.compile(rb"Sanitizer|runtime error")

ACCOUNTS = "/config/user/voip/sipAccount*.cfg"
DATA = "/config/data/*.xml"
CERTIFICATES = "*/certs/phoneca/*"


@dataclasses.dataclass(frozen=True)
class Lane:
    """Files that are damaged together, at the same byte: none of them affects another. The modes take turns."""

    files: tuple
    modes: tuple


LANES = (
    Lane((DATA, CERTIFICATES, ACCOUNTS, devicePaths.SYSTEM_INI, devicePaths.DIRECT_IP_FILE), ("all", "dev")),
    Lane((*devicePaths.KEY_LAYOUTS, ACCOUNTS, devicePaths.SYSTEM_INI, devicePaths.DIRECT_IP_FILE), ("2",)),
    Lane((devicePaths.HAND_OVER, devicePaths.FACTORY_ACCOUNT), ("2",)),
    Lane((ACCOUNTS, devicePaths.DIRECT_IP_FILE, devicePaths.HAND_OVER, devicePaths.SYSTEM_INI),
         ("1", "fix-ups-only", "pwd")),
    Lane((devicePaths.USER_INI,), ("all", "1", "2", "pwd", "dev", "fix-ups-only")),
    Lane((devicePaths.FACTORY_USER_INI,), ("pwd", "1")),
    Lane((devicePaths.VERSION_INI,), ("dev", "all")),
    Lane((devicePaths.TABLE,), ("dev", "all")),
    Lane((devicePaths.ENTRY_LIST,), ("pwd",)),
    Lane((devicePaths.CIPHER_KEY,), ("pwd", "all")),
)

# Damage that has more effects than an empty file: half of "bEnableFromOld=1" reads as 0.
TAKES_WITH_IT = {devicePaths.VERSION_INI: devicePaths.NEW_XML_DATA}


@dataclasses.dataclass(frozen=True)
class Job:
    program: pathlib.Path
    scratch: str
    phone: str
    mode: str
    lane: Lane
    way: str  # "cut" or "zeros"
    positions: tuple


def damaged(content, way, position):
    return content[:position] + (b"" if way == "cut" else bytes(len(content) - position))


def files_in(lane, phone):
    return [path for path in sorted(phone) if any(fnmatch.fnmatchcase(path, pattern) for pattern in lane.files)]


def positions_of(size):
    """Every byte of a file up to 4 KiB; of a larger one as many as its share of samples."""
    step = 1 if size <= WHOLE_BELOW else -(-size // SAMPLES_ABOVE)
    return range(0, size, step)


@functools.lru_cache(maxsize=None)
def image(phone):
    return phones.files_of(phones.PHONES[phone])


@functools.lru_cache(maxsize=None)
def final(program, scratch, phone, mode, path="", content=None):
    """The phone after the run, undamaged or with one file of that content (None: without it)."""
    root = phones.make_phone(phone, comparison.worker_folder(scratch) / "phone")
    if path and content is None:
        (root / path[1:]).unlink()
    elif path:
        (root / path[1:]).write_bytes(content)
    phones.run(program, root, mode)
    return phones.files_of(root)


def final_of(job, path="", content=None):
    return final(job.program, job.scratch, job.phone, job.mode, path, content)


@functools.lru_cache(maxsize=None)
def dependent(job_key, path):
    """The files that change if all values of one file are gone, including that file."""
    program, scratch, phone, mode = job_key
    ordinary = final(program, scratch, phone, mode)
    changed = {path, *TAKES_WITH_IT.get(path, ())}
    for content in (None, b""):
        without = final(program, scratch, phone, mode, path, content)
        changed |= {name for name in set(ordinary) | set(without) if ordinary.get(name) != without.get(name)}
    return frozenset(changed)


def root_end(content):
    """Where the root element ends: a file truncated before that is not well-formed, and one truncated after it is
    whole."""
    return content.rindex(b">") + 1


def is_written(path, mode):
    return (path in devicePaths.REPLACES[mode] or path in devicePaths.REMOVES.get(mode, ())
            or path == devicePaths.COPIES_TO.get(mode))


def check_others(job, damages, found):
    """Files that depend on none of the damaged ones are as in an ordinary run, and no unknown file appears."""
    ordinary = final_of(job)
    key = (job.program, job.scratch, job.phone, job.mode)
    changed = set().union(*(dependent(key, path) for path in damages))
    expected = {name: entry for name, entry in ordinary.items() if name not in changed}
    faults = comparison.differences(expected, {name: found[name] for name in expected if name in found})
    known = set(ordinary) | changed | set(image(job.phone))
    return faults + [f"{name} appeared" for name in found if name not in known]


def check_unwritten(job, damages, found):
    """Damaged files that the mode does not write are unchanged."""
    return [f"{path} was changed" for path, content in damages.items()
            if not is_written(path, job.mode) and (path not in found or found[path].content != content)]


def check_xml_data(job, damages, position, found):
    """Old data is translated whole or not at all: the new file is complete or missing."""
    faults = []
    if job.mode not in ("all", "dev"):
        return faults
    for old, new in devicePaths.XML_DATA.items():
        if old not in damages:
            continue
        is_whole = position >= root_end(image(job.phone)[old].content)
        undamaged = final_of(job)
        for path in new:
            expected = undamaged.get(path) if is_whole else image(job.phone).get(path)
            if path == old and not is_whole:
                expected = dataclasses.replace(expected, content=damages[old])
            if found.get(path) != expected:
                faults += comparison.differences({path: expected}, {path: found.get(path)})
    return faults


def check_layouts(job, damages, position, found):
    """A key layout that does not load stays as it is."""
    if job.mode != "2":
        return []
    return [f"{path} was changed, though its end is missing" for path in devicePaths.KEY_LAYOUTS
            if path in damages and position < root_end(image(job.phone)[path].content)
            and found[path].content != damages[path]]


def stands_for(path, content, way, position):
    """The equivalent of a damaged file that is used whole or not at all; None if it is not of that kind."""
    if path in (devicePaths.TABLE, devicePaths.ENTRY_LIST):
        return content if position >= root_end(content) else b"<"
    if path == devicePaths.CIPHER_KEY:
        return content if way == "cut" and position >= len(content.rstrip()) else b"no key"
    return None


def check_whole_or_nothing(job, damages, position, found):
    """A table, list or key that is not whole counts as unusable."""
    faults = []
    for path in damages:
        counts_as = stands_for(path, image(job.phone)[path].content, job.way, position)
        if counts_as is None:
            continue
        expected = dict(final_of(job, path, counts_as))
        expected[path] = dataclasses.replace(expected[path], content=damages[path])
        faults += comparison.differences(expected, found)
    return faults


def check_lines(job, damages, found):
    """The rest of a damaged configuration file stays, except the keys that the mode sets."""
    faults = []
    for path, content in damages.items():
        if not devicePaths.is_ini(path) or path not in found or path == devicePaths.COPIES_TO.get(job.mode):
            continue
        lost = lines_lost(content, found[path].content)
        if lost:
            faults.append(f"{path} lost {lost[0]!r}")
    return faults


def lines_lost(content, now):
    """The missing lines: comments, sections and keys by name (their values may be new).

    A line that was truncated between CR and LF keeps its CR, and gets a line end after it.
    """
    left = [line.head.rstrip(b"\r") for line in iniText.lines_of(now)]
    heads = [line.head.rstrip(b"\r") for line in iniText.lines_of(content)]
    return [head for head in heads if head.strip() and head not in left]


def try_damage(job, position, folder):
    root = phones.make_phone(job.phone, folder / "phone")
    damages = {}
    for path in files_in(job.lane, image(job.phone)):
        content = image(job.phone)[path].content
        if position < len(content):
            damages[path] = damaged(content, job.way, position)
            (root / path[1:]).write_bytes(damages[path])
    result = phones.run(job.program, root, job.mode, addressSpace.wrapper(job.program))
    found = phones.files_of(root)

    faults = []
    if result.returncode != 0 or SANITIZER_REPORT.search(result.stderr):
        faults.append(f"exit status {result.returncode}: {result.stderr[-3000:].decode(errors='replace')}")
    faults += check_others(job, damages, found)
    faults += check_unwritten(job, damages, found)
    faults += check_xml_data(job, damages, position, found)
    faults += check_layouts(job, damages, position, found)
    faults += check_whole_or_nothing(job, damages, position, found)
    faults += check_lines(job, damages, found)
    return len(damages), faults


def check(job):
    os.umask(0o022)
    folder = comparison.worker_folder(job.scratch)
    count, told = 0, []
    for position in job.positions:
        damages, faults = try_damage(job, position, folder)
        count += damages
        told += [f"mode {job.mode}, {job.way} at byte {position} of {' '.join(job.lane.files)}: {fault}"
                 for fault in faults]
    return len(job.positions), count, told


def jobs_of(chosen, scratch, lane):
    """Each position of the lane's files in one of its modes, and every second one with zeros."""
    modes = [mode for mode in lane.modes if mode in chosen.mode]
    sizes = [len(image(chosen.phone)[path].content) for path in files_in(lane, image(chosen.phone))]
    positions = sorted(set().union(*(positions_of(size) for size in sizes)))
    for turn, mode in enumerate(modes):
        own = positions[turn::len(modes)]
        for way, chosen_positions in (("cut", own), ("zeros", own[::2])):
            for begin in range(0, len(chosen_positions), POSITIONS_PER_JOB):
                yield Job(chosen.program, str(scratch), chosen.phone, mode, lane, way,
                          tuple(chosen_positions[begin:begin + POSITIONS_PER_JOB]))


def main():
    chosen = proof.parse_arguments(__doc__)
    proof.skip_without_sandbox(with_strace=False)
    with proof.scratch_folder() as scratch:
        jobs = [job for lane in LANES for job in jobs_of(chosen, scratch, lane)]
        results = list(proof.in_parallel(check, jobs, at_once=1))
    faults = [fault for _, _, told in results for fault in told]
    runs, damages = (sum(result[number] for result in results) for number in (0, 1))
    return proof.end("damagedInput", faults, f"{damages} damaged files in {runs} runs of {len(chosen.mode)} modes")


if __name__ == "__main__":
    sys.exit(main())
