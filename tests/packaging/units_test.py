# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""The systemd units: nothing in them is wrong or unknown, their order, and what they must hold to."""

import configparser
import pathlib
import shutil
import tempfile
import unittest

import packaging

FOLDER = packaging.SOURCE / "packaging" / "systemd"
MODES = ("1", "2", "all", "dev", "pwd")  # in their order
MARKER = "/config/kestrune-pending"


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
            command = settings(UNIT)["Service"]["ExecStart"].split()[0]
            text = packaging.replace_once(UNIT.read_text(), command, PROGRAM)  # which is not installed here
            pathlib.Path(folder, UNIT.name).write_text(text)

            names = [f"kestrune@{mode}.service" for mode in MODES]
            environment = {"SYSTEMD_UNIT_PATH": f"{folder}:", "PATH": "/usr/bin:/bin"}
            status, output = packaging.run(["systemd-analyze", "verify", "--man=no", *names], env=environment)
            self.assertEqual((status, output), (0, ""))

    def test_the_program_gets_the_mode_and_nothing_else(self):
        self.assertRegex(settings(UNIT)["Service"]["ExecStart"], r"^/\S*/kestrune %i$")

    def test_no_output_is_kept(self):
        service = settings(UNIT)["Service"]
        for name in ("StandardInput", "StandardOutput", "StandardError"):
            self.assertEqual(service[name], "null", name)

    def test_a_mode_ends_within_two_minutes(self):
        service = settings(UNIT)["Service"]
        self.assertEqual((service["Type"], service["TimeoutStartSec"], service["KillSignal"]), ("oneshot", "120", "SIGKILL"))

    def test_the_modes_share_the_folder_of_the_hand_over_file(self):
        service = settings(UNIT)["Service"]
        self.assertEqual(service["PrivateTmp"], "no")
        self.assertEqual(service["ReadWritePaths"].split(), ["/config", "/tmp"])
        self.assertNotIn("DynamicUser", service)
        self.assertIn("systemd-tmpfiles-setup.service", settings(UNIT)["Unit"]["After"].split())  # it empties /tmp

    def test_everything_ordinary_starts_later(self):
        unit = settings(UNIT)["Unit"]
        self.assertEqual(unit["DefaultDependencies"], "no")
        self.assertIn("sysinit.target", unit["Before"].split())

    def test_no_two_modes_run_side_by_side(self):
        for place, mode in enumerate(MODES[:-1]):
            later = [f"kestrune@{other}.service" for other in MODES[place + 1:]]
            order = settings(FOLDER / f"kestrune@{mode}.service.d" / "order.conf")
            self.assertEqual(order["Unit"]["Before"].split(), later, mode)

    def test_a_mode_that_fails_keeps_no_other_from_running(self):
        for name in ("Requires", "Requisite", "BindsTo", "PartOf", "OnFailure"):
            self.assertNotIn(name, settings(UNIT)["Unit"])

    def test_they_run_only_while_the_marker_is_there_and_leave_it_to_the_program(self):
        self.assertEqual(settings(UNIT)["Unit"]["ConditionPathExists"], MARKER)
        texts = [path.read_text() for path in (UNIT, *FOLDER.rglob("*")) if path.is_file() and path.suffix != ".in"]
        self.assertEqual(sum(text.count(MARKER) for text in texts), 1)
        self.assertEqual(list(FOLDER.glob("*.service")), [])


if __name__ == "__main__":
    packaging.need("systemd-analyze")
    unit, PROGRAM = packaging.take_arguments()
    UNIT = pathlib.Path(unit)
    packaging.main()
