#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""What two upgrades do differently on many phones: every place is one at which the program itself leaves another phone."""

import collections
import json

import fleetPhones
import previewTool
from fleetPhones import RECORDS, SYSTEM, TABLE, USER
from previewTool import CARE, DONE, FAILS, NOT_DONE, WELL

PHONES = 6
KINDS = ("added", "changed", "emptied", "removed")


def edited(number, **attributes):
    """The table with other attributes of one record; None removes one."""
    record = {name: value for name, value in (RECORDS[number] | attributes).items() if value is not None}
    return [*RECORDS[:number], record, *RECORDS[number + 1:]]


def swapped(one, other):
    records = list(RECORDS)
    records[one], records[other] = records[other], records[one]
    return records


EDITS = {
    "a moved key": edited(0, dstKey="nHandset"),
    "a lost record": RECORDS[:3] + RECORDS[4:],
    "a flag that is off": edited(7, dstEncrypt="false"),
    "a wrong section": edited(2, srcSec="Webb"),
    "an order that matters": swapped(3, 4),
    "a renamed source": edited(1, srcKey="nVol"),
    "a destination that does not load": edited(6, dstFile="/config/none.ini"),
    "an added record": [*RECORDS[:5], fleetPhones.record(("Left", "strOwn1"), ("Left", "strNew")), *RECORDS[5:]],
    "an emptied source": edited(3, srcKey=None),
    "a swapped pair": [*RECORDS[:2], edited(2, srcKey="strTheme")[2], edited(3, srcKey="strHost")[3], *RECORDS[4:]],
}


class Difference(previewTool.PreviewTest):
    def setUp(self):
        super().setUp()
        self.firmware = fleetPhones.make_firmware(self.folder / "firmware")

    def table(self, name, records):
        file = self.folder / name
        file.write_text(fleetPhones.table(records))
        return file

    def diff(self, *arguments):
        """The status and the outputs of a difference."""
        names = [self.folder / name for name in ("d.json", "d.html")]
        result = previewTool.run("diff", "--json", names[0], "--html", names[1], *arguments)
        self.assertLess(result.returncode, NOT_DONE, result.stderr)
        return result.returncode, json.loads(names[0].read_text()), result.stdout + "".join(name.read_text() for name in names)

    def run_with(self, image, records=None, firmware=None):
        root = fleetPhones.install(image, firmware or self.firmware, self.folder / "copy", records and fleetPhones.table(records))
        after = fleetPhones.run_program(root)
        previewTool.shutil.rmtree(root)
        return after

    def assert_counts(self, report, pairs):
        """The report has exactly the places at which the phones of each pair differ, with their numbers and kinds."""
        expected = collections.defaultdict(collections.Counter)
        for one, other in pairs:
            for place, (kind, _, _) in fleetPhones.changes(one, other).items():
                expected[place].update(["phones", kind])
        found = {(change["file"], change["section"], change["key"]): +collections.Counter(
            {name: change[name] for name in ("phones", *KINDS)}) for change in report["changes"]}
        self.assertEqual(found, expected)
        self.assertEqual(sorted(image["places"] for image in report["images"]),
                         sorted(len(fleetPhones.changes(*pair)) for pair in pairs))

    def warnings(self, images, table):
        """Rules and places, by phone, of previews of one phone each."""
        shown = [previewTool.run("--json", "-", "--firmware", self.firmware, "--table", table, image, "all") for image in images]
        return [{(warning["rule"], warning["place"], warning["text"]) for warning in json.loads(one.stdout)["previews"][0]["warnings"]}
                for one in shown]

    def test_a_table_and_itself(self):
        images = fleetPhones.make_fleet(self.folder / "fleet", PHONES)
        old, new = self.table("old", RECORDS), self.table("new", RECORDS)
        status, report, text = self.diff("--firmware", self.firmware, "--table", old, "--table", new, *images, "all")
        self.assertEqual((status, report["changes"], report["warnings"]), (WELL, [], []))
        self.assertIn(f"{PHONES} phones, mode all: 0 end different\n", text)

    def test_planted_edits(self):
        images = fleetPhones.make_fleet(self.folder / "fleet", PHONES)
        old = self.table("old", RECORDS)
        before = [self.run_with(image, RECORDS) for image in images]
        warnings_before = self.warnings(images, old)
        for name, records in EDITS.items():
            with self.subTest(name):
                new = self.table("new", records)
                status, report, text = self.diff("--firmware", self.firmware, "--table", old, "--table", new, *images, "all")
                self.assertEqual(status, CARE)
                self.assertGreater(len(report["changes"]), 0)
                self.assert_counts(report, list(zip(before, [self.run_with(image, records) for image in images])))
                self.assertNotRegex(text, "harbour-|mole-")
                if name in ("a flag that is off", "a destination that does not load"):
                    self.assert_warnings(report, warnings_before, self.warnings(images, new))

    def assert_warnings(self, report, before, after):
        come = collections.Counter(rule for one, other in zip(before, after) for rule in {warning[0] for warning in other - one})
        gone = collections.Counter(rule for one, other in zip(before, after) for rule in {warning[0] for warning in one - other})
        self.assertEqual({rule["rule"]: rule["phones"] for rule in report["warnings"] if "gone" not in rule}, come)
        self.assertEqual({rule["rule"]: rule["phones"] for rule in report["warnings"] if "gone" in rule}, gone)
        self.assertGreater(len(come), 0)

    def test_a_secret_in_another_form(self):
        image = fleetPhones.make(self.folder / "image", {SYSTEM: "[A]\n", USER: DONE + "[PhoneSetting]\nEnLock=1\n[Web]\n"
                                                         "strAdminPassword=harbour-1\n"})
        old, new = self.table("old", RECORDS[7:8]), self.table("new", [RECORDS[7] | {"dstEncrypt": "false"}])
        status, report, text = self.diff("--firmware", self.firmware, "--table", old, "--table", new, image, "dev")
        change, = report["changes"]
        self.assertEqual((status, change["section"], change["key"], change["phones"]), (CARE, "Security", "strPassword", 1))
        value, = change["values"]
        self.assertEqual((value["before"], value["after"], value["secret"]), ("\u2022" * 6, "\u2022" * 6, "same, now plain"))
        self.assertNotIn("harbour", text)
        self.assertEqual(sorted((rule["rule"], "gone" in rule) for rule in report["warnings"]), [("KP012", False), ("KP016", True)])
        _, report, _ = self.diff("--firmware", self.firmware, "--table", new, "--table", old, image, "dev")
        self.assertEqual(sorted((rule["rule"], "gone" in rule) for rule in report["warnings"]), [("KP012", True), ("KP016", False)])
        self.assertIn("harbour", self.diff("--reveal-secrets", "--firmware", self.firmware, "--table", old, "--table", new, image,
                                           "dev")[2])

    def test_two_firmwares(self):
        images = fleetPhones.make_fleet(self.folder / "fleet", PHONES, seed=2)
        second = previewTool.shutil.copytree(self.firmware, self.folder / "second")
        (second / "phone/extra").write_text("a file of the firmware\n")
        status, report, _ = self.diff("--firmware", self.firmware, "--firmware", second, *images, "all")
        self.assertEqual((status, report["changes"], report["warnings"]), (WELL, [], []))
        (second / "phone/factory/certs/phoneca/three.pem").write_text("three\n")
        (second / TABLE[1:]).write_text(fleetPhones.table(EDITS["a wrong section"]))
        status, report, _ = self.diff("--firmware", self.firmware, "--firmware", second, *images, "all")
        self.assertEqual(status, CARE)
        self.assert_counts(report, [(self.run_with(image), self.run_with(image, firmware=second)) for image in images])
        self.assertIn("/config/certs/phoneca/three.pem", [change["file"] for change in report["changes"]])

    def test_statuses_logs_and_merging(self):
        images = fleetPhones.make_fleet(self.folder / "fleet", 2)
        old, new = self.table("old", RECORDS), self.table("new", EDITS["a moved key"])
        words = ("--firmware", self.firmware, "--table", old, "--table", new)
        same = ("--firmware", self.firmware, "--table", old, "--table", old)
        self.assertEqual(self.diff(*same, images[0], self.folder / "none", "all")[0], FAILS)
        self.assertEqual(previewTool.run("diff", *same, self.folder / "none", "all").returncode, NOT_DONE)
        whole = self.diff(*words, *images, "all")
        for number, image in enumerate(images):
            self.diff("--jsonl", self.folder / f"part{number}", *words, image, "all")
        merged = previewTool.run("merge", "--json", self.folder / "m.json", self.folder / "part1", self.folder / "part0")
        self.assertEqual((merged.returncode, json.loads((self.folder / "m.json").read_text())), whole[:2])
        other = previewTool.run("diff", "--jsonl", self.folder / "part0", "--firmware", self.firmware, "--table", new, "--table", old,
                                images[0], "all")
        self.assertIn("is of another run", other.stderr)
        for options in ((), ("--table", old), ("--table", old, "--table", new, "--table", new)):
            result = previewTool.run("diff", *options, images[0], "all")
            self.assertEqual(result.returncode, NOT_DONE)
            self.assertIn("diff needs --firmware or --table twice", result.stderr)


if __name__ == "__main__":
    previewTool.main()
