# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""Strange files at paths of the program: how each is created, and how the program handles it.

Links lead to /canary, a world-writable folder outside the phone.
"""

import dataclasses
import os
import shutil
import socket
import typing

CANARY = "/canary"
STRANGER = 12345


@dataclasses.dataclass(frozen=True)
class Place:
    """Its place: a path of the machine for the phone's file, that of the canary, and the content of the file."""

    file: str
    canary: str
    content: bytes


@dataclasses.dataclass(frozen=True)
class Kind:
    """`taken_as` is "original": the file, and a save replaces the link's target; "missing": as if the path did not exist;
    "unreadable": as a file that does not load and is not replaced; "no permission": unreadable, but a save that reads
    nothing replaces it."""

    name: str
    taken_as: str
    put: typing.Callable
    needs_root: bool = False


def link(target, path, owner=None):
    os.symlink(target, path)
    if owner is not None:
        os.lchown(path, owner, owner)


def put_own(place):
    with open(f"{place.canary}/own", "wb") as file:
        file.write(place.content)


def own_link(place):
    put_own(place)
    link(f"{CANARY}/own", place.file)


def relative_link(place):
    put_own(place)
    link("../" * 8 + "canary/own", place.file)


def link_chain(place):
    put_own(place)
    link(f"{CANARY}/own", f"{place.canary}/second")
    link("second", f"{place.canary}/first")
    link(f"{CANARY}/first", place.file)


def foreign_link(place):
    put_own(place)
    link(f"{CANARY}/own", place.file, STRANGER)


def hard_link(place):
    put_own(place)
    os.link(f"{place.canary}/own", place.file)


def dangling_link(place):
    link(f"{CANARY}/absent", place.file)


def make_sticky(folder):
    os.chmod(folder, 0o1777)


def foreign_link_in_sticky_folder(place):
    make_sticky(os.path.dirname(place.file))
    foreign_link(place)


def make_open(folder):
    os.chmod(folder, 0o777)


def foreign_link_in_open_folder(place):
    make_open(os.path.dirname(place.file))
    foreign_link(place)


def foreign_file(place):
    with open(place.file, "wb") as file:
        file.write(place.content)
    os.chown(place.file, STRANGER, STRANGER)


def foreign_file_in_sticky_folder(place):
    make_sticky(os.path.dirname(place.file))
    foreign_file(place)


def foreign_file_in_open_folder(place):
    make_open(os.path.dirname(place.file))
    foreign_file(place)


def foreign_dangling_link_in_sticky_folder(place):
    make_sticky(os.path.dirname(place.file))
    link(f"{CANARY}/absent", place.file, STRANGER)


def own_link_to_foreign_link(place):
    put_own(place)
    os.mkdir(f"{place.canary}/sticky")
    make_sticky(f"{place.canary}/sticky")
    link(f"{CANARY}/own", f"{place.canary}/sticky/planted", STRANGER)
    link(f"{CANARY}/sticky/planted", place.file)


def link_loop(place):
    link(os.path.basename(place.file), place.file)


def long_link_loop(place):
    link(f"{CANARY}/back", place.file)
    link("forth", f"{place.canary}/back")
    link("back", f"{place.canary}/forth")


def pipe(place):
    os.mkfifo(place.file)


def link_to_pipe(place):
    os.mkfifo(f"{place.canary}/pipe")
    link(f"{CANARY}/pipe", place.file)


def unix_socket(place):
    # The name that a socket is bound to must be short, and the phone's paths are not.
    os.chdir(os.path.dirname(place.file))
    listener = socket.socket(socket.AF_UNIX)
    listener.bind(os.path.basename(place.file))
    listener.close()
    os.chdir("/")


def empty_folder(place):
    os.mkdir(place.file)


def full_folder(place):
    os.mkdir(place.file)
    with open(f"{place.file}/inside", "wb") as file:
        file.write(place.content)


def link_to_folder(place):
    os.mkdir(f"{place.canary}/folder")
    link(f"{CANARY}/folder", place.file)


def link_to_device(place):
    link("/dev/zero", place.file)


def without_permissions(place):
    with open(place.file, "wb") as file:
        file.write(place.content)
    os.chmod(place.file, 0)


KINDS = (
    Kind("own link", "original", own_link),
    Kind("relative link", "original", relative_link),
    Kind("link chain", "original", link_chain),
    Kind("foreign link", "original", foreign_link, needs_root=True),
    Kind("hard link", "original", hard_link),
    Kind("dangling link", "missing", dangling_link),
    Kind("foreign link in a sticky folder", "missing", foreign_link_in_sticky_folder, needs_root=True),
    Kind("foreign link in an open folder", "missing", foreign_link_in_open_folder, needs_root=True),
    Kind("foreign file in a sticky folder", "missing", foreign_file_in_sticky_folder, needs_root=True),
    Kind("foreign file in an open folder", "missing", foreign_file_in_open_folder, needs_root=True),
    Kind("foreign dangling link in a sticky folder", "missing", foreign_dangling_link_in_sticky_folder,
         needs_root=True),
    Kind("own link to a foreign one in a sticky folder", "missing", own_link_to_foreign_link, needs_root=True),
    Kind("link to itself", "unreadable", link_loop),
    Kind("link loop", "unreadable", long_link_loop),
    Kind("pipe", "unreadable", pipe),
    Kind("link to a pipe", "unreadable", link_to_pipe),
    Kind("socket", "unreadable", unix_socket),
    Kind("folder", "unreadable", empty_folder),
    Kind("full folder", "unreadable", full_folder),
    Kind("link to a folder", "unreadable", link_to_folder),
    Kind("link to a device", "unreadable", link_to_device),
    Kind("no permissions", "no permission", without_permissions),
)


def remove(path):
    """Removes a file of any kind."""
    if os.path.isdir(path) and not os.path.islink(path):
        shutil.rmtree(path)
    elif os.path.lexists(path):
        os.unlink(path)
