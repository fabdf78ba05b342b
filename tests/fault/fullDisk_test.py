# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""Short writes and full disks: what does not fit is not saved, and nothing that was there goes.

Short writes come from a limit on the size of files, at each length that a save may be cut at. Full disks are file
systems in memory with room for the phone and a little more.
"""

import dataclasses
import itertools
import os
import pathlib
import shutil
import subprocess
import sys

import passJudgement
import passReports
import proof
import recordedRun
import sandbox
import wholeSaves

LONGEST_RUN = 30  # seconds
PAGE = 4096
MOST_FREE = 64 * 1024
COULD_NOT_FILL = 99
BALLAST = "/tmp/ballast"

# On the example phone: these and those around the size of each save.
LENGTHS_APART = 64

# The phone is copied to the disks under test, and what became of it is copied back. Both are no part of the run.
SHELL = f"""
cp -a /image/config/. /config/ && cp -a /image/tmp/. /tmp/ || exit {COULD_NOT_FILL}
"$@"
status=$?
cp -a /config/. /result/config/ && cp -a /tmp/. /result/tmp/ || exit {COULD_NOT_FILL}
exit $status
"""


@dataclasses.dataclass(frozen=True)
class Limit:
    mode: str
    kind: str  # "length" or "free"
    size: int

    def __str__(self):
        limit = "files of at most" if self.kind == "length" else "a disk with room for"
        return f"{self.mode}: {limit} {self.size} bytes"


WHOLE = {}  # by mode, before the workers start
PROGRAM = None
PHONE = None
SCRATCH = None


# Which limits there are


def largest_save(run):
    return max((len(save.content) for save in run.saves), default=0)


def lengths_of(run):
    largest = largest_save(run)
    if PHONE == "small":
        return range(largest + 2)
    edges = {len(save.content) + more for save in run.saves for more in (-1, 0, 1)}
    return sorted(edges | set(range(0, largest + 2, LENGTHS_APART)))


def limits_of(mode):
    for length in lengths_of(WHOLE[mode].run):
        yield Limit(mode, "length", length)
    for free in range(0, MOST_FREE + 1, PAGE):
        yield Limit(mode, "free", free)


# What must have become of the phone


def judge(limit, found, result):
    whole = WHOLE[limit.mode]
    problems = passJudgement.temporary_files(found)
    if limit.kind == "length":
        problems += judge_length(whole, limit.size, found)
    else:
        problems += judge_free(whole, limit.size, found)
    reason = passReports.why_not_all(whole.run, result.stderr)
    return problems + ([reason] if reason else [])


def judge_length(whole, length, found):
    run = whole.run
    if length == 0 or length >= largest_save(run):
        nothing_saved = wholeSaves.without_saves(run, lambda number: length == 0)
        return passJudgement.differences(with_cut_certificates(run, nothing_saved, length), found)
    expected = with_cut_certificates(run, single_saves(run, length), length)
    problems = passJudgement.differences(expected, {path: found[path] for path in found if path in expected})
    return problems + not_whole(whole, found, expected)


def single_saves(run, length):
    """The files that are saved once and not made of others: it is their size alone that decides."""
    expected = {}
    by_path = {}
    for save in run.saves:
        by_path.setdefault(save.path, []).append(save)
    fits = {path: len(saves[0].content) <= length for path, saves in by_path.items()}
    for path, saves in by_path.items():
        if len(saves) > 1 or wholeSaves.is_ini(path):
            continue
        needed = [path] + [first for first, second in wholeSaves.SECOND_OF.items() if second == path]
        phone = run.after if all(fits[name] for name in needed) else run.before
        if path in phone:
            expected[path] = phone[path]
    return expected


def with_cut_certificates(run, expected, length):
    """The device's own copy leaves what it could write."""
    copied = [path for path in run.after if path.startswith(wholeSaves.CERTIFICATES) and path not in run.before]
    cut = {path: dataclasses.replace(run.after[path], content=run.after[path].content[:length]) for path in copied}
    return {**expected, **cut}


def not_whole(whole, found, but_for):
    run = whole.run
    problems = []
    for path in passJudgement.paths_of(run, found):
        if path in but_for or recordedRun.is_temporary(path) or found.get(path) == run.after.get(path):
            continue
        reason = whole.why_not(path, found.get(path))
        problems += [f"{path} {reason}"] if reason else []
    return problems


def pages(content):
    return -(-len(content) // PAGE)


def most_pages_needed(run):
    """How many pages beside those of the phone are enough for the undisturbed run at its fullest."""
    held = {path: pages(entry.content) for path, entry in run.before.items()}
    before = most = sum(held.values())
    for save in run.saves:
        most = max(most, sum(held.values()) + pages(save.content))
        held[save.path] = pages(save.content)
    certificates = [entry for path, entry in run.after.items() if path.startswith(wholeSaves.CERTIFICATES)]
    return most - before + sum(pages(entry.content) for entry in certificates)


def judge_free(whole, free, found):
    run = whole.run
    certificates = [path for path in found if path.startswith(wholeSaves.CERTIFICATES)]
    if free >= most_pages_needed(run) * PAGE:
        return passJudgement.differences(run.after, found)
    if free == 0:
        expected = with_cut_certificates(run, wholeSaves.without_saves(run, lambda number: True), length=0)
        return passJudgement.differences(expected, found)
    cut = {path for path in certificates if not found[path].content or found[path] == run.after.get(path)}
    return not_whole(whole, found, but_for=cut)


# The runs


def size_of(root):
    return sum(-(-path.lstat().st_size // PAGE) * PAGE for path in root.rglob("*") if path.is_file())


def disk(root, tree, free):
    return ["--size", str(size_of(root / tree) + free), "--tmpfs", f"/{tree}"]


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
    result = sandbox.run(PROGRAM, root, limit.mode, ["sh", "-c", SHELL, "sh"], options, timeout=LONGEST_RUN)
    found = sandbox.files_of(result_folder)
    del found[BALLAST]
    return result, found


def run_with_short_writes(root, limit):
    # Not as process 1, which the signal of a short write would not end.
    shell = f'prlimit --fsize={limit.size} "$@"; exit $?'
    result = sandbox.run(PROGRAM, root, limit.mode, ["sh", "-c", shell, "sh"], timeout=LONGEST_RUN)
    return result, sandbox.files_of(root)


def run_limit(limit):
    folder = SCRATCH / str(os.getpid())
    folder.mkdir(exist_ok=True)
    root = sandbox.make_phone(PHONE, folder / "phone")
    try:
        if limit.kind == "length":
            result, found = run_with_short_writes(root, limit)
        else:
            result, found = run_on_small_disk(folder, root, limit)
    except subprocess.TimeoutExpired:
        return [f"{limit}: hangs"]
    problems = judge(limit, found, result)
    if result.returncode != 0:
        problems.append(f"exit status {result.returncode}: {result.stderr[-200:]!r}")
    return [f"{limit}: {problem}" for problem in problems]


def main():
    global PROGRAM, PHONE, SCRATCH
    chosen = proof.parse_arguments(__doc__)
    proof.skip_without_sandbox()
    PROGRAM, PHONE = chosen.program, chosen.phone
    with proof.scratch_folder() as scratch:
        SCRATCH = pathlib.Path(scratch)
        WHOLE.update(wholeSaves.of_modes(PROGRAM, PHONE, chosen.mode, SCRATCH))
        limits = [limit for mode in chosen.mode for limit in limits_of(mode)]
        problems = list(itertools.chain(*proof.in_parallel(run_limit, limits)))
    return proof.end("full disk", problems, f"{len(limits)} limits in {len(chosen.mode)} modes")


if __name__ == "__main__":
    sys.exit(main())
