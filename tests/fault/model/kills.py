# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""Kills a run right before one of its calls."""

import collections

import phones

# The calls of the driver's own process. Its children are the shell and the device's copy command.
CALLS = ("openat", "unlink", "write", "fchmod", "fchown", "fsync", "rename", "utimensat", "flock", "wait4", "exit_group")
COPYING = "copy_file_range"
OPTIONS = ["-y", "-xx", "-s", "0", "-e", "trace=" + ",".join(CALLS + (COPYING,))]  # of the record to take the kills from
DRIVER = 1
RUN_ENDED = 0
KILLED = 128 + 9


def all_of(run):
    """(call, N) for every N of a recorded run, and a kill of only the copy command while it copies."""
    counts = collections.Counter(call.name for call in run.calls if call.process == DRIVER)
    kills = [(name, number) for name in CALLS for number in range(1, counts[name] + 1)]
    return kills + [(COPYING, 1)] * any(call.name == COPYING for call in run.calls)


def killer(call, number):
    """The command that starts the program and kills it at that call."""
    return ["strace", "-D", "-o", "/dev/null", "-e", f"trace={call}", "-e", f"inject={call}:signal=SIGKILL:when={number}"]


def kill(program, root, mode, call, number):
    """Runs the mode on the phone until then. Returns the faults of the kill itself."""
    is_copy = call == COPYING
    wrapper = killer(call, number) + ["-f"] * is_copy
    status = phones.run(program, root, mode, wrapper).returncode
    # Only the copy command is killed: the run continues without it.
    return [] if status == (RUN_ENDED if is_copy else KILLED) else [f"not killed: exit status {status}"]
