# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""Hides the values of secrets in a phone's files and reports.

A hidden value reads "••••••(plain 3)" or "••••••(enciphered 7)". The number stands for the value: equal values have
equal numbers, so a text with hidden values still shows which of them differ. Whether a value is enciphered is told by
its form.

Texts are decoded with "surrogateescape", so that odd bytes neither fail nor get lost.
"""

import html
import re

_WORD = re.compile(r"[A-Z]+(?![a-z])|[A-Z]?[a-z]+")
_SECRET_PARTS = (
    "password", "passwd", "passphrase", "passcode", "pincode", "secret", "token", "credential", "keymaterial"
)
_SECRET_ENDS = ("pin", "pins", "pwd", "psk")
_SECRET_KEYS = re.compile(r"(private|shared|api|auth|access|encrypt|encryption|cipher|master|wep|wpa|aes|srtp)keys?")

_ENCIPHERED = re.compile(r"(?![0-9A-Fa-f]+$)[A-Za-z0-9+/]{23,159}")  # base64 of 17 bytes or more; not a plain hex key
_PRIVATE_KEY = re.compile(r"(-----BEGIN [A-Z0-9 ]*PRIVATE KEY-----\s*)(.*?)(\s*-----END|\s*\Z)", re.DOTALL)

_INI_SECTION = re.compile(r"\ufeff?\s*\[([^]]*)]")
_INI_KEY = re.compile(r"([;#\s]*)([^=\s][^=]*?)([ \t]*=[ \t]*)(.*?)(\r?)", re.DOTALL)  # commented-out keys, too

_XML_ATTRIBUTE = re.compile(r"""([\w:.-]+)(\s*=\s*)("[^"]*"|'[^']*'|[^\s"'<>]+)""")
_XML_TAG = re.compile(r"""<[A-Za-z_](?:[^<>"']|"[^"]*"|'[^']*')*>""")
_XML_NAME = re.compile(r"<([A-Za-z_][\w:.-]*)")

_SOURCE_LINE = re.compile(r"(src value:)(.*)()", re.DOTALL)
_BUFFER_LINE = re.compile(r"(lpOutPassword=)(.*)(, -?\d+)", re.DOTALL)
_RECORD_LINE = re.compile(r"(Translate dst: .*? value:)(.*)( bThisKeyEncrypt:[01])", re.DOTALL)
_CIPHER_LINE = re.compile(r"(etlTrace \d+: (?:Encrypt|Decrypt):\()(.*)(\)->\()(.*)(\))", re.DOTALL)


def is_secret_name(name):
    """Whether the name of a key, attribute or element says that its value is a secret."""
    words = [word.lower() for word in _WORD.findall(name)]
    squeezed = "".join(words).replace("pinyin", "")
    return (
        any(part in squeezed for part in _SECRET_PARTS)
        or any(word.endswith(_SECRET_ENDS) for word in words if word in squeezed)
        or words[-1:] == ["pass"]
        or any(_SECRET_KEYS.fullmatch(first + second) for first, second in zip(words, words[1:]))
        or any(_SECRET_KEYS.fullmatch(word) for word in words)
    )


class Secrets:
    """What is known to be secret on one phone: places (section and key of any file) and values."""

    def __init__(self, files):
        """Takes the places from the two lists that the firmware brings. `files` has the device's paths as its keys."""
        self._numbers = {}
        self._places = set()
        for entry in _elements(files.get("/phone/resource/encryptconfig.xml", "")):
            self._places.add((entry.get("section", ""), entry.get("key", "")))
        records = [_record_places(record) for record in _elements(files.get("/phone/resource/kestrune.xml", ""))]
        count = -1
        while count != len(self._places):  # a record whose source is the destination of another carries its secret on
            count = len(self._places)
            for places, is_marked in records:
                if is_marked or any(map(self._is_place, places)):
                    self._places |= places

    def mask_file(self, path, text):
        text = _PRIVATE_KEY.sub(lambda block: block[1] + self._mask(block[2]) + block[3], text)
        if path.endswith(".key") and "-----BEGIN" not in text:
            return text.replace(text.strip(), self._mask(text.strip())) if text.strip() else text
        if text.lstrip("\ufeff \t\r\n").startswith("<"):
            return self._mask_xml(text)
        return self._mask_ini(text)

    def mask_output(self, text):
        """The table pass prints up to three lines for a record, the one that names its place last."""
        masked, record = [], []
        for line in text.split("\n"):
            record.append(line)
            if not line.startswith(("src value:", "lpOutPassword=")):
                masked += self._mask_record(record)
                record = []
        return "\n".join(masked + self._mask_record(record))

    def mask_errors(self, text):
        """The password pass traces secrets alone."""
        matches = ((_CIPHER_LINE.fullmatch(line), line) for line in text.split("\n"))
        return "\n".join(
            match[1] + self._mask(match[2]) + match[3] + self._mask(match[4]) + match[5] if match else line
            for match, line in matches
        )

    def _is_place(self, place):
        return place in self._places or is_secret_name(place[1])

    def _mask(self, value):
        if value == "":
            return ""
        number = self._numbers.setdefault(value, len(self._numbers) + 1)
        form = "enciphered" if _ENCIPHERED.fullmatch(value) and len(value) % 4 != 1 else "plain"
        return f"••••••({form} {number})"

    def _mask_named(self, name, value):
        is_switch = re.match("b[A-Z]", name) and value in ("0", "1")  # "bMenuPassword": whether there is one
        return self._mask(value) if is_secret_name(name) and not is_switch else value

    def _mask_ini(self, text):
        section, lines = "", text.split("\n")
        for index, line in enumerate(lines):
            if opened := _INI_SECTION.match(line):
                section = opened[1]
            elif key := _INI_KEY.fullmatch(line):
                value = self._mask(key[4]) if (section, key[2]) in self._places else self._mask_named(key[2], key[4])
                lines[index] = key[1] + key[2] + key[3] + value + key[5]
        return "\n".join(lines)

    def _mask_xml(self, text):
        def mask_attribute(attribute):
            quote = attribute[3][0] if attribute[3][0] in "\"'" else ""
            value = html.unescape(attribute[3].strip(quote) if quote else attribute[3])
            masked = self._mask_named(attribute[1], value)
            return attribute[0] if masked == value else attribute[1] + attribute[2] + quote + masked + quote

        def mask_element(element):
            value = element[2].strip().removeprefix("<![CDATA[").removesuffix("]]>")
            return element[1] + self._mask(html.unescape(value)) + element[3]

        text = _XML_ATTRIBUTE.sub(mask_attribute, text)  # in comments as well
        for name in map(re.escape, filter(is_secret_name, set(_XML_NAME.findall(text)))):
            text = re.sub(rf"(<{name}(?:\s[^<>]*)?(?<!/)>)(.*?)(</{name}\s*>)", mask_element, text, flags=re.DOTALL)
        return text

    def _mask_record(self, lines):
        matches = [
            _SOURCE_LINE.fullmatch(line) or _BUFFER_LINE.fullmatch(line) or _RECORD_LINE.fullmatch(line)
            for line in lines
        ]
        if not any(match and self._is_secret_report(match) for match in matches):
            return lines
        return [match[1] + self._mask(match[2]) + match[3] if match else line for match, line in zip(matches, lines)]

    def _is_secret_report(self, match):
        if len(match[2]) >= 4 and match[2] in self._numbers:
            return True
        names = match[1].removesuffix(" value:")
        return match.re is _RECORD_LINE and (
            match[3].endswith("1")
            or is_secret_name(names.split(" ")[-1])
            or any(names.endswith(f" {section} {key}") for section, key in self._places)
        )


def _elements(text):
    """The attributes of every element, read as loosely as the program's own XML library reads them."""
    for tag in _XML_TAG.finditer(text):
        yield {name: html.unescape(value.strip("\"'")) for name, _, value in _XML_ATTRIBUTE.findall(tag[0])}


def _record_places(record):
    source = (record.get("srcSec", ""), record.get("srcKey", ""))
    destination = (record.get("dstSec", source[0]), record.get("dstKey", source[1]))
    return {source, destination}, "srcEncrypt" in record or "dstEncrypt" in record
