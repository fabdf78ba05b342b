# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""The init script, under BusyBox's shell and tools and under those of Debian, and the page that describes how to use
it. A stub replaces the program: it changes the upgrade's marker as the program does, and as the test requires."""

import os
import pathlib
import re
import shutil
import signal
import subprocess
import tempfile
import time
import unittest

import packaging

LIMIT_SECONDS = 2
TOOLS = ("cat", "head", "mv", "rm", "sed", "sh", "sleep", "sync", "timeout")

# A mode does its work only if it is the first line, and removes its line; the record is a commit that is not finished.
# "calls" gets each mode that is called, "done" each mode that has done its work and each step of the firmware.
STUB = r"""
mode=$1
cd "${0%/*}"
echo "$mode" >>calls

first_line() {
    first=
    [ ! -f kestrune-pending ] || IFS= read -r first <kestrune-pending
}

take_off() {
    first_line
    [ "$first" = "$1" ] || return
    sed 1d kestrune-pending >stub.new
    mv stub.new kestrune-pending
}

at_the_start() { :; }
at_work() { :; }
in_the_commit() { :; }
@PLANTED@
at_the_start
had_marker=
[ ! -e kestrune-pending ] || had_marker=yes
if [ -f kestrune-commit ]; then
    take_off "$(cat kestrune-commit)"
    rm kestrune-commit
fi
first_line
if [ "$had_marker" ] && [ "$first" != "$mode" ]; then
    [ -s kestrune-pending ] || rm -f kestrune-pending
    exit 0
fi
at_work
echo "$mode" >>done
echo "$mode" >kestrune-commit
in_the_commit
take_off "$mode"
rm kestrune-commit
[ -s kestrune-pending ] || rm -f kestrune-pending
"""

FAILING = "at_work() { exit 3; }"
CRASHING = "at_work() { kill -SEGV $$; }"
TALKING = 'at_work() { echo "src value:Heron-4711"; echo "Encrypt:(Heron-4711)->(x)" >&2; }'
READING = "at_work() { cat; }"
HANG = "trap '' TERM INT HUP; while :; do sleep 1; done"
HANGING = "at_the_start() { %s; }" % HANG
# Only in the first start, which a file marks.
HANGING_ONCE = '%s() { [ "$mode" != %s ] || [ -e hung ] || { : >hung; ' + HANG + "; }; }"
REMOVING_MARKER = "at_work() { rm kestrune-pending; exit 0; }"

ALL = b"1\n2\nall\n"


class Cases:
    """For one shell and its tools."""

    def setUp(self):
        scratch = tempfile.TemporaryDirectory(prefix="kestrune-")
        self.addCleanup(scratch.cleanup)
        self.folder = pathlib.Path(scratch.name)
        self.pending = self.folder / "kestrune-pending"
        self.record = self.folder / "kestrune-commit"
        self.pending.write_bytes(ALL)
        self.tools = self.folder / "tools"
        self.tools.mkdir()
        for tool in TOOLS:
            (self.tools / tool).symlink_to(self.tool(tool))
        self.script = self.put_command(self.folder / "kestrune.init", self.adapted_script())
        self.put_stub()

    def adapted_script(self):
        """The script itself, except the shell's path and the four settings."""
        text = packaging.replace_once(SCRIPT.read_text(), "#!/bin/sh\n", "")
        for name, value in (("program", self.folder / "stub"), ("pending", self.pending), ("record", self.record),
                            ("limitSeconds", LIMIT_SECONDS)):
            text, count = re.subn(rf"(?m)^{name}=\S+", f"{name}={value}", text)
            self.assertEqual(count, 1, name)
        return text

    def put_command(self, path, commands):
        path.write_text(f"#!{self.tools}/sh\n{commands}")
        path.chmod(0o755)
        return path

    def put_stub(self, planted=""):
        return self.put_command(self.folder / "stub", STUB.replace("@PLANTED@", planted))

    def run_command(self, *command):
        started = time.monotonic()
        running = subprocess.Popen(command, env={"PATH": str(self.tools)}, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                   stderr=subprocess.STDOUT, start_new_session=True)
        try:
            running.wait(timeout=20)  # its input stays open, as on a console
        except subprocess.TimeoutExpired:
            os.killpg(running.pid, signal.SIGKILL)
            self.fail("the script does not end")
        finally:
            running.stdin.close()
        self.seconds = time.monotonic() - started
        with running.stdout:
            output = running.stdout.read().decode()
        self.assertEqual(running.returncode, 0, output)
        return output

    def run_script(self, *arguments):
        return self.run_command(self.script, *arguments)

    def expect(self, calls, done, pending):
        """What was called and done since the last time, and the marker's bytes; None without one."""
        for name, expected in (("calls", calls), ("done", done)):
            noted = self.folder / name
            self.assertEqual(noted.read_text().split() if noted.exists() else [], expected.split(), name)
            noted.unlink(missing_ok=True)
        self.assertEqual(self.pending.read_bytes() if self.pending.exists() else None, pending)

    def expect_silent_start(self, calls, done, pending):
        self.assertEqual(self.run_script("start"), "")
        self.expect(calls, done, pending)

    # The marker.

    def test_runs_the_modes_in_their_order(self):
        self.expect_silent_start("1 2 all", "1 2 all", None)

    def test_calls_nothing_without_a_marker(self):
        self.pending.unlink()
        for arguments in (["start"], ["start", "all"], ["next"]):
            self.assertEqual(self.run_script(*arguments), "")
        self.expect("", "", None)

    def test_runs_once_for_each_upgrade(self):
        self.expect_silent_start("1 2 all", "1 2 all", None)
        self.expect_silent_start("", "", None)

    def test_looks_for_the_marker_before_each_call(self):
        self.put_stub(REMOVING_MARKER)
        self.expect_silent_start("1", "", None)

    def test_looks_for_the_marker_before_each_named_mode(self):
        self.pending.write_bytes(b"dev\n")
        self.run_script("start", "dev", "pwd", "all")
        self.expect("dev", "dev", None)

    def test_an_empty_marker_goes_and_nothing_is_done(self):
        self.pending.write_bytes(b"")
        self.expect_silent_start("1", "", None)

    def test_modes_in_another_order_take_several_starts(self):
        for marker, starts in (
                (b"2\n1\nall\n", (("2", b"1\nall\n"), ("1 all", None))),
                (b"all\n2\n1\n", (("all", b"2\n1\n"), ("2", b"1\n"), ("1", None))),
                (b"2\nall\n", (("2 all", None),)),
                (b"all\n", (("all", None),))):
            with self.subTest(marker=marker):
                self.pending.write_bytes(marker)
                for done, left in starts:
                    self.run_script("start")
                    # "1" may be the last word, which leaves nothing to call.
                    self.expect("1" if done == "1" and left is None else "1 2 all", done, left)
                self.expect_silent_start("", "", None)

    def test_modes_that_it_does_not_call_stay_in_the_marker(self):
        self.pending.write_bytes(b"1\n2\ndev\npwd\n")
        self.expect_silent_start("1 2 all", "1 2", b"dev\npwd\n")
        self.expect_silent_start("1 2 all", "", b"dev\npwd\n")
        self.run_script("start", "dev", "pwd")
        self.expect("dev pwd", "dev pwd", None)

    def test_named_modes_leave_the_others_in_the_marker(self):
        self.run_script("start", "1")
        self.expect("1", "1", b"2\nall\n")
        self.run_script("start", "2", "all")
        self.expect("2 all", "2 all", None)

    # Only the program changes the marker.

    def test_a_mode_that_fails_stays_in_the_marker(self):
        self.put_stub(FAILING)
        self.expect_silent_start("1 2 all", "", ALL)

    def test_a_mode_that_crashes_stays_in_the_marker(self):
        self.put_stub(CRASHING)
        self.expect_silent_start("1 2 all", "", ALL)

    def test_a_program_that_is_missing_leaves_the_marker_and_keeps_nothing_from_starting(self):
        (self.folder / "stub").unlink()
        self.expect_silent_start("", "", ALL)

    def test_a_mode_that_hangs_is_killed_and_runs_in_the_next_start(self):
        self.put_stub(HANGING_ONCE % ("at_work", "2"))
        self.expect_silent_start("1 2 all", "1", b"2\nall\n")
        self.assertGreaterEqual(self.seconds, LIMIT_SECONDS)
        self.assertLess(self.seconds, 2 * LIMIT_SECONDS + 2)
        self.expect_silent_start("1 2 all", "2 all", None)

    def test_a_commit_that_is_cut_short_is_finished_by_the_next_call(self):
        self.put_stub(HANGING_ONCE % ("in_the_commit", "1"))
        self.expect_silent_start("1 2 all", "1 2 all", None)

    def test_modes_that_all_hang_take_their_limits_and_no_longer(self):
        self.put_stub(HANGING)
        self.expect_silent_start("1 2 all", "", ALL)
        self.assertGreaterEqual(self.seconds, 3 * LIMIT_SECONDS)
        self.assertLess(self.seconds, 3 * LIMIT_SECONDS + 6)

    def test_the_limit_on_a_phone_is_two_minutes_for_a_mode(self):
        self.assertEqual(re.findall(r"(?m)^limitSeconds=(\S+)", SCRIPT.read_text()), ["120"])

    # Input and output.

    def test_no_secret_is_printed(self):
        self.put_stub(TALKING)
        self.expect_silent_start("1 2 all", "1 2 all", None)

    def test_the_stub_does_print_secrets(self):
        _, output = packaging.run([self.put_stub(TALKING), "1"], env={"PATH": str(self.tools)})
        self.assertEqual(output.count("Heron-4711"), 2)

    def test_the_program_gets_no_input(self):
        self.put_stub(READING)  # it would wait without doing anything until it is killed
        self.expect_silent_start("1 2 all", "1 2 all", None)

    # The actions.

    def test_next_prints_the_first_line(self):
        for marker, printed in ((b"1\n2\nall\n", "1\n"), (b"2\nall\n", "2\n"), (b"all", "all\n"), (b" 2\n", " 2\n"),
                                (b"2x\n", "2x\n"), (b"\n\n2\nall\n", "2\n"), (b"\n", ""), (b"", "")):
            with self.subTest(marker=marker):
                self.pending.write_bytes(marker)
                self.assertEqual(self.run_script("next"), printed)
                self.expect("", "", marker)

    def test_next_prints_nothing_while_a_commit_is_unfinished(self):
        self.record.write_bytes(b"1\n")
        self.assertEqual(self.run_script("next"), "")
        self.record.unlink()
        self.record.mkdir()  # a folder is not a record, and stays
        self.assertEqual(self.run_script("next"), "1\n")

    def test_next_does_not_wait_at_a_pipe(self):
        self.pending.unlink()
        os.mkfifo(self.pending)
        self.assertEqual(self.run_script("next"), "")

    def test_stopping_does_nothing(self):
        self.assertEqual(self.run_script("stop"), "")
        self.expect("", "", ALL)

    def test_an_unknown_action_tells_the_usage_and_does_nothing(self):
        for arguments in ([], ["restart"], ["done"], ["--version"]):
            self.assertIn("usage:", self.run_script(*arguments))
        self.expect("", "", ALL)

    # The page: a step of the firmware, and how the marker is written.

    def run_documented_start(self, step="exit 0"):
        commands = packaging.documented_block("start 1\n")
        commands = packaging.replace_once(commands, "/usr/share/kestrune/kestrune.init", str(self.script))
        self.put_command(self.tools / "lay-new-settings", f'echo step >>"{self.folder}/done"\n{step}\n')
        self.run_command(self.put_command(self.folder / "firmware", commands))

    def test_the_step_runs_before_mode_2(self):
        self.run_documented_start()
        self.expect("1 2 all", "1 step 2 all", None)

    def test_the_step_runs_only_while_mode_2_is_due(self):
        for marker, calls, done, left in (
                (None, "", "", None),
                (b"", "1", "", None),
                (b"all\n", "1 all", "all", None),
                (b"1\nall\n", "1 all", "1 all", None),
                (b"2\nall\n", "1 2 all", "step 2 all", None),
                (b"2\n1\nall\n", "1 2 all", "step 2", b"1\nall\n")):
            with self.subTest(marker=marker):
                self.pending.unlink(missing_ok=True)
                if marker is not None:
                    self.pending.write_bytes(marker)
                self.run_documented_start()
                self.expect(calls, done, left)

    def test_a_step_that_fails_holds_mode_2_back_and_is_repeated(self):
        self.run_documented_start(step="exit 1")
        self.expect("1 all", "1 step", b"2\nall\n")
        self.run_documented_start()
        self.expect("1 2 all", "step 2 all", None)

    def test_mode_2_never_runs_without_its_step(self):
        """Mode "1" is killed in its commit: the next call finishes that, and must not be mode "2"."""
        self.put_stub(HANGING_ONCE % ("in_the_commit", "1"))
        self.run_documented_start()
        self.expect("1 all", "1", b"2\nall\n")
        self.run_documented_start()
        self.expect("1 2 all", "step 2 all", None)

    def test_the_step_never_runs_once_mode_2_has_changed_files(self):
        """The power fails in the commit of mode "2", and the call that would finish it hangs in the next start."""
        self.pending.write_bytes(b"2\nall\n")
        self.record.write_text("2\n")
        self.put_stub(HANGING_ONCE % ("at_the_start", "1"))
        self.run_documented_start()
        self.expect("1 all", "all", None)

    def test_the_documented_marker(self):
        self.pending.unlink()
        commands = packaging.documented_block("printf ").replace("/config/", f"{self.folder}/")
        before = packaging.files_below(self.folder)
        self.assertEqual(self.run_command(self.put_command(self.folder / "write", commands)), "")
        self.assertEqual(packaging.files_below(self.folder), sorted([*before, "kestrune-pending", "write"]))
        self.expect("", "", ALL)


class UnderBusyBox(Cases, unittest.TestCase):
    def tool(self, _):
        return BUSYBOX


class UnderDash(Cases, unittest.TestCase):
    def tool(self, name):
        return shutil.which("dash" if name == "sh" else name)


if __name__ == "__main__":
    packaging.need("busybox", "dash")
    BUSYBOX = os.path.realpath(shutil.which("busybox"))
    (script,) = packaging.take_arguments()
    SCRIPT = pathlib.Path(script)
    packaging.main()
