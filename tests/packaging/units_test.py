# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""The systemd units: they have no errors or unknown settings; their order; the settings that they must have."""

import configparser
import pathlib
import re
import shlex
import shutil
import tempfile
import unittest

import devicePaths
import packaging

FOLDER = packaging.SOURCE / "packaging" / "systemd"
MODES = ("1", "2", "all", "dev", "pwd")  # in their order


def settings_of(text):
    parser = configparser.ConfigParser(strict=False, interpolation=None, delimiters=("=",))
    parser.optionxform = str
    parser.read_string(text)
    return parser


def settings(path):
    return settings_of(path.read_text())


class Units(unittest.TestCase):
    def test_nothing_is_wrong_or_unknown(self):
        with tempfile.TemporaryDirectory(prefix="kestrune-") as folder:
            for drop_in in FOLDER.glob("*.d"):
                shutil.copytree(drop_in, f"{folder}/{drop_in.name}")
            step = packaging.replace_once(packaging.documented_block("ExecCondition="), "/usr/sbin/lay-new-settings", PROGRAM)
            pathlib.Path(folder, "kestrune@2.service.d", "step.conf").write_text(step)
            command = settings(UNIT)["Service"]["ExecStart"].split()[0]
            text = packaging.replace_once(UNIT.read_text(), command, PROGRAM)  # the program is not installed here
            pathlib.Path(folder, UNIT.name).write_text(text)

            names = [f"kestrune@{mode}.service" for mode in MODES]
            environment = {"SYSTEMD_UNIT_PATH": f"{folder}:", "PATH": "/usr/bin:/bin"}
            status, output = packaging.run(["systemd-analyze", "verify", "--man=no", *names], env=environment)
            self.assertEqual((status, output), (0, ""))

    def test_the_program_gets_the_mode_and_nothing_else(self):
        self.assertRegex(settings(UNIT)["Service"]["ExecStart"], r"^/\S*/kestrune %i$")

    def test_no_output_is_kept(self):
        """The journal would keep it by default, and it carries secrets."""
        service = settings(UNIT)["Service"]
        for name in ("StandardInput", "StandardOutput", "StandardError"):
            self.assertEqual(service[name], "null", name)

    def test_a_mode_has_as_long_as_in_the_init_script(self):
        script = (packaging.SOURCE / "packaging" / "kestrune.init.in").read_text()
        limit = re.search(r"(?m)^limitSeconds=(\d+)", script)[1]
        self.assertEqual(settings(UNIT)["Service"]["TimeoutStartSec"], limit)

    def test_every_file_that_a_mode_writes_is_in_a_writable_folder(self):
        written = {path for mode in devicePaths.READS for path in devicePaths.written_by(mode)}
        self.assertIn(devicePaths.HAND_OVER, written)
        writable = tuple(f"{folder}/" for folder in settings(UNIT)["Service"]["ReadWritePaths"].split())
        self.assertEqual([path for path in written if not path.startswith(writable)], [])

    def test_the_modes_share_the_folder_of_the_hand_over_file(self):
        self.assertEqual(settings(UNIT)["Service"].get("PrivateTmp", "no"), "no")
        self.assertIn("systemd-tmpfiles-setup.service", settings(UNIT)["Unit"]["After"].split())  # it empties /tmp

    def test_everything_ordinary_starts_later(self):
        unit = settings(UNIT)["Unit"]
        self.assertEqual(unit["DefaultDependencies"], "no")
        self.assertIn("sysinit.target", unit["Before"].split())

    def test_no_two_modes_run_side_by_side(self):
        self.assertEqual(settings(UNIT)["Service"]["Type"], "oneshot")  # any other counts as started before it has ended
        for place, mode in enumerate(MODES[:-1]):
            later = [f"kestrune@{other}.service" for other in MODES[place + 1:]]
            order = settings(FOLDER / f"kestrune@{mode}.service.d" / "order.conf")
            self.assertEqual(order["Unit"]["Before"].split(), later, mode)

    def test_a_mode_that_fails_keeps_no_other_from_running(self):
        for name in ("Requires", "Requisite", "BindsTo", "PartOf", "OnFailure"):
            self.assertNotIn(name, settings(UNIT)["Unit"])

    def test_they_run_only_while_the_marker_is_there_and_leave_it_to_the_program(self):
        self.assertEqual(settings(UNIT)["Unit"]["ConditionPathExists"], devicePaths.MARKER)
        texts = [path.read_text() for path in (UNIT, *FOLDER.rglob("*")) if path.is_file() and path.suffix != ".in"]
        self.assertEqual(sum(text.count(devicePaths.MARKER) for text in texts), 1)
        self.assertEqual(list(FOLDER.glob("*.service")), [])

    def test_the_documented_step_runs_only_while_mode_2_is_due(self):
        service = settings_of(packaging.documented_block("ExecCondition="))["Service"]
        self.assertEqual(list(service), ["ExecCondition", "ExecStartPre"])
        shell, option, commands = shlex.split(service["ExecCondition"])
        self.assertEqual((shell, option), ("/bin/sh", "-c"))
        self.assertNotRegex(commands, r"[$%\\]")  # a unit would interpret these characters
        for marker, record, runs in (("2\nall\n", None, True), ("2", None, True), ("1\n2\nall\n", None, False),
                                     ("all\n", None, False), ("12\n", None, False), ("", None, False), (None, None, False),
                                     ("2\nall\n", "2", False)):
            with self.subTest(marker=marker, record=record), tempfile.TemporaryDirectory(prefix="kestrune-") as folder:
                for name, text in (("kestrune-pending", marker), ("kestrune-commit", record)):
                    if text is not None:
                        pathlib.Path(folder, name).write_text(text)
                status, _ = packaging.run([shell, option, commands.replace("/config/", f"{folder}/")])
                self.assertEqual(status == 0, runs)
                self.assertIn(status, range(255))  # any other one is a failure


if __name__ == "__main__":
    packaging.need("systemd-analyze")
    unit, PROGRAM = packaging.take_arguments()
    UNIT = pathlib.Path(unit)
    packaging.main()
