// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// What the rules say of random tables on random phones, compared with what the real program does with them.

#include <algorithm>
#include <gtest/gtest.h>
#include <random>

#include "checkTable.h"
#include "iniFile.h"
#include "passwordCipher.h"
#include "phoneImage.h"
#include "report.h"
#include "tableCheckRun.h"
#include "xmlText.h"

namespace
{

constexpr char kTable[] = "/phone/resource/kestrune.xml";
const std::vector<std::string> kFiles = {"/config/a.ini", "/config/b.ini", "/phone/c.ini"};
const std::vector<std::string> kSections = {"S", "T"};
const std::vector<std::string> kKeys = {"A", "B", "C"};

/// The rules that say that the pass ends, of a table that is checked against the phone.
const std::vector<std::string> kStopping = {"KT001", "KT002", "KT003", "KT006", "KT022"};

/// The same tables and phones in every run and on every machine: no distribution of the standard library is asked.
class Dice
{
public:
    explicit Dice(unsigned seed) : engine_(seed) {}

    /// @return true once in so many times
    bool OnceIn(unsigned times) { return engine_() % times == 0; }

    std::string OneOf(const std::vector<std::string>& texts) { return texts[engine_() % texts.size()]; }

    unsigned UpTo(unsigned most) { return static_cast<unsigned>(engine_() % (most + 1)); }

private:
    std::mt19937 engine_;
};

std::string Enciphered(const std::string& text)
{
    char output[kPasswordBufferSize] = {};
    EXPECT_EQ(pw_data_encrypt(text.c_str(), output), 0);
    return output;
}

std::string RandomValue(Dice& dice)
{
    static const std::vector<std::string> values = {"",
                                                    "1",
                                                    "heron",
                                                    "caf\xC3\xA9",
                                                    "return\rinside",
                                                    Enciphered("otter"),
                                                    Enciphered(Repeat("x", 103)),
                                                    Repeat("x", 103),
                                                    Repeat("x", 104),
                                                    Repeat("x", 159),
                                                    Repeat("x", 160),
                                                    Repeat("x", 5000)};
    return dice.OneOf(values);
}

/// Some keys, some of them empty. One of the files is often missing.
void PutRandomFiles(PhoneImage& phone, Dice& dice)
{
    phone.Put("/config/version.ini", "[SyncConfig]\nbEnableFromOld=0\n");
    phone.Put(kUserIni, "[PhoneSetting]\nEnLock=" + std::to_string(dice.UpTo(1)) + "\n[Feature]\nRingbackTimeout=90\n");
    for (const std::string& file : kFiles) {
        if (file == kFiles.back() && dice.OnceIn(2))
            continue;
        std::string text;
        for (const std::string& section : kSections) {
            text += "[" + section + "]\n";
            for (const std::string& key : kKeys) {
                if (!dice.OnceIn(6))
                    text += key + "=" + RandomValue(dice) + "\n";
            }
        }
        phone.Put(file, text);
    }
}

/// Mostly one of the good texts; rarely a meaningless one, and rarely nothing.
std::string RandomAttribute(Dice& dice, const std::string& name, const std::vector<std::string>& good,
                            const std::vector<std::string>& bad, unsigned absentOnceIn)
{
    if (dice.OnceIn(absentOnceIn))
        return "";
    return " " + (dice.OnceIn(60) ? name + "x" : name) + "='" + (dice.OnceIn(40) ? dice.OneOf(bad) : dice.OneOf(good)) +
           "'";
}

std::string RandomRecord(Dice& dice)
{
    const std::vector<std::string> badFiles = {
        "", "/config", "/config/", "config/a.ini", "/none/d.ini", "/config/d.ini"};
    const std::vector<std::string> badSections = {"", "U", "S]", "&#10;"};
    const std::vector<std::string> badKeys = {"", "D", "A=", " A", "[A", "A&#13;"};
    const std::vector<std::string> flags = {"true", "false", "1", "no", "Yes"};
    const std::vector<std::string> badFlags = {"", "on", "nothing", "10"};
    std::string attributes;
    for (const std::string side : {"src", "dst"}) {
        const unsigned absentOnceIn = side == "src" ? 60 : 2;
        attributes += RandomAttribute(dice, side + "File", kFiles, badFiles, absentOnceIn);
        attributes += RandomAttribute(dice, side + "Sec", kSections, badSections, absentOnceIn);
        attributes += RandomAttribute(dice, side + "Key", kKeys, badKeys, absentOnceIn);
        attributes += RandomAttribute(dice, side + "Encrypt", flags, badFlags, 3);
    }
    if (dice.OnceIn(100))
        attributes += attributes.substr(0, attributes.find('\'') + 1) + "'"; // doubled, or not even that
    return "<record" + attributes + "/>\n";
}

std::string RandomTable(Dice& dice, unsigned mostRecords)
{
    std::string records;
    for (unsigned left = dice.OnceIn(100) ? 0 : 1 + dice.UpTo(mostRecords - 1); left > 0; --left)
        records += RandomRecord(dice);
    return "<table>\n" + records + (dice.OnceIn(100) ? "" : "</table>\n");
}

/// @return every value that the files hold, by their file, section and key
std::vector<std::string> Values(const PhoneImage& phone)
{
    std::vector<std::string> values;
    for (const std::string& file : kFiles) {
        iniFile document;
        (void)document.LoadFromFile(phone.HostPath(file).c_str()); // a missing file has no values
        for (const std::string& section : kSections) {
            for (const std::string& key : kKeys)
                values.push_back(document.GetTextValue(section, key, ""));
        }
    }
    return values;
}

/// What the rules said, and what the program did.
struct Trial {
    std::string table;
    std::string found;
    bool hasErrors; ///< but for those about secrets, which neither stop the pass nor empty a value
    bool isStopped;
    bool isEmptied;

    bool Found(const std::vector<std::string>& rules) const
    {
        return std::any_of(rules.begin(), rules.end(),
                           [this](const std::string& rule) { return found.find(rule) != std::string::npos; });
    }
};

bool HasLine(const std::vector<std::string>& lines, const std::string& line)
{
    return std::find(lines.begin(), lines.end(), line) != lines.end();
}

Trial RunTrial(Dice& dice, unsigned mostRecords)
{
    PhoneImage phone;
    PutRandomFiles(phone, dice);
    Trial trial = {};
    trial.table = RandomTable(dice, mostRecords);
    phone.Put(kTable, trial.table);

    const Findings findings = CheckTable({phone.HostPath(kTable), phone.HostPath(""), ""});
    trial.found = Summary(findings);
    trial.hasErrors = std::any_of(findings.begin(), findings.end(), [](const Finding& finding) {
        return FindRule(finding.rule)->severity == Severity::Error && finding.rule != "KT030" &&
               finding.rule != "KT039";
    });

    const std::vector<std::string> before = Values(phone);
    phone.Run("dev");
    const std::vector<std::string> after = Values(phone);
    trial.isStopped = HasLine(phone.Output(), "Can's load user's inifile!") ||
                      HasLine(phone.Reports(), "app_log 60/4: No config translate record!");
    for (std::size_t i = 0; i < before.size(); ++i)
        trial.isEmptied = trial.isEmptied || (!before[i].empty() && after[i].empty());
    return trial;
}

/// How often the trials came out in the ways that matter. Too few of a kind, and the test would prove nothing.
struct Score {
    int clean = 0;
    int stopped = 0;
    int emptied = 0;

    void Add(const Trial& trial)
    {
        clean += trial.hasErrors ? 0 : 1;
        stopped += trial.isStopped ? 1 : 0;
        emptied += trial.isEmptied ? 1 : 0;
    }
};

} // namespace

TEST(TableRulesAndProgram, WithoutErrorsNoneStopsThePassOrEmptiesAValue)
{
    Dice dice(/*seed=*/7);
    Score score;
    for (int i = 0; i < 300; ++i) {
        const Trial trial = RunTrial(dice, /*mostRecords=*/3);
        SCOPED_TRACE("table " + std::to_string(i) + ", found: " + trial.found + "\n" + trial.table);
        score.Add(trial);
        if (!trial.hasErrors) {
            EXPECT_FALSE(trial.isStopped);
            EXPECT_FALSE(trial.isEmptied);
        }
        if (trial.Found(kStopping)) {
            EXPECT_TRUE(trial.isStopped);
        }
    }
    EXPECT_GE(score.clean, 80);
    EXPECT_GE(score.stopped, 60);
    EXPECT_GE(score.emptied, 60);
}

TEST(TableRulesAndProgram, WhatIsFoundInOneRecordComesTrue)
{
    Dice dice(/*seed=*/8);
    Score score;
    for (int i = 0; i < 200; ++i) {
        const Trial trial = RunTrial(dice, /*mostRecords=*/1);
        SCOPED_TRACE("table " + std::to_string(i) + ", found: " + trial.found + "\n" + trial.table);
        score.Add(trial);
        if (trial.Found(kStopping)) {
            EXPECT_TRUE(trial.isStopped);
            EXPECT_FALSE(trial.isEmptied);
        } else {
            EXPECT_FALSE(trial.isStopped);
            // Whether a value is too long to encipher matters on a locked phone only.
            // A record that has no source on any phone is found as that, whatever the destination holds.
            if (trial.Found({"KT005", "KT017"})) {
                EXPECT_FALSE(trial.Found({"KT025"}));
            } else if (!trial.Found({"KT026"})) {
                EXPECT_EQ(trial.isEmptied, trial.Found({"KT025"}));
            }
        }
    }
    EXPECT_GE(score.clean, 80);
    EXPECT_GE(score.stopped, 30);
    EXPECT_GE(score.emptied, 20);
}
