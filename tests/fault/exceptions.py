# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""What stays different when a run is disturbed and the same mode runs once more: the whole list.

Each row has its exact effect, so that nothing else can hide behind it.
"""

import dataclasses
import typing
import xml.etree.ElementTree

import iniValue

USER_INI = "/config/user/user.ini"
DIRECT_IP_FILE = "/config/user/voip/directip.cfg"
ACCOUNT_16 = "/config/user/voip/sipAccount16.cfg"
DOOR_PHONES = "/config/data/doorphonedata.xml"
CERTIFICATES = "/config/certs/phoneca/"
ENTRY_LIST = "/phone/resource/encryptconfig.xml"
TABLE = "/phone/resource/kestrune.xml"
CONVERTED_ACCOUNTS = 4


@dataclasses.dataclass(frozen=True)
class Again:
    """A mode that runs once more: the phone before any run, after one and after two undisturbed runs, and as it was
    found after the disturbed one. Each is a snapshot."""

    mode: str
    old: dict
    once: dict
    twice: dict
    found: dict


@dataclasses.dataclass(frozen=True)
class Difference:
    """`effect` is told in words; `expect(again, expected)` changes the expected phone accordingly."""

    name: str
    modes: tuple
    effect: str
    expect: typing.Callable


def content_of(phone, path):
    return phone[path].content if path in phone else b""


def with_content(entry, content):
    return dataclasses.replace(entry, content=content)


def expect_converted_again(again, expected, path, section, key):
    """A value that the disturbed run had converted already is converted once more."""
    old, once, twice, found = (iniValue.read(content_of(phone, path), section, key)
                               for phone in (again.old, again.once, again.twice, again.found))
    if found == once and found != old:
        content = iniValue.replace(expected[path].content, section, key, twice)
        expected[path] = with_content(expected[path], content)


def expect_backlight(again, expected):
    expect_converted_again(again, expected, USER_INI, "Backlight", "nBacklightTime")


def listed_values(phone):
    """The (file, section, key) of every active row of the enciphered-entry list."""
    for entry in xml.etree.ElementTree.fromstring(content_of(phone, ENTRY_LIST)):
        if entry.get("active", "true") in ("false", "0"):
            continue
        files = [entry.get("file")]
        if entry.get("perAccount", "false") in ("true", "1"):
            files = [f"/config/user/voip/sipAccount{number}.cfg" for number in range(CONVERTED_ACCOUNTS)]
        for file in files:
            yield file, entry.get("section"), entry.get("key")


def table_destinations(phone):
    for record in xml.etree.ElementTree.fromstring(content_of(phone, TABLE)):
        yield tuple(record.get(f"dst{part}", record.get(f"src{part}")) for part in ("File", "Sec", "Key"))


def expect_enciphered_again(again, expected):
    # In mode "all" a table record for the same key deciphers it once before it is enciphered again.
    kept = set(table_destinations(again.old)) if again.mode == "all" else set()
    for file, section, key in listed_values(again.old):
        if (file, section, key) not in kept and file in expected:
            expect_converted_again(again, expected, file, section, key)


def expect_partial_certificates(again, expected):
    for path in expected:
        if path.startswith(CERTIFICATES) and path in again.found:
            expected[path] = again.found[path]


def expect_door_phones_again(again, expected):
    if again.found.get(DOOR_PHONES) == again.once.get(DOOR_PHONES) and DOOR_PHONES in again.twice:
        expected[DOOR_PHONES] = again.twice[DOOR_PHONES]


def expect_factory_account_16(again, expected):
    is_restored = DIRECT_IP_FILE in again.old and DIRECT_IP_FILE not in again.found
    if is_restored and ACCOUNT_16 in again.twice:
        expected[ACCOUNT_16] = again.twice[ACCOUNT_16]


def expect_as_undisturbed(again, expected):
    """Needs a failing call: a run that is only cut short does not show it."""


EXCEPTIONS = (
    Difference("backlight minutes", ("2",),
               "multiplied by 60 in each run: minutes that were seconds already become 60 times as many",
               expect_backlight),
    Difference("values of the enciphered-entry list", ("all", "pwd"),
               "enciphered again while the two EnLock differ; in mode \"all\" only those that no table record writes",
               expect_enciphered_again),
    Difference("direct IP account whose copy failed", ("1", "2"),
               "removed all the same: the marked account file in mode \"1\", directip.cfg in mode \"2\"",
               expect_as_undisturbed),
    Difference("certificates", ("all", "dev"),
               "the device's own copy is neither atomic nor flushed before it ends: the beginning of a new one may "
               "remain, and stays so, since its name is there",
               expect_partial_certificates),
    Difference("door phones", ("all", "dev"),
               "rewritten in place: a run after one that had rewritten them reads the new form as the old one",
               expect_door_phones_again),
    Difference("account 16", ("2",),
               "the factory's, when directip.cfg had been restored and removed before",
               expect_factory_account_16),
)


def expected_again(again):
    """The phone that the mode must leave when it runs on the phone as it was found."""
    expected = dict(again.once)
    for difference in EXCEPTIONS:
        if again.mode in difference.modes:
            difference.expect(again, expected)
    return expected


# The device's own copy of certificates under conditions that are not its usual ones. None of them needs a second run.
EXCEPTIONS += (
    Difference("certificates that cannot be copied", ("all", "dev"),
               "the device's own copy needs five descriptors, writes through no dangling link, and waits at a pipe or "
               "a device that the factory folder holds as a certificate: the new certificate is missing then (in the "
               "last case the run waits); a link of another user under a certificate's name, in a certificate folder "
               "that is sticky and open to all, is followed by it",
               expect_as_undisturbed),
)


def new_certificates(expected, old):
    """The names that the device's own copy would have made."""
    return [path for path in expected if path.startswith(CERTIFICATES) and path not in old]


@dataclasses.dataclass(frozen=True)
class Stand:
    """What a pass takes for granted when a read fails, and so writes: `values(before)` gives (file, section, key,
    value), all in bytes but the file."""

    name: str
    modes: tuple
    effect: str
    values: typing.Callable


def accounts_of(before):
    return [path for path in before if path.startswith("/config/user/voip/sipAccount")]


def missing_shared_line_keys(before):
    for path in accounts_of(before):
        yield path, b"account", b"SCALineKeyNumber", b"-1"


def ringback_seeds(before):
    timer = iniValue.read(content_of(before, "/config/user/voip/sipAccount0.cfg"), "account", "CancelTimer")
    for value in (timer, b"180"):
        if value is not None:
            yield USER_INI, b"Feature", b"RingbackTimeout", value


def empty_table_values(before):
    for file, section, key in table_destinations(before):
        yield file, section.encode(), key.encode(), b""


ALL_MODES = ("all", "dev", "pwd", "1", "2", "fix-ups-only")
FAILED_READS = (
    Stand("shared line key", ALL_MODES,
          "an account file that cannot be read once counts as one without \"SCALineKeyNumber\": the key becomes -1, "
          "also where it held another number",
          missing_shared_line_keys),
    Stand("ring-back time-out", ALL_MODES,
          "a user.ini that cannot be read once counts as one without \"RingbackTimeout\": the key becomes the first "
          "account's \"CancelTimer\", or 180 where that file cannot be read",
          ringback_seeds),
    Stand("table record", ("all", "dev"),
          "a source that cannot be read gives the empty value, which the destination then holds",
          empty_table_values),
)


def values_after_failed_reads(mode, before):
    """{file: {(section, key): values}}"""
    found = {}
    for stand in FAILED_READS:
        if mode not in stand.modes:
            continue
        for file, section, key, value in stand.values(before):
            found.setdefault(file, {}).setdefault((section, key), set()).add(value)
    return found


def table_records(phone):
    return list(xml.etree.ElementTree.fromstring(content_of(phone, TABLE)))
