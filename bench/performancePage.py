# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""The figures of script/bench as a table, a page and a plot."""

import pathlib
import re
import statistics
import subprocess

import runCosts

NAMES = ("kestrune", "minIni", "SimpleIni", "GKeyFile", "inih", "QSettings")
PLOTTED = {"get/64KiB/LF": "get one key\\n64 KiB", "set/64KiB/LF": "set one key\\nto memory, 64 KiB",
           "records/apart/tmpfs": "500 records\\ntmpfs", "records/apart/disk": "500 records\\non disk"}
# Groups of rows: heading, pattern of their names, what they are compared with.
SECTIONS = (
    ("Load a file and get one key", r"get/(.*)", "the bare open, read and close of the file"),
    ("Load a file, set one key, save to memory", r"set/(.*)", "the bare read and copy of the file"),
    ("One record", r"record/(.*)", "the recorded system calls"),
    ("500 records over 20 files of 8 KiB", r"records/((?:first|second|apart)/.*)", "the recorded system calls"),
    ("One run compared with records that are saved at once", r"records/((?:together|again)/.*)", "our own 500 saves, each flushed"),
    ("Conversion of 1,000 contacts", r"xml/(.*)", "the bare XML library's load, build and save of the same documents"),
    ("Whole run on the example phone, compared with its system calls", r"run/(\w+)", "the recorded system calls"),
    ("Whole run on the example phone, compared with an empty program", r"run/(\w+)/start", "an empty static C++ program"),
)


def machine():
    text = pathlib.Path("/proc/cpuinfo").read_text()
    found = re.search(r"^(?:model name|Model)\s*:\s*(.*)$", text, re.MULTILINE)
    cores = len(re.findall(r"^processor\s*:", text, re.MULTILINE))
    return f"{found[1] if found else 'unknown processor'}, {cores} cores"


def cell(values):
    """Median, and half the distance between the quartiles."""
    if not values:
        return "-"
    low, _, high = statistics.quantiles(values, n=4) if len(values) > 1 else (values[0],) * 3
    return f"{statistics.median(values):.2f} ± {(high - low) / 2:.2f}"


class Page:
    def __init__(self, ratios, other_bytes, exact, costs, limits, rounds):
        self.ratios = ratios
        self.other_bytes = other_bytes
        self.exact = exact
        self.costs = costs
        self.limits = limits
        self.rounds = rounds

    def limit(self, name):
        return next((limit["most"] for limit in self.limits if re.fullmatch(limit["work"], name)), "")

    def rows(self, pattern):
        for name, ratios in self.ratios.items():
            if found := re.fullmatch(pattern, name):
                yield name, found[1], ratios

    def section(self, heading, pattern, base):
        rows = list(self.rows(pattern))
        columns = [name for name in NAMES if any(name in ratios for _, _, ratios in rows)]
        lines = [f"### {heading}", "", f"Times {base}.", "", "| | limit | " + " | ".join(columns) + " |",
                 "| --- | --- |" + " --- |" * len(columns)]
        for name, label, ratios in rows:
            cells = " | ".join(cell(ratios.get(column)) for column in columns)
            label = re.sub(r"(\d)([KM]iB)", r"\1 \2", label).replace("/", ", ")
            lines.append(f"| {label} | {self.limit(name)} | {cells} |")
        if pattern.startswith("set/"):
            for line_end in ("LF", "CRLF"):
                cells = " | ".join(self.other_bytes[column][line_end] for column in columns)
                lines.append(f"| all other bytes, {line_end} | kept | {cells} |")
        return "\n".join(lines) + "\n"

    def exact_section(self):
        lines = ["### Exact figures", "", "| | limit | kestrune |", "| --- | --- | --- |"]
        for limit in self.limits:
            if limit.get("exact"):
                lines.append(f"| {limit['reads']} | {limit['most']} | {self.exact[limit['work']]} |")
        return "\n".join(lines) + "\n"

    def table(self):
        return "\n".join([self.section(*section) for section in SECTIONS] + [self.exact_section(), runCosts.table(self.costs)])

    def write(self, folder):
        template = (pathlib.Path(__file__).parent / "performancePage.md").read_text()
        for mark, text in (("@MACHINE@", machine()), ("@ROUNDS@", str(self.rounds)), ("@TABLES@", self.table())):
            template = template.replace(mark, text)
        (folder / "performance.md").write_text(template)
        self.plot(folder / "performance.png")

    def plot(self, path):
        rows = ""
        for name, label in PLOTTED.items():
            ratios = self.ratios[name]
            medians = [statistics.median(ratios[other]) if other in ratios else "-" for other in NAMES]
            rows += f'"{label}" ' + " ".join(map(str, medians)) + "\n"
        columns = ", ".join(f'$rows using {number}:xtic(1) title "{name}"' for number, name in enumerate(NAMES, start=2))
        subprocess.run(["gnuplot"], check=True, text=True, input=f"""
set terminal pngcairo size 1000,520 font "sans,11"
set output "{path}"
set title "Time as a multiple of the bare system calls ({machine()})"
set logscale y
set yrange [0.8:*]
set datafile missing "-"
set style data histogram
set style histogram clustered gap 1
set style fill solid 0.9
set grid ytics
set key outside right
set bmargin 4
$rows << END
{rows}END
plot {columns}, 1 with lines dashtype 2 linecolor "black" title "bare calls"
""")
