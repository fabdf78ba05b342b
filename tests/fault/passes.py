# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""The passes of each mode: by which call one knows that a pass has begun, and which files it may write."""

import dataclasses
import fnmatch

USER_INI = "/config/user/user.ini"
SYSTEM_INI = "/config/system/system.ini"
FACTORY_INI = "/phone/factory/user/user.ini"
ACCOUNTS = "/config/user/voip/sipAccount*.cfg"
LAST_ACCOUNT = "/config/user/voip/sipAccount16.cfg"
DIRECT_IP = "/config/user/voip/directip.cfg"
HAND_OVER = "/tmp/VersionInfo.cfg"
TABLE = "/phone/resource/kestrune.xml"
FACTORY_CERTS = "/phone/factory/certs/phoneca/"


@dataclasses.dataclass(frozen=True)
class Pass:
    """Begins with the first `call` whose first text is `text`, after the beginning of the pass before it.

    With `ahead_of`, it is the last such call ahead of the first one with that text.
    """

    name: str
    call: str
    text: str
    writes: tuple
    ahead_of: str = ""

    def is_translator(self):
        return self.text.startswith("chTraceStack: enter ")

    def may_write(self, path):
        return any(fnmatch.fnmatchcase(path, pattern) for pattern in self.writes)


def translator(name, *writes):
    return Pass(name, "write", f"chTraceStack: enter {name}\n", tuple(f"/config/data/{file}" for file in writes))


FIX_UPS = [
    Pass("SetDefaultSCALineKeyNumber", "newfstatat", LAST_ACCOUNT, (ACCOUNTS,)),
    Pass("InitRingbackTimeout", "openat", USER_INI, (USER_INI,)),
]
XML_DATA = [
    Pass("TranslateConfigTable", "newfstatat", TABLE, (USER_INI, SYSTEM_INI, ACCOUNTS)),
    translator("ContactV4XToV50", "contact_list.xml", "contact_group_list.xml"),
    translator("DialPlanV4XToV50", "DialPlan.xml"),
    translator("DialNowV4XToV50", "DialNow.xml"),
    translator("DSSKeyV4XToV50", "memkey.xml"),
    translator("DoorPhoneV4XToV50", "doorphonedata.xml"),
    translator("RemoteBookV4XToV50", "remote_phonebook_list.xml"),
    Pass("SyncFactoryCerts", "openat", FACTORY_CERTS, ("/config/certs/phoneca/*",)),
]
PASSWORDS = [
    Pass("TransPasswordFile", "openat", USER_INI, (USER_INI, SYSTEM_INI, ACCOUNTS), ahead_of=FACTORY_INI),
]
PASSES = {
    "all": FIX_UPS + XML_DATA + PASSWORDS,
    "dev": FIX_UPS + XML_DATA,
    "pwd": FIX_UPS + PASSWORDS,
    "1": FIX_UPS + [
        Pass("SyncFactoryByVersion", "openat", FACTORY_INI, (HAND_OVER,)),
        Pass("ExtractDirectIPAccount", "newfstatat", LAST_ACCOUNT, (DIRECT_IP, ACCOUNTS)),
    ],
    "2": FIX_UPS + [
        Pass("MigrateVersionSettings", "newfstatat", HAND_OVER,
             (USER_INI, SYSTEM_INI, ACCOUNTS, "/config/data/*key*.xml")),
        Pass("RestoreDirectIPAccount", "newfstatat", DIRECT_IP, (LAST_ACCOUNT, DIRECT_IP)),
    ],
    "fix-ups-only": FIX_UPS,
}


def has_text(call, text):
    return bool(call.texts) and call.texts[0] == text.encode()


def beginning_of(one, calls, after):
    """The place in `calls` where the pass begins."""
    end = len(calls)
    if one.ahead_of:
        end = next(n for n in range(after, end) if has_text(calls[n], one.ahead_of) and calls[n].name == one.call)
    places = [n for n in range(after, end) if calls[n].name == one.call and has_text(calls[n], one.text)]
    return places[-1] if one.ahead_of else places[0]


def pass_of_each_call(mode, calls):
    """For each call the number of the pass that made it; what stands before the first pass counts to it."""
    numbers = [0] * len(calls)
    begin = 0
    for number, one in enumerate(PASSES[mode]):
        begin = beginning_of(one, calls, begin)
        numbers[begin:] = [number] * (len(calls) - begin)
    return numbers
