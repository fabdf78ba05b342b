# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""Every system call of the program fails, once and from there on: the phone keeps its files, and the run continues.

Each run starts on a fresh phone. The calls of the program's children do not fail: this proof is not about the device's
own copy command.
"""

import dataclasses
import errno
import itertools
import os
import pathlib
import subprocess
import sys

import devicePaths
import phones
import proof
from model import comparison, dependence, fileByFile, keyByKey, oneStep, recordedRun, systemLog

LONGEST_RUN = 30   # seconds
LONG = 1000        # calls
WAITING_RUNS = 16  # at a time
EVERY_ERRNO = "--every-errno"

WRITING = ("ENOSPC", "EIO", "EROFS", "EACCES", "EMFILE", "EDQUOT", "ENOMEM", "EINTR")
READING = ("EIO", "EACCES", "EMFILE", "ENOMEM", "EINTR")
ERRNOS = {
    "read": ("EIO", "ENOMEM", "EINTR"),
    "write": ("ENOSPC", "EIO", "EDQUOT", "ENOMEM", "EINTR"),
    "newfstatat": ("EIO", "EACCES", "ENOMEM"),
    "faccessat2": ("EIO", "EACCES", "EROFS"),
    "readlink": ("EIO", "EACCES", "ENOMEM"),
    "getdents64": ("EIO", "ENOMEM"),
    "flock": ("ENOLCK", "EINTR", "EIO"),
    "fchmod": ("ENOSPC", "EIO", "EROFS", "EDQUOT", "EACCES"),
    "fchown": ("ENOSPC", "EIO", "EROFS", "EDQUOT", "EACCES"),
    "fsync": ("ENOSPC", "EIO", "EROFS", "EDQUOT", "EINTR"),
    "rename": ("ENOSPC", "EIO", "EROFS", "EACCES", "EDQUOT", "ENOMEM"),
    "unlink": ("EIO", "EROFS", "EACCES", "ENOMEM"),
    "utimensat": ("EIO", "EROFS", "EACCES"),
    "close": ("ENOSPC", "EIO", "EDQUOT", "EINTR"),
    "socket": ("EACCES", "EMFILE", "ENOMEM"),
    "connect": ("EACCES", "ENOMEM", "EINTR"),
    "clone3": ("ENOMEM",),
    "wait4": ("EINTR",),
    "mmap": ("ENOMEM", "EMFILE"),
    "munmap": ("ENOMEM",),
    "brk": ("ENOMEM",),
}
FOR_WANT_OF_ROOM = ("ENOSPC", "EDQUOT")

# They change no file, whether or not they fail.
WITHOUT_EFFECT = ("close", "utimensat", "socket", "connect", "munmap", "flock")
OF_MEMORY = ("brk", "mmap")


@dataclasses.dataclass(frozen=True)
class Fault:
    mode: str
    place: int  # its index in the calls of the undisturbed run
    errno: str
    goes_on: bool
    clean_up_fails: bool = False  # the removal of the temporary file fails too

    def __str__(self):
        step = self.step
        when = f"{step.number}{'+' if self.goes_on else ''}"
        clean_up = ", and unlink" if self.clean_up_fails else ""
        return f"{self.mode}: {step.call.name} {when} {self.errno} ({recordedRun.path_of(step.call)}){clean_up}"

    @property
    def judge(self):
        return JUDGES[self.mode]

    @property
    def run(self):
        return JUDGES[self.mode].run

    @property
    def step(self):
        return self.run.calls[self.place]


JUDGES = {}  # by mode, before the workers start
PROGRAM = None
SCRATCH = None


# The faults


def is_new_file(call):
    return call.name == "openat" and b"O_CREAT" in call.arguments


def errnos_of(call):
    if call.name == "openat":
        return WRITING if is_new_file(call) else READING
    return ERRNOS.get(call.name, ())


def is_endless(call, error, goes_on):
    """When interrupted, the C library waits again for the shell, and the program for the lock."""
    return call.name in ("wait4", "flock") and error == "EINTR" and goes_on


def only_waits(fault):
    """The program tries a report for ten seconds."""
    return fault.step.call.name == "write" and fault.errno == "EINTR" and fault.goes_on


def ways_of(mode, place):
    """Once and from there on; one of them in turn where that would be a second time: "dev" is "all" less its last pass,
    and the example phone makes it long (see also `proof.is_brief`)."""
    if mode == "dev" and (proof.is_brief or len(JUDGES[mode].run.calls) > LONG):
        return (place % 2 == 0,)
    return (False, True)


def faults_of(mode, next_errno):
    for place, step in enumerate(JUDGES[mode].run.calls):
        for goes_on in ways_of(mode, place):
            for error in next_errno(step.call, goes_on):
                if not is_endless(step.call, error, goes_on):
                    yield Fault(mode, place, error, goes_on)


def failing_clean_ups(mode):
    """Every save fails, and its temporary file stays. Not in the modes that remove files of their own."""
    steps = JUDGES[mode].run.calls
    if any(step.call.name == "unlink" and recordedRun.path_of(step.call) != devicePaths.RECORD for step in steps):
        return
    for place, step in enumerate(steps):
        if step.call.name == "fsync" and devicePaths.is_temporary(recordedRun.path_of(step.call)):
            yield Fault(mode, place, "EIO", goes_on=False, clean_up_fails=True)


def in_rotation():
    """One errno for each call, the next one for the next call of its kind; one more if the program tries again."""
    turns = {}

    def next_errno(call, goes_on):
        errnos = errnos_of(call)
        if not errnos:
            return ()
        turn = turns.setdefault((call.name, is_new_file(call), goes_on), itertools.count())
        chosen = errnos[next(turn) % len(errnos)]
        return (chosen, errnos[0]) if is_retried(call, chosen, goes_on) else (chosen,)

    return next_errno


def every_errno(call, goes_on):
    return errnos_of(call)


# The effects that a fault may have


def is_retried(call, error, goes_on):
    is_tried_again = call.name in ("read", "write", "wait4") or b"O_NOCTTY" in call.arguments
    return error == "EINTR" and not goes_on and is_tried_again


def is_to_flush(call):
    """A folder that is opened for a flush or lock, or a certificate that the copy command has made."""
    if call.name != "openat" or b"O_CREAT" in call.arguments:
        return False
    is_certificate = recordedRun.path_of(call).startswith(devicePaths.USER_CERTIFICATES)
    return b"O_NONBLOCK" not in call.arguments or (is_certificate and b"O_NOFOLLOW" not in call.arguments)


def is_without_effect(call, fault):
    """Reports, flushes of folders, and other calls that the run does not need."""
    path = recordedRun.path_of(call)
    if call.name in WITHOUT_EFFECT or is_retried(call, fault.errno, fault.goes_on) or is_to_flush(call):
        return True
    if call.name == "fsync" and not devicePaths.is_of_commit(path):
        return True
    if call.name == "unlink" and call.result < 0:
        return True
    return call.descriptor in (0, 1, 2) or path.startswith(("/etc/", "pipe:", "/dev/"))


def hit_by(fault):
    """The failing calls whose failure may be visible."""
    steps = fault.run.calls[fault.place:] if fault.goes_on else [fault.step]
    return [step.call for step in steps
            if step.call.name == fault.step.call.name and not is_without_effect(step.call, fault)]


def is_of_start(fault):
    """The start looks for the record, the note and the marker, the marker last."""
    last = max(place for place, step in enumerate(fault.run.calls)
               if recordedRun.path_of(step.call) == devicePaths.MARKER and step.call.name == "newfstatat")
    return fault.place <= last


def is_of_commit(call):
    """The commit writes. Its reads of the note count as reads."""
    path = recordedRun.path_of(call)
    if path == devicePaths.NOTE:
        return is_new_file(call) or call.name in ("write", "fsync", "unlink")
    return call.name in ("rename", "unlink") or devicePaths.is_of_commit(path)


# The required state of the phone


def judge(fault, found, settled, result, logged):
    """Every rule that the run broke. `settled` is the phone after the next run has started."""
    hit = hit_by(fault)
    told = told_unsaved(logged)
    if not hit:
        return exactly(fault.run.after, settled) + outputs_differ(fault, result) + [f"told {path}" for path in told]
    if is_of_start(fault) and not fault.goes_on:
        return oneStep.faults_of(PROGRAM, fault.run, found, worker_folder() / "again")
    if all(is_of_commit(call) for call in hit):
        faults = judge_commit(fault, hit, settled, told)
        return faults + outputs_differ(fault, result)
    return judge_reading(fault, hit, settled) + passes_missing(fault, result)


def exactly(expected, found):
    kept = {path: entry for path, entry in found.items() if not devicePaths.is_temporary(path)}
    return comparison.differences(expected, kept)


def outputs_differ(fault, result):
    """The commit reports nothing on the outputs. One of them may be the failing file."""
    if fault.step.call.name == "write":
        return []
    faults = [] if result.stdout == fault.run.printed else [f"printed {result.stdout!r}"]
    is_same = sorted(result.stderr.splitlines()) == sorted(fault.run.reports.splitlines())
    return faults if is_same else faults + [f"reported {result.stderr!r}"]


def told_unsaved(messages):
    """{path: error} of the messages to the system log."""
    parts = [message.partition(b": cannot save ")[2] for message in messages]
    return dict(part.decode().rpartition(": ")[::2] for part in parts if part)


def judge_commit(fault, hit, settled, told):
    run = fault.run
    if fault.goes_on or fault.clean_up_fails:
        unsaved = {path for path in fileByFile.changed(run)
                   if path in run.after and settled.get(path) == run.before.get(path)}
        return fileByFile.faults_of(run, settled) + [f"{path} was not told" for path in sorted(unsaved - told.keys())]
    expected, unsaved = expected_commit(fault, hit[0])
    faults = exactly(expected, settled)
    messages = {path: os.strerror(getattr(errno, fault.errno)) for path in unsaved}
    return faults if told == messages else faults + [f"told {told} instead of {messages}"]


def expected_commit(fault, call):
    """The phone after one failed call of the commit, and the files that could not be saved."""
    run, path = fault.run, recordedRun.path_of(call).removesuffix(devicePaths.TEMPORARY_SUFFIX)
    if path == devicePaths.RECORD:
        return (run.after if call.name == "unlink" else fileByFile.after_moves(run)), ()
    if path == devicePaths.NOTE:
        return run.after, ()  # if it stays, the record stays too, and the next run finishes it
    if fault.errno in FOR_WANT_OF_ROOM and call.name != "rename":
        return fileByFile.after_moves(run), ()
    return fileByFile.without_changes(run, run.after, [path]), (path,)


def judge_reading(fault, hit, settled):
    if fault.goes_on or hit[0].name in OF_MEMORY:
        return fault.judge.faults_of(settled)
    path = recordedRun.path_of(hit[0]).rstrip("/")
    if hit[0].name == "clone3":
        path = devicePaths.USER_CERTIFICATES
    dependent = dependence.dependent_on(PROGRAM, fault.run, path, worker_folder() / "again")
    return fault.judge.faults_of(settled, dependent)


def passes_missing(fault, result):
    """Every XML translation has begun. A run that cannot read the files of an earlier one does nothing."""
    if is_of_start(fault) or fault.step.call.name == "write" or fault.step.call.name in OF_MEMORY:
        return []
    begun = [line for line in fault.run.reports.splitlines() if line.startswith(b"chTraceStack: enter")
             and line.endswith(b"V4XToV50")]
    return [f"missing: {line!r}" for line in begun if line not in result.stderr.splitlines()]


def judge_temporary_files(fault, found):
    """No temporary file is left without a record that names it."""
    left = [path for path in found if devicePaths.is_temporary(path)]
    expected = [recordedRun.path_of(fault.step.call)] if fault.clean_up_fails else []
    return [] if left == expected or devicePaths.RECORD in found else [f"temporary files are {left}"]


# The runs


def worker_folder():
    folder = SCRATCH / str(os.getpid())
    folder.mkdir(exist_ok=True)
    return folder


def injection(fault):
    name = fault.step.call.name
    # The kernel reports a failure of brk not by an errno but by another end of the heap than requested.
    failure = "retval=0" if name == "brk" else f"error={fault.errno}"
    when = f"{fault.step.number}{'+' if fault.goes_on else ''}"
    options = ["-e", f"trace={name},unlink", "-e", f"inject={name}:{failure}:when={when}"]
    if fault.clean_up_fails:
        options += ["-e", f"inject=unlink:error={fault.errno}:when=1+"]
    return ["strace", "-D", "-o", "/trace/record"] + options


def settled_phone(found):
    if devicePaths.RECORD not in found and devicePaths.NOTE not in found:
        return found
    root = phones.make_from(found, worker_folder() / "settled")
    oneStep.settle(PROGRAM, root)
    return phones.snapshot(root)


def run_fault(fault):
    folder = worker_folder()
    (folder / "trace").mkdir(exist_ok=True)
    root = phones.make_from(fault.run.before, folder / "phone")
    record = folder / "trace" / "record"
    record.write_bytes(b"")
    log = systemLog.SystemLog(folder)
    try:
        result = phones.run(PROGRAM, root, fault.mode, injection(fault),
                            ["--bind", str(folder / "trace"), "/trace", *log.options], timeout=LONGEST_RUN)
    except subprocess.TimeoutExpired:
        return [f"{fault}: hangs"]
    finally:
        logged = log.messages()
        log.close()
    found = phones.snapshot(root)
    faults = judge_temporary_files(fault, found) + judge(fault, found, settled_phone(found), result, logged)
    if result.returncode != 0:
        faults.append(f"exit status {result.returncode}")
    if b"(INJECTED)" not in record.read_bytes():
        faults.append("the call was not reached")
    return [f"{fault}: {one}" for one in faults]


def main():
    global PROGRAM, SCRATCH
    has_every_errno = EVERY_ERRNO in sys.argv
    sys.argv = [argument for argument in sys.argv if argument != EVERY_ERRNO]
    chosen = proof.parse_arguments(__doc__)
    proof.skip_without_sandbox()
    PROGRAM = chosen.program
    next_errno = every_errno if has_every_errno else in_rotation()
    with proof.scratch_folder() as scratch:
        SCRATCH = pathlib.Path(scratch)
        log = systemLog.SystemLog(SCRATCH)
        JUDGES.update(keyByKey.of_modes(PROGRAM, chosen.phone, chosen.mode, SCRATCH, log.options))
        log.close()
        faults = [fault for mode in chosen.mode for fault in (*faults_of(mode, next_errno), *failing_clean_ups(mode))]
        waiting = [fault for fault in faults if only_waits(fault)]
        others = [fault for fault in faults if not only_waits(fault)]
        found = (*proof.in_parallel(run_fault, waiting, at_once=1, workers=WAITING_RUNS),
                 *proof.in_parallel(run_fault, others))
        problems = list(itertools.chain(*found))
    return proof.end("failing calls", problems, f"{len(faults)} errors in {len(chosen.mode)} modes")


if __name__ == "__main__":
    sys.exit(main())
