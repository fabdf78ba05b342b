// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// Places that a record cannot mean.

#include <gtest/gtest.h>

#include "tableCheckRun.h"

TEST(TablePlaces, PathsOfOneFileAreOneDestination)
{
    const std::string one = "<record srcFile='/config/a.ini' srcSec='S' srcKey='K' dstFile='/config/b.ini'/>\n";
    const std::string other = "<record srcFile='/config/c.ini' srcSec='S' srcKey='K' dstFile='/config/x/..//b.ini'/>\n";
    EXPECT_EQ(SummaryOf("<t>\n" + one + other + "</t>"), "KT010 at 3");
}

TEST(TablePlaces, PathsThatNoRecordCanMeanAreFound)
{
    struct Row {
        const char* path;
        const char* asDestination;
        const char* asSource;
    };
    const Row rows[] = {
        {"/config/a.ini", "nothing", "nothing"},
        {"/config/a%b.ini", "nothing", "nothing"},
        {"/config/my file.cfg", "nothing", "nothing"},
        {"/config/a.xml.ini", "nothing", "nothing"},
        {"/config/xml", "nothing", "nothing"},
        {"/config/a.xml", "KT031 at 2", "KT033 at 2"},
        {"/config/A.XML", "KT031 at 2", "KT033 at 2"},
        {"/config/a.pem", "KT031 at 2", "KT033 at 2"},
        {"/config/a.crt", "KT031 at 2", "KT033 at 2"},
        {"/config/a.key", "KT031 at 2", "KT033 at 2"},
        {"/config/voip/sipAccount*.cfg", "KT034 at 2", "KT034 at 2"},
        {"/config/voip/sipAccount?.cfg", "KT034 at 2", "KT034 at 2"},
        {"/config/voip/sipAccount%d.cfg", "KT034 at 2", "KT034 at 2"},
        {"/config/voip/sipAccount%s.cfg", "KT034 at 2", "KT034 at 2"},
        {"/config/voip/sipAccount%u.cfg", "KT034 at 2", "KT034 at 2"},
        {"/config/voip/sipAccount{n}.cfg", "KT034 at 2", "KT034 at 2"},
        {"/config/a.ini ", "KT034 at 2", "KT034 at 2"},
        {" /config/a.ini", "KT034 at 2", "KT034 at 2"},
        {"/config/a.ini&#9;", "KT034 at 2", "KT034 at 2"},
    };
    for (const Row& row : rows) {
        const std::string path = row.path;
        EXPECT_EQ(SummaryOf(Record("srcSec='S' srcKey='K' dstFile='" + path + "'")), row.asDestination) << path;
        EXPECT_EQ(SummaryOf("<t>\n<r srcFile='" + path + "' srcSec='S' srcKey='K' dstFile='/config/b.ini'/></t>"),
                  row.asSource)
            << path;
    }
}

TEST(TablePlaces, BlanksAtTheEndsOfASectionAreFound)
{
    const std::pair<const char*, const char*> rows[] = {
        {"S", "nothing"}, {"A B", "nothing"}, {"S ", "KT035 at 2"}, {"\tS", "KT035 at 2"}, {"&#32;S", "KT035 at 2"},
    };
    for (const auto& [section, found] : rows) {
        EXPECT_EQ(SummaryOf(Record("srcSec='" + std::string(section) + "' srcKey='K' dstSec='T'")), found) << section;
        EXPECT_EQ(SummaryOf(Record("srcSec='T' srcKey='K' dstSec='" + std::string(section) + "'")), found) << section;
    }
}

TEST(TablePlaces, PlacesThatSteerTheProgramAreFound)
{
    struct Row {
        const char* file;
        const char* section;
        const char* key;
        const char* found;
    };
    const Row rows[] = {
        {"/config/user/user.ini", "PhoneSetting", "EnLock", "KT032 at 2"},
        {"/config//user/../user/user.ini", "PhoneSetting", "EnLock", "KT032 at 2"},
        {"/config/user/user.ini", "Sync", "SyncCfgByVersion", "KT032 at 2"},
        {"/config/version.ini", "SyncConfig", "bEnableFromOld", "KT032 at 2"},
        {"/config/kestrune-pending", "any", "any", "KT032 at 2"},
        {"/config/kestrune-commit", "any", "any", "KT032 at 2"},
        {"/config/kestrune-handover", "any", "any", "KT032 at 2"},
        {"/config/user/user.ini", "PhoneSetting", "enlock", "nothing"},
        {"/config/user/user.ini", "SyncConfig", "bEnableFromOld", "nothing"},
        {"/config/system/system.ini", "PhoneSetting", "EnLock", "nothing"},
        {"/config/version.ini", "SyncConfig", "bOther", "nothing"},
    };
    for (const Row& row : rows) {
        const std::string place =
            std::string("dstFile='") + row.file + "' dstSec='" + row.section + "' dstKey='" + row.key;
        EXPECT_EQ(SummaryOf(Record("srcSec='S' srcKey='K' " + place + "'")), row.found) << place;
    }
}
