# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""A Debian package, installed in a separate root folder and removed again: the files that it installs and leaves, and
that nothing is started or enabled."""

import os
import pathlib
import subprocess
import tempfile
import unittest

import install_test
import packaging

MACHINES = {"amd64": "Advanced Micro Devices X86-64", "arm64": "AArch64", "armhf": "ARM"}
MODES = ("kestrune@1.service", "kestrune@2.service", "kestrune@all.service")
BOOKKEEPING = "var/lib/dpkg"


def output_of(*command):
    return subprocess.run(command, stdout=subprocess.PIPE, text=True, check=True).stdout


def field(name):
    return output_of("dpkg-deb", "--field", PACKAGE, name).strip()


def machine_of(program):
    (line,) = [line for line in output_of("readelf", "-h", program).splitlines() if "Machine:" in line]
    return line.split(":", 1)[1].strip()


class DebianPackage(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory(prefix="kestrune-")
        self.addCleanup(scratch.cleanup)
        self.root = pathlib.Path(scratch.name)
        for folder in ("info", "updates"):
            (self.root / BOOKKEEPING / folder).mkdir(parents=True)
        (self.root / BOOKKEEPING / "status").touch()

    def dpkg(self, *arguments):
        """In a root without any other package, so dependencies and architecture are not checked."""
        status, output = packaging.run(
            [*AS_ROOT, "dpkg", f"--root={self.root}", f"--log={self.root}/{BOOKKEEPING}/log", "--force-depends",
             "--force-architecture", "--force-not-root", *arguments],
            env={"PATH": "/usr/sbin:/usr/bin:/sbin:/bin", "LC_ALL": "C"})
        self.assertEqual(status, 0, output)

    def systemctl(self, *arguments):
        return packaging.run(["systemctl", f"--root={self.root}", *arguments])

    def names(self):
        """Everything in the root, including folders, except dpkg's own records."""
        found = (str(path.relative_to(self.root)) for path in self.root.rglob("*"))
        return sorted(name for name in found if not BOOKKEEPING.startswith(name) and not name.startswith(BOOKKEEPING))

    def files(self):
        return [name for name in self.names() if not (self.root / name).is_dir()]

    def test_it_runs_nothing_at_installation(self):
        tar = subprocess.run(["dpkg-deb", "--ctrl-tarfile", PACKAGE], stdout=subprocess.PIPE, check=True).stdout
        listed = subprocess.run(["tar", "-t"], input=tar, stdout=subprocess.PIPE, check=True).stdout.decode().split()
        self.assertEqual(sorted(listed), ["./control", "./md5sums"])

    def test_it_brings_these_files_and_removal_leaves_none(self):
        self.dpkg("--install", PACKAGE)
        expected = install_test.files_of_package(field("Package"))
        self.assertEqual(self.files(), sorted(f"usr/{path}" for path in expected))
        self.dpkg("--remove", field("Package"))
        self.assertEqual(self.names(), [])

    def test_it_enables_nothing_and_can_be_enabled(self):
        if field("Package") == "kestrune-tools":
            self.skipTest("it contains no units")
        self.dpkg("--install", PACKAGE)
        before = self.names()
        for mode in MODES:
            self.assertEqual(self.systemctl("is-enabled", mode)[1].strip(), "disabled", mode)

        self.assertEqual(self.systemctl("enable", *MODES)[0], 0)
        wanted = self.root / "etc/systemd/system/sysinit.target.wants"
        self.assertEqual(packaging.files_below(wanted), sorted(MODES))
        self.assertEqual(self.systemctl("disable", *MODES)[0], 0)
        self.assertEqual([name for name in self.files() if name not in before], [])

    def test_its_architecture_is_that_of_the_program(self):
        self.assertEqual(machine_of(PROGRAM), MACHINES[field("Architecture")])
        name = f"{field('Package')}_{field('Version')}_{field('Architecture')}.deb"
        self.assertEqual(pathlib.Path(PACKAGE).name, name)

    def test_it_depends_on_the_libraries_of_the_program(self):
        for library in ("libc6", "libnettle8", "libpugixml1v5", "libtinyxml2.6.2v5"):
            self.assertRegex(field("Depends"), rf"(^|, ){library}($|[ ,])")

    def test_the_tools_depend_on_their_sandbox(self):
        self.assertEqual("bubblewrap" in field("Depends").split(", "), field("Package") == "kestrune-tools")

    def test_its_files_belong_to_root(self):
        listed = output_of("dpkg-deb", "--contents", PACKAGE).splitlines()
        self.assertEqual({line.split()[1] for line in listed}, {"root/root"})


if __name__ == "__main__":
    packaging.need("dpkg-deb", "dpkg", "readelf", "systemctl")
    PACKAGE, PROGRAM = packaging.take_arguments()
    AS_ROOT = [] if os.geteuid() == 0 else ["fakeroot"]
    packaging.need(*AS_ROOT)
    packaging.main()
