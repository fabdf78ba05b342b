# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""The start scripts of a firmware with BusyBox init: mounts, log, kestrune as documented, telephony.

The last process serves the serial line, so the machine
answers again as soon as the start has ended.
"""

import pathlib

from board import images

INITTAB = """::sysinit:/etc/init.d/rcS
::once:/line
"""
RCS = """#!/bin/sh
for script in /etc/init.d/S??*; do
    "$script" start
done
"""
MOUNTS = """#!/bin/sh
mount -t tmpfs tmp /run
mount -t tmpfs tmp /var
mount -t ubifs ubi0:config /config
syslogd -O /var/messages
"""
LOG = "cat /var/messages"
TELEPHONY = """#!/bin/sh
[ -e /config/kestrune-pending ] && state=pending || state=migrated
echo "telephony: $state" >>/var/messages
"""


def add(root):
    """Adds them to the firmware's folder."""
    images.add_busybox(root)
    (root / "sbin").mkdir()
    (root / "sbin/init").symlink_to("../bin/busybox")
    images.put(root / "etc/inittab", INITTAB)
    images.put(root / "etc/init.d/rcS", RCS)
    images.put(root / "etc/init.d/S10mounts", MOUNTS)
    (root / "etc/init.d/S14trouble").symlink_to("/usr/sbin/trouble")
    (root / "etc/init.d/S15kestrune").symlink_to("/usr/share/kestrune/kestrune.init")
    images.put(root / "etc/init.d/S50telephony", TELEPHONY)
    images.put(root / "line", (pathlib.Path(__file__).parent / "line").read_text())


def start(device, trouble=""):
    """Starts the firmware's init; returns when its start has ended."""
    device.must("/sbin/ubiattach -m 1 -d 0 >/dev/null && mount -t proc proc /firmware/proc")
    device.must(f"TROUBLE={trouble} exec switch_root /firmware /sbin/init")
