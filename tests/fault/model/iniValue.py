# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""Single values of a configuration file, read by the rules of the program's own reader."""


def split(content):
    """Lines with their line ends; only LF ends a line."""
    return [line + b"\n" for line in content.split(b"\n")[:-1]] + [content.split(b"\n")[-1]]


def find(lines, section, key):
    """The number of the first line that holds the key, or None."""
    inside = False
    for number, line in enumerate(lines):
        text = line.lstrip(b" \t")
        if text.startswith(b"[") and b"]" in text:
            inside = text[1:text.index(b"]")] == section.encode()
            continue
        name, equals, _ = line.partition(b"=")
        if inside and equals and not text.startswith((b";", b"#")) and name.strip(b" \t") == key.encode():
            return number
    return None


def span(line):
    """Where the value of a key line begins and ends: without the blanks that lead it, without the line end."""
    end = len(line)
    if line.endswith(b"\n"):
        end -= 2 if line.endswith(b"\r\n") else 1
    begin = line.index(b"=") + 1
    while begin < end and line[begin] in b" \t":
        begin += 1
    return begin, end


def read(content, section, key):
    lines = split(content)
    number = find(lines, section, key)
    if number is None:
        return None
    begin, end = span(lines[number])
    return lines[number][begin:end]


def replace(content, section, key, value):
    """The content with another value for a key that is there."""
    lines = split(content)
    number = find(lines, section, key)
    begin, end = span(lines[number])
    lines[number] = lines[number][:begin] + value + lines[number][end:]
    return b"".join(lines)
