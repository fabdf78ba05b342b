# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""The account that modes "1" and "2" copy whole, to the path in devicePaths.COPIES_TO."""

import devicePaths
from model import iniText


def is_marked(entry):
    return iniText.read(entry.content, b"account", b"directip") == b"1"


def source_of(mode, phone):
    """Mode "1" takes the last marked account, if there is one; mode "2" the direct-IP file, or else the factory's."""
    if mode == "1":
        return next((path for path in reversed(devicePaths.ACCOUNTS) if path in phone and is_marked(phone[path])), None)
    return devicePaths.DIRECT_IP_FILE if devicePaths.DIRECT_IP_FILE in phone else devicePaths.FACTORY_ACCOUNT
