# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""The files that `cmake --install` installs, component by component, only below DESTDIR."""

import gzip
import os
import pathlib
import tempfile
import unittest

import packaging

PREFIX = "srv/phone"

DEVICE = [
    "lib/systemd/system/kestrune@.service",
    "lib/systemd/system/kestrune@1.service.d/order.conf",
    "lib/systemd/system/kestrune@2.service.d/order.conf",
    "lib/systemd/system/kestrune@all.service.d/order.conf",
    "lib/systemd/system/kestrune@dev.service.d/order.conf",
    "sbin/kestrune",
    "share/kestrune/kestrune.init",
]
DOCUMENTATION = [
    "share/doc/kestrune/README.md",
    "share/doc/kestrune/SECURITY.md",
    "share/doc/kestrune/changelog.Debian.gz",
    "share/doc/kestrune/changelog.gz",
    "share/doc/kestrune/copyright",
    "share/lintian/overrides/kestrune",
    "share/man/man5/encryptconfig.xml.5.gz",
    "share/man/man5/kestrune.xml.5.gz",
    "share/man/man8/kestrune.8.gz",
]
TOOLS = [
    "bin/kestrune-preview",
    "bin/kestrune-table-check",
    "libexec/kestrune/kestrune",
    "libexec/kestrune/kestrune-preview-steps",
    "share/bash-completion/completions/kestrune-preview",
    "share/bash-completion/completions/kestrune-table-check",
    "share/doc/kestrune-tools/changelog.Debian.gz",
    "share/doc/kestrune-tools/copyright",
    "share/kestrune/fleet.schema.json",
    "share/kestrune/preview.schema.json",
    "share/lintian/overrides/kestrune-tools",
    "share/man/man1/kestrune-preview.1.gz",
    "share/man/man1/kestrune-table-check.1.gz",
]
EXECUTABLE = {"sbin/kestrune", "share/kestrune/kestrune.init", *TOOLS[:4]}


def documents():
    return [f"share/doc/kestrune/docs/{path.name}" for path in (packaging.SOURCE / "docs").glob("*.md")]


def files_of_package(name):
    """The files of a Debian package, below its prefix."""
    return TOOLS if name == "kestrune-tools" else DEVICE + DOCUMENTATION + documents()


class Install(unittest.TestCase):
    def setUp(self):
        self.scratch = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory(prefix="kestrune-")))
        self.root = self.scratch / PREFIX

    def install(self, *arguments):
        """The files that this installs."""
        status, output = packaging.run(["cmake", "--install", BUILD, "--prefix", "/" + PREFIX, *arguments],
                                       env={**os.environ, "DESTDIR": str(self.scratch)})
        self.assertEqual(status, 0, output)
        outside = [path for path in packaging.files_below(self.scratch) if not path.startswith(PREFIX)]
        self.assertEqual(outside, [])
        return packaging.files_below(self.root)

    def test_it_installs_these_files_and_no_others(self):
        found = self.install()
        self.assertEqual(found, sorted(DEVICE + DOCUMENTATION + documents() + (TOOLS if HAS_TOOLS else [])))
        executable = {path for path in found if os.access(self.root / path, os.X_OK)}
        self.assertEqual(executable, EXECUTABLE.intersection(found))

    def test_the_device_gets_the_program_and_what_starts_it(self):
        self.assertEqual(self.install("--component", "device"), sorted(DEVICE))

    def test_the_documentation_is_a_component(self):
        self.assertEqual(self.install("--component", "documentation"), sorted(DOCUMENTATION + documents()))

    def test_the_tools_are_a_component(self):
        self.assertEqual(self.install("--component", "host-tools"), sorted(TOOLS if HAS_TOOLS else []))

    def test_the_installed_preview_finds_its_programs(self):
        if not HAS_TOOLS:
            self.skipTest("the tools are not built")
        self.install("--component", "host-tools")
        output = packaging.run([self.root / "bin/kestrune-preview", self.scratch / "none", "all"])[1]
        self.assertRegex(output, "no such image|no sandbox")  # and not "no program"

    def test_what_names_the_program_names_one_path(self):
        self.install()
        unit = (self.root / "lib/systemd/system/kestrune@.service").read_text()
        (command,) = [line.split("=")[1].split()[0] for line in unit.splitlines() if line.startswith("ExecStart=")]
        self.assertTrue(command.endswith("/sbin/kestrune"))
        self.assertIn(f"\nprogram={command}\n", (self.root / "share/kestrune/kestrune.init").read_text())

    def test_what_is_compressed_holds_its_text_and_neither_name_nor_time(self):
        for path in self.install():
            if path.endswith(".gz"):
                content = (self.root / path).read_bytes()
                self.assertEqual(content[3:8], bytes(5), path)  # no name, no time
                self.assertNotRegex(gzip.decompress(content), rb"@[A-Z_]+@", path)  # a variable that was not substituted


if __name__ == "__main__":
    packaging.need("cmake")
    BUILD, tools = packaging.take_arguments()
    HAS_TOOLS = tools == "ON"
    packaging.main()
