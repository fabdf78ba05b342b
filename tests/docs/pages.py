# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""The pages of the documentation, and the blocks in them."""

import dataclasses
import pathlib
import re
import sys

PROJECT = pathlib.Path(__file__).resolve().parents[2]
PAGES = sorted(page for pattern in ("*.md", "docs/*.md", "examples/**/*.md") for page in PROJECT.glob(pattern))

BLOCK = re.compile(r"(?m)^(?P<indent> *)```(?P<language>\w*)\n(?P<text>(?:.*\n)*?)(?P=indent)```$")


@dataclasses.dataclass(frozen=True)
class Block:
    """`language` is the word after the fence; `lead` is the last line of text before it."""

    page: str
    line: int
    language: str
    text: str
    lead: str

    @property
    def place(self):
        return f"{self.page}:{self.line}"


@dataclasses.dataclass(frozen=True)
class Section:
    """The part of a page from one heading to the next: its lines that are not empty, and its blocks."""

    page: str
    heading: str
    parts: list


def name_of(page):
    return str(page.relative_to(PROJECT))


def sections_of(page):
    text, name = page.read_text(), name_of(page)
    sections, end = [Section(name, "", [])], 0
    for match in BLOCK.finditer(text + "```\n```"):
        for line in text[end:match.start()].splitlines():
            if line.startswith("#"):
                sections.append(Section(name, line.lstrip("# "), []))
            elif line.strip():
                sections[-1].parts.append(line)
        if match.end() <= len(text):
            lead = next((part for part in reversed(sections[-1].parts) if isinstance(part, str)), "")
            sections[-1].parts.append(Block(name, text.count("\n", 0, match.start()) + 1, match["language"],
                                            match["text"], lead))
        end = match.end()
    return sections


def all_sections():
    return [section for page in PAGES for section in sections_of(page)]


def all_blocks():
    return [part for section in all_sections() for part in section.parts if isinstance(part, Block)]


def take_arguments():
    """The paths after the test's name; the others are for unittest."""
    arguments = [pathlib.Path(argument) for argument in sys.argv[1:]]
    del sys.argv[1:]
    return arguments
