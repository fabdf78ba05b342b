#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""Archives of unknown origin: what could do harm is refused, and names with escape sequences are shown as escapes."""

import gzip
import io
import os
import stat
import subprocess
import tarfile

import previewTool

INI = b"[PhoneSetting]\nEnLock=0\n"


def member(name, content=None, kind=tarfile.REGTYPE, target="", mode=0o644):
    info = tarfile.TarInfo(name)
    info.type, info.linkname, info.mode = kind, target, mode
    info.size = len(content or b"")
    return info, content or b""


USER = member("config/user/user.ini", INI)
ACCOUNT = member("config/user/voip/sipAccount0.cfg", b"[account]\nEnable=1\n")

REFUSED = {
    "a path with ..": [USER, member("config/../../escaped", b"x")],
    "a path that is ..": [USER, member("..", kind=tarfile.DIRTYPE)],
    "an absolute path": [USER, member("/config/user/other.ini", b"x")],
    "an absolute link out": [USER, member("config/out", kind=tarfile.SYMTYPE, target="/etc/passwd")],
    "a relative link out": [USER, member("config/out", kind=tarfile.SYMTYPE, target="../../etc/passwd")],
    "a link out by detours": [USER, member("config/out", kind=tarfile.SYMTYPE, target="/config/../etc/passwd")],
    "a hard link out": [USER, member("config/out", kind=tarfile.LNKTYPE, target="../../etc/passwd")],
    "an absolute hard link": [USER, member("config/out", kind=tarfile.LNKTYPE, target="/etc/passwd")],
    "a path through a link": [USER, member("config/to", kind=tarfile.SYMTYPE, target="../phone"),
                              member("config/to/there", b"x")],
    "a path through a link to a folder": [USER, member("phone", kind=tarfile.DIRTYPE, mode=0o755),
                                          member("config/to", kind=tarfile.SYMTYPE, target="../phone"),
                                          member("config/to/there", b"x")],
    "a hard link through a link": [USER, member("config/to", kind=tarfile.SYMTYPE, target="user"),
                                   member("config/again", kind=tarfile.LNKTYPE, target="config/to/user.ini")],
    "a file over a link": [USER, member("config/to", kind=tarfile.SYMTYPE, target="user"), member("config/to", b"x")],
    "a character device": [USER, member("config/dev", kind=tarfile.CHRTYPE)],
    "a block device": [USER, member("config/dev", kind=tarfile.BLKTYPE)],
    "a pipe": [USER, member("config/pipe", kind=tarfile.FIFOTYPE)],
    "a file twice": [USER, USER],
    "a file that is a folder": [USER, member("config/user/user.ini/x", b"x")],
    "a name that is too long": [USER, member("config/" + "n" * 200 + "/" + "/".join(["m" * 200] * 6), b"x")],
    "no phone": [member("other/user.ini", INI)],
    "nothing": [],
}


class Archives(previewTool.PreviewTest):
    def pack(self, members, name="image.tar"):
        path = self.folder / name
        with tarfile.open(path, "w:gz" if name.endswith("gz") else "w", format=tarfile.PAX_FORMAT) as packed:
            for info, content in members:
                packed.addfile(info, io.BytesIO(content))
        return path

    def check_refused(self, path):
        result = previewTool.run(path, "all")
        self.assertEqual((result.returncode, result.stdout), (previewTool.NOT_DONE, ""))
        self.assertTrue(result.stderr.startswith(f"kestrune-preview: {path.name}: "), result.stderr)
        self.assertNotIn("\x1b", result.stderr)
        self.assertNotIn(previewTool.SCRATCH, result.stderr)
        return result.stderr

    def test_what_could_do_harm_is_refused(self):
        for reason, members in REFUSED.items():
            for name in ("image.tar", "image.tar.gz"):
                with self.subTest(reason=reason, name=name):
                    self.check_refused(self.pack(members, name))

    def test_an_absolute_path_reaches_nothing(self):
        outside = self.folder / "escaped"
        self.check_refused(self.pack([USER, member(str(outside), b"x")]))
        self.assertFalse(outside.exists())

    def test_the_same_archive_without_it_is_accepted(self):
        shown = self.show(self.pack([USER, ACCOUNT]), "all")
        self.assertEqual(shown.status, previewTool.FAILS)

    def test_links_within_the_phone_are_kept(self):
        image = self.pack([member("config/user/real.ini", INI),
                           member("config/user/user.ini", kind=tarfile.SYMTYPE, target="real.ini"),
                           member("config/system/system.ini", kind=tarfile.SYMTYPE, target="/config/user/real.ini")])
        shown = self.show("--any-mode", "--save-phone", self.folder / "after", image, "fix-ups-only")
        self.assertEqual([file["path"] for file in shown.preview["files"]], ["/config/user/real.ini"])
        self.assertEqual(os.readlink(self.folder / "after/config/user/user.ini"), "real.ini")

    def test_bits_do_not_depend_on_the_umask(self):
        image = self.pack([USER, member("config/all", b"x", mode=0o666), member("config/few", b"x", mode=0o640)])
        for umask in (0o000, 0o077):
            after = self.folder / f"after{umask}"
            result = subprocess.run([previewTool.PREVIEW, "--save-phone", after, image, "all"], umask=umask, check=False,
                                    stdout=subprocess.DEVNULL)
            self.assertEqual(result.returncode, previewTool.FAILS)
            self.assertEqual([bits(after / "config" / name) for name in ("all", "few")], [0o666, 0o640])

    def test_two_names_of_one_file_become_two_files(self):
        image = self.pack([USER, member("config/user/again.ini", kind=tarfile.LNKTYPE, target="config/user/user.ini")])
        shown = self.show("--any-mode", image, "fix-ups-only")
        self.assertEqual([file["path"] for file in shown.preview["files"]], ["/config/user/user.ini"])

    def test_a_size_without_end_is_refused(self):
        path = self.folder / "image.tar.gz"
        with gzip.open(path, "wb", compresslevel=1) as packed:
            info = tarfile.TarInfo("config/user/user.ini")
            info.size = 8 << 30
            packed.write(info.tobuf())
            for _ in range(80):
                packed.write(bytes(1 << 20))
        self.check_refused(path)

    def test_a_hole_without_end_is_refused(self):
        image = self.phone({"/config/user/user.ini": INI})
        (image / "config/large").touch()
        os.truncate(image / "config/large", 8 << 30)
        subprocess.run(["tar", "--create", "--sparse", "--file", self.folder / "image.tar", "--directory", image, "config"],
                       check=True)
        self.check_refused(self.folder / "image.tar")

    def test_a_file_that_is_one_hole_is_zeros(self):
        image = self.phone({"/config/user/user.ini": INI})
        (image / "config/hole").touch()
        os.truncate(image / "config/hole", 1 << 20)
        subprocess.run(["tar", "--create", "--sparse", "--file", self.folder / "image.tar", "--directory", image, "config"],
                       check=True)
        self.assertLess((self.folder / "image.tar").stat().st_size, 1 << 16)
        self.show("--save-phone", self.folder / "after", self.folder / "image.tar", "all")
        self.assertEqual((self.folder / "after/config/hole").read_bytes(), bytes(1 << 20))

    def test_holes_count_as_bytes(self):
        """Ten files of 60 MiB, each of them one hole."""
        image = self.phone({"/config/user/user.ini": INI})
        for number in range(10):
            (image / f"config/{number}").touch()
            os.truncate(image / f"config/{number}", 60 << 20)
        subprocess.run(["tar", "--create", "--sparse", "--file", self.folder / "image.tar", "--directory", image, "config"],
                       check=True)
        self.assertIn("archive refused: ", self.check_refused(self.folder / "image.tar"))  # before the copy is made
        self.assertIn("the image has more than", self.check_refused(image))

    def test_folders_nested_without_end_are_refused(self):
        deep = "config/" + "d/" * 150
        self.check_refused(self.pack([USER, member(deep + "x", b"x")]))
        image = self.phone({"/config/user/user.ini": INI, "/" + deep + "x": ""})
        self.check_refused(image)

    def test_files_without_end_are_refused(self):
        members = [member(f"config/{number // 1000}/{number}") for number in range(100_100)]
        self.assertIn("archive refused: ", self.check_refused(self.pack(members)))

    def test_an_archive_cut_anywhere_is_refused_or_shown(self):
        whole = self.pack([USER, ACCOUNT], "whole.tar.gz").read_bytes()
        for size in range(0, len(whole), 17):
            with self.subTest(size=size):
                (self.folder / "cut.tar.gz").write_bytes(whole[:size])
                self.check_refused(self.folder / "cut.tar.gz")

    def test_names_with_escape_sequences_are_shown_as_escapes(self):
        name = "config/certs/phoneca/\x1b]0;owned\x07\u202e\n<script>alert(1)<|script>.pem"
        factory = member("phone/factory/" + name.removeprefix("config/"), b"x")
        shown = self.show("--reports", self.pack([USER, factory, member(name, b"")]), "--any-mode",
                          "all\x1b[2J")
        for output in (shown.text, shown.html, (self.folder / "preview.json").read_text()):
            self.assertNotIn("\x1b", output)
            self.assertNotIn("\x07", output)
            self.assertNotIn("\u202e", output)
        self.assertNotIn("<script", shown.html)
        shown = self.show(self.pack([USER, member(name, b"")]), "all")
        self.assertIn("KP008", shown.rules())
        self.assertIn("\\x1b]0;owned\\x07\\u202e\\n<script>", shown.text)

    def test_values_with_escape_sequences_are_shown_as_escapes(self):
        ini = b"[Forward]\nstrOld=\x1b[2J\x9b\xff<b>\r\n"
        table = (b'<t><r srcFile="/config/user/user.ini" srcSec="Forward" srcKey="strOld" dstKey="strNew"/></t>')
        shown = self.show("--reports", self.pack([member("config/user/user.ini", ini),
                                                  member("phone/resource/kestrune.xml", table)]), "dev")
        self.assertEqual(shown.change("/config/user/user.ini", "Forward", "strNew")["after"], "\\x1b[2J\\x9b\\xff<b>")
        for output in (shown.text, shown.html, (self.folder / "preview.json").read_text()):
            self.assertNotIn("\x1b", output)
        self.assertNotIn("<b>\\xff<b>", shown.html)
        self.assertIn("\\xff&lt;b&gt;", shown.html)

    def test_what_cannot_be_seen_is_shown_as_escapes(self):
        """Rows of a value, and of how it is shown. A backslash is doubled: an escape and its text differ."""
        rows = [("\x1b", "\\x1b"), ("\\x1b", "\\\\x1b"), ("a\u200bb", "a\\u200bb"), ("a\u200db", "a\\u200db"),
                ("a\u2060b", "a\\u2060b"), ("a\u00adb", "a\\xadb"), ("a\ufeffb", "a\\ufeffb"), ("a\u202eb", "a\\u202eb"),
                ("a\U000e0041b", "a\\U000e0041b"), ("a\ufe0fb", "a\\ufe0fb"), ("a\U0001f600b", "a\U0001f600b"),
                ("a\u3042b", "a\u3042b"), ("a\ufffdb", "a\ufffdb"), ("a\u0085b", "a\\x85b"), ("C:\\new", "C:\\\\new"),
                (b"\xe2\x82", "\\xe2\\x82"), (b"\xc0\xaf", "\\xc0\\xaf"), (b"\xed\xa0\x80", "\\xed\\xa0\\x80"),
                (b"\xf4\x90\x80\x80", "\\xf4\\x90\\x80\\x80"), (b"\xffA\xc3", "\\xffA\\xc3")]
        keys = [f"k{number}" for number in range(len(rows))]
        ini = b"[A]\n" + b"".join(key.encode() + b"=" + (value if isinstance(value, bytes) else value.encode()) + b"\n"
                                  for key, (value, _) in zip(keys, rows))
        table = "<t>" + "".join(f'<r srcFile="/config/user/user.ini" srcSec="A" srcKey="{key}" dstSec="B" dstKey="{key}"/>'
                                for key in keys) + "</t>"
        shown = self.show(self.phone({"/config/user/user.ini": ini, "/phone/resource/kestrune.xml": table}), "dev")
        for key, (value, expected) in zip(keys, rows):
            with self.subTest(value):
                self.assertEqual(shown.change("/config/user/user.ini", "B", key)["after"], expected)
                self.assertIn(f"+ {key} = {expected}  (", shown.text)

    def test_folders_are_held_to_the_same(self):
        image = self.phone({"/config/user/user.ini": INI})
        os.mkfifo(image / "config/pipe")
        os.symlink("/etc/passwd", image / "config/out")
        os.symlink("loop", image / "config/loop")
        shown = self.show(image, "all")
        self.assertEqual(shown.status, previewTool.FAILS)
        self.assertNotIn("root:", shown.text + shown.html)
        (image / "config/large").touch()
        os.truncate(image / "config/large", 1 << 32)
        self.check_refused(image)

    def test_bits_that_change_the_user_are_taken_away(self):
        """In the extracted archive, in the copy and in the phone that is saved; sticky folders stay."""
        members = [member("config", kind=tarfile.DIRTYPE, mode=0o7755), USER, member("config/run", b"x", mode=0o7711)]
        folder = self.phone({"/config/user/user.ini": INI, "/config/run": "x"})
        os.chmod(folder / "config", 0o7755)
        os.chmod(folder / "config/run", 0o7711)
        for image, copies in ((self.pack(members), ("archive", "phone")), (folder, ("phone",))):
            with self.subTest(image.name):
                with previewTool.hold(self.folder, image, "all") as scratch:
                    for copy in copies:
                        self.assertEqual(bits(scratch / copy / "config/run"), 0o711)
                        self.assertEqual(bits(scratch / copy / "config"), 0o1755)


def bits(path):
    return stat.S_IMODE(os.lstat(path).st_mode)


if __name__ == "__main__":
    previewTool.main()
