# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""Commit records and notes as the program writes them, to be planted: fields that end in zero bytes, and their
checksum."""

import hashlib

FORMAT = b"1"
END = b"end"
HEADER_FIELDS = 3
CHANGE_FIELDS = 5


def sum_of(content):
    return hashlib.sha256(content).hexdigest().encode()


def text_of(fields):
    text = b"".join(field + b"\0" for field in fields)
    return text + END + b"\0" + sum_of(text) + b"\0"


def fields_of(text):
    """The fields without the end and the checksum."""
    return text.split(b"\0")[:-3]


def originals_of(text):
    """The files that a record removes when their copies exist, by the copies' paths."""
    fields = [field.decode() for field in fields_of(text)[HEADER_FIELDS:]]
    changes = zip(*[iter(fields)] * CHANGE_FIELDS)
    return {copy: path for _, path, _, _, copy in changes if copy}


def record_of(mode, kind, path, content, form=FORMAT):
    """A record of one change; `content` is that of the file to be renamed or removed."""
    return text_of([b"kestrune-commit", form, mode, kind, path, str(len(content)).encode(), sum_of(content), b""])


def of_format(text, form):
    """The same record with another format number and a right checksum."""
    fields = fields_of(text)
    return text_of(fields[:1] + [form] + fields[2:])


def damaged(text, step):
    """The text truncated at each such byte, and with each of these bytes flipped."""
    numbers = range(0, len(text), step)
    return [text[:number] for number in numbers] + [
        text[:number] + bytes([text[number] ^ 1]) + text[number + 1:] for number in numbers]
