// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// How the password pass handles any content of a device's list of enciphered entries, with the test's own list.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "configMapper.h"
#include "passwordCipher.h"
#include "scratchFolder.h"
#include "transPasswordFile.h"

namespace
{

std::list<CIniConfigInfo*> g_entries;
int g_result = 1;
int g_callCount = 0;

} // namespace

// Replaces that of the platform. The mapper does not own these records, so deleting one would free memory that was
// never allocated.
int CConfigMapper::GetAllEncryptConfig(std::list<CIniConfigInfo*>& entries)
{
    EXPECT_TRUE(entries.empty());
    ++g_callCount;
    entries = g_entries;
    return g_result;
}

namespace
{

constexpr CIniConfigInfo* kNone = nullptr;

/// The records of a list, in an array: none of them can be released separately.
class OwnEntryList : public testing::Test
{
protected:
    OwnEntryList()
    {
        WriteBytes(path_, "[Web]\nA=a\nB=b\nC=c\n");
        const char* keys[] = {"A", "B", "C"};
        for (int i = 0; i < 3; ++i) {
            records_[i].name = "record with a name that is too long to be kept inside the object";
            records_[i].filePath = path_;
            records_[i].section = "Web";
            records_[i].key = keys[i];
        }
        g_result = 1;
        g_callCount = 0;
    }

    /// @return the pass's result; its traces are in `traces_`
    int Run(const std::list<CIniConfigInfo*>& entries)
    {
        g_entries = entries;
        testing::internal::CaptureStderr();
        const int result = TransAllEncryptConfig(CipherDirection::Encipher);
        traces_ = testing::internal::GetCapturedStderr();
        EXPECT_EQ(g_callCount, 1);
        return result;
    }

    void ExpectRecordsAsTheyWere() const
    {
        const char* keys[] = {"A", "B", "C"};
        for (int i = 0; i < 3; ++i) {
            EXPECT_EQ(records_[i].name, "record with a name that is too long to be kept inside the object");
            EXPECT_EQ(records_[i].filePath, path_);
            EXPECT_EQ(records_[i].section, "Web");
            EXPECT_EQ(records_[i].key, keys[i]);
            EXPECT_EQ(records_[i].defaultText, "");
            EXPECT_FALSE(records_[i].perAccount);
        }
    }

    static std::string Token(const char* text)
    {
        char output[kPasswordBufferSize] = {};
        EXPECT_EQ(pw_data_encrypt(text, output), 0);
        return output;
    }

    static std::string Trace(const char* text)
    {
        return std::string("etlTrace 2: Encrypt:(") + text + ")->(" + Token(text) + ")\n";
    }

    ScratchFolder folder_;
    std::string path_ = folder_.Path("web.ini");
    CIniConfigInfo records_[3];
    std::string traces_;
};

} // namespace

TEST_F(OwnEntryList, NullEntriesAreSkippedSilentlyWhereverTheyStand)
{
    EXPECT_EQ(Run({kNone, &records_[2], kNone, kNone, &records_[0], kNone}), 1);
    EXPECT_EQ(traces_, Trace("c") + Trace("a"));
    EXPECT_EQ(ReadBytes(path_), "[Web]\nA=" + Token("a") + "\nB=b\nC=" + Token("c") + "\n");
    ExpectRecordsAsTheyWere();
}

TEST_F(OwnEntryList, AListOfNullEntriesIsAListAllTheSame)
{
    EXPECT_EQ(Run({kNone, kNone}), 1);
    EXPECT_EQ(traces_, "");
    EXPECT_EQ(ReadBytes(path_), "[Web]\nA=a\nB=b\nC=c\n");
}

TEST_F(OwnEntryList, AnEmptyListIsAListAllTheSame)
{
    EXPECT_EQ(Run({}), 1);
    EXPECT_EQ(traces_, "");
}

TEST_F(OwnEntryList, EntriesOfAListThatFailsAreNotConverted)
{
    g_result = 0;
    EXPECT_EQ(Run({&records_[0], kNone}), 0);
    EXPECT_EQ(traces_, "etlTrace 3: Fail to get encrypt config !!\n");
    EXPECT_EQ(ReadBytes(path_), "[Web]\nA=a\nB=b\nC=c\n");
    ExpectRecordsAsTheyWere();
}

TEST_F(OwnEntryList, AnyResultButZeroIsASuccess)
{
    for (const int result : {-1, 2}) {
        g_result = result;
        g_callCount = 0;
        WriteBytes(path_, "[Web]\nA=a\n");
        EXPECT_EQ(Run({&records_[0]}), 1);
        EXPECT_EQ(traces_, Trace("a"));
        EXPECT_EQ(TransEncryptValue(CipherDirection::Encipher, "", "Web", "A", ""), 0); // empties the cache
    }
}

TEST_F(OwnEntryList, AnEntryThatIsListedTwiceIsConvertedTwiceAndStaysUsable)
{
    EXPECT_EQ(Run({&records_[0], &records_[1], &records_[0]}), 1);
    EXPECT_EQ(traces_, Trace("a") + Trace("b") + Trace(Token("a").c_str()));
    EXPECT_EQ(ReadBytes(path_), "[Web]\nA=" + Token(Token("a").c_str()) + "\nB=" + Token("b") + "\nC=c\n");
    ExpectRecordsAsTheyWere();
}

TEST_F(OwnEntryList, AnInactiveEntryIsSkippedSilently)
{
    records_[1].active = false;
    EXPECT_EQ(Run({&records_[1], &records_[2]}), 1);
    EXPECT_EQ(traces_, Trace("c"));
    ExpectRecordsAsTheyWere();
}
