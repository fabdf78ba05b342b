# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""Turns a recording of strace into C++ code that makes only the same system calls: the floor.

The code repeats calls on files, folders, descriptors and other processes, but not those that allocate memory. Writes repeat the
bytes that were read last, with the recorded length, so that their content need not be computed. Every call has to give the
recorded result, so that a floor that does not do the work ends with an error instead of a good figure.
"""

import collections
import dataclasses
import re

REPEATED = {"access", "close", "connect", "copy_file_range", "dup2", "faccessat2", "fchmod", "fchown", "fcntl", "fdatasync",
            "fgetxattr", "flock", "fremovexattr", "fsetxattr", "fsync", "ftruncate", "getcwd", "getdents64", "getegid", "geteuid",
            "getxattr", "ioctl", "listxattr", "lseek", "mkdir", "newfstatat", "openat", "pread64", "read", "readlink", "rename",
            "socket", "umask", "unlink", "utimensat", "write"}
WITH_DATA = {"getcwd", "getdents64", "pread64", "read", "readlink", "write"}
# Start-up, memory, signals, waiting and the end of a process; a child process is repeated as its shell command.
LEFT_OUT = {"poll", "prctl", "arch_prctl", "brk", "clone3", "execve", "exit_group", "futex", "getrandom", "madvise", "mmap", "mprotect", "mremap",
            "munmap", "prlimit64", "rseq", "rt_sigaction", "rt_sigprocmask", "rt_sigreturn", "set_robust_list",
            "set_tid_address", "vfork", "wait4"}

LINE = re.compile(r"^(?P<process>\d+)\s+(?P<name>\w+)\((?P<arguments>.*)\)\s+= (?P<result>-?\d+|\?|0x[0-9a-f]+)(?: .*)?$")
START = re.compile(r'^(?P<process>\d+)\s+execve\("(?P<program>[^"]*)", (?P<arguments>\[.*?\])')
ARGUMENT = re.compile(r'"(?:[^"\\]|\\.)*"(?:\.\.\.)?|\{[^}]*\}(?:\.\.\.)?|\[[^\]]*\]|[^,\s][^,]*')

HEAD = """// Made by bench/recordedCalls.py.

#include "replayedCall.h"

"""


@dataclasses.dataclass
class Call:
    name: str
    arguments: list
    result: str


def shell_command(line):
    found = START.match(line)
    if not found or found["program"] != "/bin/sh":
        return None
    return Call("system", [ARGUMENT.findall(found["arguments"][1:-1])[-1]], "0")


def parse(line):
    found = LINE.match(line)
    name = found["name"] if found else re.sub(r"^\d+\s+", "", line).split("(")[0]
    if name in LEFT_OUT or (found and name == "readlink" and "/proc/self/exe" in line):
        return None
    if not found or name not in REPEATED:
        raise ValueError(f"no idea how to repeat: {line}")
    return Call(name, ARGUMENT.findall(found["arguments"]), found["result"])


def calls_between(lines, begin, end):
    """The calls between the last pair of lines that contain the marks."""
    first = max(number for number, line in enumerate(lines) if begin in line)
    last = max(number for number, line in enumerate(lines) if end in line)
    return [call for call in map(parse, lines[first + 1:last]) if call]


def calls_of_program(lines, program):
    """The calls of the last process that became the program."""
    starts = [number for number, line in enumerate(lines) if f'execve("{program}"' in line]
    first = starts[-1]
    process = lines[first].split(" ", 1)[0]
    calls = []
    for line in lines[first + 1:]:
        if command := shell_command(line):
            calls.append(command)
        if line.split(" ", 1)[0] == process and re.match(r"^\d+\s+\w", line):
            calls.append(parse(line))
    return [call for call in calls if call]


def count(calls):
    """The number of calls of each kind, and the bytes that are written to files."""
    counts = collections.Counter(call.name for call in calls)
    counts["bytes written"] = sum(int(call.result) for call in calls if call.name == "write" and int(call.arguments[0]) > 2)
    return counts


def argument_text(call, position, text):
    if call.name == "connect" and position == 1:
        path = re.search(r'sun_path="([^"]*)"', text)[1]
        return f'SocketAddress("{path}").data()'
    if text == "NULL":
        return "nullptr"
    is_data = text.startswith('"') and call.name in WITH_DATA and position == (0 if call.name == "getcwd" else 1)
    if is_data or text[0] in "{[" or text.startswith("0x"):
        return "buffer"
    return text.removesuffix("...")


def statement(call):
    if call.name == "system":
        return f"    Expect(std::system({call.arguments[0]}), 0);\n"
    arguments = "".join(f", {argument_text(call, position, text)}" for position, text in enumerate(call.arguments))
    return f"    Expect(syscall(SYS_{call.name}{arguments}), {call.result});\n"


def function(name, calls):
    return f"static void {name}()\n{{\n{''.join(map(statement, calls))}}}\n\n"


def program(calls):
    return HEAD + function("Replay", calls) + "int main()\n{\n    Replay();\n    return 0;\n}\n"


def records(recordings):
    """The floor's implementation of records.h. The recordings have the names of their benchmarks and passes."""
    text = HEAD + '#include "records.h"\n\n'
    rows = ""
    for number, ((name, pass_name), calls) in enumerate(recordings.items()):
        text += function(f"Replay{number}", calls)
        rows += f'    if (name == "{name}" && pass == Pass::{pass_name})\n        return Replay{number}();\n'
    return (text + "bool CanDoRecords()\n{\n    return true;\n}\n\n"
            + "void DoRecords(const std::string& name, Pass pass, const std::vector<Record>&)\n{\n" + rows
            + "    Expect(0, 1); // nothing was recorded under that name\n}\n")
