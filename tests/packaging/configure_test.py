# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""What a build contains by default, for this machine and with a toolchain file, and the version of CMake that it needs."""

import json
import pathlib
import re
import tempfile
import unittest

import packaging

# The host's compiler, but CMake calls it cross-compiling.
TOOLCHAIN = "set(CMAKE_SYSTEM_NAME Linux)\nset(CMAKE_SYSTEM_PROCESSOR phone)\n"


def presets():
    return json.loads((packaging.SOURCE / "CMakePresets.json").read_text())


class Configure(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory(prefix="kestrune-")))

    def configure(self, *arguments):
        """The names of the programs that a build makes, and the commands that compile."""
        toolchain = self.folder / "phone.cmake"
        toolchain.write_text(TOOLCHAIN)
        arguments = [argument.replace("phone.cmake", str(toolchain)) for argument in arguments]
        status, printed = packaging.run(["cmake", "-S", ".", "-G", "Ninja", "-B", self.folder / "build", *arguments],
                                        cwd=packaging.SOURCE)
        self.assertEqual(status, 0, printed)
        rules = (self.folder / "build" / "build.ninja").read_text()
        return set(re.findall(r"(?m)^build (\S+): CXX_EXECUTABLE_LINKER", rules)), rules

    def test_the_presets_for_this_machine_have_tests_and_strict_warnings(self):
        programs, rules = self.configure("--preset", "host")
        self.assertIn("tests/operation-results", programs)
        self.assertIn("tools/preview/kestrune-preview", programs)
        self.assertIn("-Werror", rules)

    def test_a_toolchain_file_gives_the_program_only(self):
        programs, rules = self.configure("--preset", "phone", "--toolchain", "phone.cmake")
        self.assertEqual(programs, {"app/kestrune/kestrune"})
        self.assertIn("-Os", rules)
        self.assertNotIn("-Werror", rules)

    def test_a_toolchain_file_gives_more_on_request(self):
        programs, _ = self.configure("--preset", "phone", "--toolchain", "phone.cmake", "-DKESTRUNE_TESTS=ON",
                                     "-DKESTRUNE_TOOLS=ON", "-DCMAKE_CROSSCOMPILING_EMULATOR=/usr/bin/env")
        self.assertIn("tests/operation-results", programs)
        self.assertIn("tools/preview/kestrune-preview", programs)

    def test_no_preset_gives_no_strict_warnings_and_build_testing_no_tests(self):
        programs, rules = self.configure("-DBUILD_TESTING=OFF")
        self.assertEqual(programs, {"app/kestrune/kestrune"})
        self.assertNotIn("-Werror", rules)


class Version(unittest.TestCase):
    def test_the_presets_and_the_documentation_name_the_version_that_is_required(self):
        lists = (packaging.SOURCE / "CMakeLists.txt").read_text()
        required = re.search(r"(?m)^cmake_minimum_required\(VERSION ([0-9.]+)\)$", lists)[1]
        wanted = presets()["cmakeMinimumRequired"]
        self.assertEqual(f"{wanted['major']}.{wanted['minor']}", required)
        self.assertIn(f"CMake {required}", (packaging.SOURCE / "docs" / "device.md").read_text())

    def test_that_version_reads_the_presets(self):
        self.assertLessEqual(presets()["version"], 3)  # 4 needs CMake 3.23


if __name__ == "__main__":
    packaging.need("cmake", "ninja")
    packaging.main()
