# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""Every example of the pages is what the program does: the files of "Before" give those of "After".

An example is what a section of a page says in these lines, each followed by the content if it ends in a colon:

    Before, `/config/user/user.ini`:
    Before, `/tmp/VersionInfo.cfg` is empty.
    After mode `1`, `/tmp/VersionInfo.cfg`:
    After mode `1`, `/config/user/voip/sipAccount4.cfg` is removed.

The modes run one after the other on one phone. Each file that a mode changes must be shown. A phone has the folder of the
accounts, and a user.ini in which the start-up fix-ups change nothing if the example shows none.
"""

import dataclasses
import pathlib
import re
import tempfile
import unittest

import pages
import phones
import proof

MARK = re.compile(r"^(?:Before|After mode `(?P<mode>\w+)`), `(?P<path>/[^`]+)`(?P<end>:| is empty\.| is removed\.)$")
WITHOUT_BLOCK = {" is empty.": b"", " is removed.": None}
OTHER_FILES = ("[Service]\n", "<!-- kestrune-table-check: ")  # how the blocks begin that are no example
ACCOUNTS = "config/user/voip"
USER_INI = {"/config/user/user.ini": b"[Feature]\nRingbackTimeout=120\n"}


@dataclasses.dataclass
class Step:
    """The files that a mode leaves, by path, with None for a removed one; the mode is None before the first run."""

    mode: str
    files: dict


def content_after(parts, at):
    """The text of the block that follows a line that ends in a colon."""
    following = parts[at + 1] if at + 1 < len(parts) else ""
    if isinstance(following, str):
        raise AssertionError(f"no block follows {parts[at]!r}")
    return following.text.encode()


def steps_of(parts):
    steps = []
    for at, part in enumerate(parts):
        mark = MARK.match(part) if isinstance(part, str) else None
        if mark is None:
            continue
        if not steps or steps[-1].mode != mark["mode"]:
            steps.append(Step(mark["mode"], {}))
        steps[-1].files[mark["path"]] = content_after(parts, at) if mark["end"] == ":" else WITHOUT_BLOCK[mark["end"]]
    return steps


def contents(phone):
    return {path: entry.content for path, entry in phones.files_of(phone).items()}


def make_phone(phone, files):
    for tree in phones.TREES:
        (phone / tree).mkdir()
    (phone / ACCOUNTS).mkdir(parents=True)
    for path, content in files.items():
        file = phone / path[1:]
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_bytes(content)


class Examples(unittest.TestCase):
    maxDiff = None

    def run_example(self, steps):
        self.assertIsNone(steps[0].mode, "no file is shown before the first mode")
        with tempfile.TemporaryDirectory() as folder:
            phone = pathlib.Path(folder)
            make_phone(phone, USER_INI | steps[0].files)
            for step in steps[1:]:
                before = contents(phone)
                phones.run(PROGRAM, phone, step.mode)
                after = contents(phone)
                changed = {path: after.get(path) for path in {**before, **after} if before.get(path) != after.get(path)}
                shown = {path: after.get(path) for path in step.files}
                self.assertEqual({**changed, **shown}, step.files, f"after mode {step.mode}")
            self.assertGreater(len(steps), 1, "no mode runs")

    def test_each_example_is_what_the_program_does(self):
        found = 0
        for section in pages.all_sections():
            steps = steps_of(section.parts)
            found += bool(steps)
            with self.subTest(f"{section.page}, {section.heading}"):
                if steps:
                    self.run_example(steps)
        self.assertGreaterEqual(found, 10)

    def test_no_example_has_another_form(self):
        for block in pages.all_blocks():
            if block.language in ("ini", "xml") and not block.text.startswith(OTHER_FILES):
                self.assertRegex(block.lead, MARK, block.place)


if __name__ == "__main__":
    proof.skip_without_sandbox(with_strace=False)
    (PROGRAM,) = pages.take_arguments()
    unittest.main(verbosity=2)
