#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""Each rule warns of its case, with a place, and of nothing else."""

import previewTool

USER, SYSTEM = "/config/user/user.ini", "/config/system/system.ini"
TABLE, LIST = "/phone/resource/kestrune.xml", "/phone/resource/encryptconfig.xml"
FACTORY = "/phone/factory/user/user.ini"
KEY = "/phone/factory/certs/pwcipher.key"
VERSION, SWITCH_OFF = "/config/version.ini", "[SyncConfig]\nbEnableFromOld=0\n"
MASK = "\u2022" * 6
FIXED = "[Feature]\nRingbackTimeout=120\n"

# The digits of the development key, so that these texts have one form with and without the file.
KEY_DIGITS = "".join(f"{(7 * n + 3) % 256:02x}" for n in range(64))
# Enciphered with it: "plover-nest", the same twice, "heron-nest" twice.
PLOVER = "tdg22ay2DNg4QGoeCq18lnUhELkQErenCLzX"
PLOVER_TWICE = "0wa2wY1QFz152ry9+aYhQG5q5fkAQpWoqxmPGzXVpD3g8BvjlqGgb242sVVTeFq6m728Dg"
HERON_TWICE = "9NtJLYIXUoT6PaemFqIbd7DPMzIeA7kCmxYXEhq1BftoUfko+Du59s3TkHuebDjbcogh"


def lock(value):
    return f"[PhoneSetting]\nEnLock={value}\n"


def record(key, to="", more=""):
    return f'<r srcFile="{USER}" srcSec="A" srcKey="{key}" {to} {more}/>'


def contacts(groups, in_each):
    contact = '<contact sLocalRename="n"/>'
    return "<contactData>" + "".join(f'<group sGroupName="g{n}">{contact * in_each}</group>' for n in range(groups)) + "</contactData>"


def keys(count):
    return "<DssKey>" + '<Item Type="Line"/>' * count + "</DssKey>"


QUIET = {KEY: KEY_DIGITS, USER: FIXED + lock(0), FACTORY: lock(0), TABLE: "<t><r srcFile='/config/user/user.ini' srcSec='Feature' "
         "srcKey='RingbackTimeout'/></t>", LIST: "<l/>", "/config/data/contactData.xml": contacts(1, 1)}

# files over those of a phone without a warning; mode; rule and place
CASES = [
    ("a source that is missing", {TABLE: "<t>" + record("none", 'dstKey="b"') + "</t>", USER: FIXED + "[A]\nb=1\n"}, "dev",
     "KP001", f"{USER} [A] b"),
    ("a source that is missing, of a key that is", {TABLE: "<t>" + record("none", 'dstKey="b"') + "</t>"}, "dev",
     "KP013", f"{USER} [A] b"),
    ("the switch is off", {VERSION: SWITCH_OFF}, "dev", "KP014", f"{VERSION} [SyncConfig] bEnableFromOld"),
    ("a record puts the switch off", {USER: FIXED + lock(0) + "[A]\na=0\n", VERSION: "[SyncConfig]\nbEnableFromOld=1\n",
     TABLE: "<t>" + record("a", f'dstFile="{VERSION}" dstSec="SyncConfig" dstKey="bEnableFromOld"') + "</t>"}, "all",
     "KP014", f"{VERSION} [SyncConfig] bEnableFromOld"),
    ("a listed value of 104 characters", {USER: FIXED + lock(0) + "[A]\na=" + "x" * 104, FACTORY: lock(1),
     LIST: f'<l><e file="{USER}" section="A" key="a"/></l>'}, "pwd",
     "KP002", f"{USER} [A] a"),
    ("a table value that stays plain", {USER: FIXED + lock(1) + "[A]\na=" + "x" * 104, FACTORY: lock(1),
     TABLE: "<t>" + record("a", more='srcEncrypt="true"') + "</t>"}, "dev", "KP002", f"{USER} [A] a"),
    ("a table value that is lost", {USER: FIXED + lock(1) + "[A]\na=" + "x" * 160, FACTORY: lock(1),
     TABLE: "<t>" + record("a", more='srcEncrypt="true"') + "</t>"}, "dev", "KP002", f"{USER} [A] a"),
    ("seconds taken for minutes", {USER: FIXED + "[Backlight]\nnBacklightTime=60\n", "/tmp/VersionInfo.cfg": ""}, "2",
     "KP004", f"{USER} [Backlight] nBacklightTime"),
    ("51 groups", {"/config/data/contactData.xml": contacts(51, 1)}, "dev", "KP005", "/config/data/contactData.xml"),
    ("1002 contacts", {"/config/data/contactData.xml": contacts(2, 501)}, "dev", "KP005", "/config/data/contactData.xml"),
    ("19 keys", {"/config/data/dsskey.xml": keys(19)}, "dev", "KP005", "/config/data/dsskey.xml"),
    ("no table", {TABLE: None}, "dev", "KP006", TABLE),
    ("a table that does not load", {TABLE: "<t><r"}, "dev", "KP006", TABLE),
    ("a table without records", {TABLE: "<t/>"}, "dev", "KP006", TABLE),
    ("a destination that does not load", {TABLE: "<t>" + record("a", 'dstFile="/config/none.ini"') + "</t>",
     USER: FIXED + "[A]\na=1\n"}, "dev", "KP006", "/config/none.ini"),
    ("no list", {LIST: None, FACTORY: lock(1)}, "pwd", "KP006", LIST),
    ("no factory file", {FACTORY: None}, "pwd", "KP006", FACTORY),
    ("contacts without names", {"/config/data/contactData.xml": "<contactData/>"}, "dev", "KP006",
     "/config/data/contactData.xml"),
    ("another root", {"/config/data/dialplan.xml": "<Other/>"}, "dev", "KP006", "/config/data/dialplan.xml"),
    ("a source file that does not load", {TABLE: f'<t><r srcFile="/config/no.ini" srcSec="A" srcKey="a" dstFile="{USER}"/></t>',
     USER: FIXED + "[A]\na=1\n"}, "dev", "KP007", "/config/no.ini"),
    ("contacts that do not load", {"/config/data/contactData.xml": "<contactData"}, "dev", "KP007",
     "/config/data/contactData.xml"),
    ("dial rules that do not load", {"/config/data/dialnow.xml": "<DialNow"}, "dev", "KP007", "/config/data/dialnow.xml"),
    ("door phones that do not load", {"/config/data/doorphonedata.xml": "<DoorPhone"}, "dev", "KP007",
     "/config/data/doorphonedata.xml"),
    ("keys that do not load", {"/config/data/dsskey.xml": "<DssKey"}, "dev", "KP007", "/config/data/dsskey.xml"),
    ("an old file of which nothing is read", {"/config/data/dialplan.xml": "<"}, "dev", "KP007", "/config/data/dialplan.xml"),
    ("phone books that do not load", {"/config/data/remotebook.xml": "<RemotePhoneBook"}, "dev", "KP007", "/config/data/remotebook.xml"),
    ("a key layout that does not load", {"/config/data/linekey.xml": "<", "/tmp/VersionInfo.cfg": "",
     USER: FIXED + "[Backlight]\nnBacklightTime=0\n"}, "2", "KP007", "/config/data/linekey.xml"),
    ("a listed file that does not load", {LIST: '<l><e file="/config/no.ini" section="A" key="a"/></l>', FACTORY: lock(1)},
     "pwd", "KP007", "/config/no.ini"),
    ("an empty certificate", {"/config/certs/phoneca/a.pem": ""}, "dev", "KP008", "/config/certs/phoneca/a.pem"),
    ("an account that goes", {"/config/user/voip/sipAccount2.cfg": "[account]\nSCALineKeyNumber=-1\ndirectip=1\n"}, "1",
     "KP009", "/config/user/voip/sipAccount2.cfg"),
]

FLAGGED = "<t>" + record("a", more='srcEncrypt="true"') + "</t>"
LISTED_A = f'<l><e file="{USER}" section="A" key="a"/></l>'
CASES += [
    ("the table enciphers without a key", {KEY: None, USER: FIXED + lock(1) + "[A]\na=1\n", FACTORY: lock(1), TABLE: FLAGGED}, "dev",
     "KP015", KEY),
    ("the password pass enciphers without a key", {KEY: None, USER: FIXED + lock(0) + "[A]\na=1\n", FACTORY: lock(1),
     LIST: LISTED_A, TABLE: FLAGGED}, "all", "KP015", KEY),
]

# the same just before it comes to that
QUIET_CASES = [
    ("103 characters", {USER: FIXED + lock(1) + "[A]\na=" + "x" * 103, FACTORY: lock(1),
     TABLE: "<t>" + record("a", more='srcEncrypt="true"') + "</t>"}, "dev"),
    ("a long value without a flag", {USER: FIXED + lock(1) + "[A]\na=" + "x" * 160, FACTORY: lock(1),
     TABLE: "<t>" + record("a") + "</t>"}, "dev"),
    ("50 groups", {"/config/data/contactData.xml": contacts(50, 1)}, "dev"),
    ("1001 contacts", {"/config/data/contactData.xml": contacts(1, 1001)}, "dev"),
    ("18 keys", {"/config/data/dsskey.xml": keys(18)}, "dev"),
    ("no old file at all", {"/config/data/contactData.xml": None}, "dev"),
    ("nothing enciphered yet", {}, "pwd"),
    ("a certificate", {"/config/certs/phoneca/a.pem": "x"}, "all"),
    ("no account marked", {"/config/user/voip/sipAccount2.cfg": "[account]\nSCALineKeyNumber=-1\n"}, "1"),
    ("the switch is off and there is nothing to translate", {VERSION: SWITCH_OFF, "/config/data/contactData.xml": None}, "dev"),
    ("the switch is off in a mode without translations", {VERSION: SWITCH_OFF}, "pwd"),
    ("an empty key that was empty", {TABLE: "<t>" + record("none", 'dstKey="b"') + "</t>", USER: FIXED + "[A]\nb=\n"}, "dev"),
    ("an empty key of a new file", {"/phone/factory/user/voip/sipAccount16.cfg": "[account]\nSCALineKeyNumber=?3\nq=?\n"}, "2"),
    ("no key, and no lock", {KEY: None, USER: FIXED + lock(0) + "[A]\na=1\n", TABLE: FLAGGED, LIST: LISTED_A}, "all"),
    ("no key, and nothing but an empty value", {KEY: None, USER: FIXED + lock(1) + "[A]\na=\n", FACTORY: lock(1), TABLE: FLAGGED},
     "dev"),
    ("no key, and a value that is enciphered already", {KEY: None, USER: FIXED + lock(1) + f"[A]\na={PLOVER}\n", FACTORY: lock(1),
     TABLE: FLAGGED}, "dev"),
    ("no hand-over", {USER: FIXED + "[Backlight]\nnBacklightTime=60\n"}, "2"),
]

LISTED = f'<l><e file="{USER}" section="A" key="a"/></l>'
TO_B = "<t>" + record("a", 'dstKey="b"') + "</t>"
PLAIN_B = ("KP012", f"{USER} [A] b")


def phone_with(user_lock, factory_lock, keys, table=None, entries=LISTED):
    return {USER: FIXED + lock(user_lock) + "[A]\n" + keys, FACTORY: lock(factory_lock), LIST: entries,
            TABLE: table or QUIET[TABLE]}


# files; mode; what warns of a secret that is written plain
PLAIN_CASES = [
    ("a listed secret is copied to another place", phone_with(1, 1, f"a={PLOVER}\n", TO_B), "all", [PLAIN_B]),
    ("and the factory's phone is plain", phone_with(1, 0, f"a={PLOVER}\n", TO_B), "dev", [PLAIN_B]),
    ("an enciphered value in no list", phone_with(1, 1, f"a={PLOVER}\n", TO_B, "<l/>"), "all", [PLAIN_B]),
    ("in its place", phone_with(1, 1, f"a={PLOVER}\n", "<t>" + record("a") + "</t>", "<l/>"), "all",
     [("KP012", f"{USER} [A] a")]),
    ("a listed one that a record deciphers in its place", phone_with(1, 1, f"a={PLOVER}\n", "<t>" + record("a") + "</t>"),
     "all", [("KP012", f"{USER} [A] a")]),
    ("over two records", phone_with(1, 1, f"a={PLOVER}\n", "<t>" + record("a", 'dstKey="c" dstEncrypt="1"') +
     '<r srcFile="/config/user/user.ini" srcSec="A" srcKey="c" dstKey="b"/></t>', "<l/>"), "dev", [PLAIN_B]),
    ("a plain listed one on a locked phone", phone_with(1, 1, "a=plover-nest\n", TO_B), "all", [PLAIN_B]),
    ("a plain one that the password pass enciphers at its own place only", phone_with(0, 1, "a=plover-nest\n", TO_B), "all",
     [PLAIN_B]),
    ("from the destination of a flagged record", phone_with(1, 1, "c=plover\n", "<t>" + record("c", 'dstKey="a" dstEncrypt="1"')
     + record("c", 'dstKey="b"') + '<r srcFile="/config/user/user.ini" srcSec="A" srcKey="a" dstKey="b"/></t>', "<l/>"), "dev",
     [PLAIN_B]),
    ("the user's lock counts without the password pass", phone_with(1, 0, "a=plover-nest\n", TO_B), "dev", [PLAIN_B]),
    ("no lock", phone_with(0, 0, "a=plover-nest\n", TO_B), "all", []),
    ("the factory's lock counts with the password pass only", phone_with(0, 1, "a=plover-nest\n", TO_B), "dev", []),
    ("the user's lock does not count then", phone_with(1, 0, "a=plover-nest\n", TO_B), "all", []),
    ("the firmware wants the listed one plain", phone_with(1, 0, f"a={PLOVER}\n"), "pwd", []),
    ("but not one that is listed and not active", phone_with(1, 0, f"a={PLOVER}\n", "<t>" + record("a") + "</t>",
     f'<l><e file="{USER}" section="A" key="a" active="false"/></l>'), "all", [("KP012", f"{USER} [A] a")]),
    ("a record with the flag", phone_with(1, 1, f"a={PLOVER}\n", "<t>" + record("a", 'dstKey="b" dstEncrypt="1"') + "</t>"), "all",
     []),
    ("too long to be enciphered, which KP002 says", phone_with(1, 1, "a=" + "x" * 104 + "\n",
     "<t>" + record("a", 'dstKey="b" dstEncrypt="1"') + "</t>"), "dev", []),
    ("both places are listed", phone_with(0, 1, "a=plover-nest\n", TO_B, f'<l><e file="{USER}" section="A" key="a"/>'
     f'<e file="{USER}" section="A" key="b"/></l>'), "all", []),
    ("a secret by its name only", phone_with(1, 1, "a=1\nstrPassword=plover-nest\n", "<t>" +
     record("strPassword", 'dstKey="strPwd"') + "</t>"), "all", []),
    ("one that is emptied", phone_with(1, 1, f"a={PLOVER}\nb=\n", "<t>" + record("b", 'dstKey="a"') + "</t>"), "all", []),
    ("an account's", {**phone_with(1, 1, "", '<t><r srcFile="/config/user/voip/sipAccount3.cfg" srcSec="account" srcKey="q"/></t>',
     '<l><e perAccount="1" section="account" key="q"/></l>'), "/config/user/voip/sipAccount3.cfg":
     f"[account]\nSCALineKeyNumber=-1\nq={PLOVER}\n"}, "all", [("KP012", "/config/user/voip/sipAccount3.cfg [account] q")]),
    ("an account's that the firmware wants plain", {**phone_with(1, 0, "", None, '<l><e perAccount="1" section="account" key="q"/></l>'),
     "/config/user/voip/sipAccount3.cfg": f"[account]\nSCALineKeyNumber=-1\nq={PLOVER}\n"}, "pwd", []),
]


MOVED_A = "<t>" + record("a", 'dstKey="b" dstEncrypt="1"') + "</t>"
OLD_A = [("KP016", f"{USER} [A] a")]

# files; mode; what warns of a moved secret that stays plain at its old place
OLD_PLACE_CASES = [
    ("the table enciphers the new place", phone_with(1, 1, "a=plover-nest\n", MOVED_A, "<l/>"), "dev", OLD_A),
    ("and it was there before the run", phone_with(1, 1, f"a=plover-nest\nb={PLOVER}\n", MOVED_A, "<l/>"), "all", OLD_A),
    ("the password pass enciphers the new place", phone_with(0, 1, "a=plover-nest\n", TO_B,
     f'<l><e file="{USER}" section="A" key="b"/></l>'), "all", OLD_A),
    ("also when only that runs", phone_with(0, 1, "a=plover-nest\nb=plover-nest\n", TO_B,
     f'<l><e file="{USER}" section="A" key="b"/></l>'), "pwd", OLD_A),
    ("it is rewritten first", phone_with(1, 1, "a=plover-nest\n", "<t>" + record("a", more='srcEncrypt="1"') +
     record("a", 'dstKey="b" dstEncrypt="1"') + "</t>", "<l/>"), "dev", []),
    ("both places are listed", phone_with(0, 1, "a=plover-nest\n", TO_B, f'<l><e file="{USER}" section="A" key="a"/>'
     f'<e file="{USER}" section="A" key="b"/></l>'), "all", []),
    ("plain on purpose", phone_with(1, 1, "a=plover-nest\n", MOVED_A,
     f'<l><e file="{USER}" section="A" key="a" active="false"/></l>'), "dev", []),
    ("enciphered there before", phone_with(1, 1, f"a={PLOVER}\n", MOVED_A, "<l/>"), "dev", []),
    ("another value at the new place", phone_with(1, 1, f"a=heron-nest\nb={PLOVER}\n", None, "<l/>"), "dev", []),
    ("no lock", phone_with(0, 0, "a=plover-nest\n", MOVED_A, "<l/>"), "all", []),
    ("the new place is plain as well", phone_with(1, 1, "a=plover-nest\n", TO_B, "<l/>"), "dev", []),
    ("the firmware's own file", {**phone_with(1, 1, "", MOVED_A.replace(f'srcFile="{USER}"',
     f'srcFile="{FACTORY}" dstFile="{USER}"'), "<l/>"), FACTORY: lock(1) + "[A]\na=plover-nest\n"}, "dev", []),
    ("a mode that has neither pass", phone_with(1, 1, f"a=plover-nest\nb={PLOVER}\n", MOVED_A, "<l/>"), "1", []),
    ("an account's that is plain on purpose", {**phone_with(1, 1, "", MOVED_A.replace(USER, "/config/user/voip/sipAccount9.cfg"),
     '<l><e perAccount="1" section="A" key="a" active="0"/></l>'), "/config/user/voip/sipAccount9.cfg":
     "[account]\nSCALineKeyNumber=-1\n[A]\na=plover-nest\n"}, "dev", []),
]

ERRORS = ("KP002", "KP003", "KP006", "KP012", "KP014", "KP015")  # something is lost, or in clear
WORST_FIRST = ("error", "warning", "note")


def severity_of(rule):
    return "error" if rule in ERRORS else "note" if rule == "KP010" else "warning"


class Warnings(previewTool.PreviewTest):
    def warnings(self, files, mode):
        chosen = {path: content for path, content in {**QUIET, **files}.items() if content is not None}
        shown = self.show(self.phone(chosen), mode)
        return [(warning["rule"], warning["place"]) for warning in shown.preview["warnings"]], shown

    def test_each_rule_warns_of_its_case(self):
        for name, files, mode, rule, place in CASES:
            with self.subTest(name):
                found, shown = self.warnings(files, mode)
                others = [warning for warning in found if warning[0] != "KP010"]
                self.assertIn((rule, place), found)
                self.assertEqual({warning[0] for warning in others} - {rule, "KP001"}, set())
                self.assertIn(f"{severity_of(rule)} {rule}  {place}\n", shown.text)
                severities = [warning["severity"] for warning in shown.preview["warnings"]]
                self.assertEqual(severities, sorted(map(severity_of, (rule for rule, _ in found)), key=WORST_FIRST.index))

    def test_none_warns_just_before(self):
        for name, files, mode in QUIET_CASES:
            with self.subTest(name):
                self.assertEqual(self.warnings(files, mode)[0], [])

    def test_a_value_that_is_enciphered_twice(self):
        files = {FACTORY: lock(1), USER: FIXED + lock(0) + "[A]\na=plover\n",
                 LIST: f'<l><e file="{USER}" section="A" key="a"/></l>'}
        found, shown = self.warnings(files, "pwd")
        self.assertEqual(found, [("KP003", f"{USER} [A] a"), ("KP010", USER)])
        self.assertIn("in a second run", shown.text)

    def test_a_value_that_was_enciphered_twice_before_is_not_the_runs_doing(self):
        keys = f"a={PLOVER_TWICE}\nb={HERON_TWICE}\n"
        flagged = "<t>" + record("a", 'dstKey="b" dstEncrypt="1"') + "</t>"
        found, shown = self.warnings(phone_with(1, 1, keys, flagged, "<l/>"), "dev")
        self.assertEqual((found, shown.change(USER, "A", "b")["secret"]), ([], "changed, enciphered twice"))

    def test_a_secret_that_is_written_plain(self):
        for name, files, mode, expected in PLAIN_CASES:
            with self.subTest(name):
                found, shown = self.warnings(files, mode)
                self.assertEqual([warning for warning in found if warning[0] == "KP012"], expected)
                self.assertNotIn("plover", shown.text)

    def test_a_moved_secret_that_stays_plain(self):
        for name, files, mode, expected in OLD_PLACE_CASES:
            with self.subTest(name):
                found, _ = self.warnings(files, mode)
                self.assertEqual([warning for warning in found if warning[0] == "KP016"], expected)

    def test_a_program_that_refuses_to_encipher_is_warned_of_too(self):
        """Its values stay plain; the key is missing all the same."""
        program = self.folder / "program"
        program.write_text("#!/bin/sh\necho bEncrypt=1\necho 'src value:1'\necho 'lpOutPassword=1, 0'\n"
                           f"echo 'Translate dst: {USER} A a value:1 bThisKeyEncrypt:1'\n")
        program.chmod(0o755)
        files = {**QUIET, USER: FIXED + lock(1) + "[A]\na=1\n", FACTORY: lock(1), TABLE: FLAGGED}
        del files[KEY]
        self.assertIn("KP015", self.show("--program", program, self.phone(files), "dev").rules())

    def test_a_place_hides_the_secrets_in_its_names(self):
        user = FIXED + lock(0) + "[A]\na=\nstrPassword=plover-nest\n[plover-nest]\nb=1\n"
        to_name = "<t>" + record("a", 'dstSec="plover-nest" dstKey="b"') + "</t>"
        self.assertEqual(self.warnings({USER: user, TABLE: to_name}, "dev")[0], [("KP001", f"{USER} [plover-nest] b")])
        empty = {USER: user, "/config/certs/plover-nest.pem": ""}
        self.assertEqual(self.warnings(empty, "dev")[0], [("KP008", f"/config/certs/{MASK}.pem")])

    def test_the_lost_value_is_said_to_be_lost(self):
        files = next(case[1] for case in CASES if case[0] == "a table value that is lost")
        _, shown = self.warnings(files, "dev")
        self.assertIn("a value is too long to encipher: translation table: the value is lost", shown.text)

    def test_what_is_not_translated_reaches_no_limit(self):
        found, _ = self.warnings({"/config/data/dsskey.xml": keys(19), VERSION: SWITCH_OFF}, "dev")
        self.assertEqual([rule for rule, _ in found], ["KP014"])

    def test_every_warning_says_what_to_do(self):
        for warning in self.warnings(CASES[0][1], "dev")[1].preview["warnings"]:
            self.assertTrue(warning["text"] and warning["advice"])


if __name__ == "__main__":
    previewTool.main()
