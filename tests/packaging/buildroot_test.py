# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""The Buildroot tree in examples/buildroot: its Kconfig, its makefile, and the links that it installs. Nothing is built: the
options and macros of Buildroot itself are stand-ins.
"""

import os
import pathlib
import re
import tempfile
import unittest

import packaging

try:
    import kconfiglib
except ImportError:
    kconfiglib = None

TREE = packaging.SOURCE / "examples" / "buildroot"
SYMBOL = "PACKAGE_KESTRUNE"
LIBRARIES = ("NETTLE", "PUGIXML", "TINYXML")

# What Buildroot has: the toolchain's options, and the packages that are selected.
MENU = """config BR2_INSTALL_LIBSTDCPP
\tbool "C++"
config BR2_TOOLCHAIN_GCC_AT_LEAST_8
\tbool "GCC 8"
config BR2_PACKAGE_NETTLE
\tbool "nettle"
config BR2_PACKAGE_PUGIXML
\tbool "pugixml"
config BR2_PACKAGE_TINYXML
\tbool "tinyxml"
source "$BR2_EXTERNAL_KESTRUNE_PATH/Config.in"
"""
MAKEFILE = """define cmake-package
built-by-cmake = yes
endef
include $(BR2_EXTERNAL_KESTRUNE_PATH)/external.mk
show-%: ; @echo '$($*)'
init-sysv: ; $(KESTRUNE_INSTALL_INIT_SYSV)
init-systemd: ; $(KESTRUNE_INSTALL_INIT_SYSTEMD)
"""


def make(*arguments):
    with tempfile.TemporaryDirectory() as folder:
        path = pathlib.Path(folder, "Makefile")
        path.write_text(MAKEFILE)
        status, printed = packaging.run(["make", "-s", "--warn-undefined-variables", "-f", path,
                                         f"BR2_EXTERNAL_KESTRUNE_PATH={TREE}", *arguments])
    if status != 0:
        raise AssertionError(printed)
    return printed.strip()


def cmake_text():
    files = [packaging.SOURCE / "CMakeLists.txt", packaging.SOURCE / "platform" / "CMakeLists.txt"]
    return "\n".join(file.read_text() for file in files)


@unittest.skipIf(kconfiglib is None, "python3-kconfiglib is not installed")
class Kconfig(unittest.TestCase):
    def setUp(self):
        os.environ["BR2_EXTERNAL_KESTRUNE_PATH"] = str(TREE)
        os.environ["CONFIG_"] = "BR2_"
        with tempfile.TemporaryDirectory() as folder:
            menu = pathlib.Path(folder, "Config.in")
            menu.write_text(MENU)
            self.config = kconfiglib.Kconfig(str(menu), warn_to_stderr=False)

    def option(self, name):
        return self.config.syms[f"BR2_{name}"]

    def set_toolchain(self, cpp, gcc):
        self.option("INSTALL_LIBSTDCPP").set_value(cpp)
        self.option("TOOLCHAIN_GCC_AT_LEAST_8").set_value(gcc)

    def test_has_no_warnings(self):
        self.assertEqual([], self.config.warnings)

    def test_selects_the_libraries(self):
        self.set_toolchain("y", "y")
        self.option(SYMBOL).set_value("y")
        self.assertEqual(["y"] * 3, [self.option(f"PACKAGE_{name}").str_value for name in LIBRARIES])

    def test_needs_a_toolchain_with_cpp_17(self):
        for cpp, gcc in (("n", "y"), ("y", "n")):
            self.set_toolchain(cpp, gcc)
            self.option(SYMBOL).set_value("y")
            self.assertEqual("n", self.option(SYMBOL).str_value)

    def test_says_what_is_missing(self):
        (comment,) = [node for node in self.config.node_iter() if node.item == kconfiglib.COMMENT]
        self.set_toolchain("n", "y")
        self.assertEqual(2, kconfiglib.expr_value(comment.dep))
        self.set_toolchain("y", "y")
        self.assertEqual(0, kconfiglib.expr_value(comment.dep))


class Makefile(unittest.TestCase):
    def test_is_a_cmake_package_of_these_sources(self):
        self.assertEqual("yes", make("show-built-by-cmake"))
        self.assertEqual("local", make("show-KESTRUNE_SITE_METHOD"))
        self.assertTrue(os.path.samefile(make("show-KESTRUNE_SITE"), packaging.SOURCE))
        self.assertTrue((packaging.SOURCE / make("show-KESTRUNE_LICENSE_FILES")).is_file())

    def test_has_the_version_of_the_project(self):
        self.assertIn(f"VERSION {make('show-KESTRUNE_VERSION')}", cmake_text())

    def test_depends_on_the_libraries_of_the_build(self):
        found = re.findall(r"pkg_check_modules\((\w+)", cmake_text())
        self.assertEqual(sorted(["host-pkgconf", *set(found)]), sorted(make("show-KESTRUNE_DEPENDENCIES").split()))
        self.assertEqual(sorted(name.lower() for name in LIBRARIES), sorted(set(found)))

    def test_sets_only_options_of_the_build(self):
        for option in re.findall(r"-D(\w+)=", make("show-KESTRUNE_CONF_OPTS")):
            self.assertIn(f"option({option} ", cmake_text())


class Links(unittest.TestCase):
    def links_of(self, init):
        """The links that it installs, each with its target in the phone's root."""
        with tempfile.TemporaryDirectory() as root:
            make(init, f"TARGET_DIR={root}")
            make(init, f"TARGET_DIR={root}")  # Buildroot repeats it
            return {name: os.path.normpath(os.path.join("/", os.path.dirname(name), os.readlink(f"{root}/{name}")))
                    for name in packaging.files_below(root)}

    def test_init_script(self):
        documented = packaging.documented_block("S15kestrune").split()
        self.assertEqual({documented[-1][1:]: documented[-2]}, self.links_of("init-sysv"))

    def test_units(self):
        modes = re.findall(r"kestrune@(\w+)", packaging.documented_block("systemctl enable"))
        self.assertEqual({f"etc/systemd/system/sysinit.target.wants/kestrune@{mode}.service":
                          "/usr/lib/systemd/system/kestrune@.service" for mode in modes}, self.links_of("init-systemd"))


if __name__ == "__main__":
    packaging.need("make")
    packaging.main()
