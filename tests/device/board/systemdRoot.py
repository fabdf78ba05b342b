# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""A firmware with systemd: Debian's, with the installed units enabled as documented, and a telephony unit with ordinary
dependencies. It runs from a squashfs with an overlay in memory. The last unit serves the serial line.
"""

import os
import pathlib
import shutil

from board import images, machine

UNIT = "/usr/lib/systemd/system/kestrune@.service"
MODES = ("1", "2", "all")
DROP_IN_FOLDERS = ("1", "2", "all", "dev")
CONFIG_MOUNT = """[Unit]
Before=local-fs.target
[Mount]
What=ubi0:config
Where=/config
Type=ubifs
"""
TROUBLE = """[Unit]
DefaultDependencies=no
RequiresMountsFor=/config
Before=kestrune@1.service
[Service]
Type=oneshot
RemainAfterExit=yes
EnvironmentFile=/etc/trouble
ExecStart=/usr/sbin/trouble
"""
TELEPHONY = """[Service]
Type=oneshot
RemainAfterExit=yes
SyslogIdentifier=telephony
ExecStart=/bin/sh -c '[ -e /config/kestrune-pending ] && echo pending || echo migrated'
"""
LINE = """[Unit]
After=telephony.service
[Service]
ExecStart=/line
"""
# The lines of the log as BusyBox has them, and how the units have ended.
LOG = ("journalctl -b --no-pager -t kestrune -t telephony | busybox sed 's/\\[[0-9]*\\]//; s/.* telephony: /telephony: /'; "
       "for unit in 1 2 all; do systemctl show kestrune@$unit -p Id -p Result -p ConditionResult "
       "-p ExecMainStartTimestampMonotonic | busybox tr '\\n' ' '; echo; done")


def make_root(root):
    """Debian's systemd for 32-bit ARM, unpacked and not configured: no program of it runs here."""
    for name in ("bin", "sbin", "lib"):
        (root / "usr" / name).mkdir(parents=True, exist_ok=True)
        (root / name).symlink_to(f"usr/{name}")
    for package in sorted((images.DEVICE / "packages" / "systemd").glob("*.deb")):
        images.run("sh", "-c", 'dpkg-deb --fsys-tarfile "$1" | tar -x -C "$2" --keep-directory-symlink', "sh", package, root)
    for name in ("usr/share/doc", "usr/share/locale", "usr/share/man"):
        shutil.rmtree(root / name, ignore_errors=True)


def enable(root, unit, target, text=None):
    folder = root / "etc/systemd/system"
    if text is not None:
        images.put(folder / unit, text)
    wants = folder / f"{target}.wants"
    wants.mkdir(parents=True, exist_ok=True)
    name = UNIT if unit.startswith("kestrune@") else f"/etc/systemd/system/{unit}"
    os.symlink(name, wants / unit)


def add(root):
    """Adds all that to the firmware's folder."""
    make_root(root)
    base = root / "usr/share/base-passwd"
    shutil.copy(base / "passwd.master", root / "etc/passwd")
    shutil.copy(base / "group.master", root / "etc/group")
    images.put(root / "etc/machine-id", "")
    # The serial line is for the tests only.
    images.put(root / "etc/systemd/system.conf.d/quiet.conf", "[Manager]\nShowStatus=no\n")
    (root / "etc/systemd/system/serial-getty@ttyS4.service").symlink_to("/dev/null")
    units = root / "usr/lib/systemd/system"
    images.put(units / "kestrune@.service", images.replaced("systemd/kestrune@.service.in"))
    for mode in DROP_IN_FOLDERS:
        images.put(units / f"kestrune@{mode}.service.d/order.conf", images.replaced(f"systemd/kestrune@{mode}.service.d/order.conf"))
    for mode in MODES:
        enable(root, f"kestrune@{mode}.service", "sysinit.target")
    enable(root, "config.mount", "local-fs.target", CONFIG_MOUNT)
    enable(root, "trouble.service", "sysinit.target", TROUBLE)
    enable(root, "telephony.service", "multi-user.target", TELEPHONY)
    enable(root, "line.service", "multi-user.target", LINE)
    shutil.copy(images.unpacked() / "bin/busybox", root / "bin")
    for name in ("sh", "grep", "cat", "tar", "gzip", "base64", "sync", "timeout", "rm"):
        if not (root / "bin" / name).exists():
            (root / "bin" / name).symlink_to("busybox")
    images.put(root / "line", (pathlib.Path(__file__).parent / "line").read_text())


def start(device, trouble=""):
    """Starts the firmware's init; returns when its start has ended."""
    limit = f"s/TimeoutStartSec=120/TimeoutStartSec={images.SHORT_LIMIT_SECONDS}/"
    device.must("/sbin/ubiattach -m 1 -d 0 >/dev/null && mkdir -p /mem /phone-root && mount -t tmpfs tmp /mem && "
                "mkdir /mem/upper /mem/work && mount -t overlay overlay "
                "-o lowerdir=/firmware,upperdir=/mem/upper,workdir=/mem/work /phone-root && "
                f"echo TROUBLE={trouble} >/phone-root/etc/trouble && "
                f"if [ '{trouble}' = hang ]; then sed -i {limit} /phone-root{UNIT}; fi")
    device.must("exec switch_root /phone-root /sbin/init", machine.SECONDS_TO_START)
