# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""Every system call of the program fails, once and from there on: the phone keeps its files, and the run goes on.

Each run starts on a fresh phone. The calls of the program's children are left alone: the device's own copy command is
not ours to prove.
"""

import dataclasses
import itertools
import os
import pathlib
import subprocess
import sys

import iniText
import passJudgement
import passReports
import proof
import recordedRun
import sandbox
import wholeSaves

LONGEST_RUN = 30  # seconds
LONG = 1000        # calls
EVERY_ERRNO = "--every-errno"

WRITING = ("ENOSPC", "EIO", "EROFS", "EACCES", "EMFILE", "EDQUOT", "ENOMEM", "EINTR")
READING = ("EIO", "EACCES", "EMFILE", "ENOMEM", "EINTR")
ERRNOS = {
    "read": ("EIO", "ENOMEM", "EINTR"),
    "write": ("ENOSPC", "EIO", "EDQUOT", "ENOMEM", "EINTR"),
    "newfstatat": ("EIO", "EACCES", "ENOMEM"),
    "readlink": ("EIO", "EACCES", "ENOMEM"),
    "getdents64": ("EIO", "ENOMEM"),
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

# They change no file, whatever becomes of them.
WITHOUT_EFFECT = ("close", "utimensat", "socket", "connect", "munmap")


@dataclasses.dataclass(frozen=True)
class Fault:
    mode: str
    step: int  # its number among the steps of the undisturbed run
    errno: str
    goes_on: bool
    clean_up_fails: bool = False  # the removal of the temporary file as well

    def __str__(self):
        step = WHOLE[self.mode].run.steps[self.step]
        when = f"{step.number}{'+' if self.goes_on else ''}"
        where = recordedRun.path_of(step.call)
        clean_up = ", and unlink" if self.clean_up_fails else ""
        return f"{self.mode}: {step.call.name} {when} {self.errno} ({where}){clean_up}"


WHOLE = {}  # by mode, before the workers start
PROGRAM = None
PHONE = None
SCRATCH = None


# Which faults there are


def is_new_file(call):
    return call.name == "openat" and b"O_CREAT" in call.arguments


def errnos_of(call):
    if call.name == "openat":
        return WRITING if is_new_file(call) else READING
    return ERRNOS.get(call.name, ())


def kind_of(call):
    return "openat, new" if is_new_file(call) else call.name


def is_endless(step, errno, goes_on):
    """The C library itself waits for the shell again and again when it is interrupted."""
    return step.call.name == "wait4" and errno == "EINTR" and goes_on


def ways_of(mode, number):
    """Once and from there on; one of them in turn where that would be a second time: "dev" is "all" less its last pass,
    and the example phone makes it long."""
    if mode == "dev" and len(WHOLE[mode].run.steps) > LONG:
        return (number % 2 == 0,)
    return (False, True)


def faults_of(mode, next_errno):
    for number, step in enumerate(WHOLE[mode].run.steps):
        for goes_on in ways_of(mode, number):
            for errno in next_errno(step.call, goes_on):
                if not is_endless(step, errno, goes_on):
                    yield Fault(mode, number, errno, goes_on)


def failing_clean_ups(mode):
    """Every save fails, and its temporary file stays. Not in the modes that remove files of their own."""
    steps = WHOLE[mode].run.steps
    if any(step.call.name == "unlink" for step in steps):
        return
    for number, step in enumerate(steps):
        if step.call.name == "fsync" and step.save is not None:
            yield Fault(mode, number, "EIO", goes_on=False, clean_up_fails=True)


def in_rotation():
    """One errno for each call, the next one for the next call of its kind."""
    turns = {}

    def next_errno(call, goes_on):
        errnos = errnos_of(call)
        if not errnos:
            return ()
        turn = turns.setdefault((kind_of(call), goes_on), itertools.count())
        return (errnos[next(turn) % len(errnos)],)

    return next_errno


def every_errno(call, goes_on):
    return errnos_of(call)


# What a fault may do


def is_retried(step, fault):
    call = step.call
    is_interruption = fault.errno == "EINTR" and not fault.goes_on
    return is_interruption and (call.name in ("read", "write") or b"O_NOCTTY" in call.arguments)


def is_without_effect(step, fault):
    """Reports, flushes of folders, and what the run can do without."""
    call = step.call
    if call.name in WITHOUT_EFFECT or is_retried(step, fault):
        return True
    if call.name == "write":
        return call.descriptor in (1, 2)
    if call.name == "fsync":
        return step.save is None
    path = recordedRun.path_of(call)
    if call.name == "openat" and b"O_DIRECTORY" in call.arguments and b"O_NONBLOCK" not in call.arguments:
        return True  # to flush it
    is_opened = call.descriptor >= 0 or call.name == "openat"
    return is_opened and path.startswith(("/etc/", "pipe:", "/dev/", wholeSaves.CERTIFICATES))


def steps_hit(fault):
    steps = WHOLE[fault.mode].run.steps
    first = steps[fault.step]
    hit = steps[fault.step:] if fault.goes_on else [first]
    return [step for step in hit if step.call.name == first.call.name and not is_without_effect(step, fault)]


# What must have become of the phone


def judge(fault, found, result):
    """Every rule that the run broke."""
    whole = WHOLE[fault.mode]
    hit = steps_hit(fault)
    if not hit:
        problems = judge_untouched(whole.run, fault, found, result)
    elif all(step.save is not None for step in hit):
        problems = judge_saves(whole, fault, hit, found, result)
    elif fault.goes_on:
        problems = judge_last_passes(whole, fault, hit[0].place, found, result)
    else:
        problems = passJudgement.after_one_pass(whole, hit[0].place, found, result.stderr)
    return judge_temporary_files(fault, found) + [problem for problem in problems if problem]


def judge_temporary_files(fault, found):
    if not fault.clean_up_fails:
        return passJudgement.temporary_files(found)
    left = recordedRun.path_of(WHOLE[fault.mode].run.steps[fault.step].call)
    temporary = [path for path in found if recordedRun.is_temporary(path)]
    return [] if temporary == [left] else [f"temporary files are {temporary}"]


def judge_untouched(run, fault, found, result):
    yield from passJudgement.differences(run.after, found)
    if run.steps[fault.step].call.name != "write":
        yield "" if result.stdout == run.printed else f"printed {result.stdout!r}"
        yield passReports.why_not_all(run, result.stderr)


def judge_saves(whole, fault, hit, found, result):
    run = whole.run
    first = min(step.save for step in hit)
    if fault.clean_up_fails:
        yield from passJudgement.differences(without_file(run, first), found)
    elif fault.goes_on:
        yield from passJudgement.differences(wholeSaves.without_saves(run, lambda number: number >= first), found)
    else:
        yield from judge_one_save(whole, first, found)
    if hit[0].call.name != "write" or not fault.goes_on:
        yield passReports.why_not_all(run, result.stderr)


def without_file(run, number):
    """What stays in the way of a temporary file keeps every further save of that file from its work."""
    path = run.saves[number].path
    paths = (path, wholeSaves.SECOND_OF.get(path))
    return wholeSaves.without_saves(run, lambda other: other >= number and run.saves[other].path in paths)


def judge_one_save(whole, number, found):
    """The file of that save lacks its keys at most; every other file is as after the undisturbed run."""
    run = whole.run
    save = run.saves[number]
    followers = files_that_follow(run, save.path)
    for path in passJudgement.paths_of(run, found):
        if path == save.path:
            yield why_not_one_save_less(run, number, found)
        if recordedRun.is_temporary(path) or found.get(path) == run.after.get(path):
            continue
        if path != save.path and path not in followers:
            yield f"{path} is not as after an undisturbed run: {passJudgement.shown(found.get(path))}"
            continue
        reason = whole.why_not(path, found.get(path))
        yield f"{path} {reason}" if reason else ""


def content_before(run, number):
    path = run.saves[number].path
    old = run.before.get(path)
    contents = [old.content if old else b""] + [save.content for save in run.saves[:number] if save.path == path]
    return contents[-1]


def is_last_of_its_file(run, number):
    """The password pass holds on to its changes, and may save them with its next entry."""
    save = run.saves[number]
    is_held = run.passes[save.place].name == "TransPasswordFile"
    return not is_held and all(later.path != save.path for later in run.saves[number + 1:])


def why_not_one_save_less(run, number, found):
    path = run.saves[number].path
    if path not in found or path not in run.after:
        return ""
    content = found[path].content
    before = content_before(run, number)
    if is_last_of_its_file(run, number) and content != before:
        return f"{path} is not as before the save that failed: {content!r}"
    if not wholeSaves.is_ini(path):
        return ""
    missing = iniText.changed_keys(content, run.after[path].content)
    more = missing - iniText.changed_keys(before, run.saves[number].content)
    return f"{path}: other saves are missing too: {sorted(more)}" if more else ""


def files_that_follow(run, path):
    """The files whose content comes from that file, or that are not saved when that one could not be."""
    copies = wholeSaves.copied_to(run.mode, run.before)
    return [target for target, sources in copies.items() if path in sources] + [wholeSaves.SECOND_OF.get(path)]


def judge_last_passes(whole, fault, place, found, result):
    yield from passJudgement.after_last_passes(whole, place, found)
    if whole.run.steps[fault.step].call.name not in ("write", "brk", "mmap"):  # else there may be no way to report
        yield passReports.why_not_begun(whole.run, place, result.stderr)


# The runs


def injection(fault):
    step = WHOLE[fault.mode].run.steps[fault.step]
    name = step.call.name
    # The kernel's own failure of brk is no errno but an end of the heap that is not the one asked for.
    failure = "retval=0" if name == "brk" else f"error={fault.errno}"
    when = f"{step.number}{'+' if fault.goes_on else ''}"
    options = ["-e", f"trace={name},unlink", "-e", f"inject={name}:{failure}:when={when}"]
    if fault.clean_up_fails:
        options += ["-e", f"inject=unlink:error={fault.errno}:when=1+"]
    return ["strace", "-D", "-o", "/trace/record"] + options


def run_fault(fault):
    folder = SCRATCH / str(os.getpid())
    (folder / "trace").mkdir(exist_ok=True, parents=True)
    root = sandbox.make_phone(PHONE, folder / "phone")
    record = folder / "trace" / "record"
    record.write_bytes(b"")
    try:
        result = sandbox.run(PROGRAM, root, fault.mode, injection(fault),
                             ["--bind", str(folder / "trace"), "/trace"], timeout=LONGEST_RUN)
    except subprocess.TimeoutExpired:
        return [f"{fault}: hangs"]
    problems = judge(fault, sandbox.files_of(root), result)
    if result.returncode != 0:
        problems.append(f"exit status {result.returncode}")
    if b"(INJECTED)" not in record.read_bytes():
        problems.append("the call was not reached")
    if fault.clean_up_fails and sandbox.run(PROGRAM, root, fault.mode).returncode == 0:
        problems += [f"{problem} by the next run" for problem in passJudgement.temporary_files(sandbox.files_of(root))]
    return [f"{fault}: {problem}" for problem in problems]


def main():
    global PROGRAM, PHONE, SCRATCH
    has_every_errno = EVERY_ERRNO in sys.argv
    sys.argv = [argument for argument in sys.argv if argument != EVERY_ERRNO]
    chosen = proof.parse_arguments(__doc__)
    proof.skip_without_sandbox()
    PROGRAM, PHONE = chosen.program, chosen.phone
    next_errno = every_errno if has_every_errno else in_rotation()
    with proof.scratch_folder() as scratch:
        SCRATCH = pathlib.Path(scratch)
        WHOLE.update(wholeSaves.of_modes(PROGRAM, PHONE, chosen.mode, SCRATCH, after_failed_reads=True))
        faults = [fault for mode in chosen.mode for fault in (*faults_of(mode, next_errno), *failing_clean_ups(mode))]
        problems = list(itertools.chain(*proof.in_parallel(run_fault, faults)))
    return proof.end("failing calls", problems, f"{len(faults)} errors in {len(chosen.mode)} modes")


if __name__ == "__main__":
    sys.exit(main())
