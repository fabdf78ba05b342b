# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""Records of a run's system calls, made by strace."""

import dataclasses
import re

import phones

CALLS = "open,openat,unlink,unlinkat,write,fchmod,fchown,fsync,rename,renameat,utimensat,wait4,exit_group"

# The process, the call, its arguments and its result, as "strace -f" writes them if no line is split.
LINE = re.compile(rb"^(\d+) +(\w+)\((.*)\) += (-?\d+|\?)(.*)$")
QUOTED = re.compile(rb'"((?:[^"\\]|\\.)*)"')


@dataclasses.dataclass(frozen=True)
class Call:
    """One system call: `texts` are its quoted arguments, decoded; `descriptor` and `file` are those of "3</a/path>"."""

    process: int
    name: str
    texts: tuple
    arguments: bytes
    descriptor: int
    file: str
    result: int


def decode(quoted):
    """Undoes strace's hexadecimal form (-xx)."""
    return bytes.fromhex(quoted.replace(b"\\x", b"").decode())


def parse(record):
    """The calls that ended, in order. Made with -xx, so every quoted text is hexadecimal."""
    calls = []
    for line in record.splitlines():
        match = LINE.match(line)
        if match is None:
            continue
        process, name, arguments, result, rest = match.groups()
        texts = tuple(decode(text) for text in QUOTED.findall(arguments))
        opened = re.match(rb"(\d+)<([^>]*)>", arguments) or re.match(rb"()<([^>]*)>", rest)
        calls.append(Call(int(process), name.decode(), texts, arguments,
                          int(opened.group(1) or -1) if opened else -1,
                          decode(opened.group(2)).decode(errors="surrogateescape") if opened else "",
                          int(result) if result != b"?" else -1))
    return calls


def beginning_of_main(calls):
    """The program first checks whether its standard input is open."""
    return next(place for place, call in enumerate(calls) if call.name == "fcntl")


def wrapper(options, folder="/trace"):
    """strace as the program's tracer, not its parent: the program stays process 1 of its sandbox."""
    return ["strace", "-D", "-f", "-o", f"{folder}/record"] + options


def record(program, root, mode, scratch, options=("-y", "-xx", "-s", "1000000")):
    """Runs the mode undisturbed under strace; returns its result and its calls."""
    scratch.mkdir(exist_ok=True)
    result = phones.run(program, root, mode, wrapper(list(options)), ["--bind", str(scratch), "/trace"])
    return result, parse((scratch / "record").read_bytes())


def record_own(program, root, mode, scratch, options=()):
    """The same, only of the program's own calls, including those before main(): its children are the device's own shell
    and copy command. `options` are those of the sandbox."""
    scratch.mkdir(exist_ok=True)
    tracer = ["strace", "-D", "-y", "-xx", "-s", "4096", "-o", "/trace/record"]
    result = phones.run(program, root, mode, tracer, ["--bind", str(scratch), "/trace", *options])
    lines = (scratch / "record").read_bytes().splitlines()
    return result, parse(b"\n".join(b"1 " + line for line in lines))  # without "-f" no line has a process number
