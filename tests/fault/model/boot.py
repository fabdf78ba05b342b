# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""A phone that boots: the installed init script and the commands that the documentation gives for calling it, in a sandbox,
under a shell of choice. The power can go right before a call of one of the modes.
"""

import pathlib
import re
import shutil

import phones
import traces

SHELLS = {"dash": {"sh": "dash"}, "busybox": {name: "busybox" for name in ("sh", "cp", "mv", "rm", "timeout")}}
TOOLS = ("sh", "cp", "mv", "rm", "timeout")
CALLS = ("openat", "rename", "unlink", "link", "fsync", "write", "flock")
POWER_WENT = 128 + 9
NEW_SETTINGS = """[PhoneSetting]
EnLock=0
strLang=German

[Backlight]
nBacklightTime=3

[Web]
strHost=new.example.com
strAdminPassword=quay-31
"""
NEW_ACCOUNT = "[account]\nEnable=1\ndirectip=1\nLabel=New direct\nSCALineKeyNumber=7\n"

# Replaces the installed program. The environment contains the call to cut at, or the folder of the recording. Its shell exists
# only in the sandbox, where "-1" means all processes except process 1.
PROGRAM = """#!/boot/tools/sh
if [ "$RECORD" ]; then
    exec /usr/bin/strace -D -f -o "/trace/$1" $RECORD /kestrune "$@"
fi
[ "$CUT_MODE" = "$1" ] || exec /kestrune "$@"
/usr/bin/strace -D -o /dev/null -e trace="$CUT_CALL" \\
    -e inject="$CUT_CALL:signal=SIGKILL:when=$CUT_NUMBER" /kestrune "$@"
[ $? != 137 ] || { : >/tmp/killed; [ "$CUT_PROGRAM_ONLY" ] || kill -9 -1; }
"""

# It must be harmless when repeated. The power can fail in the middle, also in the middle of a rename, which leaves the file under
# both names: renaming it again would do nothing.
LAY_NEW_SETTINGS = """#!/boot/tools/sh
lay() {
    rm -f "$2.new"
    cp "/boot/$1" "$2.new" && mv "$2.new" "$2"
}
lay new-user.ini /config/user/user.ini
[ "$CUT_MODE" != step ] || kill -9 -1
lay new-account.cfg /config/user/voip/sipAccount16.cfg
"""


def documented_commands():
    """The only block of commands that calls the script for each mode, with a step of the firmware."""
    blocks = re.findall(r"(?ms)^```sh\n(.*?)^```$", (phones.PROJECT / "docs" / "your-phone.md").read_text())
    (found,) = [block for block in blocks if "start 1\n" in block]
    return found


def documented_start():
    return replace_once(documented_commands(), "/usr/share/kestrune/kestrune.init", "/boot/kestrune.init")


def replace_once(text, old, new):
    if text.count(old) != 1:
        raise ValueError(f"{old!r} occurs {text.count(old)} times in the text, not once")
    return text.replace(old, new)


class Boot:
    """The content of the sandbox's /boot, for one shell and its tools."""

    def __init__(self, program, shell, folder, start=None, limit_seconds=120):
        self.program = program
        self.folder = pathlib.Path(folder)
        (self.folder / "tools").mkdir(parents=True)
        for tool in TOOLS:
            (self.folder / "tools" / tool).symlink_to(shutil.which(SHELLS[shell].get(tool, tool)))
        script = (phones.PROJECT / "packaging" / "kestrune.init.in").read_text()
        script = replace_once(script, "@CMAKE_INSTALL_FULL_SBINDIR@", "/boot")
        script = replace_once(script, "#!/bin/sh\n", "#!/boot/tools/sh\n")
        script = replace_once(script, "limitSeconds=120", f"limitSeconds={limit_seconds}")
        self.put("kestrune.init", script)
        self.put("kestrune", PROGRAM)
        self.put("lay-new-settings", LAY_NEW_SETTINGS)
        self.put("new-user.ini", NEW_SETTINGS)
        self.put("new-account.cfg", NEW_ACCOUNT)
        self.put("start", start or documented_start())

    def put(self, name, text):
        path = self.folder / name
        path.write_text(text)
        path.chmod(0o755)

    def run(self, root, environment=None, options=()):
        """Boots the phone; returns whether the power failed. Process 1 returns the status and is not killed by a signal."""
        wrapper = ["/boot/tools/sh", "-c", 'export PATH=/boot/tools:/boot; "$@"; exit', "init", "/boot/tools/sh",
                   "/boot/start"]
        options = ["--ro-bind", str(self.folder), "/boot", *options]
        status = phones.run(self.program, root, "", wrapper, options, environment).returncode
        return status == POWER_WENT

    def run_with_cut(self, root, cut):
        """`cut` is (mode, call, N): the power fails right before the mode's N-th call of that name. Returns whether it failed."""
        return self.run(root, environment_of(cut))

    def run_with_kill(self, root, cut):
        """Only the program is killed there, and the start continues without it. Returns whether it was killed."""
        self.run(root, {**environment_of(cut), "CUT_PROGRAM_ONLY": "yes"})
        return (root / "tmp" / "killed").exists()

    def cuts(self, root, scratch):
        """Boots the phone, and lists every cut that this boot may meet: (mode, call, N)."""
        scratch = pathlib.Path(scratch)
        shutil.rmtree(scratch, ignore_errors=True)
        scratch.mkdir()
        calls = ",".join("?" + name for name in CALLS)
        self.run(root, {"RECORD": f"-y -xx -s 0 -e trace={calls}"}, ["--bind", str(scratch), "/trace"])
        found = []
        for record in sorted(scratch.iterdir()):
            found += cuts_of_mode(record.name, traces.parse(record.read_bytes()))
        return found


def environment_of(cut):
    mode, call, number = cut
    return {"CUT_MODE": mode, "CUT_CALL": call, "CUT_NUMBER": str(number)}


def cuts_of_mode(mode, calls):
    """Calls are counted by name; those that open an existing file change nothing."""
    counts = dict.fromkeys(CALLS, 0)
    found = []
    for call in calls:
        if call.process != calls[0].process:
            continue
        counts[call.name] += 1
        if call.name != "openat" or b"O_CREAT" in call.arguments:
            found.append((mode, call.name, counts[call.name]))
    return found
