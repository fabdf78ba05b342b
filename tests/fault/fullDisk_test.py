# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""Short writes, full disks and files that cannot be replaced: each file is whole, as before or as after the run, and a
moved account is in one of its two places.

Short writes come from a limit on the size of files, at lengths at which a save may be interrupted. Full disks are file
systems in memory with space for the phone and a little more, in bytes or in files. A mount point cannot be replaced.
"""

import dataclasses
import itertools
import os
import pathlib
import shutil
import subprocess
import sys

import phones
import proof
from model import comparison, fileByFile, recordedRun

LONGEST_RUN = 30  # seconds
PAGE = 4096
MOST_FREE = 32  # pages, or files
COULD_NOT_FILL = 99
BALLAST = "/tmp/ballast"
OWN_MOUNTS = ["unshare", "--mount", "--propagation", "private"]

# These limits, and those around the size of each file.
LENGTHS_APART = {"small": 4, "example": 64}

# The phone is copied to the disks under test, and the result is copied back. Both are not part of the run.
SMALL_DISK = f"""
cp -a /image/config/. /config/ && cp -a /image/tmp/. /tmp/ || exit {COULD_NOT_FILL}
"$@"
status=$?
cp -a /config/. /result/config/ && cp -a /tmp/. /result/tmp/ || exit {COULD_NOT_FILL}
exit $status
"""

# $1 is the phone, $2 a folder for the disk, $3 how many files fit on it; the rest runs the program on the phone.
FEW_FILES = f"""
phone=$1; disk=$2; mount -t tmpfs -o "nr_inodes=$3" none "$disk" && cp -a "$phone/." "$disk/" || exit {COULD_NOT_FILL}
mount --bind "$disk" "$phone" || exit {COULD_NOT_FILL}
shift 3; "$@"
status=$?
umount "$phone" && rm -rf "$phone"/* && cp -a "$disk/." "$phone/" || exit {COULD_NOT_FILL}
exit $status
"""


@dataclasses.dataclass(frozen=True)
class Limit:
    mode: str
    kind: str
    size: object

    def __str__(self):
        return f"{self.mode}: {KINDS[self.kind].told} {self.size}"


@dataclasses.dataclass(frozen=True)
class Kind:
    told: str
    run: object    # returns the result and the phone afterwards
    faults: object  # of that phone


RUNS = {}  # by mode, before the workers start
PROGRAM = None
PHONE = None
SCRATCH = None


# The limits


def lengths_of(run):
    sizes = {len(run.after[path].content) for path in fileByFile.changed(run) if path in run.after} | {0}
    edges = {max(0, size + more) for size in sizes for more in (-1, 0, 1)}
    return sorted(edges | set(range(0, max(sizes) + 2, LENGTHS_APART[PHONE])))


def limits_of(mode, kinds):
    run = RUNS[mode]
    sizes = {"length": lengths_of(run), "free": range(MOST_FREE + 1), "files": range(MOST_FREE + 1),
             "mounted": [path for path in fileByFile.changed(run) if path in run.before and path in run.after]}
    return [Limit(mode, kind, size) for kind in kinds for size in sizes[kind]]


def kinds_here():
    """Only root mounts a disk with few files."""
    tried = subprocess.run([*OWN_MOUNTS, "true"], capture_output=True, check=False) if shutil.which("unshare") else None
    if os.geteuid() == 0 and tried is not None and tried.returncode == 0:
        return tuple(KINDS)
    print("not proven: a disk on which no more files fit, which only root can mount")
    return tuple(kind for kind in KINDS if kind != "files")


# The required state of the phone


def faults_of_length(run, length, found):
    """Files that do not fit are unchanged. No certificate stays incomplete."""
    short = [path for path in fileByFile.changed(run) if path in run.after and len(run.after[path].content) > length]
    possible = [fileByFile.without_changes(run, phone, short) for phone in (run.after, fileByFile.after_moves(run))]
    return min((comparison.differences(phone, found) for phone in possible), key=len)


def pages(entry):
    return 0 if entry is None else -(-len(entry.content) // PAGE)


def files(entry):
    return 0 if entry is None else 1


def room_needed(run, measure):
    """Enough to make the changes one after the other: the growth of the files, one temporary file, and the note."""
    pairs = [(run.before.get(path), run.after.get(path)) for path in fileByFile.changed(run)]
    growth = sum(max(0, measure(new) - measure(old)) for old, new in pairs)
    return growth + max(measure(new) for _, new in pairs) + 1


def faults_of_room(run, room, found, measure):
    if room == MOST_FREE:
        return comparison.differences(run.after, found)
    if room < room_needed(run, measure):
        return fileByFile.faults_of(run, found)
    return min((comparison.differences(phone, found) for phone in (run.after, fileByFile.after_moves(run))), key=len)


def faults_of_pages(run, room, found):
    return faults_of_room(run, room, found, pages)


def faults_of_files(run, room, found):
    return faults_of_room(run, room, found, files)


def faults_of_mounted(run, path, found):
    return comparison.differences(fileByFile.without_changes(run, run.after, [path]), found)


# The runs


def size_of(root):
    return sum(-(-path.lstat().st_size // PAGE) * PAGE for path in root.rglob("*") if path.is_file())


def disk(root, tree, free):
    return ["--size", str(size_of(root / tree) + free * PAGE), "--tmpfs", f"/{tree}"]


def run_on_small_disk(folder, root, limit):
    result_folder = folder / "result"
    shutil.rmtree(result_folder, ignore_errors=True)
    for tree in ("config", "tmp"):
        (result_folder / tree).mkdir(parents=True)
    shutil.copytree(root / "phone", result_folder / "phone")
    # A file system of no size at all would have no limit.
    (root / BALLAST[1:]).write_bytes(bytes(PAGE))
    options = (disk(root, "config", limit.size) + disk(root, "tmp", limit.size)
               + ["--ro-bind", str(root), "/image", "--bind", str(result_folder), "/result"])
    result = phones.run(PROGRAM, root, limit.mode, ["sh", "-c", SMALL_DISK, "sh"], options, timeout=LONGEST_RUN)
    found = phones.snapshot(result_folder)
    del found[BALLAST]
    return result, found


def run_with_few_files(folder, root, limit):
    (folder / "disk").mkdir(exist_ok=True)
    most_files = 2 + sum(1 for _ in root.rglob("*")) + limit.size  # the root folder counts as two
    command = [*OWN_MOUNTS, "sh", "-c", FEW_FILES, "sh", str(root), str(folder / "disk"), str(most_files),
               *phones.command(PROGRAM, root, [limit.mode])]
    result = subprocess.run(command, env={"PATH": os.environ["PATH"]}, stdin=subprocess.DEVNULL, capture_output=True,
                            timeout=LONGEST_RUN, check=False)
    return result, phones.snapshot(root)


def run_with_short_writes(folder, root, limit):
    # Not as process 1, which the signal of a short write would not end.
    shell = f'prlimit --fsize={limit.size} "$@"; exit $?'
    result = phones.run(PROGRAM, root, limit.mode, ["sh", "-c", shell, "sh"], timeout=LONGEST_RUN)
    return result, phones.snapshot(root)


def run_with_mounted(folder, root, limit):
    options = ["--bind", f"{root}{limit.size}", limit.size]
    result = phones.run(PROGRAM, root, limit.mode, options=options, timeout=LONGEST_RUN)
    return result, phones.snapshot(root)


KINDS = {
    "length": Kind("files of at most (bytes)", run_with_short_writes, faults_of_length),
    "free": Kind("a disk with room for (pages)", run_on_small_disk, faults_of_pages),
    "files": Kind("a disk with room for (files)", run_with_few_files, faults_of_files),
    "mounted": Kind("something is mounted on", run_with_mounted, faults_of_mounted),
}


def run_limit(limit):
    folder = SCRATCH / str(os.getpid())
    folder.mkdir(exist_ok=True)
    run, kind = RUNS[limit.mode], KINDS[limit.kind]
    root = phones.make_from(run.before, folder / "phone")
    try:
        result, found = kind.run(folder, root, limit)
    except subprocess.TimeoutExpired:
        return [f"{limit}: hangs"]
    faults = kind.faults(run, limit.size, found)
    if result.returncode != 0:
        faults.append(f"exit status {result.returncode}: {result.stderr[-200:]!r}")
    if foreign_lines_out(result.stderr) != foreign_lines_out(run.reports):
        faults.append(f"reported {result.stderr!r}")
    return [f"{limit}: {fault}" for fault in faults]


def foreign_lines_out(reports):
    """The messages of the device's own copy command do not count."""
    return sorted(line for line in reports.splitlines() if not line.startswith((b"cp: ", b"sh: ")))


def main():
    global PROGRAM, PHONE, SCRATCH
    chosen = proof.parse_arguments(__doc__)
    proof.skip_without_sandbox()
    PROGRAM, PHONE = chosen.program, chosen.phone
    kinds = kinds_here()
    with proof.scratch_folder() as scratch:
        SCRATCH = pathlib.Path(scratch)
        for mode in chosen.mode:
            RUNS[mode] = recordedRun.take_down(PROGRAM, PHONE, mode, SCRATCH)
        limits = [limit for mode in chosen.mode for limit in limits_of(mode, kinds)]
        faults = list(itertools.chain(*proof.in_parallel(run_limit, limits)))
    return proof.end("full disk", faults, f"{len(limits)} limits in {len(chosen.mode)} modes")


if __name__ == "__main__":
    sys.exit(main())
