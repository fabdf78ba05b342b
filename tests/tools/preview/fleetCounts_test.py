#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""Every count of a fleet's report equals one that was made without the preview: by running the program on a copy of each
phone and comparing its files with a reader of this test."""

import collections
import json
import os
import re

import fleetPhones
import previewTool
from fleetPhones import ACCOUNT, FACTORY, OTHER, SYSTEM, USER

PHONES = 200 if "KESTRUNE_WHOLE_PROOFS" in os.environ else 40
KINDS = ("added", "changed", "emptied", "removed")
# What passes use by themselves, of the keys that these phones have.
OF_PASSES = {(USER, "PhoneSetting", "EnLock"), (USER, "Feature", "RingbackTimeout"), ("account", "CancelTimer"),
             ("account", "SCALineKeyNumber")}


def printable(value):
    return (value or "").replace("\\", "\\\\")


def outcomes(before, after):
    """What each record of the table did, by a model of the table: keys are moved one after another."""
    state = {path: fleetPhones.keys_of(content) for path, content in before.items() if fleetPhones.is_ini(path)}
    has_ended = False
    for record in fleetPhones.RECORDS:
        destination = record["dstFile"]
        has_ended = has_ended or destination not in state
        if has_ended:
            yield "never ran"
            continue
        value = state.get(record["srcFile"], {}).get((record.get("srcSec"), record.get("srcKey")))
        place = (record["dstSec"], record["dstKey"])
        old = state[destination].get(place)
        state[destination][place] = value or ""
        if value is None:
            yield "no source"
        elif not value:
            yield "wrote empty"
        else:
            yield "nothing changed" if value == old else "moved"


def known_keys():
    """Files, sections and keys that the table, the list and the new factory files contain."""
    known = set(OF_PASSES) | {("account", "Password"), ("account", "Enable"), ("account", "DisplayName"),
                              (USER, "Sync", "SyncCfgByVersion"), (USER, "Known", "nKnown"), (USER, "Web", "strAdminPassword"),
                              (USER, "Audio", "nVolume"), (USER, "Audio", "nHandsetVolume"), (USER, "Audio", "nHeadsetVolume"),
                              (USER, "Web", "strHost"), (SYSTEM, "Net", "strHostName"), (USER, "Web", "strTheme"),
                              (USER, "Screen", "strTheme"), (SYSTEM, "Net", "nPort"), (SYSTEM, "Net", "nWebPort"),
                              (OTHER, "Volumes", "nOther"), (ACCOUNT.format(0), "account", "Label")}
    return known


def forgotten(before, old_factory):
    """File, section and key of what the table forgets, and whether the value is the user's own."""
    found = {}
    for path, content in before.items():
        is_account = "sipAccount" in path
        if not is_account and path not in (USER, SYSTEM, OTHER):
            continue
        for key, value in fleetPhones.keys_of(content).items():
            if (path, *key) in known_keys() or is_account and key in known_keys():
                continue
            place = ("/config/user/voip/sipAccount*.cfg" if is_account else path, *key)
            found[place] = found.get(place, False) or path != USER or old_factory.get(key) != value
    return found


class FleetCounts(previewTool.PreviewTest):
    def count(self, images, firmware):
        """All counts of the report, made here."""
        counts = collections.defaultdict(collections.Counter)
        for number, image in enumerate(images):
            root = fleetPhones.install(image, firmware, self.folder / "copy" / str(number))
            before, after = fleetPhones.config_of(root), fleetPhones.run_program(root)
            previewTool.shutil.rmtree(root)
            for place, (kind, old, new) in fleetPhones.changes(before, after).items():
                counts[place].update(["phones", kind])
                if place[1]:
                    counts["values", *place].update([(printable(old), printable(new))])
            counts["records"].update(enumerate(outcomes(before, after)))
            old_factory = fleetPhones.keys_of((image / FACTORY[1:]).read_bytes())
            for place, is_own in forgotten(before, old_factory).items():
                counts["forgotten", *place].update({"phones": 1, "own": int(is_own)})
        return counts

    def counts_of(self, report):
        """The same counts, from the report. Those of XML files that change in place are left out."""
        counts = collections.defaultdict(collections.Counter)
        for change in report["changes"]:
            place = (change["file"], change["section"], change["key"])
            if change["section"] and change["file"].endswith(".xml"):
                continue
            counts[place] = collections.Counter({name: change[name] for name in ("phones", *KINDS)})
            for value in change.get("values", []):
                counts["values", *place][value["before"], value["after"]] += value["phones"]
        for number, record in enumerate(report["records"]):
            counts["records"].update({(number, name): count for name, count in record.items() if isinstance(count, int)
                                      and name != "line"})
        for key in report["forgotten"]:
            counts["forgotten", key["file"], key["section"], key["key"]] = collections.Counter(
                {"phones": key["phones"], "own": key["own"]})
        return counts

    def test_every_count_is_that_of_the_program_itself(self):
        images = fleetPhones.make_fleet(self.folder / "fleet", PHONES)
        firmware = fleetPhones.make_firmware(self.folder / "firmware")
        result = previewTool.run("--reveal-secrets", "--json", self.folder / "all.json", "--firmware", firmware,
                                 self.folder / "fleet", "all")
        self.assertLess(result.returncode, previewTool.NOT_DONE, result.stderr)
        report = json.loads((self.folder / "all.json").read_text())
        self.assertEqual(report["phones"]["all"], PHONES)
        self.assertEqual(len(report["records"]), len(fleetPhones.RECORDS))
        expected, found = self.count(images, firmware), self.counts_of(report)
        self.assertEqual(sorted(expected, key=str), sorted(found, key=str))
        for place, counter in expected.items():
            self.assertEqual(+counter, +found[place], place)
        compared = sum(len(+counter) for counter in expected.values())
        print(f"{PHONES} phones: {compared} counts of {len(expected)} places, values and records are equal")
        self.assertGreater(compared, 150)

    def test_warnings_and_xml_places_are_those_of_each_phone(self):
        images = fleetPhones.make_fleet(self.folder / "fleet", 12, seed=3)
        words = ("--firmware", fleetPhones.make_firmware(self.folder / "firmware"))
        report = json.loads(previewTool.run("--json", "-", *words, *images, "all").stdout)
        rules, places, xml = (collections.Counter() for _ in range(3))
        for image in images:
            preview = json.loads(previewTool.run("--json", "-", *words, image, "all").stdout)["previews"][0]
            rules.update({warning["rule"] for warning in preview["warnings"]})
            places.update({(warning["rule"], warning["place"]) for warning in preview["warnings"]})
            xml.update({(file["path"], re.sub(r'\[("[^"]*"|\d+)\](\(\d+\))?', "", change["group"]), change.get("name", ""))
                        for file in preview["files"] if file["format"] == "xml" and file["kind"] == "changed"
                        for change in file.get("changes", [])})
        self.assertEqual({rule["rule"]: rule["phones"] for rule in report["warnings"]}, rules)
        self.assertEqual({(rule["rule"], place["place"]): place["phones"] for rule in report["warnings"] for place in rule["places"]},
                         places)
        self.assertEqual({(change["file"], change["section"], change["key"]): change["phones"] for change in report["changes"]
                          if change["section"] and change["file"].endswith(".xml")}, xml)
        self.assertGreater(min(len(rules), len(xml)), 2)


if __name__ == "__main__":
    previewTool.main()
