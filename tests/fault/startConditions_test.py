# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""The program is started under odd conditions, such as an upgrade script may leave: the phone ends as after any other
run."""

import dataclasses
import glob
import itertools
import os
import re
import stat
import subprocess
import sys

import devicePaths
import phones
import proof
from model import accountCopy, comparison, systemLog

USUAL_UMASK = 0o022
NEW_FILE_MODE = 0o644
FAKE_CLOCK = next(iter(glob.glob("/usr/lib/*/faketime/libfaketime.so.1")), None)

# The beginning of a message to the system log: priority, time, and our name.
LOGGED = re.compile(rb"<\d+>.{16}kestrune: ")

# Bits of the files before the run, in turn; a save must keep them.
BITS = (0o600, 0o640, 0o644, 0o664, 0o755)


@dataclasses.dataclass(frozen=True)
class Condition:
    name: str
    preparation: str = ""          # shell commands in the sandbox before the program replaces the shell
    wrapper: tuple = ()            # or a command that starts the program
    options: tuple = ()            # of the sandbox
    environment: tuple = ()
    umask: int = USUAL_UMASK
    unread_output: bool = False    # both outputs are a pipe whose reader has gone
    time: int = None               # of every file of the phone, in seconds since 1970
    system_log: bool = False       # a system log listens at /dev/log
    writable: bool = True          # the folders of the phone
    cannot_copy: bool = False      # the device's own copy command cannot work


def closed_descriptors():
    """With a system log, whose connection must not get the number of an output."""
    for count in range(4):
        for closed in itertools.combinations((0, 1, 2), count):
            preparation = "; ".join(f"exec {number}>&-" for number in closed) or ":"
            name = "closed descriptors " + (" ".join(map(str, closed)) or "none")
            yield Condition(name, preparation, system_log=True)
            yield Condition(name + ", no /dev/null", preparation, options=("--tmpfs", "/dev"), system_log=True)


def clocks():
    for year, seconds in (("1970", 1), ("2040", 2208988800 + 86400)):
        if FAKE_CLOCK is not None:
            # The date is the start of a running clock.
            yield Condition(f"clock of {year}", time=seconds, environment=(
                ("LD_PRELOAD", FAKE_CLOCK), ("FAKETIME", f"@{year}-01-02 00:00:00")))
        yield Condition(f"files dated {year}", time=seconds)


CONDITIONS = (
    *closed_descriptors(),
    Condition("outputs on /dev/full", "exec >/dev/full 2>&1"),
    Condition("input on /dev/full", "exec </dev/full"),
    Condition("outputs on a pipe without reader", unread_output=True),
    Condition("umask 0", "umask 0", umask=0),
    Condition("umask 0777", "umask 0777", umask=0o777),
    Condition("umask 0027", "umask 0027", umask=0o027),
    Condition("empty environment", wrapper=("env", "-i")),
    Condition("removed working folder", "mkdir /gone/away; cd /gone/away; rmdir /gone/away",
              options=("--tmpfs", "/gone")),
    Condition("4 descriptors", "ulimit -n 4", cannot_copy=True),
    Condition("4 descriptors and a system log", "ulimit -n 4", cannot_copy=True, system_log=True),
    Condition("5 descriptors", "ulimit -n 5"),
    Condition("256 KiB stack", "ulimit -s 256"),
    Condition("SIGCHLD ignored", wrapper=("env", "--ignore-signal=CHLD")),
    Condition("all signals ignored", wrapper=("env", "--ignore-signal")),
    *clocks(),
    Condition("read-only firmware", options=("--remount-ro", "/phone")),
    Condition("read-only root", options=("--remount-ro", "/config", "--remount-ro", "/phone", "--remount-ro", "/tmp"),
              writable=False),
)


def prepare(phone, mode, root):
    """The phone before the run: odd permission bits everywhere, and no destinations of copies, so that the copies' own
    bits show."""
    phones.make_phone(phone, root)
    if mode in devicePaths.COPIES_TO:
        (root / devicePaths.COPIES_TO[mode][1:]).unlink(missing_ok=True)
    for number, path in enumerate(sorted(comparison.files_of(root))):
        (root / path[1:]).chmod(BITS[number % len(BITS)])
        if os.geteuid() == 0:
            os.chown(root / path[1:], 1000 + number, 2000 + number)
    return root


def date_files(root, seconds):
    for folder, folders, files in os.walk(root):
        for name in folders + files:
            os.utime(os.path.join(folder, name), (seconds, seconds))


def expected_bits(path, mode, before, umask):
    """An existing file keeps its bits, a copy gets those of its source, a translation those of a new file that its
    source also has, the device's own copy those of its source less the umask."""
    if path in before:
        return before[path].mode
    if path == devicePaths.COPIES_TO.get(mode):
        return before[accountCopy.source_of(mode, before)].mode
    if path.startswith(devicePaths.USER_CERTIFICATES):
        name = path.removeprefix(devicePaths.USER_CERTIFICATES)
        return before[devicePaths.FACTORY_CERTIFICATES + name].mode & ~umask
    source = next((old for old, new in devicePaths.XML_DATA.items() if path in new), None)
    withheld = ~before[source].mode & ~stat.S_IWUSR if source else 0
    return NEW_FILE_MODE & ~umask & ~withheld


def expected_phone(condition, mode, before, ordinary):
    if not condition.writable:
        return dict(before)
    expected = {}
    for path, entry in ordinary.items():
        bits = expected_bits(path, mode, before, condition.umask)
        expected[path] = dataclasses.replace(entry, mode=bits)
    return expected


def outputs(condition):
    """The destinations of both outputs, and the files to close afterwards."""
    if not condition.unread_output:
        return {"stdout": subprocess.PIPE, "stderr": subprocess.PIPE}, []
    reader, writer = os.pipe()
    os.close(reader)
    return {"stdout": writer, "stderr": writer}, [writer]


def start(program, root, mode, condition, folder):
    """Runs the program to its end; returns its exit status, its standard error, and the logged messages.

    A shell waits for it: a process 1 would survive the signals that end any other.
    """
    script = f'set -e; {condition.preparation or ":"}; set +e; "$@"; exit $?'
    log = systemLog.SystemLog(folder)
    options = [*condition.options, *(log.options if condition.system_log else [])]
    command = phones.command(program, root, [mode], ["sh", "-c", script, "sh", *condition.wrapper], options)
    streams, opened = outputs(condition)
    try:
        result = subprocess.run(command, stdin=subprocess.DEVNULL, timeout=60, check=False,
                                env={"PATH": "/usr/bin:/bin", **dict(condition.environment)}, **streams)
        return result.returncode, result.stderr or b"", log.messages()
    finally:
        log.close()
        for descriptor in opened:
            os.close(descriptor)


def compare(condition, mode, before, ordinary, found):
    expected = expected_phone(condition, mode, before, ordinary)
    if condition.cannot_copy:
        for path in expected.keys() - before.keys():
            if path.startswith(devicePaths.USER_CERTIFICATES):
                found.setdefault(path, expected[path])
    if condition.umask & stat.S_IRUSR and os.geteuid() != 0:
        # Its second save cannot read the file of the first one: only root can.
        expected[devicePaths.HAND_OVER] = found.get(devicePaths.HAND_OVER)
    return comparison.differences(expected, found)


def check(job):
    """The faults after a run of one mode under one condition."""
    program, scratch, phone, mode, condition = job
    folder = comparison.worker_folder(scratch)
    root = prepare(phone, mode, folder / "phone")
    before = comparison.files_of(root)
    start(program, root, mode, Condition("ordinary"), folder)
    ordinary = comparison.files_of(root)

    root = prepare(phone, mode, folder / "phone")
    if condition.time is not None:
        date_files(root, condition.time)
    status, reports, logged = start(program, root, mode, condition, folder)
    found = comparison.files_of(root)

    faults = [] if status == 0 else [f"exit status {status}: {reports.decode(errors='replace')}"]
    faults += [f"not for the system log: {message!r}" for message in logged if not LOGGED.match(message)]
    faults += compare(condition, mode, before, ordinary, found)
    return [f"mode {mode}, {condition.name}: {fault}" for fault in faults]


def main():
    chosen = proof.parse_arguments(__doc__)
    proof.skip_without_sandbox(with_strace=False)
    os.umask(USUAL_UMASK)
    with proof.scratch_folder() as scratch:
        jobs = [(chosen.program, scratch, chosen.phone, mode, condition)
                for mode in chosen.mode for condition in CONDITIONS]
        faults = sum(proof.in_parallel(check, jobs), [])
    if FAKE_CLOCK is None:
        print("not proven: a clock that is wrong by decades, since libfaketime is not installed (files so dated are)")
    return proof.end("startConditions", faults, f"{len(jobs)} starts in {len(chosen.mode)} modes")


if __name__ == "__main__":
    sys.exit(main())
