# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""INI files as the program edits them: line by line; all bytes outside a changed value are preserved."""

import dataclasses
import re

BYTE_ORDER_MARK = b"\xef\xbb\xbf"
SECTION = re.compile(rb"^[ \t]*\[([^\]]*)\]")
KEY = re.compile(rb"^[ \t]*([^=]*[^= \t])[ \t]*=[ \t]*")


@dataclasses.dataclass(frozen=True)
class Line:
    """`kind` is "section", "key" or "other"; `name` is (section,) or (section, key); `head` is all but the value."""

    kind: str
    name: tuple
    head: bytes
    value: bytes


def lines_of(text):
    section = None
    found = []
    for raw in text.removeprefix(BYTE_ORDER_MARK).split(b"\n"):
        content = raw.removesuffix(b"\r")
        opened = SECTION.match(content)
        key = KEY.match(content)
        if content.lstrip(b" \t")[:1] in (b";", b"#", b""):
            found.append(Line("other", (), content, b""))
        elif opened:
            section = opened.group(1)
            found.append(Line("section", (section,), content, b""))
        elif key and section is not None:
            found.append(Line("key", (section, key.group(1)), key.group(0), content[key.end():]))
        else:
            found.append(Line("other", (), content, b""))
    return found


def values_of(text):
    """Every value of every key: duplicates have several."""
    values = {}
    for line in lines_of(text):
        if line.kind == "key":
            values.setdefault(line.name, []).append(line.value)
    return values


def read(text, section, key):
    """The value of the first such key, or None."""
    return next((line.value for line in lines_of(text) if line.name == (section, key)), None)


def put(text, section, key, value):
    """The text with the first such key set; one that is missing is added at the head of its section, or with it."""
    lines = text.split(b"\n")
    end = b"\r" if lines[0].endswith(b"\r") else b""
    names = [line.name for line in lines_of(text)]
    if (section, key) in names:
        number = names.index((section, key))
        end = b"\r" if lines[number].endswith(b"\r") else b""
        lines[number] = lines_of(text)[number].head + value + end
    elif (section,) in names:
        lines.insert(names.index((section,)) + 1, key + b"=" + value + end)
    else:
        lines += [b"[" + section + b"]" + end, key + b"=" + value + end, b""]
    return b"\n".join(lines)


def skeleton(text, known):
    """The parts that the program never changes: the lines without values, and without unknown keys and sections."""
    kept = []
    for line in lines_of(text):
        if line.kind == "other" or line.name in known:
            kept.append(line.head)
        elif line.kind == "section" and kept and not kept[-1].strip(b" \t"):
            kept.pop()  # a new section adds a blank line
    while kept and not kept[-1].strip(b" \t"):
        kept.pop()
    return kept


def names_in(text):
    return {line.name for line in lines_of(text) if line.kind != "other"}


def why_not_edited(base, found, allowed):
    """Why the text is not the base with some keys set: each key to one of its values in `allowed`.

    An empty reason means that it is.
    """
    known = names_in(base)
    if skeleton(found, known) != skeleton(base, known):
        return "lines are gone, or new ones are neither a key nor a section"
    before = values_of(base)
    for name, values in values_of(found).items():
        possible = set(before.get(name, ())) | allowed.get(name, set())
        wrong = [value for value in values if value not in possible]
        if wrong:
            return f"{shown(name)} contains {wrong[0]!r}, which no run wrote"
        if len(values) > len(before.get(name, [b""])):
            return f"{shown(name)} is there {len(values)} times"
    return ""


def shown(name):
    return "/".join(part.decode(errors="replace") for part in name)
