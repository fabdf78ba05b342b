// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "runSequence.h"

#include <string>
#include <string_view>
#include <type_traits>

#include "allV4XToV50.h"
#include "appLog.h"
#include "directIPAccount.h"
#include "fileHelper.h"
#include "handOverCopy.h"
#include "migrateVersionSettings.h"
#include "phoneFacts.h"
#include "profile.h"
#include "runCommit.h"
#include "saveVersionInfo.h"
#include "startUpFixUps.h"
#include "syncFactoryCerts.h"
#include "transPasswordFile.h"
#include "translateConfigTable.h"

namespace
{

/// Runs passes in order, calls an observer after each, and collects the names of those that ended early.
class PassRunner
{
public:
    explicit PassRunner(PassEnd passEnd) : passEnd_(passEnd) {}

    /// Runs one pass. An exception (usually lack of memory) ends this pass, never the run.
    ///
    /// @param pass  gives 0 if it did not come to its end, or nothing
    template <typename Pass>
    void operator()(const char* name, Pass pass)
    {
        bool isWhole = false;
        try {
            if constexpr (std::is_void_v<decltype(pass())>) {
                pass();
                isWhole = true;
            } else {
                isWhole = pass() != 0; // each pass reports its own failure
            }
        } catch (...) {
            // Changes that the pass has saved are kept; later passes do not depend on it.
        }
        if (!isWhole)
            NoteEarlyEnd(name);
        if (passEnd_ != nullptr)
            passEnd_(name);
    }

    /// @return the names, separated by commas
    const std::string& EndedEarly() const { return endedEarly_; }

private:
    void NoteEarlyEnd(const char* name)
    {
        try {
            endedEarly_.append(endedEarly_.empty() ? "" : ", ").append(name);
        } catch (...) {
            // No memory for the report: the run continues.
        }
    }

    PassEnd passEnd_;
    std::string endedEarly_;
};

/// An old file that does not exist is nothing to translate.
int Translate(const XmlTranslation& translation)
{
    const int result = translation.translate();
    return result != 0 || ETL_MiscHelper::pathFileExist(translation.source.path) == 0 ? 1 : 0;
}

void TranslateXmlData(PassRunner& run)
{
    if (!IsEnableFromOld())
        return;
    for (const XmlTranslation& translation : kXmlTranslations)
        run(translation.pass, [&translation] { return Translate(translation); });
}

void SyncFactoryByVersion()
{
    if (etlGetProfileInt(kFactoryUserIni, kVersionSyncSection, kVersionSyncKey, 0) != 1)
        return;
    if (etlGetProfileInt(kUserIni, kVersionSyncSection, kVersionSyncKey, 0) != 0)
        return;
    SaveVersionInfo();
}

void ReportUsage(const char* program)
{
    // Modes "1" and "2" are for upgrade scripts and are deliberately left out.
    app_log(kAppLogModule, kAppLogInformation, "Usage: \n#%s [all|dev|pwd]\n", program);
}

void RunMode(std::string_view mode, PassRunner& run)
{
    run("start-up fix-ups", [] { SetDefaultSCALineKeyNumber(); });
    run("start-up fix-ups", [] { InitRingbackTimeout(); });

    if (mode == "all" || mode == "dev") {
        run(kTablePass, [] { return TranslateConfigTable(); });
        run(kXmlDataPass, [&run] { TranslateXmlData(run); });
        run("certificates", [] { SyncFactoryCerts(); });
    }
    if (mode == "all" || mode == "pwd")
        run("passwords", [] { return TransPasswordFile(); });

    if (mode == "1") {
        run("factory sync by version", [] { SyncFactoryByVersion(); });
        run(kDirectIPPass, [] { ExtractDirectIPAccount(); });
    }
    if (mode == "2") {
        run(kMode2Pass, [] { MigrateVersionSettings(); });
        run(kDirectIPPass, [] { RestoreDirectIPAccount(); });
    }
}

} // namespace

bool IsEnableFromOld()
{
    return etlGetRegistryInt(kVersionIni, kSyncSection, kEnableKey, 1) != 0;
}

int RunSequence(int argumentCount, const char* const* arguments, PassEnd passEnd)
{
    PassRunner run(passEnd);
    if (argumentCount <= 1) {
        run("usage", [arguments] { ReportUsage(arguments[0]); });
        return 0;
    }
    const char* mode = arguments[1];
    if (passEnd != nullptr) {
        run("mode", [mode, &run] { RunMode(mode, run); });
        return 0;
    }
    const RunStart start = BeginRun(mode);
    if (start == RunStart::NothingToDo)
        return 0;
    if (start == RunStart::OfUpgrade)
        run("hand-over copy", [mode] { BringBackHandOver(mode); });
    run("mode", [mode, &run] { RunMode(mode, run); });
    if (start == RunStart::OfUpgrade)
        run("hand-over copy", [mode] { KeepHandOver(mode); });
    CommitRun(run.EndedEarly());
    return 0;
}
