# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""The init script under BusyBox's shell and tools alone, with a stub in place of the program."""

import os
import pathlib
import re
import signal
import subprocess
import tempfile
import time
import unittest

import packaging

LIMIT_SECONDS = 2

# Each stub notes its mode; the worst ones do so first.
NOTE = 'echo "$1" >>"$(dirname "$0")/modes"\n'
WELL = NOTE
FAILING = NOTE + "exit 3\n"
CRASHING = NOTE + "kill -SEGV $$\n"
TALKING = NOTE + 'echo "src value:Heron-4711"; echo "Encrypt:(Heron-4711)->(x)" >&2\n'
HANGING = "trap '' TERM INT HUP\n" + NOTE + "while :; do sleep 1; done\n"
HANGING_IN_FIRST = "trap '' TERM INT HUP\n" + NOTE + '[ "$1" != 1 ] || while :; do sleep 1; done\n'
READING = NOTE + "cat\n"


class InitScript(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory(prefix="kestrune-")
        self.addCleanup(scratch.cleanup)
        self.folder = pathlib.Path(scratch.name)
        self.pending = self.folder / "kestrune-pending"
        self.pending.touch()
        self.tools = self.folder / "tools"
        self.tools.mkdir()
        for tool in ("cat", "dirname", "rm", "sh", "sleep", "sync", "timeout"):
            (self.tools / tool).symlink_to(BUSYBOX)
        self.script = self.folder / "kestrune.init"
        self.script.write_text(self.adapted_script())
        self.script.chmod(0o755)

    def adapted_script(self):
        """The script itself, but for the shell's path and the three settings."""
        text = SCRIPT.read_text()
        text = packaging.replace_once(text, "#!/bin/sh\n", f"#!{self.tools}/sh\n")
        for name, value in (("program", self.folder / "stub"), ("pending", self.pending), ("limitSeconds", LIMIT_SECONDS)):
            text, count = re.subn(rf"(?m)^{name}=\S+", f"{name}={value}", text)
            self.assertEqual(count, 1, name)
        return text

    def put_stub(self, commands):
        program = self.folder / "stub"
        program.write_text(f"#!{self.tools}/sh\n{commands}")
        program.chmod(0o755)

    def run_script(self, *arguments, stub=WELL):
        if stub is not None:
            self.put_stub(stub)
        started = time.monotonic()
        script = subprocess.Popen([self.script, *arguments], env={"PATH": str(self.tools)}, stdin=subprocess.PIPE,
                                  stdout=subprocess.PIPE, stderr=subprocess.STDOUT, start_new_session=True)
        try:
            script.wait(timeout=20)  # its input stays open, as on a console
        except subprocess.TimeoutExpired:
            os.killpg(script.pid, signal.SIGKILL)
            self.fail("the script does not end")
        finally:
            script.stdin.close()
        self.seconds = time.monotonic() - started
        self.assertEqual(script.returncode, 0)
        with script.stdout:
            return script.stdout.read().decode()

    def modes(self):
        noted = self.folder / "modes"
        return noted.read_text().split() if noted.exists() else []

    def expect_silent_run_of_all_modes(self, stub):
        output = self.run_script("start", stub=stub)
        self.assertEqual(output, "")
        self.assertEqual(self.modes(), ["1", "2", "all"])
        self.assertFalse(self.pending.exists())

    def test_runs_the_modes_in_their_order_and_notes_that_they_have_run(self):
        self.expect_silent_run_of_all_modes(WELL)

    def test_does_nothing_when_no_upgrade_is_pending(self):
        self.pending.unlink()
        for arguments in (["start"], ["start", "all"], ["done"]):
            self.assertEqual(self.run_script(*arguments), "")
        self.assertEqual(self.modes(), [])

    def test_runs_once_for_each_upgrade(self):
        self.run_script("start")
        self.run_script("start")
        self.assertEqual(self.modes(), ["1", "2", "all"])

    def test_a_mode_that_fails_keeps_no_other_from_running(self):
        self.expect_silent_run_of_all_modes(FAILING)

    def test_a_mode_that_crashes_keeps_no_other_from_running(self):
        self.expect_silent_run_of_all_modes(CRASHING)

    def test_no_secret_is_printed(self):
        self.expect_silent_run_of_all_modes(TALKING)

    def test_the_stub_does_print_secrets(self):
        self.put_stub(TALKING)
        _, output = packaging.run([self.folder / "stub", "all"], env={"PATH": str(self.tools)})
        self.assertEqual(output.count("Heron-4711"), 2)

    def test_a_mode_that_hangs_is_killed_and_the_next_one_runs(self):
        self.expect_silent_run_of_all_modes(HANGING_IN_FIRST)
        self.assertGreaterEqual(self.seconds, LIMIT_SECONDS)
        self.assertLess(self.seconds, 2 * LIMIT_SECONDS + 2)

    def test_modes_that_all_hang_take_their_limits_and_no_longer(self):
        self.expect_silent_run_of_all_modes(HANGING)
        self.assertGreaterEqual(self.seconds, 3 * LIMIT_SECONDS)
        self.assertLess(self.seconds, 3 * LIMIT_SECONDS + 6)

    def test_the_program_gets_no_input(self):
        self.expect_silent_run_of_all_modes(READING)
        self.assertLess(self.seconds, LIMIT_SECONDS)

    def test_a_program_that_is_missing_keeps_nothing_from_starting(self):
        self.assertEqual(self.run_script("start", stub=None), "")
        self.assertFalse(self.pending.exists())

    def test_single_modes_leave_the_upgrade_pending_until_done(self):
        self.run_script("start", "1")
        self.assertTrue(self.pending.exists())
        self.run_script("start", "2", "dev")
        self.assertTrue(self.pending.exists())
        self.run_script("done")
        self.assertFalse(self.pending.exists())
        self.assertEqual(self.modes(), ["1", "2", "dev"])

    def test_stopping_does_nothing(self):
        self.assertEqual(self.run_script("stop"), "")
        self.assertEqual(self.modes(), [])
        self.assertTrue(self.pending.exists())

    def test_an_unknown_action_tells_the_usage_and_does_nothing(self):
        for arguments in ([], ["restart"], ["--version"]):
            self.assertIn("usage:", self.run_script(*arguments))
        self.assertEqual(self.modes(), [])
        self.assertTrue(self.pending.exists())

    def test_the_limit_on_a_phone_is_two_minutes_for_a_mode(self):
        self.assertEqual(re.findall(r"(?m)^limitSeconds=(\S+)", SCRIPT.read_text()), ["120"])


if __name__ == "__main__":
    packaging.need("busybox")
    BUSYBOX = os.path.realpath(packaging.shutil.which("busybox"))
    (script,) = packaging.take_arguments()
    SCRIPT = pathlib.Path(script)
    packaging.main()
