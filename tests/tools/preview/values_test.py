#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""What changed in a file, by section and key, by record and attribute, or line by line; and what became of a secret."""

import previewTool

USER, SYSTEM = "/config/user/user.ini", "/config/system/system.ini"
TABLE, LIST = "/phone/resource/kestrune.xml", "/phone/resource/encryptconfig.xml"
FACTORY = "/phone/factory/user/user.ini"
MASK = "\u2022" * 6
FIXED = "[Feature]\nRingbackTimeout=120\n"  # nothing for the start-up fix-ups to do


def record(source, destination, flags=""):
    file, section, key = source
    to_file, to_section, to_key = destination
    return (f'<r srcFile="{file}" srcSec="{section}" srcKey="{key}" dstFile="{to_file}" dstSec="{to_section}"'
            f' dstKey="{to_key}" {flags}/>')


def table(*records):
    return "<t>" + "".join(records) + "</t>"


class Values(previewTool.PreviewTest):
    def test_a_key_that_is_added_changed_or_emptied(self):
        image = self.phone({USER: FIXED + "[A]\na=1\nb=2\nc=3\nempty=\n",
                            TABLE: table(record((USER, "A", "a"), (USER, "A", "new")), record((USER, "A", "a"), (USER, "A", "b")),
                                         record((USER, "A", "empty"), (USER, "A", "c")))})
        shown = self.show(image, "dev")
        self.assertEqual([(change["kind"], change["name"], change["before"], change["after"])
                          for change in shown.file(USER)["changes"]],
                         [("changed", "b", "2", "1"), ("emptied", "c", "3", ""), ("added", "new", None, "1")])
        self.assertEqual(shown.preview["summary"], {
            "files": {"added": 0, "changed": 1, "emptied": 0, "removed": 0},
            "keys": {"added": 1, "changed": 1, "emptied": 1, "removed": 0}, "warnings": len(shown.rules())})
        self.assertIn("files: 1 changed; keys: 1 added, 1 changed, 1 emptied; warnings: 1\n", shown.text)

    def test_doubled_keys_are_told_apart(self):
        image = self.phone({USER: FIXED + "[A]\na=1\na=2\n[B]\nb=9\n[A]\na=3\n",
                            TABLE: table(record((USER, "B", "b"), (USER, "A", "a")))})
        changes = self.show(image, "dev").file(USER)["changes"]
        self.assertEqual([(change["name"], change["before"], change["after"]) for change in changes], [("a", "1", "9")])

    def test_a_removed_account_names_its_copy_and_not_its_keys(self):
        image = self.phone({USER: FIXED, "/config/user/voip/sipAccount3.cfg": "[account]\nSCALineKeyNumber=-1\ndirectip=1\n"})
        shown = self.show(image, "1")
        removed = shown.file("/config/user/voip/sipAccount3.cfg")
        self.assertEqual((removed["kind"], removed["note"]), ("removed", "its bytes are now /config/user/voip/directip.cfg"))
        self.assertNotIn("changes", removed)

    def test_xml_by_record_and_attribute(self):
        image = self.phone({USER: FIXED, "/tmp/VersionInfo.cfg": "", "/config/data/linekey.xml":
                            '<dsskey><item type="16"><itemdata extension="7"/></item><item type="1"/></dsskey>'})
        shown = self.show(image, "2")
        self.assertEqual(shown.file("/config/data/linekey.xml")["changes"], [
            {"kind": "added", "group": "dsskey/item[1]/itemdata[1]", "name": "pickup_value", "before": None, "after": "7",
             "passes": ["mode 2 migration"]}])

    def test_a_new_xml_file_by_records(self):
        image = self.phone({USER: FIXED, "/config/data/dialnow.xml": '<DialNow><Data DialNowRule="1&lt;" Account="2"/></DialNow>'})
        self.assertEqual(self.show(image, "dev").file("/config/data/DialNow.xml")["changes"], [
            {"kind": "added", "group": "dialNow/data[1]", "attributes": [{"name": "rule", "value": "1<"},
             {"name": "lines", "value": "2"}], "passes": ["dial-now rules"]}])

    def test_an_xml_file_that_is_only_written_again(self):
        image = self.phone({USER: FIXED, "/tmp/VersionInfo.cfg": "",
                            "/config/data/linekey.xml": '<dsskey>  <item type="1"/>  </dsskey>'})
        self.assertEqual(self.show(image, "2").file("/config/data/linekey.xml")["note"], "the same values, written again")

    def rewritten(self, path, old, new, files=()):
        """What is shown of a file after a run that gives it another content."""
        program = self.folder / "program"
        program.write_text(f"#!/bin/sh\ncat >{path} <<'END'\n{new}\nEND\n")
        program.chmod(0o755)
        return self.show("--program", program, self.phone({USER: FIXED, path: old + "\n", **dict(files)}), "all").file(path)

    def test_an_xml_file_with_the_same_values_and_other_bytes(self):
        old = '<a>\n<b c="1" d="2"/><b e="3"/></a>'
        for new, is_same in (('<a> <b c="1" d="2" /> <b e="3"/></a>', True), ('<a><b d="2" c="1"/><b e="3"/></a>', False),
                             ("<a><b c='1' d='2'/><b e='3'/></a>", False), (old + "[a]\nb=603", False),
                             (old + "<!-- c -->", False), ('<a><b c="1" d="2"></b><b e="3"/></a>', False)):
            for path in ("/config/x.xml", "/config/data/contactData.xml"):
                with self.subTest(new=new, path=path):
                    file = self.rewritten(path, old, new)
                    self.assertEqual((file.get("note"), "diff" in file),
                                     ("the same values, written again", False) if is_same else (None, True))

    def test_a_table_that_writes_into_an_xml_file(self):
        path = "/config/data/contactData.xml"
        image = self.phone({USER: FIXED + "[a]\nb=603\n", path: '<contactData><group sGroupName="n"/></contactData>\n',
                            TABLE: table(record((USER, "a", "b"), (path, "a", "b")))})
        file = self.show(image, "dev").file(path)
        self.assertEqual((file.get("note"), file["diff"][-2:]), (None, ["+[a]", "+b=603"]))

    def test_a_pass_that_writes_an_xml_file_keeps_its_values(self):
        layout = "/config/data/linekey.xml"
        image = self.phone({USER: FIXED, "/tmp/VersionInfo.cfg": "", layout: "<dsskey><item type='1'/></dsskey>"})
        self.assertEqual(self.show(image, "2").file(layout)["note"], "the same values, written again")

    def test_any_other_file_by_a_diff_without_its_secrets(self):
        """A certificate's copy runs through a shell, and so can be made to change a text."""
        name = "a;printf 'two\\npassword=nightjar-7\\n'>>notes.txt;cd"
        image = self.phone({USER: FIXED, "/config/notes.txt": "one\npassword=bittern-3\n",
                            f"/phone/factory/certs/phoneca/{name}": "x"})
        program = self.folder / "program"
        program.write_text("#!/bin/sh\nprintf 'one\\npassword=nightjar-7\\ntwo\\n' >/config/notes.txt\n")
        program.chmod(0o755)
        shown = self.show("--program", program, image, "dev")
        self.assertEqual(shown.file("/config/notes.txt")["diff"], [
            "@@ -1,2 +1,3 @@", " one", f"-password={MASK}(1)", f"+password={MASK}(2)", "+two"])
        self.assertNotIn("nightjar", shown.text + shown.html)
        self.assertNotIn("bittern", shown.text + shown.html)

    def test_binary_data_are_told_by_their_size(self):
        program = self.folder / "program"
        program.write_text("#!/bin/sh\nprintf 'a\\000\\033[2Jb' >/config/x.ini\n")
        program.chmod(0o755)
        shown = self.show("--program", program, self.phone({USER: FIXED}), "dev")
        self.assertEqual((shown.file("/config/x.ini")["format"], shown.file("/config/x.ini")["note"]),
                         ("binary", "0 bytes before, 7 after"))

    def secret_of(self, value, user_lock, factory_lock, *modes, listed=True):
        entries = f'<e file="{USER}" section="A" key="strPassword"/>' if listed else ""
        image = self.phone({USER: FIXED + f"[PhoneSetting]\nEnLock={user_lock}\n[A]\nstrPassword={value}\n",
                            FACTORY: f"[PhoneSetting]\nEnLock={factory_lock}\n", LIST: f"<l>{entries}</l>"})
        shown = self.show("--save-phone", self.folder / "after", image, *modes)
        after = (self.folder / "after/config/user/user.ini").read_text().split("strPassword=")[1].rstrip("\n")
        previewTool.shutil.rmtree(self.folder / "after")
        change = shown.change(USER, "A", "strPassword")
        if change is not None:
            self.assertEqual((change["before"], change["after"]), (MASK, MASK))
        return after, None if change is None else change["secret"]

    def test_what_became_of_a_secret(self):
        once, secret = self.secret_of("plover", 0, 1, "pwd")
        self.assertEqual(secret, "same, now enciphered")
        twice, secret = self.secret_of(once, 0, 1, "pwd")
        self.assertEqual(secret, "enciphered twice")
        self.assertEqual(self.secret_of("plover", 0, 1, "pwd", "pwd")[1], "enciphered twice")
        self.assertEqual(self.secret_of(once, 1, 0, "pwd"), ("plover", "same, now plain"))
        self.assertEqual(self.secret_of(twice, 1, 0, "pwd"), (once, "same, now enciphered"))
        self.assertEqual(self.secret_of("plover", 1, 1, "pwd"), ("plover", None))

    def test_a_secret_that_is_replaced(self):
        image = self.phone({USER: FIXED + "[A]\nstrPassword=plover\nstrOther=curlew\n",
                            TABLE: table(record((USER, "A", "strOther"), (USER, "A", "strPassword")))})
        shown = self.show(image, "dev")
        self.assertEqual(shown.change(USER, "A", "strPassword")["secret"], "changed, plain")
        self.assertNotIn("curlew", shown.text)

    def test_a_switch_is_no_secret(self):
        image = self.phone({USER: FIXED + "[A]\nbOld=1\nbMenuPassword=0\n",
                            TABLE: table(record((USER, "A", "bOld"), (USER, "A", "bMenuPassword")))})
        self.assertEqual(self.show(image, "dev").change(USER, "A", "bMenuPassword")["after"], "1")

    def test_revealed(self):
        image = self.phone({USER: FIXED + "[A]\nstrPassword=plover\nstrOther=curlew\n",
                            TABLE: table(record((USER, "A", "strOther"), (USER, "A", "strPassword")))})
        change = self.show("--reveal-secrets", image, "dev").change(USER, "A", "strPassword")
        self.assertEqual((change["before"], change["after"]), ("plover", "curlew"))

    def test_a_second_run_is_shown(self):
        image = self.phone({USER: FIXED + "[Backlight]\nnBacklightTime=2\n", "/tmp/VersionInfo.cfg": ""})
        shown = self.show(image, "2")
        self.assertEqual(shown.change(USER, "Backlight", "nBacklightTime")["after"], "120")
        again = shown.preview["secondRun"]["files"][0]["changes"][0]
        self.assertEqual((again["name"], again["before"], again["after"]), ("nBacklightTime", "120", "7200"))


if __name__ == "__main__":
    previewTool.main()
