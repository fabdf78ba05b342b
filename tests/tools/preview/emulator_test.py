#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""A program that an emulator starts: what the emulator gets and sees in the sandbox. A real one is in tests/device/."""

import previewTool
from previewTool import USER

# Writes how it was called and what it sees of the sysroot into the phone.
EMULATOR = """#!/bin/sh
echo "$@" >/config/called
find /kestrune-sysroot -type f >/config/seen 2>/dev/null
while [ "$1" != /kestrune ]; do shift; done
exec "$@"
"""


class Emulator(previewTool.PreviewTest):
    def setUp(self):
        super().setUp()
        self.folders = {}
        for name, files in (("bin", {"emulate": EMULATOR}), ("sysroot", {"lib/libc.so.6": "", "config/user/user.ini": ""})):
            self.folders[name] = self.folder / name
            for path, content in files.items():
                file = self.folders[name] / path
                file.parent.mkdir(parents=True, exist_ok=True)
                file.write_text(content)
                file.chmod(0o755)

    def saved(self, *arguments):
        """The files "called" and "seen" of a phone after a preview, and whether the program ran."""
        image, = self.images(image="")
        saved = self.folder / "saved"
        result = previewTool.run("--program", previewTool.PROGRAM, *arguments, "--save-phone", saved, image, "1",
                                 environment={"PATH": f"{self.folders['bin']}:/usr/bin:/bin"})
        self.assertEqual(result.stderr, "")
        seen = (saved / "config/seen").read_text()
        return (saved / "config/called").read_text(), seen, "RingbackTimeout=180" in (saved / USER[1:]).read_text()

    def test_it_starts_the_program_and_needs_no_path(self):
        self.assertEqual(self.saved("--emulator", "emulate"), ("/kestrune 1\n", "", True))

    def test_it_gets_the_libraries_of_the_sysroot_and_nothing_else_of_it(self):
        self.assertEqual(self.saved("--emulator", self.folders["bin"] / "emulate", "--sysroot", self.folders["sysroot"]),
                         ("-L /kestrune-sysroot /kestrune 1\n", "/kestrune-sysroot/lib/libc.so.6\n", True))

    def test_errors(self):
        image, = self.images(image="")
        program = ("--program", previewTool.PROGRAM)
        for arguments, words in (((*program, "--emulator", "no-such"), "no program .*no-such"),
                                 (("--emulator", "/bin/true"), "--program"),
                                 ((*program, "--sysroot", self.folder), "--emulator"),
                                 ((*program, "--emulator", "/bin/true", "--sysroot", self.folder / "none"), "none")):
            with self.subTest(arguments):
                result = previewTool.run(*arguments, image, "1")
                self.assertEqual((result.returncode, result.stdout), (previewTool.NOT_DONE, ""))
                self.assertRegex(result.stderr, f"^kestrune-preview: .*{words}")


if __name__ == "__main__":
    previewTool.main()
