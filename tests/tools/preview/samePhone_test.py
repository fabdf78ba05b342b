#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""The phone after a preview is the phone after a run of the program itself, and the image stays as it was."""

import itertools
import json
import tarfile

import jsonschema

import phones
import previewTool

MODES = [("all",), ("dev",), ("pwd",), ("1",), ("2",), ("fix-ups-only",), ("1", "2"), ("dev", "pwd", "all")]


def pack(image, archive):
    with tarfile.open(archive, "w:gz") as packed:
        packed.add(image, "backup-0042")
    return archive


class SamePhone(previewTool.PreviewTest):
    def check(self, name, modes, as_archive):
        image = phones.make_phone(name, self.folder / "image")
        given = pack(image, self.folder / "image.tar.gz") if as_archive else image
        before = phones.snapshot(image)
        bytes_before = given.read_bytes() if as_archive else None
        shown = self.show("--any-mode", "--reports", "--save-phone", self.folder / "after", given, *modes)

        self.assertEqual(phones.snapshot(image), before)
        if as_archive:
            self.assertEqual(given.read_bytes(), bytes_before)
        self.assertTrue(shown.preview["passesKnown"])
        jsonschema.validate(shown.json, json.loads(previewTool.SCHEMA.read_text()))
        for mode in modes:
            self.assertEqual(phones.run(previewTool.PROGRAM, image, mode).returncode, 0)
        real = phones.snapshot(image)
        self.assertEqual(phones.snapshot(self.folder / "after"), real)
        self.check_files(shown, before, real)
        for mode in modes:
            phones.run(previewTool.PROGRAM, image, mode)
        self.check_second_run(shown, real, phones.snapshot(image))

    def check_files(self, shown, before, after):
        """It shows every file that changed, and no other."""
        changed = {path for path in before.keys() | after.keys()
                   if before.get(path) is None or after.get(path) is None or before[path].content != after[path].content}
        self.assertEqual({file["path"] for file in shown.preview["files"]}, changed)
        self.assertEqual(shown.status, shown.expected_status)

    def check_second_run(self, shown, before, after):
        changed = {path for path in before.keys() | after.keys() if before.get(path) != after.get(path)}
        self.assertEqual({file["path"] for file in shown.preview["secondRun"]["files"]}, changed)

    def test_the_phone_is_that_of_a_real_run_in_every_mode(self):
        for name, modes in itertools.product(phones.PHONES, MODES):
            with self.subTest(phone=name, modes=modes):
                self.check(name, modes, as_archive=False)
                for rest in ("after", "image"):
                    previewTool.shutil.rmtree(self.folder / rest)

    def test_an_archive_gives_the_same(self):
        for name in phones.PHONES:
            with self.subTest(phone=name):
                self.check(name, ("all",), as_archive=True)
                for rest in ("after", "image"):
                    previewTool.shutil.rmtree(self.folder / rest)


if __name__ == "__main__":
    previewTool.main()
