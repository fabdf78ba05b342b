// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// The password pass: whole runs of mode "pwd" on a phone without a key file, so with the development key, and single
// entries on files in a scratch folder.

#include "transPasswordFile.h"

#include <chrono>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "bundledPlatform.h"
#include "operationResult.h"
#include "phoneImage.h"
#include "xmlText.h"

namespace fs = std::filesystem;

namespace
{

constexpr char kFactoryIni[] = "/phone/factory/user/user.ini";
constexpr char kList[] = "/phone/resource/encryptconfig.xml";
constexpr char kWebIni[] = "/config/user/web.ini";

const std::string kFirst = Enciphered("first", "q252TBV7RXOe8CJI0YcqWbFTAWxn");
const std::string kSecond = Enciphered("second", "auhsCPzGnqyO2J1qJ6judCkZH8MJ6A");
const std::string kZeros = Enciphered("0000", "vyPMw1XIkU9v7jrcqcMu1aen8RE");
const std::string kHello = Enciphered("hello, phone", "NxCtIZlb8N+vWevKAOqtDvzgV0IboWX12AuHSQ");
const std::string kHelloTwice =
    Enciphered(kHello.c_str(), "eB/ZoLFj99qSyKAwH8JR7eNnWv3kbcCmx2/I3cTGSAnRkfusBHgw97AUlepoVCJgcNKXnzHB");

using Lines = std::vector<std::string>;

std::string UserIni(const std::string& lockLine)
{
    return "[PhoneSetting]\n" + lockLine + "[Feature]\nRingbackTimeout=90\n";
}

void PutLocks(PhoneImage& phone, const std::string& userLine, const std::string& factoryLine)
{
    phone.Put(kUserIni, UserIni(userLine));
    phone.Put(kFactoryIni, "[PhoneSetting]\n" + factoryLine);
}

void PutEncipheringPhone(PhoneImage& phone, const std::string& entries)
{
    PutLocks(phone, "EnLock=0\n", "EnLock=1\n");
    phone.Put(kList, "<list>" + entries + "</list>");
}

void PutDecipheringPhone(PhoneImage& phone, const std::string& entries)
{
    PutLocks(phone, "EnLock=1\n", "EnLock=0\n");
    phone.Put(kList, "<list>" + entries + "</list>");
}

std::string WebEntry(const std::string& key, const std::string& more = "")
{
    return "<e file='/config/user/web.ini' section='Web' key='" + key + "' " + more + "/>";
}

/// Sets the file's modification time back by an hour.
void MakeOld(const std::string& path)
{
    fs::last_write_time(path, fs::file_time_type::clock::now() - std::chrono::hours(1));
}

bool IsOld(const std::string& path)
{
    return fs::last_write_time(path) < fs::file_time_type::clock::now() - std::chrono::minutes(30);
}

int Encipher(const std::string& file, const char* key, const char* defaultText = "")
{
    return TransEncryptValue(CipherDirection::Encipher, file.c_str(), "Web", key, defaultText);
}

enum class Done { Nothing, Enciphers, Deciphers };

/// @param status  what is reported when nothing is done
void ExpectDone(PhoneImage& phone, Done done, const std::string& status)
{
    switch (done) {
    case Done::Nothing:
        EXPECT_EQ(phone.Reports(),
                  Lines{std::string("app_log 60/6: No need trans password file !! Current status [") + status + "]"});
        break;
    case Done::Enciphers:
        EXPECT_THAT(phone.Reports(),
                    testing::ElementsAre(std::string("etlTrace 2: Encrypt:(first)->(") + kFirst + ")",
                                         testing::StartsWith("etlTrace 2: Encrypt:(" + kSecond + ")")));
        EXPECT_NE(phone.Get(kWebIni).find(std::string("[Web]\nA=") + kFirst + "\nB="), std::string::npos);
        phone.Expect(kWebIni, phone.Get(kWebIni));
        break;
    case Done::Deciphers:
        EXPECT_EQ(phone.Reports(), (Lines{"etlTrace 2: Decrypt:(first)->()",
                                          std::string("etlTrace 2: Decrypt:(") + kSecond + ")->(second)"}));
        phone.Expect(kWebIni, "[Web]\nA=first\nB=second\n");
        break;
    }
}

} // namespace

TEST(TransPasswordFile, TheTwoLocksDecideWhatIsDone)
{
    struct Row {
        const char* user;
        const char* factory;
        Done expected;
        const char* status;
    };
    const Row rows[] = {
        {"EnLock=0\n", "EnLock=0\n", Done::Nothing, "decrypt"},
        {"EnLock=0\n", "", Done::Nothing, "decrypt"},
        {"", "EnLock=0\n", Done::Nothing, "decrypt"},
        {"", "", Done::Nothing, "decrypt"},
        {"EnLock=\n", "EnLock=off\n", Done::Nothing, "decrypt"},
        {"EnLock=1\n", "EnLock=1\n", Done::Nothing, "encrypt"},
        {"EnLock=2\n", "EnLock=1\n", Done::Nothing, "encrypt"},
        {"EnLock=-1\n", "EnLock=1\n", Done::Nothing, "encrypt"},
        {"EnLock=1\n", "EnLock=-1\n", Done::Nothing, "encrypt"},
        {"EnLock=0\n", "EnLock=1\n", Done::Enciphers, ""},
        {"EnLock=0\n", "EnLock=2\n", Done::Enciphers, ""},
        {"EnLock=0\n", "EnLock=-1\n", Done::Enciphers, ""},
        {"", "EnLock=1\n", Done::Enciphers, ""},
        {"EnLock=on\n", "EnLock=99999999999\n", Done::Enciphers, ""},
        {"EnLock=1\n", "EnLock=0\n", Done::Deciphers, ""},
        {"EnLock=2\n", "EnLock=0\n", Done::Deciphers, ""},
        {"EnLock=-1\n", "", Done::Deciphers, ""},
        {"EnLock=1x\n", "EnLock=x1\n", Done::Deciphers, ""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(std::string(row.user) + row.factory);
        PhoneImage phone;
        PutLocks(phone, row.user, row.factory);
        phone.Put(kList, "<list>" + WebEntry("A") + WebEntry("B") + "</list>");
        phone.Put(kWebIni, std::string("[Web]\nA=first\nB=") + kSecond + "\n");
        phone.Run("pwd");
        ExpectDone(phone, row.expected, row.status);
        phone.ExpectNothingElseChanged();
    }
}

TEST(TransPasswordFile, OtherSectionsOfTheSameKeyDoNotCount)
{
    PhoneImage phone;
    phone.Put(kUserIni, UserIni("") + "EnLock=1\n[Phonesetting]\nEnLock=1\n");
    phone.Put(kFactoryIni, "EnLock=1\n[PhoneSetting]\nenlock=1\n");
    phone.Run("pwd");
    EXPECT_EQ(phone.Reports(), Lines{"app_log 60/6: No need trans password file !! Current status [decrypt]"});
}

TEST(TransPasswordFile, WithoutTheUsersFileNothingIsConverted)
{
    PhoneImage missing; // the fix-ups cannot create it either: its folder is missing
    missing.Put(kFactoryIni, "[PhoneSetting]\nEnLock=1\n");
    missing.Put(kList, "<list>" + WebEntry("A") + "</list>");
    missing.Run("pwd");
    EXPECT_EQ(missing.Reports(), Lines{"app_log 60/4: Can's load user's inifile!"});
    missing.ExpectNothingElseChanged();

    PhoneImage folder;
    PutEncipheringPhone(folder, WebEntry("A"));
    folder.Put(kWebIni, "[Web]\nA=first\n");
    folder.Remove(kUserIni);
    folder.PutFolder(kUserIni);
    folder.Run("pwd");
    EXPECT_EQ(folder.Reports(), Lines{"app_log 60/4: Can's load user's inifile!"});
    folder.ExpectNothingElseChanged();
}

TEST(TransPasswordFile, WithoutTheFactorysFileNothingIsConverted)
{
    for (const bool isFolder : {false, true}) {
        PhoneImage phone;
        PutDecipheringPhone(phone, WebEntry("A"));
        phone.Put(kWebIni, std::string("[Web]\nA=") + kFirst + "\n");
        phone.Remove(kFactoryIni);
        if (isFolder)
            phone.PutFolder(kFactoryIni);
        phone.Run("pwd");
        EXPECT_EQ(phone.Reports(), Lines{"app_log 60/4: Can's load factory user's inifile!"});
        phone.ExpectNothingElseChanged();
    }
}

TEST(TransPasswordFile, AnEntryPerAccountTouchesTheFirstFourAccountsInOrder)
{
    PhoneImage phone;
    PutEncipheringPhone(phone, "<e perAccount='true' file='/config/user/web.ini' section='account' key='Password'/>");
    const auto account = [](const std::string& password) {
        return "[account]\nSCALineKeyNumber=1\nPassword=" + password + "\n";
    };
    phone.Put(kWebIni, account("first"));
    for (const char* number : {"0", "1", "3", "4", "16"})
        phone.Put(std::string("/config/user/voip/sipAccount") + number + ".cfg", account("first"));
    phone.Put("/config/user/voip/sipAccount1.cfg", account("hello, phone"));
    phone.Run("pwd");
    EXPECT_EQ(phone.Reports(), (Lines{std::string("etlTrace 2: Encrypt:(first)->(") + kFirst + ")",
                                      std::string("etlTrace 2: Encrypt:(hello, phone)->(") + kHello + ")",
                                      "etlTrace 3: Fail to load file [/config/user/voip/sipAccount2.cfg] !!",
                                      std::string("etlTrace 2: Encrypt:(first)->(") + kFirst + ")"}));
    phone.Expect("/config/user/voip/sipAccount0.cfg", account(kFirst));
    phone.Expect("/config/user/voip/sipAccount1.cfg", account(kHello));
    phone.Expect("/config/user/voip/sipAccount3.cfg", account(kFirst));
    phone.ExpectNothingElseChanged();
}

TEST(TransPasswordFile, AnInactiveEntryIsSkippedSilently)
{
    PhoneImage phone;
    PutEncipheringPhone(phone, WebEntry("A", "active='false'") + WebEntry("B") +
                                   "<e perAccount='true' active='false' section='account' key='Password'/>"
                                   "<e file='/config/missing.ini' active='false' section='Web' key='A'/>");
    phone.Put(kWebIni, "[Web]\nA=first\nB=second\n");
    phone.Run("pwd");
    EXPECT_EQ(phone.Reports(), Lines{std::string("etlTrace 2: Encrypt:(second)->(") + kSecond + ")"});
    phone.Expect(kWebIni, std::string("[Web]\nA=first\nB=") + kSecond + "\n");
    phone.ExpectNothingElseChanged();
}

TEST(TransPasswordFile, AFileThatDoesNotLoadIsReportedAndTheWalkGoesOn)
{
    PhoneImage phone;
    PutEncipheringPhone(phone, WebEntry("A") + "<e file='/config/missing.ini' section='Web' key='A' default='d'/>" +
                                   "<e file='/config/user' section='Web' key='A' default='d'/>" + WebEntry("B"));
    phone.Put(kWebIni, "[Web]\nA=first\nB=second\n");
    phone.Run("pwd");
    EXPECT_EQ(phone.Reports(), (Lines{std::string("etlTrace 2: Encrypt:(first)->(") + kFirst + ")",
                                      "etlTrace 3: Fail to load file [/config/missing.ini] !!",
                                      "etlTrace 3: Fail to load file [/config/user] !!",
                                      std::string("etlTrace 2: Encrypt:(second)->(") + kSecond + ")"}));
    phone.Expect(kWebIni, std::string("[Web]\nA=") + kFirst + "\nB=" + kSecond + "\n");
    phone.ExpectNothingElseChanged();
}

TEST(TransPasswordFile, AnAbsentKeyGetsItsDefaultConverted)
{
    PhoneImage phone;
    PutEncipheringPhone(phone,
                        WebEntry("Pin", "default='0000'") + WebEntry("None") + WebEntry("Empty", "default='0000'"));
    phone.Put(kWebIni, "[Web]\nEmpty=\n");
    phone.Run("pwd");
    EXPECT_EQ(phone.Reports(), Lines{std::string("etlTrace 2: Encrypt:(0000)->(") + kZeros + ")"});
    phone.Expect(kWebIni, std::string("[Web]\nEmpty=\nPin=") + kZeros + "\n");
    phone.ExpectNothingElseChanged();
}

TEST(TransPasswordFile, ValuesThatTheCipherRefusesAreTracedAndStay)
{
    const std::string long104(104, 'x');
    const std::string long159(159, 'x');
    PhoneImage phone;
    PutEncipheringPhone(phone, WebEntry("A") + WebEntry("B") + WebEntry("C") + WebEntry("D"));
    phone.Put(kWebIni, "[Web]\nA=" + long104 + "\nB=" + long159 + "\nC=" + long159 + "yz\nD=gr\xC3\xBC\xC3\x9F\n");
    phone.Run("pwd");
    EXPECT_EQ(phone.Reports(), (Lines{"etlTrace 2: Encrypt:(" + long104 + ")->(" + long104 + ")",
                                      "etlTrace 2: Encrypt:(" + long159 + ")->(" + long159 + ")",
                                      "etlTrace 2: Encrypt:(" + long159 + ")->(" + long159 + ")",
                                      "etlTrace 2: Encrypt:(gr\xC3\xBC\xC3\x9F)->(gr\xC3\xBC\xC3\x9F)"}));
    phone.ExpectNothingElseChanged();
}

TEST(TransPasswordFile, OfALongValueTheFirst159CharactersAreConverted)
{
    if (!kHasBundledPlatform)
        GTEST_SKIP() << "rests on the texts of the bundled cipher";
    // The token of 103 times "x" is as long as that.
    const std::string token =
        "q3CVjm9u+cSPKkl9psxtiBqsYliH3bjctUkRauPre4vBxdNajVCpttwwM1byv8qaipz7srLb1c+l9NhIYinx2DT3TRO7"
        "HNPeWC10UXzGmsbKQNujIMwVfNiIEMLEvXZXugGjaeMtWRxPgU1PtucqyEXkJj1Rglk";
    PhoneImage phone;
    PutDecipheringPhone(phone, WebEntry("A"));
    phone.Put(kWebIni, "[Web]\nA=" + token + "cut off\n");
    phone.Run("pwd");
    EXPECT_EQ(phone.Reports(), Lines{"etlTrace 2: Decrypt:(" + token + ")->(" + std::string(103, 'x') + ")"});
    phone.Expect(kWebIni, "[Web]\nA=" + std::string(103, 'x') + "\n");
}

TEST(TransPasswordFile, AZeroByteEndsAValue)
{
    PhoneImage phone;
    PutEncipheringPhone(phone, WebEntry("A") + WebEntry("B"));
    phone.Put(kWebIni, std::string("[Web]\nA=first\0rest\nB=\0rest\n", 27));
    phone.Run("pwd");
    EXPECT_EQ(phone.Reports(), Lines{std::string("etlTrace 2: Encrypt:(first)->(") + kFirst + ")"});
    phone.Expect(kWebIni, std::string("[Web]\nA=") + kFirst + std::string("\nB=\0rest\n", 9));
}

TEST(TransPasswordFile, ValuesAreNeverAFormat)
{
    PhoneImage phone;
    PutEncipheringPhone(phone, WebEntry("A") + "<e file='/config/%s%n.ini' section='Web' key='A'/>");
    phone.Put(kWebIni, "[Web]\nA=%s%n%d\n");
    phone.Run("pwd");
    EXPECT_EQ(phone.Reports(),
              (Lines{"etlTrace 2: Encrypt:(%s%n%d)->(" + Enciphered("%s%n%d", "Pv3RTx2qip6/Ilfdmn3CpHXuYvfkKA") + ")",
                     "etlTrace 3: Fail to load file [/config/%s%n.ini] !!"}));
}

TEST(TransPasswordFile, NoTestOfThePresentFormASecondRunEnciphersOnceMore)
{
    PhoneImage phone;
    PutEncipheringPhone(phone, WebEntry("A"));
    phone.Put(kWebIni, "[Web]\nA=hello, phone\n");
    phone.Run("pwd");
    phone.Expect(kWebIni, std::string("[Web]\nA=") + kHello + "\n");
    phone.Run("pwd");
    EXPECT_EQ(phone.Reports(), Lines{std::string("etlTrace 2: Encrypt:(") + kHello + ")->(" + kHelloTwice + ")"});
    phone.Expect(kWebIni, std::string("[Web]\nA=") + kHelloTwice + "\n");
    phone.ExpectNothingElseChanged();
}

TEST(TransPasswordFile, ASecondDecipheringChangesNothing)
{
    PhoneImage phone;
    PutDecipheringPhone(phone, WebEntry("A"));
    phone.Put(kWebIni, std::string("[Web]\nA=") + kHello + "\n");
    phone.Run("pwd");
    phone.Expect(kWebIni, "[Web]\nA=hello, phone\n");
    phone.Run("pwd");
    EXPECT_EQ(phone.Reports(), Lines{"etlTrace 2: Decrypt:(hello, phone)->()"});
    phone.ExpectNothingElseChanged();
}

TEST(TransPasswordFile, EntriesOfTheUsersOwnFileAreConvertedAndTheLockStays)
{
    PhoneImage phone;
    PutEncipheringPhone(phone, "<e file='/config/user/user.ini' section='Web' key='A'/>");
    phone.Put(kUserIni, UserIni("EnLock=0\n") + "[Web]\nA=first\n");
    phone.Run("pwd");
    phone.Expect(kUserIni, UserIni("EnLock=0\n") + "[Web]\nA=" + kFirst + "\n");
    phone.ExpectNothingElseChanged();
}

TEST(TransPasswordFile, TheResultIsOneWhenNothingWasToBeConvertedOrTheListWasWalked)
{
    const std::string list = "<list>" + WebEntry("A") + "</list>";
    const char* missing = nullptr;
    struct Row {
        const char* what;
        const char* userLine;    // null: no such file
        const char* factoryLine; // null: no such file
        std::string list;        // empty: no such file
        int result;
    };
    const Row rows[] = {
        {"no file of the user's", missing, "EnLock=1\n", list, 0},
        {"no file of the factory's", "EnLock=1\n", missing, list, 0},
        {"neither", missing, missing, list, 0},
        {"both plain", "EnLock=0\n", "EnLock=0\n", list, 1},
        {"both plain, no list", "EnLock=0\n", "EnLock=0\n", "", 1},
        {"both enciphered", "EnLock=2\n", "EnLock=1\n", list, 1},
        {"both enciphered, no list", "EnLock=2\n", "EnLock=1\n", "", 1},
        {"to be enciphered", "EnLock=0\n", "EnLock=1\n", list, 1},
        {"to be enciphered, no list", "EnLock=0\n", "EnLock=1\n", "", 0},
        {"to be enciphered, a list that does not load", "EnLock=0\n", "EnLock=1\n", "<list>", 0},
        {"to be enciphered, no entry", "EnLock=0\n", "EnLock=1\n", "<list/>", 1},
        {"to be deciphered", "EnLock=1\n", "EnLock=0\n", list, 1},
        {"to be deciphered, no list", "EnLock=1\n", "EnLock=0\n", "", 0},
        {"to be deciphered, no entry", "EnLock=1\n", "EnLock=0\n", "<list/>", 1},
        {"an entry whose file does not load", "EnLock=0\n", "EnLock=1\n",
         "<list><e file='/config/missing.ini' section='Web' key='A'/></list>", 1},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        PhoneImage phone;
        if (row.userLine != nullptr)
            phone.Put(kUserIni, UserIni(row.userLine));
        if (row.factoryLine != nullptr)
            phone.Put(kFactoryIni, std::string("[PhoneSetting]\n") + row.factoryLine);
        if (!row.list.empty())
            phone.Put(kList, row.list);
        phone.Put(kWebIni, "[Web]\nA=first\n");
        EXPECT_EQ(ResultOf(RunForResult(phone, "TransPasswordFile")), "result " + std::to_string(row.result) + "\n");
    }
}

TEST(TransPasswordFileAllEncryptConfig, TheResultIsZeroOnlyWithoutAList)
{
    struct Row {
        const char* what;
        std::string list; // empty: no such file
        int result;
    };
    const Row rows[] = {
        {"no list", "", 0},
        {"a list that does not load", "<list>" + WebEntry("A"), 0},
        {"no entry", "<list/>", 1},
        {"an entry", "<list>" + WebEntry("A") + "</list>", 1},
        {"an entry that is not active", "<list>" + WebEntry("A", "active='false'") + "</list>", 1},
        {"an entry whose file does not load", "<list><e file='/config/missing.ini' section='Web' key='A'/></list>", 1},
        {"accounts that do not load", "<list><e perAccount='true' section='account' key='Password'/></list>", 1},
        {"a value that the cipher refuses", "<list>" + WebEntry("EightBit") + "</list>", 1},
        {"a file that cannot be saved", "<list><e file='/config/c.ini' section='Web' key='A'/></list>", 1},
    };
    for (const Row& row : rows) {
        for (const char* direction : {"encipher", "decipher"}) {
            SCOPED_TRACE(std::string(row.what) + ", " + direction);
            PhoneImage phone;
            if (!row.list.empty())
                phone.Put(kList, row.list);
            phone.Put(kWebIni, "[Web]\nA=first\nEightBit=\x80\n");
            phone.Put("/config/c.ini", "[Web]\nA=first\n");
            phone.Put("/config/c.ini.kestrune-new/in the way", ""); // a folder in place of the new file
            EXPECT_EQ(ResultOf(RunForResult(phone, std::string("TransAllEncryptConfig ") + direction)),
                      "result " + std::to_string(row.result) + "\n");
        }
    }
}

TEST(TransPasswordFileAllEncryptConfig, TheDirectionDecidesAndNotTheLocks)
{
    PhoneImage phone;
    PutLocks(phone, "EnLock=1\n", "EnLock=1\n");
    phone.Put(kList, "<list>" + WebEntry("A") + "</list>");
    phone.Put(kWebIni, "[Web]\nA=first\n");
    RunForResult(phone, "TransAllEncryptConfig encipher");
    phone.Expect(kWebIni, "[Web]\nA=" + kFirst + "\n");
    RunForResult(phone, "TransAllEncryptConfig decipher");
    phone.Expect(kWebIni, "[Web]\nA=first\n");
}

TEST(TransPasswordFileEncryptValue, WithoutAFileSectionOrKeyNothingHappens)
{
    const ScratchFolder folder;
    WriteBytes(folder.Path("web.ini"), "[Web]\nA=first\n");
    const std::string file = folder.Path("web.ini");
    MakeOld(file);
    testing::internal::CaptureStderr();
    for (const CipherDirection direction : {CipherDirection::Encipher, CipherDirection::Decipher}) {
        EXPECT_EQ(TransEncryptValue(direction, /*file=*/nullptr, "Web", "A", "d"), 0);
        EXPECT_EQ(TransEncryptValue(direction, file.c_str(), /*section=*/nullptr, "A", "d"), 0);
        EXPECT_EQ(TransEncryptValue(direction, file.c_str(), "Web", /*key=*/nullptr, "d"), 0);
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(ReadBytes(file), "[Web]\nA=first\n");
    EXPECT_TRUE(IsOld(file));
}

TEST(TransPasswordFileEncryptValue, ConsecutiveEntriesOfAFileShareOneLoadAndEachIsSaved)
{
    const ScratchFolder folder;
    const std::string file = folder.Path("web.ini");
    WriteBytes(file, "[Web]\nA=first\nB=second\n");
    EXPECT_EQ(Encipher(file, "A"), 1);
    EXPECT_EQ(ReadBytes(file), std::string("[Web]\nA=") + kFirst + "\nB=second\n");

    WriteBytes(file, "[Web]\nsomebody else wrote this\n"); // not read: the second save holds both changes
    EXPECT_EQ(Encipher(file, "B"), 1);
    EXPECT_EQ(ReadBytes(file), std::string("[Web]\nA=") + kFirst + "\nB=" + kSecond + "\n");
}

TEST(TransPasswordFileEncryptValue, AfterAnotherFileAFileIsLoadedAgain)
{
    const ScratchFolder folder;
    const std::string a = folder.Path("a.ini");
    const std::string b = folder.Path("b.ini");
    WriteBytes(a, "[Web]\nA=first\n");
    WriteBytes(b, "[Web]\nA=first\n");
    EXPECT_EQ(Encipher(a, "A"), 1);
    EXPECT_EQ(Encipher(b, "A"), 1);
    WriteBytes(a, "[Web]\nA=0000\nB=second\n");
    EXPECT_EQ(Encipher(a, "B"), 1);
    EXPECT_EQ(ReadBytes(a), std::string("[Web]\nA=0000\nB=") + kSecond + "\n");
    EXPECT_EQ(ReadBytes(b), std::string("[Web]\nA=") + kFirst + "\n");
}

TEST(TransPasswordFileEncryptValue, TheSameFileByAnotherPathIsAnotherFile)
{
    const ScratchFolder folder;
    WriteBytes(folder.Path("a.ini"), "[Web]\nA=first\n");
    EXPECT_EQ(Encipher(folder.Path("a.ini"), "A"), 1);
    WriteBytes(folder.Path("a.ini"), "[Web]\nB=second\n");
    EXPECT_EQ(Encipher(folder.Path("./a.ini"), "B"), 1);
    EXPECT_EQ(ReadBytes(folder.Path("a.ini")), std::string("[Web]\nB=") + kSecond + "\n");
}

TEST(TransPasswordFileEncryptValue, AFileThatDoesNotLoadEmptiesTheCache)
{
    const ScratchFolder folder;
    const std::string a = folder.Path("a.ini");
    for (const std::string& unloadable : {folder.Path("missing.ini"), folder.Path(), std::string()}) {
        WriteBytes(a, "[Web]\nA=first\n");
        EXPECT_EQ(Encipher(a, "A"), 1);
        testing::internal::CaptureStderr();
        EXPECT_EQ(Encipher(unloadable, "A", "default"), 0);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "etlTrace 3: Fail to load file [" + unloadable + "] !!\n");
        WriteBytes(a, "[Web]\nB=second\n");
        EXPECT_EQ(Encipher(a, "B"), 1);
        EXPECT_EQ(ReadBytes(a), std::string("[Web]\nB=") + kSecond + "\n");
        EXPECT_EQ(Encipher(folder.Path("missing.ini"), "A"), 0); // the next round starts without a cached file
    }
    EXPECT_FALSE(fs::exists(folder.Path("missing.ini")));
}

TEST(TransPasswordFileEncryptValue, TheFileIsSavedEvenWhenNothingIsSet)
{
    struct Row {
        const char* what;
        CipherDirection direction;
        const char* key;
        const char* defaultText;
    };
    const Row rows[] = {
        {"an empty value", CipherDirection::Encipher, "Empty", "default"},
        {"an absent key without a default", CipherDirection::Encipher, "Absent", ""},
        {"an absent key, no default at all", CipherDirection::Encipher, "Absent", nullptr},
        {"a value that is plain already", CipherDirection::Decipher, "Plain", ""},
        {"a value that cannot be enciphered", CipherDirection::Encipher, "EightBit", ""},
        {"a key that no file can hold", CipherDirection::Encipher, "a=b", "default"},
        {"an empty key", CipherDirection::Encipher, "", "default"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        const ScratchFolder folder;
        const std::string file = folder.Path("web.ini");
        const std::string bytes = "[Web]\nEmpty=\nPlain=first\nEightBit=\x80\n";
        WriteBytes(file, bytes);
        MakeOld(file);
        EXPECT_EQ(TransEncryptValue(row.direction, file.c_str(), "Web", row.key, row.defaultText), 1);
        EXPECT_EQ(ReadBytes(file), bytes);
        EXPECT_FALSE(IsOld(file));
    }
}

TEST(TransPasswordFileEncryptValue, ASaveThatFailsGivesZeroAndLeavesTheFile)
{
    const ScratchFolder folder;
    const std::string file = folder.Path("web.ini");
    WriteBytes(file, "[Web]\nA=first\n");
    WriteBytes(file + ".kestrune-new/in the way", ""); // a folder in place of the new file
    EXPECT_EQ(Encipher(file, "A"), 0);
    EXPECT_EQ(ReadBytes(file), "[Web]\nA=first\n");
}
