// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// Tables that leave secrets plain.

#include <gtest/gtest.h>

#include "checkTable.h"
#include "scratchFolder.h"
#include "tableCheckRun.h"

TEST(TableSecrets, ASecretThatBecomesPlainIsFound)
{
    struct Row {
        const char* records;
        const char* list;
        const char* found;
    };
    const Row rows[] = {
        // the list names the source
        {"<r srcFile='/config/a.ini' srcSec='S' srcKey='K' dstKey='L'/>",
         "<e file='/config/a.ini' section='S' key='K'/>", "KT030 at 1"},
        {"<r srcFile='/config/./a.ini' srcSec='S' srcKey='K' dstFile='/config/b.ini'/>",
         "<e file='/config/a.ini' section='S' key='K'/>", "KT030 at 1"},
        {"<r srcFile='/config/user/voip/sipAccount2.cfg' srcSec='S' srcKey='K' dstKey='L'/>",
         "<e perAccount='true' section='S' key='K'/>", "KT030 at 1"},
        {"<r srcFile='/config/user/voip/sipAccount16.cfg' srcSec='S' srcKey='K' dstKey='L'/>", // never converted
         "<e perAccount='true' section='S' key='K'/>", "KT030 at 1"},
        // it does not, or does with the destination
        {"<r srcFile='/config/a.ini' srcSec='S' srcKey='K' dstKey='L'/>",
         "<e file='/config/a.ini' section='S' key='M'/>", "nothing"},
        {"<r srcFile='/config/a.ini' srcSec='S' srcKey='K' dstKey='L'/>",
         "<e file='/config/a.ini' section='S' key='K' active='false'/>", "nothing"},
        {"<r srcFile='/config/a.ini' srcSec='S' srcKey='K' dstKey='L'/>",
         "<e file='/config/a.ini' section='S' key='K'/><e file='/config/a.ini' section='S' key='L'/>", "KT013 at 1"},
        {"<r srcFile='/config/a.ini' srcSec='S' srcKey='K' dstKey='L' dstEncrypt='true'/>",
         "<e file='/config/a.ini' section='S' key='K'/>", "KT014 at 1"},
        // the table says so, without a list
        {"<r srcFile='/config/a.ini' srcSec='S' srcKey='K' srcEncrypt='1'/>\n"
         "<r srcFile='/config/a.ini' srcSec='S' srcKey='K' dstKey='L'/>",
         "", "KT030 at 2"},
        {"<r srcFile='/config/a.ini' srcSec='S' srcKey='K' dstKey='L'/>\n"
         "<r srcFile='/config/a.ini' srcSec='S' srcKey='M' dstKey='K' dstEncrypt='1'/>",
         "", "KT030 at 1, KT012 at 2"},
        {"<r srcFile='/config/a.ini' srcSec='S' srcKey='K' srcEncrypt='0'/>\n"
         "<r srcFile='/config/a.ini' srcSec='S' srcKey='K' dstKey='L'/>",
         "", "KT020 at 1"},
        // a record that carries the secret on
        {"<r srcFile='/config/a.ini' srcSec='S' srcKey='L' dstKey='M'/>\n"
         "<r srcFile='/config/a.ini' srcSec='S' srcKey='K' dstKey='L'/>",
         "<e file='/config/a.ini' section='S' key='K'/>", "KT030 at 1, KT012 at 2, KT030 at 2"},
        // a circle ends
        {"<r srcFile='/config/a.ini' srcSec='S' srcKey='K' dstKey='L'/>\n"
         "<r srcFile='/config/a.ini' srcSec='S' srcKey='L' dstKey='K'/>",
         "<e file='/config/a.ini' section='S' key='K'/>", "KT030 at 1, KT011 at 2, KT012 at 2, KT013 at 2, KT040 at 2"},
        // an emptied setting is no secret
        {"<r dstFile='/config/a.ini' dstSec='S' dstKey='L'/>", "", "KT005 at 1"},
    };
    for (const Row& row : rows) {
        const ScratchFolder folder;
        WriteBytes(folder.Path("table.xml"), "<t>" + std::string(row.records) + "</t>");
        WriteBytes(folder.Path("list.xml"), "<l>" + std::string(row.list) + "</l>");
        const std::string list = *row.list == '\0' ? "" : folder.Path("list.xml");
        EXPECT_EQ(Summary(CheckTable({folder.Path("table.xml"), /*image=*/"", list})), row.found) << row.records << "\n"
                                                                                                  << row.list;
    }
}

TEST(TableSecrets, AMovedSecretThatStaysPlainAtItsOldPlaceIsFound)
{
    const std::string kMove = "<r srcFile='/config/a.ini' srcSec='S' srcKey='K' dstKey='L' dstEncrypt='1'/>\n";
    const std::string kOld = "<e file='/config/a.ini' section='S' key='K'/>";
    const std::string kNew = "<e file='/config/a.ini' section='S' key='L'/>";
    const std::string kInPlace = "<r srcFile='/config/./a.ini' srcSec='S' srcKey='K' srcEncrypt='1'/>\n";
    struct Row {
        std::string records;
        std::string list;
        const char* found;
    };
    const Row rows[] = {
        {kMove, kNew, "KT040 at 1"},
        {kMove, kNew + kOld, "nothing"},
        {kInPlace + kMove, kNew, "KT014 at 1"},
        {kMove + kInPlace, kNew, "KT014 at 2"},                                                // later is early enough
        {kMove, kNew + "<e file='/config/a.ini' section='S' key='K' active='0'/>", "nothing"}, // plain on purpose
        {kMove, kNew + "<e file='/config/b.ini' section='S' key='K'/>", "KT040 at 1"},
        {kMove, "", "KT014 at 1, KT040 at 1"}, // the flag says that it is a secret
        // so does the list, whatever the flag says
        {"<r srcFile='/config/a.ini' srcSec='S' srcKey='K' dstKey='L'/>", kNew, "KT013 at 1, KT040 at 1"},
        // not a setting that stays
        {"<r srcFile='/phone/a.ini' srcSec='S' srcKey='K' dstFile='/config/a.ini' dstKey='L' dstEncrypt='1'/>", kNew,
         "nothing"},
        {"<r srcFile='/tmp/a.ini' srcSec='S' srcKey='K' dstFile='/config/a.ini' dstKey='L' dstEncrypt='1'/>", kNew,
         "nothing"},
        {"<r srcFile='/config/a.ini' srcSec='S' srcKey='L' srcEncrypt='1'/>", kNew, "nothing"},
        // the place between two moves is written enciphered
        {kMove + "<r srcFile='/config/a.ini' srcSec='S' srcKey='L' dstKey='M' dstEncrypt='1'/>\n", kOld,
         "KT014 at 1, KT011 at 2, KT014 at 2"},
        // an account that the password pass does not convert
        {"<r srcFile='/config/user/voip/sipAccount3.cfg' srcSec='S' srcKey='K' dstKey='L' dstEncrypt='1'/>",
         "<e perAccount='1' section='S' key='K'/><e perAccount='1' section='S' key='L'/>", "nothing"},
        {"<r srcFile='/config/user/voip/sipAccount4.cfg' srcSec='S' srcKey='K' dstKey='L' dstEncrypt='1'/>",
         "<e perAccount='1' section='S' key='K'/><e perAccount='1' section='S' key='L'/>", "KT014 at 1, KT040 at 1"},
        // one mistake is one finding
        {"<r srcFile='/config/*.ini' srcSec='S' srcKey='K' dstFile='/config/a.ini' dstKey='L' dstEncrypt='1'/>", kNew,
         "KT034 at 1"},
        {"<r srcFile='/config/a.ini' srcSec='S' srcKey='K=' dstKey='L' dstEncrypt='1'/>", kNew, "KT017 at 1"},
        {"<r srcFile='/config/a.ini' srcSec='S' srcKey='K' dstFile='' dstEncrypt='1'/>", kNew, "KT006 at 1"},
    };
    const ScratchFolder folder;
    for (const Row& row : rows) {
        WriteBytes(folder.Path("table.xml"), "<t>" + row.records + "</t>");
        WriteBytes(folder.Path("list.xml"), "<l>" + row.list + "</l>");
        EXPECT_EQ(Summary(CheckTable({folder.Path("table.xml"), /*image=*/"", folder.Path("list.xml")})), row.found)
            << row.records << "\n"
            << row.list;
        EXPECT_EQ(Summary(Check(folder.Path("table.xml"), /*image=*/"")).find("KT040"), std::string::npos)
            << "without a list the old place may be in it: " << row.records;
    }
}

TEST(TableSecrets, ANameCanSayThatAValueIsASecret)
{
    struct Row {
        const char* keys;
        const char* found;
    };
    const Row rows[] = {
        {"srcKey='strPwd' dstKey='strOther'", "KT037 at 2"},
        {"srcKey='strOther' dstKey='UnlockPIN'", "KT037 at 2"},
        {"srcKey='strPwd' dstKey='strListed' dstEncrypt='1'", "KT040 at 2"},
        {"srcKey='strPwd' dstKey='strListed'", "KT013 at 2, KT040 at 2"},
        {"srcKey='strListed' dstKey='strPwd'", "KT030 at 2"},
        {"srcKey='strPwd' dstKey='strInactive'", "nothing"},
        {"srcKey='strInactive' dstKey='strPwd'", "nothing"},
        {"srcKey='strPwd'", "KT020 at 2"},
        {"srcKey='bPassword' dstKey='bUsePassword'", "nothing"},
        {"srcKey='bpassword' dstKey='strOther'", "KT037 at 2"},
    };
    const ScratchFolder folder;
    WriteBytes(folder.Path("list.xml"),
               "<l><e file='/config/user/user.ini' section='S' key='strListed'/>"
               "<e file='/config/user/user.ini' section='S' key='strInactive' active='0'/></l>");
    for (const Row& row : rows) {
        WriteBytes(folder.Path("t"), Record("srcSec='S' " + std::string(row.keys)));
        EXPECT_EQ(Summary(CheckTable({folder.Path("t"), /*image=*/"", folder.Path("list.xml")})), row.found)
            << row.keys;
    }
}

TEST(TableSecrets, TheFindingNamesTheReasonForASecret)
{
    const ScratchFolder folder;
    WriteBytes(folder.Path("t"), "<t>\n"
                                 "<r srcFile='/config/a.ini' srcSec='S' srcKey='K' srcEncrypt='1'/>\n"
                                 "<r srcFile='/config/a.ini' srcSec='S' srcKey='K' dstKey='L'/>\n"
                                 "<r srcFile='/config/a.ini' srcSec='S' srcKey='L' dstKey='M'/>\n"
                                 "</t>");
    const Findings findings = Check(folder.Path("t"), /*image=*/"");
    ASSERT_EQ(Summary(findings), "KT030 at 3, KT011 at 4, KT030 at 4");
    EXPECT_EQ(findings.front().text,
              "[S] K of /config/a.ini holds a secret (the record at line 2 writes it enciphered), and [S] L of "
              "/config/a.ini gets it plain, also on a locked phone");
    EXPECT_EQ(findings.back().text,
              "[S] L of /config/a.ini holds a secret (the record at line 3 writes a secret there), and [S] M of "
              "/config/a.ini gets it plain, also on a locked phone");
}

TEST(TableSecrets, AValueThatThePhoneHoldsEncipheredIsASecret)
{
    const std::string table = "<t>\n<r srcFile='/config/user/user.ini' srcSec='Secret' srcKey='strToken' dstKey='";
    EXPECT_EQ(SummaryOf(table + "strCommunity'/></t>", TestPhone()), "KT030 at 2");
    EXPECT_EQ(SummaryOf(table + "strNew'/></t>", TestPhone()), "KT013 at 2");
    EXPECT_EQ(SummaryOf(table + "strNew' dstEncrypt='1'/></t>", TestPhone()), "nothing"); // it stays so where it is
    EXPECT_EQ(SummaryOf(Record("srcSec='Secret' srcKey='strUnlisted' dstKey='strNew' dstEncrypt='1'"), TestPhone()),
              "KT040 at 2");
}
