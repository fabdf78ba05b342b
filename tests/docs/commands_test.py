# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""Every block of commands on the pages runs, one page after the other, in a copy of the source tree.

What needs minutes or a device is replaced, by programs that precede the real ones in PATH:

- a build is planned to its last command but not carried out (`ninja -n`), so its folder, options and targets must be right;
- an installation only has to find what the build would install; packaging.install installs;
- scripts of the project only write down how they were called: SCRIPTS says where each call is really made;
- the programs for a device are those of this machine.

BLOCKS are run by other tests, which read them from the page. /opt/phone is the scratch folder's.
"""

import os
import pathlib
import shutil
import subprocess
import unittest

import pages
import phones
import proof
import sourceTree

BY_HAND = None  # it takes too long, or draws pictures and pages that are compared by eye
SCRIPTS = {
    "script/bench": BY_HAND,
    "script/bootstrap armhf": "script/test",
    "script/check-commits": ".ci/run",
    "script/check-test-list": ".ci/run",
    "script/check-words": "script/format",
    "script/coverage": BY_HAND,
    "script/demo": "tests/tools/preview/demo_test.py",
    "script/demo --html build/demo.html": "tests/tools/preview/demo_test.py",
    "script/format": BY_HAND,
    "script/fuzz 5": BY_HAND,
    "script/package": ".ci/run",
    "script/picture": BY_HAND,
    "script/size": ".ci/run",
    "script/test": ".ci/run",
    "script/test --all": BY_HAND,
    "script/test --armhf": ".ci/run",
    "script/test --asan": ".ci/run",
    "script/test --contract": ".ci/run",
    "script/test --device": ".ci/run",
    "script/test --device --all": BY_HAND,
    "script/test --portability": ".ci/run",
    ".ci/run": BY_HAND,
}
DEMO = {"script/demo": "self.demo(", "script/demo --html build/demo.html": 'self.demo("--html"'}  # as its test calls it
# A part of each block, and the test that contains it.
BLOCKS = {
    "parallel --sshlogin alpha,beta": "tests/tools/preview/fleetHosts_test.py",
    "S15kestrune": "tests/packaging/buildroot_test.py",
    "systemctl enable": "tests/packaging/buildroot_test.py",
    "start 1\n": "tests/packaging/initScript_test.py",
    "printf ": "tests/packaging/initScript_test.py",
    "make BR2_EXTERNAL": BY_HAND,  # a test parses the tree
}
CROSS_COMPILER = "arm-linux-gnueabihf-g++"
CROSS_LIBRARIES = pathlib.Path("/usr/lib/arm-linux-gnueabihf/pkgconfig")

NOTED = 'echo "{name}${{1:+ $*}}" >>{log}\n'
CMAKE = """case $1 in
    --build) if [ "$2" = --preset ]; then set -- "$@" -- -n; else exec ninja -n -C "$2" ${{4:+"$4"}}; fi ;;
    --install) exec test -s "$2/cmake_install.cmake" ;;
esac
exec {real} "$@"
"""
CTEST = 'exec {real} "$@" -N\n'  # tests that are not built have no names and labels
JUDGING = '{real} "$@" || [ $? -le {worst} ]\n'  # a phone that needs care is no failure of the command

# A table with its only mistake in the line that docs/table-check.md shows.
TABLE = "<translate>" + 86 * "\n" + '<record srcSec="A" srcKey="b" dstSec="A" dstKey="c" />\n</translate>\n'


def is_for_a_device(text):
    return any(part in text for part in ("--preset armhf", "--toolchain", "--install build/phone"))


class Commands(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = pathlib.Path(cls.enterClassContext(proof.scratch_folder()))
        cls.tools, cls.tree, cls.phone = cls.folder / "tools", cls.folder / "tree", cls.folder / "opt-phone"
        cls.log = cls.folder / "log"
        cls.log.touch()
        cls.tools.mkdir()
        sourceTree.copy_to(cls.tree)
        cls.make_tools()
        cls.make_vendor()
        cls.make_images()

    @classmethod
    def put(cls, path, text):
        path.parent.mkdir(parents=True, exist_ok=True)
        path.unlink(missing_ok=True)
        path.write_text(f"#!/bin/sh\n{text}")
        path.chmod(0o755)

    @classmethod
    def make_tools(cls):
        def replace(name, text, real=None, **values):
            cls.put(cls.tools / name, text.format(real=real or shutil.which(name), **values))

        replace("cmake", CMAKE)
        replace("ctest", CTEST)
        replace("git", JUDGING, worst=1)
        for name in ("arm-linux-gnueabihf-strip", "qemu-arm-static"):
            replace(name, "exit\n")
        for program in (PREVIEW, CHECKER):
            replace(program.name, 'case " $* " in *" --expect "*) exec {real} "$@" ;; esac\n' + JUDGING, real=program, worst=2)
            link = cls.tree / "build" / "host" / "tools" / program.parent.name / program.name
            link.parent.mkdir(parents=True)
            link.symlink_to(cls.tools / program.name)
        for name in [*(cls.tree / "script").iterdir(), cls.tree / ".ci" / "run"]:
            cls.put(name, NOTED.format(name=name.relative_to(cls.tree), log=cls.log))

    @classmethod
    def make_vendor(cls):
        """What the pages call /opt/phone: a toolchain file, a root folder with libraries, and a platform library."""
        (cls.phone / "lib").mkdir(parents=True)
        (cls.phone / "include").mkdir()
        (cls.phone / "lib" / "libphoneconfig.a").touch()
        (cls.phone / "include" / "kestrune").symlink_to(cls.tree / "platform" / "include")
        found = [block for block in pages.all_blocks() if block.language == "cmake"]
        for name, part in (("phone.cmake", "CMAKE_SYSROOT"), ("phonePlatform.cmake", "add_library")):
            (text,) = [block.text for block in found if part in block.text]
            (cls.phone / name).write_text(cls.here(text))
        libraries = cls.phone / "sysroot" / "usr" / "lib"
        libraries.mkdir(parents=True)
        (cls.phone / "sysroot" / "usr" / "include").symlink_to("/usr/include")
        if CROSS_LIBRARIES.exists():
            shutil.copytree(CROSS_LIBRARIES, libraries / "pkgconfig")
            (libraries / CROSS_LIBRARIES.parent.name).symlink_to(CROSS_LIBRARIES.parent)
        program = cls.tree / "build" / "phone" / "app" / "kestrune" / "kestrune"
        program.parent.mkdir(parents=True)
        shutil.copy2(PROGRAM, program)

    @classmethod
    def make_images(cls):
        for name in ("backups/desk-7", "backups/desk-8", "backup", "new"):
            image = phones.make_phone("example", cls.folder / "image")
            (cls.tree / name).parent.mkdir(exist_ok=True)
            for archive in (f"{name}.tar.gz", *(["build/firmware-5.tar.gz"] if name == "new" else [])):
                subprocess.run(["tar", "-czf", cls.tree / archive, "-C", image, "."], check=True)
            if "/" not in name:
                shutil.move(image, cls.tree / name)
        for name in ("kestrune.xml", "old.xml", "new.xml"):
            (cls.tree / name).write_text(TABLE)
        (cls.tree / "approved").mkdir()

    @classmethod
    def here(cls, text):
        """The block with the scratch folder's places. The emulator runs what this machine has built without one."""
        text = text.replace("/opt/phone", str(cls.phone)).replace("/usr/sbin/kestrune", str(PROGRAM))
        return text.replace("qemu-arm-static -L /sysroot", "")

    def run_block(self, text):
        done = subprocess.run(["sh", "-e", "-u", "-c", self.here(text)], cwd=self.tree, stdin=subprocess.DEVNULL, text=True,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=600, check=False,
                              env={**os.environ, "PATH": f"{self.tools}:{os.environ['PATH']}"})
        self.assertEqual(done.returncode, 0, f"{text}{done.stdout}")
        return done.stdout

    def test_each_block_runs(self):
        blocks = [block for block in pages.all_blocks() if block.language == "sh"]
        for part in BLOCKS:
            self.assertTrue(any(part in block.text for block in blocks), f"no page contains {part}")
        skipped = ""
        for block in blocks:
            if any(part in block.text for part in BLOCKS):
                continue
            with self.subTest(block.place):
                if is_for_a_device(block.text) and not (shutil.which(CROSS_COMPILER) and CROSS_LIBRARIES.exists()):
                    skipped += block.text
                    self.skipTest("needs script/bootstrap armhf")
                self.run_block(block.text)
        calls = set(self.log.read_text().splitlines())
        calls |= {call for call in SCRIPTS if f"{call}\n" in skipped}
        self.assertEqual(sorted(calls), sorted(SCRIPTS), "the calls of scripts on the pages, and those that are listed here")

    def test_what_runs_elsewhere_does(self):
        for text, where in {**SCRIPTS, **BLOCKS}.items():
            if where is not BY_HAND:
                written = DEMO.get(text, text).replace("\n", "\\n")
                self.assertTrue(written in (pages.PROJECT / where).read_text(), f"{where} does not contain {written}")

    def test_each_script_is_there(self):
        for call in SCRIPTS:
            self.assertTrue(os.access(pages.PROJECT / call.split()[0], os.X_OK), call)

    def test_the_example_phone_changes_as_shown(self):
        """The block that runs a program on the example phone does not only end well."""
        (text,) = [block.text for block in pages.all_blocks() if block.text.startswith("cp -r examples/phone build/tried")]
        shutil.rmtree(self.tree / "build" / "tried", ignore_errors=True)
        self.assertIn("18 files changed", self.run_block(text))

    def test_the_text_of_the_demo_is_shown(self):
        (text,) = [block.text for block in pages.all_blocks() if block.text.startswith("phone: mode all\n")]
        shown = self.run_block("kestrune-preview examples/phone all")
        at = 0
        for part in text.split("...\n"):
            self.assertIn(part, shown[at:])
            at = shown.index(part, at) + len(part)

    def test_the_finding_of_the_checker_is_shown(self):
        blocks = [block for block in pages.all_blocks() if block.page == "docs/table-check.md" and "KT006" in block.text]
        self.assertEqual([block.language for block in blocks], ["", "json"])
        for block, option in zip(blocks, ("text", "json")):
            self.assertIn(block.text, self.run_block(f"kestrune-table-check --format {option} kestrune.xml"))


if __name__ == "__main__":
    proof.skip_without_sandbox(with_strace=False)
    PROGRAM, PREVIEW, CHECKER = pages.take_arguments()
    unittest.main(verbosity=2)
