# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""The steps that are removed from the program, one at a time, and the proof that has to detect each."""

import dataclasses


@dataclasses.dataclass(frozen=True)
class Mutant:
    """A change of platform/src/`source`, which contains the `old` text once."""

    name: str
    source: str
    old: str
    new: str
    proof: tuple


POWER_CUT = ("powerCut_test.py", "--mode", "1")
POWER_CUT_OF_SEQUENCE = ("powerCut_test.py", "--mode", "sequence")
POWER_CUT_OF_CERTIFICATES = ("powerCut_test.py", "--mode", "dev")
KILL = ("kill_test.py", "--mode", "1")
FAILING_CALLS = ("failingCalls_test.py", "--mode", "fix-ups-only")
RECORD = ("record_test.py",)

WRITE_TEMPORARIES = """    if (!WriteTemporaries(run, temporaries))
        return false;
    FlushFoldersOfTemporaries(run);
"""
WRITE_RECORD = """    const CommitRecord record = MakeRecord(run);
    if (WritePrivateFile(kCommitRecord, TextOf(record)) != 0)
        return false;
"""

MUTANTS = (
    # Temporary files
    Mutant("no flush of a temporary file", "temporaryFile.cpp",
           "return fsync(file.Number()) == 0 ? 0 : errno;", "return 0;", POWER_CUT),
    Mutant("no flush of the temporary files' folders", "commitStaged.cpp",
           "    FlushFoldersOfTemporaries(run);\n", "", POWER_CUT),
    Mutant("no exclusive creation", "temporaryFile.cpp", "O_CREAT | O_EXCL", "O_CREAT", ("oneWayToWrite_test.py",)),
    Mutant("writing in place", "temporaryFile.cpp", 'return path + ".kestrune-new"', "return path", KILL),
    Mutant("temporary file left behind", "temporaryFile.cpp", "(void)unlink(path_.c_str());", ";", FAILING_CALLS),
    Mutant("write result ignored", "descriptor.cpp", "if (count <= 0)\n            return false;",
           "if (count <= 0)\n            return true;", FAILING_CALLS),
    # The record
    Mutant("record made before the temporary files", "commitStaged.cpp", WRITE_TEMPORARIES + WRITE_RECORD,
           WRITE_RECORD + WRITE_TEMPORARIES, POWER_CUT),
    Mutant("no flush of the record", "privateFile.cpp", " && fsync(file.Number()) == 0", "", POWER_CUT),
    Mutant("no flush of the record's folder", "privateFile.cpp",
           "    if (error == 0)\n        FlushFolder(kNoteFolder);\n", "", POWER_CUT),
    Mutant("checksum of the record not tested", "commitRecord.cpp", "SumOf(checked).sha256 == fields.back()",
           "!checked.empty()", RECORD),
    Mutant("owner of the record not tested", "privateFile.cpp", "status.st_uid == geteuid()", "true", RECORD),
    Mutant("record not removed", "carryOut.cpp", "    RemovePrivateFile(kCommitRecord);\n", "", POWER_CUT),
    # Carrying it out
    Mutant("no flush of the renames' folders", "carryOut.cpp",
           "Rename(change, turn));\n        flush.Add(change.path);", "Rename(change, turn));",
           ("powerCut_test.py", "--mode", "fix-ups-only")),
    Mutant("removal before its copy is there", "carryOut.cpp", "!change.waitsForCopy.empty() && ", "false && ", RECORD),
    Mutant("no recovery", "runCommit.cpp", "if (ParseRecord(text, record))", "if (false && ParseRecord(text, record))",
           POWER_CUT),
    Mutant("recovered record not flushed", "carryOut.cpp", "        FlushRecord();\n", "        ;\n", POWER_CUT),
    Mutant("second name of a renamed file not removed", "carryOut.cpp",
           "            (void)unlink(temporary.c_str());\n            return 0;", "            return 0;", POWER_CUT_OF_SEQUENCE),
    # The upgrade's marker
    Mutant("marker not changed", "commitStaged.cpp", "    if (run.isOfUpgrade)\n        record.changes",
           "    if (false)\n        record.changes", POWER_CUT_OF_SEQUENCE),
    Mutant("no flush of the marker", "carryOut.cpp", "    FlushFolder(kNoteFolder);\n    return error == 0;",
           "    return error == 0;", POWER_CUT_OF_SEQUENCE),
    # Certificates
    Mutant("certificates not noted", "foreignCopies.cpp", "hasNote = fields.size() > 1 &&", "hasNote = false &&",
           POWER_CUT_OF_CERTIFICATES),
    Mutant("certificates not flushed", "runCommit.cpp", "    const int copies = FlushForeignCopies();\n",
           "    const int copies = 0;\n", POWER_CUT_OF_CERTIFICATES),
    Mutant("short certificate not taken back", "foreignCopies.cpp", "if (IsCutShort(copy))", "if (false)",
           ("kill_test.py", "--mode", "dev")),
    Mutant("no lock", "runLock.cpp", "    lockedFolder = open(", "    return true;\n    lockedFolder = open(",
           ("together_test.py",)),
)
