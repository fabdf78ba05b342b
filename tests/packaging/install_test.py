# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""The files that `cmake --install` installs, only below DESTDIR."""

import gzip
import os
import pathlib
import tempfile
import unittest

import packaging

PREFIX = "srv/phone"

FILES = [
    "lib/systemd/system/kestrune@.service",
    "lib/systemd/system/kestrune@1.service.d/order.conf",
    "lib/systemd/system/kestrune@2.service.d/order.conf",
    "lib/systemd/system/kestrune@all.service.d/order.conf",
    "lib/systemd/system/kestrune@dev.service.d/order.conf",
    "sbin/kestrune",
    "share/doc/kestrune/README.md",
    "share/doc/kestrune/SECURITY.md",
    "share/doc/kestrune/changelog.Debian.gz",
    "share/doc/kestrune/changelog.gz",
    "share/doc/kestrune/copyright",
    "share/kestrune/kestrune.init",
    "share/lintian/overrides/kestrune",
    "share/man/man5/encryptconfig.xml.5.gz",
    "share/man/man5/kestrune.xml.5.gz",
    "share/man/man8/kestrune.8.gz",
]
EXECUTABLE = ["sbin/kestrune", "share/kestrune/kestrune.init"]


def documents():
    return [f"share/doc/kestrune/docs/{path.name}" for path in (packaging.SOURCE / "docs").glob("*.md")]


class Install(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        scratch = tempfile.TemporaryDirectory(prefix="kestrune-")
        cls.addClassCleanup(scratch.cleanup)
        cls.root = pathlib.Path(scratch.name, PREFIX)
        status, cls.output = packaging.run(["cmake", "--install", BUILD, "--prefix", "/" + PREFIX],
                                           env={**os.environ, "DESTDIR": scratch.name})
        if status != 0:
            raise AssertionError(cls.output)
        cls.outside = [path for path in packaging.files_below(scratch.name) if not path.startswith(PREFIX)]

    def test_it_installs_these_files_and_no_others(self):
        self.assertEqual(packaging.files_below(self.root), sorted(FILES + documents()))
        self.assertEqual(self.outside, [])

    def test_the_program_and_the_init_script_alone_can_be_run(self):
        found = [path for path in packaging.files_below(self.root) if os.access(self.root / path, os.X_OK)]
        self.assertEqual(found, EXECUTABLE)

    def test_what_names_the_program_names_one_path(self):
        unit = (self.root / "lib/systemd/system/kestrune@.service").read_text()
        (command,) = [line.split("=")[1].split()[0] for line in unit.splitlines() if line.startswith("ExecStart=")]
        self.assertTrue(command.endswith("/sbin/kestrune"))
        self.assertIn(f"\nprogram={command}\n", (self.root / "share/kestrune/kestrune.init").read_text())

    def test_what_is_compressed_holds_its_text_and_neither_name_nor_time(self):
        for path in FILES:
            if path.endswith(".gz"):
                content = (self.root / path).read_bytes()
                self.assertEqual(content[3:8], bytes(5), path)  # no name, no time
                self.assertNotRegex(gzip.decompress(content), rb"@[A-Z_]+@", path)  # a variable that was not substituted


if __name__ == "__main__":
    packaging.need("cmake")
    (BUILD,) = packaging.take_arguments()
    packaging.main()
