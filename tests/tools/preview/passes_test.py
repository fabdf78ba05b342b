#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""Each change names the pass that made it."""

import previewTool

USER = "/config/user/user.ini"


class Passes(previewTool.PreviewTest):
    def pass_of(self, shown, path):
        return shown.file(path)["passes"]

    def test_every_pass_of_mode_all(self):
        shown = self.show(self.phone({}, base="example"), "all")
        expected = {
            "/config/data/contact_list.xml": ["contacts"],
            "/config/data/contact_group_list.xml": ["contacts"],
            "/config/data/DialPlan.xml": ["dial plan"],
            "/config/data/DialNow.xml": ["dial-now rules"],
            "/config/data/memkey.xml": ["DSS keys"],
            "/config/data/doorphonedata.xml": ["door phones"],
            "/config/data/remote_phonebook_list.xml": ["remote phone books"],
            "/config/certs/phoneca/examplevoice-root2.pem": ["certificates"],
            "/config/system/system.ini": ["translation table", "passwords"],
            USER: ["start-up fix-ups", "translation table", "passwords"],
        }
        for path, passes in expected.items():
            self.assertEqual(self.pass_of(shown, path), passes, path)
        self.assertEqual(shown.change(USER, "Feature", "RingbackTimeout")["passes"], ["start-up fix-ups"])
        self.assertEqual(shown.change(USER, "Features", "nAutoDialDelay")["passes"], ["translation table"])
        self.assertEqual(shown.change(USER, "WebServer", "strAdminPassword")["passes"], ["passwords"])
        self.assertEqual(shown.change(USER, "KeyLock", "strPin")["passes"], ["translation table", "passwords"])

    def test_every_pass_of_the_hand_over(self):
        shown = self.show(self.phone({}, base="example"), "1", "2")
        self.assertEqual(self.pass_of(shown, "/tmp/VersionInfo.cfg"), ["1: factory sync by version"])
        self.assertEqual(self.pass_of(shown, "/config/user/voip/sipAccount4.cfg"),
                         ["1: start-up fix-ups", "1: direct-IP account"])
        self.assertEqual(self.pass_of(shown, "/config/user/voip/sipAccount16.cfg"),
                         ["1: start-up fix-ups", "2: direct-IP account"])
        self.assertEqual(shown.change(USER, "Backlight", "nBacklightTime")["passes"], ["2: mode 2 migration"])

    def test_a_change_that_is_taken_back_is_none(self):
        image = self.phone({"/config/user/voip/directip.cfg": "[account]\nSCALineKeyNumber=-1\n",
                            USER: "[Feature]\nRingbackTimeout=1\n"})
        shown = self.show(image, "1")
        self.assertEqual((shown.status, shown.preview["files"]), (previewTool.WELL, []))
        self.assertIn("Nothing changes.", shown.text)

    def test_passes_that_end_otherwise_are_not_named(self):
        program = self.folder / "program"
        program.write_text("#!/bin/sh\necho '[A]' >/config/other.ini\n")
        program.chmod(0o755)
        shown = self.show("--program", program, self.phone({USER: "[A]\n"}), "all")
        self.assertFalse(shown.preview["passesKnown"])
        self.assertIn("KP011", shown.rules())
        self.assertEqual([file["passes"] for file in shown.preview["files"]], [[]])


if __name__ == "__main__":
    previewTool.main()
