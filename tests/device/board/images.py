# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""The images of the machine: kernel, initramfs and kept state, the firmware as squashfs, and `/config` on its own chip."""

import os
import pathlib
import shutil
import subprocess

import phones
from board import machine
from model import boot

DEVICE = phones.PROJECT / "build" / "device"  # script/bootstrap device downloads the packages to its folder "packages"
MACHINE = DEVICE / "machine"  # kernel and initramfs
STATE = MACHINE / "state"  # of the machine that has been switched on
LIBRARIES = pathlib.Path("/usr/arm-linux-gnueabihf/lib")
HERE = pathlib.Path(__file__).resolve().parent
DRIVERS = ("spi-nor", "spi-aspeed-smc", "mtdblock", "jffs2", "zstd", "lzo", "deflate", "ubifs", "squashfs", "overlay")
APPLETS = ("sh", "mount", "umount", "mkdir", "cp", "mv", "rm", "cat", "sleep", "usleep", "tar", "gzip", "base64", "timeout",
           "init", "syslogd", "killall", "dd", "sync", "ln", "ls", "grep", "sed", "test", "stty", "date", "true", "df")
FOLDERS = ("config", "tmp", "proc", "sys", "dev", "flash", "root", "run", "var")
BLOCK = 64 << 10
MOST_BLOCKS = 250
UBI_SETTINGS = "[config]\nmode=ubi\nimage={image}\nvol_id=0\nvol_type=dynamic\nvol_name=config\n{size}\n"

# Makes a start difficult: TROUBLE is a variable of it. A mode that hangs has a limit that a test can wait for.
SHORT_LIMIT_SECONDS = 5
TROUBLES = rf"""#!/bin/sh
init=/usr/share/kestrune/kestrune.init
case "$TROUBLE" in
    hang)
        busybox cp "$init" /run && busybox sed -i s/limitSeconds=120/limitSeconds={SHORT_LIMIT_SECONDS}/ /run/kestrune.init
        busybox mount -o bind /run/kestrune.init "$init"
        while ! busybox killall -STOP kestrune 2>/dev/null; do busybox usleep 1000; done &
        ;;
    read-only) busybox mount -o remount,ro /config ;;
    full) busybox dd if=/dev/urandom of=/config/filler bs=512 2>/dev/null; busybox sync ;;
esac
"""


def run(*command, **options):
    subprocess.run(command, check=True, capture_output=True, **options)


def why_not():
    """Why there is no machine here; an empty text if there is one."""
    for tool in ("qemu-system-arm", "mkfs.ubifs", "mkfs.jffs2", "ubinize", "mksquashfs", "cpio", "modprobe",
                 "arm-linux-gnueabihf-strip"):
        if shutil.which(tool, path=os.environ["PATH"] + ":/usr/sbin:/sbin") is None:
            return f"{tool} is not installed (script/bootstrap device)"
    names = [path.name.split("_")[0] for path in (DEVICE / "packages").glob("*.deb")]
    for wanted in ("linux-image-", "busybox-static", "mtd-utils"):
        if not any(name.startswith(wanted) for name in names):
            return f"no package {wanted} in build/device/packages (script/bootstrap device)"
    return ""


def unpacked():
    """The folder with the content of all packages."""
    root = DEVICE / "unpacked"
    if not root.exists():
        shutil.rmtree(root.with_suffix(".new"), ignore_errors=True)
        for package in sorted((DEVICE / "packages").glob("*.deb")):
            run("dpkg-deb", "-x", package, root.with_suffix(".new"))
        root.with_suffix(".new").rename(root)
    return root


def driver_files(root, version):
    """The modules in the order in which they can be loaded."""
    run("depmod", "-b", root, version)
    files = {}
    for driver in DRIVERS:
        shown = subprocess.run(["modprobe", "-d", root, "-S", version, "--show-depends", driver], check=True,
                               capture_output=True, text=True).stdout
        files.update(dict.fromkeys(line.split()[1] for line in shown.splitlines() if line.startswith("insmod ")))
    return list(files)


def make_machine(folder):
    """Kernel, board description and initramfs."""
    root = unpacked()
    (kernel,) = (root / "boot").glob("vmlinuz-*")
    version = kernel.name.removeprefix("vmlinuz-")
    shutil.copy(kernel, folder / "vmlinuz")
    shutil.copy(root / "usr/lib" / f"linux-image-{version}" / "aspeed-ast2600-evb.dtb", folder / "board.dtb")
    first = folder / "initramfs"
    for name in ("bin", "sbin", "lib", "modules"):
        (first / name).mkdir(parents=True)
    for source, name in ((root / "bin/busybox", "bin"), (root / "usr/sbin/ubiattach", "sbin"), (HERE / "init", ""),
                         (HERE / "line", ""), (LIBRARIES / "ld-linux-armhf.so.3", "lib"), (LIBRARIES / "libc.so.6", "lib")):
        shutil.copy(source, first / name)
    for number, file in enumerate(driver_files(root, version)):
        shutil.copy(file, first / "modules" / f"{number:02}-{pathlib.Path(file).name}")
    with open(folder / "initrd.gz", "wb") as image:
        run("sh", "-c", "find . | cpio -o -H newc -R 0:0 --quiet | gzip -1 >&3", cwd=first, pass_fds=(3,),
            preexec_fn=lambda: os.dup2(image.fileno(), 3))
    shutil.rmtree(first)


def put(path, text):
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_text(text)
    path.chmod(0o755)


def replaced(name):
    """A file of packaging/ as it is installed."""
    return (phones.PROJECT / "packaging" / name).read_text().replace("@CMAKE_INSTALL_FULL_SBINDIR@", "/usr/sbin")


def make_firmware_folder(root, phone, program):
    """The phone's own part of the firmware: kestrune with its init script, the upgrade's own step, and `/phone`. `phone`
    is the folder of a phone; its `/config` is the lower layer of an overlay."""
    for name in (*FOLDERS, "usr/sbin"):
        (root / name).mkdir(parents=True, exist_ok=True)
    install(root, program)
    put(root / "usr/share/kestrune/kestrune.init", replaced("kestrune.init.in"))
    put(root / "usr/sbin/start-kestrune", "#!/bin/sh\n" + boot.documented_commands())
    put(root / "usr/sbin/lay-new-settings", boot.LAY_NEW_SETTINGS)
    put(root / "usr/sbin/trouble", TROUBLES)
    put(root / "boot/new-user.ini", boot.NEW_SETTINGS)
    put(root / "boot/new-account.cfg", boot.NEW_ACCOUNT)
    (root / "boot/tools").mkdir()
    (root / "boot/tools/sh").symlink_to("/bin/sh")
    run("cp", "-a", phone / "phone", root / "phone")
    for tree in ("config", "tmp"):
        run("cp", "-a", phone / tree, root / f"{tree}.default")


def add_busybox(root):
    (root / "bin").mkdir()
    shutil.copy(unpacked() / "bin/busybox", root / "bin")
    for applet in APPLETS:
        (root / "bin" / applet).symlink_to("busybox")


def install(root, program):
    run("arm-linux-gnueabihf-strip", "-o", root / "usr/sbin/kestrune", program)


def make_squashfs(root, image):
    run("mksquashfs", root, image, "-quiet", "-no-progress", "-comp", "gzip", "-noappend")
    os.truncate(image, machine.FIRMWARE_CHIP[1])


def make_ubifs(root, image, blocks):
    part = image.with_suffix(".part")
    settings = image.with_suffix(".settings")
    run("mkfs.ubifs", "-r", root, "-m", "8", "-e", str(BLOCK - 128), "-c", str(blocks or MOST_BLOCKS), "-o", part)
    size = f"vol_size={blocks * (BLOCK - 128)}" if blocks else "vol_flags=autoresize"
    settings.write_text(UBI_SETTINGS.format(image=part, size=size))
    run("ubinize", "-o", image, "-p", "64KiB", "-m", "1", settings)
    image.write_bytes(image.read_bytes().ljust(machine.CONFIG_CHIP[1], b"\xff"))


def make_jffs2(root, image):
    # Without "-n": the kernel fails on NOR flash without clean markers.
    run("mkfs.jffs2", "-e", "64KiB", "-l", f"--pad={machine.CONFIG_CHIP[1]}", "-r", root, "-o", image)


def make_empty(image, chip):
    image.write_bytes(b"\xff" * chip[1])


def make_flash(kind, phone, folder, blocks=None):
    """The chip of `/config` with the phone's files, or empty for the overlay; returns the image. `blocks`: of a UBIFS that
    does not fill the chip."""
    image = folder / f"{kind}.image"
    if kind == "JFFS2":
        make_jffs2(phone / "config", image)
    elif kind == "UBIFS":
        make_ubifs(phone / "config", image, blocks)
    else:
        (folder / "empty").mkdir(exist_ok=True)
        make_ubifs(folder / "empty", image, blocks)
    return image
