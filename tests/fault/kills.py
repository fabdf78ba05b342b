# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""Kills a run right before one of its calls."""

import collections

import sandbox
import trace

# What the driver's own process calls. Its children are the shell and the device's copy command.
CALLS = ("open", "openat", "unlink", "unlinkat", "write", "fchmod", "fchown", "fsync", "rename", "renameat",
         "utimensat", "wait4", "exit_group")
COPYING = "copy_file_range"
DRIVER = 1
RUN_ENDED = 0
KILLED = 128 + 9


def all_of(program, run, scratch):
    """(call, N) for every N of a recorded run, and the copy command alone killed while it copies."""
    root = sandbox.make_from(run.old, scratch / "phone")
    options = ["-y", "-xx", "-s", "0", "-e", "trace=" + ",".join("?" + call for call in CALLS)]
    _, calls = trace.record(program, root, run.mode, scratch / "trace", options)
    counts = collections.Counter(call.name for call in calls if call.process == DRIVER)
    kills = [(name, number) for name in CALLS for number in range(1, counts[name] + 1)]
    return kills + [(COPYING, 1)] * any(call.name == COPYING for call in run.calls)


def kill(program, root, mode, call, number):
    """Runs the mode on the phone until then. What went wrong with the kill itself, if anything."""
    killer = ["strace", "-D", "-f", "-o", "/dev/null", "-e", f"trace={call}",
              "-e", f"inject={call}:signal=SIGKILL:when={number}"]
    status = sandbox.run(program, root, mode, killer).returncode
    # The copy command dies alone: the run goes on without it.
    return [] if status == (RUN_ENDED if call == COPYING else KILLED) else [f"not killed: exit status {status}"]
