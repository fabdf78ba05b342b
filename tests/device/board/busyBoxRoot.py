# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""The start scripts of a firmware with BusyBox init: mounts, log, kestrune as documented, telephony.

TROUBLE, a variable of the first process, makes a start difficult. The last process serves the serial line, so the machine
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
mount -t ubifs ubi0:config /config || mount -t jffs2 mtd1 /config
syslogd -O /var/messages
"""
TROUBLES = r"""#!/bin/sh
case "$TROUBLE" in
    hang) while ! killall -STOP kestrune 2>/dev/null; do usleep 1000; done & ;;
    read-only) mount -o remount,ro /config ;;
    full) dd if=/dev/urandom of=/config/filler bs=512 2>/dev/null; sync ;;
esac
"""
TELEPHONY = """#!/bin/sh
[ -e /config/kestrune-pending ] && state=pending || state=migrated
echo "telephony: $state" >>/var/messages
"""


def add(root):
    """Adds them to the firmware's folder."""
    (root / "sbin").mkdir()
    (root / "sbin/init").symlink_to("../bin/busybox")
    images.put(root / "etc/inittab", INITTAB)
    images.put(root / "etc/init.d/rcS", RCS)
    images.put(root / "etc/init.d/S10mounts", MOUNTS)
    images.put(root / "etc/init.d/S14trouble", TROUBLES)
    (root / "etc/init.d/S15kestrune").symlink_to("/usr/share/kestrune/kestrune.init")
    images.put(root / "etc/init.d/S50telephony", TELEPHONY)
    images.put(root / "line", (pathlib.Path(__file__).parent / "line").read_text())


def start(device, kind, trouble=""):
    """Starts the firmware's init; returns when its start has ended."""
    device.must("{ [ ! -e /dev/ubi_ctrl ] || %s; } && mount -t squashfs -o ro /dev/mtdblock0 /firmware && "
                "mount -t tmpfs tmp /firmware/tmp && mount -o bind /dev /firmware/dev && mount -t proc proc /firmware/proc"
                % ("true" if kind == "JFFS2" else "/sbin/ubiattach -m 1 -d 0 >/dev/null"))
    device.must(f"TROUBLE={trouble} exec switch_root /firmware /sbin/init")
