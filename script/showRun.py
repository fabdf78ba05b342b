# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""Runs the program on a copy of a phone image and shows its reports and what it changed. Part of script/demo.

usage: showRun.py PROGRAM MODE IMAGE
"""

import os
import re
import subprocess
import sys
import tempfile

from maskSecrets import Secrets

TREES = ("config", "phone", "tmp")
STEPS = {"hand-over": ("1", "2")}  # any other mode is one step

WITH_COLOUR = sys.stdout.isatty() and not os.environ.get("NO_COLOR") and os.environ.get("TERM") != "dumb"
BOLD, DIM, RED, GREEN, CYAN = "1", "2", "31", "32", "36"


def paint(colour, text):
    return f"\033[{colour}m{text}\033[0m" if WITH_COLOUR else text


def say(text=""):
    sys.stdout.buffer.write(text.encode() + b"\n")


def say_heading(text):
    say("\n" + paint(BOLD, f"=== {text} ==="))


def printable(text):
    """Odd bytes and control characters as escapes; a carriage return at the end of a line as a sign."""
    text = re.sub(r"\r$", "␍", text, flags=re.MULTILINE)
    return re.sub(r"[\x00-\x08\x0b-\x1f\x7f-\x9f\udc80-\udcff]", lambda odd: f"\\x{ord(odd[0]) & 0xff:02x}", text)


def decode(raw):
    return raw.decode(errors="surrogateescape")


def copy_image(image, phone):
    for tree in TREES:
        if os.path.isdir(os.path.join(image, tree)):
            subprocess.run(["cp", "-RP", "--preserve=mode", "--", os.path.join(image, tree), phone], check=True)
        else:
            os.mkdir(os.path.join(phone, tree))
    subprocess.run(["chmod", "-R", "u+rwX", phone], check=True)


def sandbox_command(program, mode, phone):
    command = ["bwrap", "--unshare-pid", "--die-with-parent", "--clearenv", "--setenv", "PATH", "/usr/bin:/bin"]
    if "ETL_TRACE_LEVEL" in os.environ:
        command += ["--setenv", "ETL_TRACE_LEVEL", os.environ["ETL_TRACE_LEVEL"]]
    command += ["--tmpfs", "/", "--ro-bind", "/usr", "/usr"]
    for name in ("/bin", "/sbin", "/lib", "/lib32", "/lib64", "/libx32"):
        if os.path.islink(name):
            command += ["--symlink", os.readlink(name), name]
        elif os.path.exists(name):
            command += ["--ro-bind", name, name]
    command += ["--proc", "/proc", "--dev", "/dev", "--ro-bind", program, "/kestrune"]
    for tree in TREES:
        command += ["--bind", os.path.join(phone, tree), "/" + tree]
    return command + ["--remount-ro", "/", "--chdir", "/", "--", "/kestrune", mode]


def take_snapshot(phone):
    """The phone's files: device paths and bytes. Links are not followed, nothing but plain files is opened."""
    files = {}
    for folder, folders, names in os.walk(phone):
        for name in names + [name for name in folders if os.path.islink(os.path.join(folder, name))]:
            path = os.path.join(folder, name)
            if os.path.islink(path):
                content = b"(link to " + os.fsencode(os.readlink(path)) + b")\n"
            elif os.path.isfile(path):
                with open(path, "rb") as file:
                    content = file.read()
            else:
                content = b"(special file)\n"
            files[path[len(phone):]] = content
    return files


def count(number, unit):
    return f"{number} {unit}" if number == 1 else f"{number} {unit}s"


def is_binary(content):
    return content is not None and b"\0" in content


def diff(secrets, path, before, after):
    """Lines of a unified diff with the values of secrets hidden. None stands for a file that is not there."""
    with tempfile.TemporaryDirectory(prefix="kestrune-demo-") as folder:
        command = ["diff", "--unified", "--text"]
        for role, content in (("before", before), ("after", after)):
            command += ["--label", "/dev/null" if content is None else printable(path)]
            with open(os.path.join(folder, role), "wb") as file:
                file.write(printable(secrets.mask_file(path, decode(content or b""))).encode())
        command += [os.path.join(folder, "before"), os.path.join(folder, "after")]
        result = subprocess.run(command, stdout=subprocess.PIPE, check=False)
    return decode(result.stdout).split("\n")[:-1]


def say_diff(lines):
    colours = {"+": GREEN, "-": RED, "@": CYAN}
    say()
    for number, line in enumerate(lines):
        colour = BOLD if number < 2 else colours.get(line[:1])
        say(paint(colour, line) if colour else line)


def say_changes(secrets, before, after):
    summary = []
    say_heading("changes")
    for path in sorted(before.keys() | after.keys()):
        old, new = before.get(path), after.get(path)
        if old == new:
            continue
        kind = "new" if old is None else "removed" if new is None else "changed"
        if is_binary(old) or is_binary(new):
            sizes = [count(len(content), "byte") for content in (old, new) if content is not None]
            amount = " -> ".join(sizes)
            say("\n" + paint(BOLD, f"{printable(path)}: binary, {amount}"))
        else:
            lines = diff(secrets, path, old, new)
            say_diff(lines)
            added, removed = (sum(line.startswith(sign) for line in lines[2:]) for sign in "+-")
            amount = f"+{added} -{removed} lines" if kind == "changed" else count(added + removed, "line")
        summary.append((kind, path, amount))
    if not summary:
        say(paint(DIM, "(nothing)"))

    say_heading("summary")
    width = max((len(printable(path)) for _, path, _ in summary), default=0)
    for kind, path, amount in summary:
        colour = {"new": GREEN, "removed": RED, "changed": CYAN}[kind]
        say(f"{paint(colour, kind.ljust(7))}  {printable(path).ljust(width)}  {amount}")
    unchanged = sum(before.get(path) == content for path, content in after.items())
    say(paint(DIM, f"{count(unchanged, 'file')} unchanged"))


def say_report(title, text):
    say_heading(title)
    say(printable(text.removesuffix("\n")) if text else paint(DIM, "(nothing)"))


def show_step(program, mode, phone, secrets):
    before = take_snapshot(phone)
    result = subprocess.run(sandbox_command(program, mode, phone), stdin=subprocess.DEVNULL, capture_output=True)
    after = take_snapshot(phone)
    if result.returncode != 0:  # the program's own is always 0
        sys.exit(f"demo: the run ended with status {result.returncode}\n{printable(decode(result.stderr))}")
    for files in (before, after):  # reports are masked by the secrets that the files hold
        for path in sorted(files):
            secrets.mask_file(path, decode(files[path]))

    say_report(f"kestrune {printable(mode)}: standard output", secrets.mask_output(decode(result.stdout)))
    say_report(f"kestrune {printable(mode)}: standard error", secrets.mask_errors(decode(result.stderr)))
    say_changes(secrets, before, after)


def main():
    program, mode, image = sys.argv[1:]
    with tempfile.TemporaryDirectory(prefix="kestrune-demo-") as phone:
        copy_image(image, phone)
        secrets = Secrets({path: decode(content) for path, content in take_snapshot(phone).items()})
        for step in STEPS.get(mode, (mode,)):
            show_step(program, step, phone, secrets)
        sys.stdout.flush()


if __name__ == "__main__":
    try:
        main()
    except subprocess.CalledProcessError as error:
        sys.exit(f"demo: cannot copy the image ({error.cmd[0]} failed)")
    except BrokenPipeError:  # whoever reads has seen enough
        os.dup2(os.open(os.devnull, os.O_WRONLY), sys.stdout.fileno())
    except KeyboardInterrupt:
        sys.exit(130)
