# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""The static program built for a device, with one of its steps removed."""

import pathlib
import shutil
import subprocess

import phones

NO_FLUSHES = '#include <unistd.h>\nint fsync(int)\n{\n    return 0;\n}\n'
LIBRARIES = ("libnettle.a", "libtinyxml.a", "libpugixml.a")
FOLDERS = ("platform/include", "platform/src", "platform/host")


def build(program, name, text, folder):
    """Links the program again with this source in place of a part of its libraries; `name` is that of the source.

    @return the new program, in `folder`
    """
    objects = pathlib.Path(program).resolve().parents[2]
    source = folder / name
    source.write_text(text)
    platform = shutil.copy(objects / "platform/libkestrune-platform.a", folder)
    subprocess.run(["arm-linux-gnueabihf-gcc-ar", "d", platform, f"{name}.o"], check=True)
    result = folder / "kestrune"
    command = ["arm-linux-gnueabihf-g++", "-std=c++17", "-Os", "-static", "-D_FILE_OFFSET_BITS=64", "-D_TIME_BITS=64"]
    command += [f"-I{phones.PROJECT / include}" for include in FOLDERS]
    command += [source, *(objects / "app/kestrune/CMakeFiles/kestrune.dir/kestrune").glob("*.o")]
    command += [objects / "app/kestrune/libkestrune-app.a", platform]
    command += [pathlib.Path("/usr/lib/arm-linux-gnueabihf") / library for library in LIBRARIES]
    subprocess.run([*command, "-o", result], check=True, capture_output=True)
    return result
