// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// The table of all rules.

#include "rules.h"

const std::vector<Rule>& Rules()
{
    // Static: a table of constants.
    static const std::vector<Rule> rules = {
        {"KT001", Severity::Error, "The table does not load",
         "The pass logs \"No config translate record!\" and ends. No value is moved. Files with grave syntax errors, "
         "larger than 4 MiB, nested deeper than 200 elements, with more than 100,000 elements or with more than 256 "
         "attributes in one element do not load.",
         "Correct the XML at the line given; it is where the program's XML library stopped."},
        {"KT002", Severity::Error, "No record",
         "The pass logs \"No config translate record!\" and ends. Records are the elements directly below the root.",
         "Add records, or ship no table at all."},
        {"KT003", Severity::Error, "Doubled attribute",
         "An element names an attribute twice. Such a file does not load: the pass logs \"No config translate "
         "record!\" and ends. No value is moved.",
         "Remove one of the two."},
        {"KT004", Severity::Warning, "Unknown or miswritten attribute",
         "The program looks for srcFile, srcSec, srcKey, srcEncrypt, dstFile, dstSec, dstKey and dstEncrypt, in this "
         "letter case, and for nothing else. The attribute is ignored, and the one that was meant counts as absent: "
         "a destination then falls back on the source.",
         "Correct the name or remove the attribute."},
        {"KT005", Severity::Error, "No source",
         "srcFile, srcSec or srcKey is absent, or srcFile cannot be a file. The value is empty, and this empty value "
         "is written over the destination.",
         "Give the source whole. To empty a setting on purpose, suppress this rule for the record."},
        {"KT006", Severity::Error, "No destination file",
         "Neither dstFile nor srcFile is there, or the path is empty or names a folder. The destination does not "
         "load, and the pass ends at this record: later records are not processed.",
         "Give dstFile, or srcFile when the destination is in the same file."},
        {"KT007", Severity::Warning, "Text that is no boolean",
         "A boolean begins with true, yes or 1, or with false, no or 0, in any letter case. With any other text the "
         "attribute counts as absent: dstEncrypt falls back on srcEncrypt, and srcEncrypt on false.",
         "Write true or false."},
        {"KT008", Severity::Warning, "Boolean read by its beginning",
         "Only the beginning of the text is compared, so that \"none\" and \"0x1\" are false and \"10\" is true.",
         "Write true or false."},
        {"KT009", Severity::Note, "srcEncrypt without effect",
         "srcEncrypt replaces an absent dstEncrypt and says nothing about the source, whose form the program finds "
         "by deciphering it. It is never read where dstEncrypt is given.",
         "Remove srcEncrypt."},
        {"KT010", Severity::Warning, "Two records with one destination",
         "Records are processed from top to bottom, and the later one overwrites what the earlier one wrote, also "
         "with an empty value.",
         "Keep one of the two."},
        {"KT011", Severity::Warning, "Record reads what an earlier one wrote",
         "Every record loads its files afresh, so this one moves the value that the earlier record has just written, "
         "not the one that the phone held. A record that rewrites its source in place does not count as earlier.",
         "Read the first source directly, or move this record before the other one."},
        {"KT012", Severity::Warning, "Record overwrites what an earlier one reads",
         "The first run is right, but in a second run the earlier record carries the new value on. Modes \"all\" and "
         "\"dev\" run the table every time. A record that rewrites its source in place is harmless.",
         "Choose another destination, or accept that the upgrade must run only once."},
        {"KT013", Severity::Warning, "Entry kept enciphered is written plain",
         "The destination is in the list of entries that the phone keeps enciphered, but the record's encrypt flag "
         "is off: on a locked phone the secret is written in clear, and remains so.",
         "Set dstEncrypt to true, or take the entry off the list.", Basis::Phone},
        {"KT014", Severity::Warning, "Enciphered value is not in the entry list",
         "The record's encrypt flag is on, but no active entry of the list covers the destination. The password pass "
         "never converts it, so it keeps its form when the phone's lock changes. Entries per account cover only "
         "sipAccount0.cfg to sipAccount3.cfg.",
         "Add the destination to the list, or set dstEncrypt to false.", Basis::Phone},
        {"KT015", Severity::Error, "Relative path",
         "The path is looked up from the folder in which the program happens to be started. A source that is not "
         "found there empties the destination; a destination that is not found there ends the pass.",
         "Write the whole path, from the slash on."},
        {"KT016", Severity::Warning, "Path leads out of the configuration",
         "The program reads and writes any path. Settings live below /config; the program's other sources are below "
         "/phone (the firmware) and /tmp (handed over during the upgrade). What is written elsewhere is no setting, "
         "and is lost or harms the firmware.",
         "Write to files below /config, and read from files below /config, /phone or /tmp."},
        {"KT017", Severity::Error, "Name that the store refuses",
         "A section name must not be empty or contain \"]\" or a line break. A key name must not be empty, contain "
         "\"=\" or a line break, have blanks at its ends or start with \"[\", \";\" or \"#\". A destination of such "
         "a name is not written at all. A source of such a name is in no file that the program wrote: its value is "
         "empty, and the destination is emptied.",
         "Correct the name."},
        {"KT018", Severity::Warning, "Content that is ignored",
         "A record has attributes only. Elements and text within a record, and text between records, are never read: "
         "a record within a record is lost.",
         "Close the record before the next one begins."},
        {"KT019", Severity::Warning, "Element after the root",
         "Only the first element of the file is the table. Records in another one are never read.",
         "Put all records into one root element."},
        {"KT020", Severity::Warning, "Record without effect",
         "Source and destination are the same and the encrypt flag is off. The value stays as it is; but an "
         "enciphered one becomes plain, and an absent key is added, empty.",
         "Name another destination, set an encrypt flag or remove the record."},
        {"KT021", Severity::Warning, "Suppression that names no rule",
         "A comment that begins with \"kestrune-table-check:\" is not followed by \"ignore\" and numbers of rules, "
         "or is not followed by a record. It suppresses nothing.",
         "Write <!-- kestrune-table-check: ignore KT004 --> right before the record."},
        {"KT022", Severity::Error, "Destination file is not in the image",
         "The program never creates a destination file. On this phone the pass ends at this record: later records "
         "are not processed.",
         "Correct the path. Put records for files that a phone may lack last.", Basis::Phone},
        {"KT023", Severity::Warning, "Source file is not in the image",
         "The value is empty, and this empty value is written to the destination.",
         "Correct the path, or use the record only for phones that have the file.", Basis::Phone},
        {"KT024", Severity::Warning, "Source key is not in the image",
         "The value is empty, and this empty value is written to the destination; the key is added where absent, so "
         "that its default no longer applies.",
         "Correct section and key, or use the record only for phones that have the key.", Basis::Phone},
        {"KT025", Severity::Error, "Value is emptied",
         "The destination holds a value on this phone, the source none: the value is overwritten with the empty one "
         "and lost.",
         "Correct the source, or write to another key.", Basis::Phone},
        {"KT026", Severity::Error, "Value too long to encipher is lost",
         "The encrypt flag is on and the value has 160 bytes or more, which the cipher's buffer does not hold. On a "
         "locked phone the destination is emptied.",
         "Clear the encrypt flag of the record, or shorten the value on the phone before the upgrade.", Basis::Phone},
        {"KT027", Severity::Warning, "Value cannot be enciphered",
         "The encrypt flag is on, but the value has more than 103 bytes or a byte of 0x80 or above, or the phone's "
         "cipher key is unusable. On a locked phone the value stays, but plain.",
         "Clear the encrypt flag of the record, or change the value on the phone before the upgrade.", Basis::Phone},
        {"KT028", Severity::Note, "Destination key is not in the image",
         "The key is added, and its section where absent. This is normal for a setting that moves, but a misspelt "
         "destination looks the same.",
         "Compare section and key with what the new firmware reads.", Basis::Phone},
        {"KT029", Severity::Warning, "Value that the store refuses",
         "The source's value holds a carriage return or a zero byte, which the store reads but does not write. "
         "Nothing is written, and the destination stays as it is.",
         "Correct the value on the phone before the upgrade.", Basis::Phone},
        {"KT030", Severity::Error, "Secret is written plain",
         "The source holds a secret: the list of enciphered entries names it, a record with the encrypt flag writes "
         "or reads it, another record brings a secret there, or the image holds it enciphered. The record's encrypt "
         "flag is off, and the list does not name the destination: the secret is plain there on a locked phone as "
         "well, and the password pass never enciphers it.",
         "Set dstEncrypt to true, and add the destination to the list of enciphered entries.", Basis::Phone},
        {"KT031", Severity::Error, "Destination is no configuration file",
         "The path ends as XML, certificates, keys, archives, pictures and programs do, or the image has such a file "
         "there. The program reads and writes any file as a configuration file: it appends section and key, which "
         "damages the file.",
         "Write to a configuration file. The XML data files have passes of their own.", Basis::Phone},
        {"KT032", Severity::Warning, "Destination steers the program",
         "[PhoneSetting] EnLock of user.ini says in which form the password pass leaves the secrets, [SyncConfig] "
         "bEnableFromOld of version.ini whether contacts and other XML data are carried over, and [Sync] "
         "SyncCfgByVersion of user.ini whether mode \"1\" hands settings over. An empty value counts as 0. The "
         "program's own files in /config hold what a run that was cut off still has to do.",
         "Remove the record, or suppress this rule for it with the reason."},
        {"KT033", Severity::Warning, "Source is no configuration file",
         "The path ends as XML, certificates, keys, archives, pictures and programs do, or the image has such a file "
         "there. Lines that look like sections and keys are rare in it: the value is empty, and this empty value is "
         "written to the destination.",
         "Read from a configuration file.", Basis::Phone},
        {"KT034", Severity::Error, "Path that no phone has",
         "The program uses a path as it is. A pattern (\"*\", \"?\", \"%d\", \"{n}\") has no meaning, and a blank at "
         "the path's beginning or end is part of it. A destination of that path ends the pass, a source empties the "
         "destination.",
         "Write one record for each file, and the paths without blanks at their ends."},
        {"KT035", Severity::Warning, "Section name with blanks at its ends",
         "The blanks are part of the name: \"[Audio ]\" is another section than \"[Audio]\".",
         "Remove the blanks, unless the phone's file has them as well."},
        {"KT036", Severity::Warning, "Not well-formed XML",
         "The program's XML library is lax: it loads the table, but drops a bare \"&\" and guesses at what else a "
         "strict parser refuses. \"Hold&Swap\" is read as \"HoldSwap\".",
         "Write &amp;, &lt; and &quot; for these characters in a value, and correct what xmllint reports."},
        {"KT037", Severity::Warning, "Secret by its name is written plain",
         "The name of the source's or destination's key is that of a password, PIN or key, the record's encrypt flag "
         "is off, and the list of enciphered entries does not name the destination. If it is a secret, it is plain "
         "there on a locked phone as well. An entry of the list that is not active says that the phone keeps a place "
         "plain on purpose.",
         "Set dstEncrypt to true, and add the destination to the list. For what is no secret, suppress this rule.",
         Basis::Phone},
        {"KT038", Severity::Warning, "Suppression without effect",
         "The comment right before the record names a rule that finds nothing in it. The comment hides nothing now, "
         "but would hide a mistake that is made later. Rules about the list of enciphered entries or an image do not "
         "count: they depend on the phone.",
         "Remove the rule from the comment."},
        {"KT039", Severity::Error, "No cipher key",
         "The image has no /phone/factory/certs/pwcipher.key, and the table or the password pass enciphers. Without "
         "that file the key is one that everyone can read in the program's source: on a locked phone the passwords "
         "only look enciphered.",
         "Give each phone a key of its own. For backups that leave it out, put one into the folder for --firmware.",
         Basis::Phone},
        {"KT040", Severity::Warning, "Moved secret stays plain at its old place",
         "The record keeps a secret enciphered at its new place. The old key is never removed, no record enciphers it "
         "where it is, and no active entry of the list covers it: if it was plain, it is so on a locked phone as "
         "well. An entry of the list that is not active says that the phone keeps a place plain on purpose.",
         "Before this record, rewrite the old place with a record that has only a source and srcEncrypt, and add the "
         "place to the list.",
         Basis::Phone},
    };
    return rules;
}
