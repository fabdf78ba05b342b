# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""The phone's file systems on the machine, and its files as `phones.snapshot` returns them."""

import base64
import binascii
import io
import tarfile

import phones
from board import machine

KINDS = ("UBIFS", "JFFS2", "overlay")
ATTACH = "/sbin/ubiattach -m 1 -d 0 >/dev/null && "
MOUNTS = {
    "UBIFS": ATTACH + "mount -t ubifs ubi0:config /firmware/config",
    "JFFS2": "mount -t jffs2 mtd1 /firmware/config",
    "overlay": ATTACH + "mount -t ubifs ubi0:config /flash && mkdir -p /flash/upper /flash/work && mount -t overlay overlay "
               "-o lowerdir=/firmware/config.default,upperdir=/flash/upper,workdir=/flash/work /firmware/config",
}
MEMORY = "mount -t tmpfs tmp /firmware/tmp"


def mount_firmware(device):
    """With a first start on a `/config` in memory, so that the programs do not have to be read again."""
    device.must(f"mount -t squashfs -o ro /dev/mtdblock0 /firmware && {MEMORY} && mount -o bind /dev /firmware/dev && "
                "mount -t tmpfs tmp /firmware/config && cp -a /firmware/config.default/. /firmware/config")
    start_modes(device)
    dump(device)
    device.must(f"umount /firmware/config /firmware/tmp && {MEMORY}")


def mount(device, kind):
    device.must(MOUNTS[kind])


def run_mode(device, mode):
    return device.run(f"chroot /firmware /usr/sbin/kestrune {mode} </dev/null >/dev/null 2>&1")[0]


def start_modes(device):
    """The documented commands of a boot, with the upgrade's own step between the modes."""
    device.must("chroot /firmware /usr/sbin/start-kestrune </dev/null >/dev/null 2>&1")


def dump(device):
    """The files and folders of /config and /tmp."""
    return entries(device, "/firmware")


def entries(device, root):
    text = device.must(f"tar -c -C {root} config tmp | gzip -1 | base64")
    try:
        return entries_of(text)
    except (tarfile.TarError, binascii.Error, OSError) as reason:
        raise machine.Failed(f"the files cannot be read: {reason}; {text[:500]!r}") from reason


def entries_of(text):
    found = {}
    with tarfile.open(fileobj=io.BytesIO(base64.b64decode(text)), mode="r:gz") as archive:
        for member in archive:
            found["/" + member.name.rstrip("/")] = entry_of(archive, member)
    return found


def entry_of(archive, member):
    owner = (member.uid, member.gid)
    if member.isdir():
        return phones.Entry("folder", member.mode, owner, b"")
    if member.issym():
        return phones.Entry("link", 0o777, owner, member.linkname.encode())
    return phones.Entry("file", member.mode, owner, archive.extractfile(member).read())
