# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""The program's file contains its version, since no option prints it, also when stripped."""

import pathlib
import re
import subprocess
import tempfile
import unittest

import packaging


def note_of(program):
    """The text of the note, as readelf shows it byte by byte."""
    output = subprocess.run(["readelf", "-nW", program], stdout=subprocess.PIPE, text=True, check=True).stdout
    found = re.search(r"(?m)^  kestrune +0x[0-9a-f]+\s+NT_VERSION \(version\)\s+description data: ([0-9a-f ]+)$", output)
    return bytes.fromhex(found[1]) if found else None


class VersionNote(unittest.TestCase):
    def test_it_is_the_version_of_the_build(self):
        self.assertEqual(note_of(PROGRAM), VERSION.encode() + b"\0")

    def test_it_outlives_stripping(self):
        with tempfile.TemporaryDirectory(prefix="kestrune-") as folder:
            stripped = pathlib.Path(folder, "kestrune")
            subprocess.run([STRIP, "-o", stripped, PROGRAM], check=True)
            self.assertEqual(note_of(stripped), VERSION.encode() + b"\0")


if __name__ == "__main__":
    packaging.need("readelf")
    PROGRAM, VERSION, STRIP = packaging.take_arguments()
    packaging.main()
