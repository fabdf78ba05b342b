#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""One report of many images: a run that goes on where another one ended, parts that are merged, and pages."""

import fcntl
import html.parser
import json
import os
import random
import re
import resource
import shutil
import signal
import stat
import subprocess
import tarfile
import time
import urllib.parse

import fleetPhones
import previewTool
from previewTool import CARE, DONE, FAILS, NOT_DONE, USER, WELL

REPORTS = ("text", "json", "html")


class Links(html.parser.HTMLParser):
    """What a page links to."""

    def __init__(self, page):
        super().__init__()
        self.links = []
        self.feed(page)

    def handle_starttag(self, tag, attributes):
        self.links += [urllib.parse.unquote(urllib.parse.urlsplit(value).path) for name, value in attributes if name == "href"]


def mode(path):
    return stat.S_IMODE(path.stat().st_mode)


class Fleet(previewTool.PreviewTest):
    def setUp(self):
        super().setUp()
        self.log = self.folder / "log.jsonl"

    def fleet(self, count=6):
        self.images_of_fleet = fleetPhones.make_fleet(self.folder / "fleet", count)
        self.firmware = fleetPhones.make_firmware(self.folder / "firmware")
        return self.images_of_fleet

    def report(self, *arguments):
        """The exit status and all forms of one report."""
        result = previewTool.run(*arguments, "--json", self.folder / "r.json", "--html", self.folder / "r.html")
        self.assertLess(result.returncode, NOT_DONE, result.stderr)
        return result.returncode, result.stdout, *((self.folder / name).read_text() for name in ("r.json", "r.html"))

    def whole(self, *arguments):
        """The options, the report of one go, and its log."""
        self.fleet()
        words = ("--firmware", self.firmware, *arguments, "all")
        report = self.report("--jsonl", self.log, self.folder / "fleet", *words)
        return words, report, self.log.read_bytes()

    def refused(self, reason, *arguments, command=()):
        """A run that writes nothing to the log."""
        before = self.log.read_bytes()
        result = previewTool.run(*command, *([] if command == ("merge",) else ["--jsonl", self.log]), *arguments)
        self.assertEqual((result.returncode, result.stdout), (NOT_DONE, ""))
        self.assertRegex(result.stderr, f"^kestrune-preview: .*{reason}")
        self.assertEqual(self.log.read_bytes(), before)


class Resumed(Fleet):
    def test_a_log_that_was_cut_anywhere_goes_on(self):
        words, report, log = self.whole()
        first = log.index(b"\n") + 1
        cuts = [0, 1, first // 2, first - 1, first, first + 1, len(log) - 1, len(log)]
        for cut in [*cuts, *random.Random(7).sample(range(first, len(log)), 3)]:
            with self.subTest(cut):
                self.log.write_bytes(log[:cut])
                self.assertEqual(self.report("--jsonl", self.log, self.folder / "fleet", *words), report)
                self.assertEqual(sorted(self.log.read_bytes().splitlines()), sorted(log.splitlines()))
        self.assertEqual(self.report(self.folder / "fleet", *words), report)
        self.assertEqual(self.report("-j", 1, self.folder / "fleet", *words), report)

    def test_a_run_that_is_interrupted_goes_on(self):
        self.fleet(12)
        words = ("--firmware", self.firmware, self.folder / "fleet", "all")
        report = self.report(*words)
        for number in (signal.SIGTERM, signal.SIGKILL):
            with self.subTest(number):
                self.log.unlink(missing_ok=True)
                with subprocess.Popen([previewTool.PREVIEW, "-j", "2", "--jsonl", self.log, *words],
                                      stdout=subprocess.DEVNULL) as process:
                    while not self.log.exists() or self.log.read_bytes().count(b"\n") < 5:
                        self.assertIsNone(process.poll())
                        time.sleep(0.005)
                    process.send_signal(number)
                    self.assertNotIn(process.wait(timeout=20), (WELL, CARE, FAILS))
                self.assertLess(self.log.read_bytes().count(b"\n"), 13)
                self.assertEqual(self.report("--jsonl", self.log, *words), report)

    def test_images_in_the_log_are_not_previewed_again(self):
        words, report, _ = self.whole()
        for image in self.images_of_fleet:
            shutil.rmtree(image)
        self.assertEqual(self.report("--jsonl", self.log, *self.images_of_fleet, *words), report)

    def test_another_run_is_refused(self):
        words, _, _ = self.whole()
        image = self.images_of_fleet[0]
        table, program = self.folder / "table.xml", self.folder / "program"
        table.write_text(fleetPhones.table(fleetPhones.RECORDS[:3]))
        program.write_text("#!/bin/sh\n")
        program.chmod(0o755)
        other = previewTool.shutil.copytree(self.firmware, self.folder / "other firmware")
        (other / "phone/factory/user/user.ini").write_text("[A]\n")
        rows = [(words[:2], ["dev"]), (words[:2], ["all", "all"]), ([], ["all"]), (["--firmware", other], ["all"]),
                ([*words[:2], "--table", table], ["all"]), ([*words[:2], "--program", program], ["all"]),
                ([*words[:2], "--reveal-secrets"], ["all"])]
        for options, modes in rows:
            with self.subTest(options=options, modes=modes):
                self.refused("is of another run: ", *options, image, *modes)
        self.refused("is of another run", *words[:2], "--table", table, "--table", table, image, "all", command=("diff",))
        moved = self.folder / "moved firmware"
        self.firmware.rename(moved)
        self.assertEqual(previewTool.run("--jsonl", self.log, "--firmware", moved, *self.images_of_fleet, "all").returncode, FAILS)

    def test_only_one_process_writes_a_log(self):
        image, = self.images(image="")
        self.log.touch()
        with self.log.open("ab") as held:
            fcntl.flock(held, fcntl.LOCK_EX)
            self.refused("another process writes it", image, "all")
        self.assertEqual(previewTool.run("--jsonl", self.log, image, "all").returncode, FAILS)

    def test_what_is_no_log_stays_as_it_is(self):
        image, = self.images(image=DONE)
        previewTool.run("--jsonl", self.log, image, "pwd")
        lines = self.log.read_bytes().splitlines(keepends=True)
        texts = [b"a letter", b"a letter\n", b"[1]\n", b"{}\n", lines[0] + b"{}\n", lines[0] + b"{" + lines[1],
                 lines[0] + b"\n" + lines[1], lines[0] + lines[1][:-9] + b"\n", lines[0] + lines[0], lines[1],
                 lines[0] + b'{"image": 7}\n', lines[0] + lines[1].replace(b'"warnings"', b'"warning"'), b"\0" * 99,
                 lines[0].replace(b'"version":1', b'"version":2') + lines[1], b"[" * 100_000 + b"\n"]
        for text in texts:
            with self.subTest(text[:60]):
                self.log.write_bytes(text)
                self.refused(".* is no log of a fleet", image, "pwd")
                if text.endswith(b"\n"):
                    self.refused(".* is no log of a fleet", self.log, command=("merge",))
        self.log.unlink()
        self.log.symlink_to(self.folder / "target")
        result = previewTool.run("--jsonl", self.log, image, "pwd")
        self.assertEqual(result.returncode, NOT_DONE)
        self.assertFalse((self.folder / "target").exists())

    def test_a_disk_that_is_full_leaves_whole_lines(self):
        words, report, log = self.whole()
        size = len(log) * 2 // 3

        def limit():
            resource.setrlimit(resource.RLIMIT_FSIZE, (size, size))

        for jobs in ("1", "2"):
            self.log.write_bytes(b"")
            result = subprocess.run([previewTool.PREVIEW, "-j", jobs, "--jsonl", self.log, self.folder / "fleet", *words],
                                    preexec_fn=limit, capture_output=True, text=True, check=False)
            self.assertEqual((result.returncode, result.stdout), (NOT_DONE, ""))
            self.assertRegex(result.stderr, "^kestrune-preview: cannot write .*log.jsonl: File too large\n$")
            whole = self.log.read_bytes().splitlines(keepends=True)[:-1]
            self.assertGreater(len(whole), 2)
            self.assertLessEqual(set(whole), set(log.splitlines(keepends=True)))
            self.assertEqual(self.report("--jsonl", self.log, self.folder / "fleet", *words), report)

    def test_only_the_owner_may_read_a_log_with_secrets(self):
        image, = self.images(image="")
        for before in (None, 0o644):
            self.log.unlink(missing_ok=True)
            if before is not None:
                self.log.touch()
                self.log.chmod(before)
            previewTool.run("--reveal-secrets", "--jsonl", self.log, image, "all")
            self.assertEqual(mode(self.log), 0o600)
        for option in ("--json", "--html"):
            previewTool.run("merge", option, self.folder / option, self.log)
            self.assertEqual(mode(self.folder / option), 0o600)


class Parts(Fleet):
    def parts(self, count, *options):
        """Logs of parts that lists name, the last one of an image that is broken, and the report of one go."""
        images = [*self.fleet(count), self.folder / "none.tar"]
        logs = []
        for number in range(4):
            listed = self.folder / f"list{number}"
            listed.write_text("# a part\n\n" + "".join(f"{image}\n" for image in images[number::4]))
            logs.append(self.folder / f"part{number}")
            previewTool.run("--jsonl", logs[-1], "--firmware", self.firmware, *options, f"@{listed}", "all")
        return logs, self.report("--firmware", self.firmware, *options, *images, "all")

    def test_parts_in_any_order_are_one_report(self):
        logs, report = self.parts(8)
        for order in (logs, logs[::-1], logs[2:] + logs[:2]):
            self.assertEqual(self.report("merge", *order), report)
        with logs[1].open("ab") as part:
            part.write(b'{"image": "cut')
        self.assertEqual(self.report("merge", *logs), report)
        for arguments, reason in (([*logs, logs[0]], "is counted twice"), ([self.folder / "no"], "cannot read"),
                                  ([self.folder], "cannot read|is empty"), (["/dev/null"], "is empty")):
            result = previewTool.run("merge", *arguments)
            self.assertEqual((result.returncode, result.stdout), (NOT_DONE, ""))
            self.assertRegex(result.stderr, reason)

    def test_parts_of_other_runs_are_refused(self):
        image, other = self.images(image="", other="")
        for number, options in enumerate((["all"], ["dev"], ["--reveal-secrets", "all"])):
            previewTool.run("--jsonl", self.folder / str(number), *([image] if number == 0 else [other]), *options)
        for number in (1, 2):
            result = previewTool.run("merge", self.folder / "0", self.folder / str(number))
            self.assertEqual((result.returncode, result.stdout), (NOT_DONE, ""))
            self.assertIn("is of another run than", result.stderr)

    def test_tables_of_a_log_are_its_own(self):
        """Two parts, each of whose first phones has another table."""
        make = lambda name, keys: fleetPhones.make(self.folder / name, {USER: DONE + "[A]\na=1\n", fleetPhones.TABLE:
            fleetPhones.table([fleetPhones.record(("A", "a"), ("A", key)) for key in keys])})
        images = [make("one", "bc"), make("two", "bcd"), make("three", "bcd"), make("four", "bc")]
        for number in (0, 1):
            previewTool.run("-j", 1, "--jsonl", self.folder / f"log{number}", *images[2 * number:2 * number + 2], "dev")
        report = self.report("merge", self.folder / "log0", self.folder / "log1")
        self.assertEqual(report, self.report(*images, "dev"))
        self.assertEqual([(record["line"], record["moved"]) for record in json.loads(report[2])["records"]],
                         [(2, 4), (3, 4), (4, 2)])

    def test_the_same_record_twice_is_two_records(self):
        record = f'<r srcFile="{USER}" srcSec="A" srcKey="a" dstKey="b"/>'
        images = [fleetPhones.make(self.folder / name, {USER: DONE + "[A]\na=1\n", fleetPhones.TABLE: f"<t>{record}{record}</t>"})
                  for name in ("one", "two")]
        records = json.loads(self.report(*images, "dev")[2])["records"]
        self.assertEqual([(record["moved"], record["nothing changed"]) for record in records], [(2, 0), (0, 2)])

    def test_memory_does_not_grow_with_the_number_of_phones(self):
        words, _, log = self.whole()
        lines = log.splitlines()
        phones = [json.loads(line) for line in lines[1:] if b'"image"' in line]
        others = [line for line in lines if b'"image"' not in line]
        peaks = []
        for count in (20, 2000):
            self.log.write_bytes(b"\n".join([*others, *(json.dumps(phones[n % len(phones)] | {"image": f"phone{n}"}).encode()
                                                         for n in range(count))]) + b"\n")
            with subprocess.Popen([previewTool.PREVIEW, "merge", "--json", "-", self.log], stdout=subprocess.DEVNULL) as process:
                _, status, usage = os.wait4(process.pid, 0)
                process.returncode = os.waitstatus_to_exitcode(status)
            self.assertEqual(process.returncode, FAILS)
            peaks.append(usage.ru_maxrss // 1024)
        print(f"merging 20 lines takes {peaks[0]} MiB, 2000 lines {peaks[1]} MiB")
        self.assertLess(peaks[1], peaks[0] + 64)


class Images(Fleet):
    def test_a_broken_image_is_counted_and_named(self):
        images = self.images(one=DONE, two=DONE)
        broken = self.folder / "broken.tar"
        broken.write_text("no archive")
        status, text, written, page = self.report("--jsonl", self.log, images[0], broken, images[1], "1")
        self.assertEqual(status, FAILS)
        self.assertTrue(text.startswith("3 phones, mode 1: 2 end well, 0 need care, 1 fail\n"))
        row = next(row for row in json.loads(written)["images"] if "error" in row)
        self.assertEqual((row["image"], row["ending"]), (str(broken), "fail"))
        for report in (text, page):
            self.assertIn(str(broken), re.sub("<[^>]*>", "", report))  # lines may break in it
        alone = previewTool.run("--jsonl", self.folder / "other", broken, self.folder / "none", "1")
        self.assertEqual(alone.returncode, NOT_DONE)
        self.assertTrue(alone.stdout.startswith("2 phones, mode 1: 0 end well, 0 need care, 2 fail\n"))
        self.assertEqual(previewTool.run("merge", self.folder / "other").returncode, NOT_DONE)
        self.assertEqual(previewTool.run("merge", self.log).returncode, FAILS)

    def test_a_log_of_one_image_has_the_status_of_its_preview(self):
        well, fails = self.images(well=DONE, fails="")
        care = fleetPhones.make(self.folder / "care", {"/config/certs/phoneca/a.pem": "", USER: DONE})
        for image, word, status in ((well, "1", WELL), (care, "1", CARE), (fails, "all", FAILS)):
            self.log.unlink(missing_ok=True)
            self.assertEqual(previewTool.run("--jsonl", self.log, image, word).returncode, status)
            self.assertEqual(previewTool.run("merge", self.log).returncode, status)

    def test_names_on_standard_input_with_odd_bytes(self):
        odd = ["a b", "\u00e4\u3042", "q'\"<&>", "\x1b[2J", "back\\slash", "%41#?;", "~~", "l" * 120, "..."]
        names = [os.fsencode(name) for name in odd] + [b"\xff\xfe"]
        for number, name in enumerate(names):
            file = os.path.join(os.fsencode(self.folder), b"s%d" % (number % 2), name, USER[1:].encode())
            os.makedirs(os.path.dirname(file))
            with open(file, "w", encoding="ascii") as opened:
                opened.write(DONE)
        paths = [os.path.join(os.fsencode(self.folder), b"s%d" % (number % 2), name) for number, name in enumerate(names)]
        command = [previewTool.PREVIEW, "--jsonl", self.log, "--pages", self.folder / "the pages#1", "--html", self.folder / "r.html"]
        result = subprocess.run([*command, "@-", "1"], input=b"\n".join(paths), capture_output=True, check=False)
        self.assertEqual(result.returncode, WELL, result.stderr)
        self.assertTrue(result.stdout.startswith(b"10 phones, mode 1: 10 end well"))
        self.assertNotIn(b"\x1b", (self.folder / "r.html").read_bytes() + self.log.read_bytes() + result.stdout)
        self.assert_links(10)
        again = subprocess.run([*command, "@-", "1"], input=b"\n".join(paths[::-1]), capture_output=True, check=False)
        self.assertEqual((again.returncode, again.stdout), (WELL, result.stdout))
        for word, reason in (("@-", "names no image"), (f"@{self.folder}/no", "cannot be read")):
            self.assertIn(reason, previewTool.run("--jsonl", self.log, word, "1").stderr)

    def test_archives_that_are_opened_at_once_make_no_output_writable_for_all(self):
        phone, = self.images(one="[A]\n")
        archives = self.folder / "archives"
        archives.mkdir()
        with tarfile.open(archives / "0.tar", "w") as archive:
            archive.add(phone / "config", "config")
        for number in range(1, 300):
            (archives / f"{number}.tar").hardlink_to(archives / "0.tar")
        old = os.umask(0o027)
        try:
            for number in range(2):
                report = self.folder / f"{number}.json"
                previewTool.run("--jobs", 32, "--json", report, archives, "pwd")
                self.assertEqual(mode(report), 0o640)
        finally:
            os.umask(old)

    def test_a_folder_without_an_image(self):
        (self.folder / "empty/deep").mkdir(parents=True)
        result = previewTool.run("--jsonl", self.log, self.folder / "empty", "all")
        self.assertEqual((result.returncode, self.log.exists()), (NOT_DONE, False))
        self.assertIn("has no image of a phone", result.stderr)

    def test_a_mode_with_odd_bytes(self):
        images = self.images(one=DONE, two=DONE)
        for word in ("\x1b[2J", b"fix\xff"):
            self.log.unlink(missing_ok=True)
            command = [previewTool.PREVIEW, "--any-mode", "--jsonl", self.log, *images, word]
            result = subprocess.run(command, capture_output=True, check=False)
            self.assertEqual(result.returncode, WELL, result.stderr)
            self.assertRegex(result.stdout, rb"^2 phones, mode [ -~]*\\x[ -~]*: 2 end well")

    def assert_links(self, count):
        """Each link of the report leads to a page of its own."""
        links = Links((self.folder / "r.html").read_text()).links
        self.assertEqual((len(links), len(set(links))), (count, count))
        for link in links:
            self.assertTrue((self.folder / link).read_text().startswith("<!DOCTYPE html>"), link)

    def test_pages_with_the_same_last_names(self):
        deep = self.folder / "/".join(["a long name of a folder"] * 10)
        images = [fleetPhones.make(folder / "phone", {USER: DONE}) for folder in (self.folder / "a", self.folder / "b", deep / "c",
                                                                                deep / "d")]
        words = ("--html", self.folder / "r.html", "--pages", self.folder / "pages")
        result = previewTool.run(*words, *images, self.folder / "none", "1")
        self.assertEqual(result.returncode, FAILS, result.stderr)
        self.assert_links(4)
        self.assertEqual(len(list((self.folder / "pages").iterdir())), 4)

    def test_pages_where_the_report_is_elsewhere(self):
        image, = self.images(image=DONE)
        (self.folder / "reports").mkdir()
        for page, pages in (("reports/r.html", "pages"), ("r.html", "reports/pages"), (str(self.folder / "r.html"), "pages")):
            with self.subTest(page=page, pages=pages):
                subprocess.run([previewTool.PREVIEW, "--html", page, "--pages", pages, image, "1"], cwd=self.folder, check=True,
                               stdout=subprocess.DEVNULL)
                link, = Links((self.folder / page).read_text()).links
                self.assertTrue(((self.folder / page).parent / link).exists(), link)

    def test_a_phone_without_a_page_has_no_link(self):
        images = self.images(one=DONE, two=DONE)
        words = ("--html", self.folder / "r.html", "--jsonl", self.log)
        previewTool.run(*words, images[0], "1")
        previewTool.run(*words, "--pages", self.folder / "pages", *images, "1")
        self.assert_links(1)

    def test_only_the_owner_may_read_pages_with_secrets(self):
        images = self.images(one=DONE, two=DONE)
        previewTool.run("--reveal-secrets", "--pages", self.folder / "pages", *images, "1")
        self.assertEqual([mode(page) for page in (self.folder / "pages").iterdir()], [0o600, 0o600])


if __name__ == "__main__":
    previewTool.main()
