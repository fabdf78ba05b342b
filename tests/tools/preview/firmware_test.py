#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""A new firmware or table on phones of an old one."""

import os
import subprocess

import phones
import previewTool
from previewTool import DONE, FAILS, NOT_DONE, USER

TABLE = "/phone/resource/kestrune.xml"
KEY = "/phone/factory/certs/pwcipher.key"
NEW_TABLE = f'<table><record srcFile="{USER}" srcSec="A" srcKey="old" dstKey="new"/></table>'


class Firmware(previewTool.PreviewTest):
    def firmware(self, files):
        root = self.folder / "firmware"
        for path, content in files.items():
            (root / path[1:]).parent.mkdir(parents=True, exist_ok=True)
            (root / path[1:]).write_text(content)
        return root

    def moved(self, shown, value="7"):
        self.assertEqual(shown.status, FAILS, shown.errors)
        change = shown.change(USER, "A", "new")
        self.assertIsNotNone(change, shown.text)
        self.assertEqual(change["after"], value)

    def test_a_backup_without_a_firmware_gets_the_new_one(self):
        image = self.phone({USER: DONE + "[A]\nold=7\n"})
        self.assertEqual(self.show(image, "all").preview["files"], [])
        firmware = self.firmware({TABLE: NEW_TABLE})
        self.moved(self.show("--firmware", firmware, image, "all"))
        self.assertFalse((image / "phone").exists(), "the image was changed")

    def test_a_firmware_may_be_an_archive(self):
        image = self.phone({USER: DONE + "[A]\nold=7\n"})
        self.firmware({TABLE: NEW_TABLE})
        archive = self.folder / "firmware.tar.gz"
        subprocess.run(["tar", "-czf", archive, "-C", self.folder, "firmware"], check=True)
        self.moved(self.show("--firmware", archive, image, "all"))

    def test_nothing_of_the_old_firmware_stays(self):
        image = self.phone({USER: DONE + "[A]\nold=7\n", TABLE: NEW_TABLE,
                            "/phone/factory/certs/phoneca/old.pem": "old\n", "/config/certs/phoneca/own.pem": "own\n"})
        firmware = self.firmware({"/phone/factory/certs/phoneca/new.pem": "new\n"})
        shown = self.show("--firmware", firmware, image, "all")
        self.assertEqual([file["path"] for file in shown.preview["files"]], ["/config/certs/phoneca/new.pem"])

    def test_a_table_replaces_the_phones_and_the_firmwares(self):
        image = self.phone({USER: DONE + "[A]\nold=7\n", TABLE: "<table/>"})
        table = self.folder / "new.xml"
        table.write_text(NEW_TABLE)
        self.moved(self.show("--table", table, image, "all"))
        self.moved(self.show("--table", table, "--firmware", self.firmware({TABLE: "<table/>"}), image, "all"))
        self.moved(self.show("--table", table, self.phone({USER: DONE + "[A]\nold=7\n"}), "all"))

    def test_a_table_is_written_through_no_link(self):
        outside = self.folder / "outside"
        outside.mkdir()
        (outside / "kestrune.xml").write_text("untouched")
        table = self.folder / "new.xml"
        table.write_text(NEW_TABLE)
        image = self.phone({USER: DONE + "[A]\nold=7\n"})
        (image / "phone").mkdir()
        os.symlink(outside, image / "phone/resource")
        shown = self.show("--table", table, image, "all")
        self.assertEqual(shown.status, NOT_DONE)
        self.assertIn("link in its path", shown.errors)
        os.unlink(image / "phone/resource")
        (image / "phone/resource").mkdir()
        os.symlink(outside / "kestrune.xml", image / "phone/resource/kestrune.xml")
        self.moved(self.show("--table", table, image, "all"))
        self.assertEqual((outside / "kestrune.xml").read_text(), "untouched")

    def test_the_phones_key_is_kept_where_the_firmware_has_none(self):
        image = self.phone({}, base="example")
        firmware = self.folder / "firmware"
        phones.make_phone("example", firmware)
        with_key = self.show("--reveal-secrets", image, "all").preview["files"]
        (firmware / KEY[1:]).unlink()
        shown = self.show("--reveal-secrets", "--firmware", firmware, image, "all")
        self.assertEqual(shown.preview["files"], with_key)

    def test_what_the_old_lists_name_stays_secret(self):
        old_list = f'<entries><entry file="{USER}" section="A" key="old"/></entries>'
        image = self.phone({USER: DONE + "[A]\nold=sevenseas\n", "/phone/resource/encryptconfig.xml": old_list})
        shown = self.show("--firmware", self.firmware({TABLE: NEW_TABLE}), image, "all")
        self.moved(shown, "••••••")
        self.assertNotIn("sevenseas", shown.text + shown.html)

    def test_what_is_no_firmware_is_refused_before_the_work(self):
        image = self.phone({USER: DONE})
        for name, words in ((self.folder / "missing", "no such image"), (image, "no folder phone")):
            result = previewTool.run("--firmware", name, image, "all")
            self.assertEqual(result.returncode, NOT_DONE)
            self.assertIn(words, result.stderr)
        self.assertEqual(previewTool.run("--table", self.folder / "missing.xml", image, "all").returncode, NOT_DONE)


if __name__ == "__main__":
    previewTool.main()
