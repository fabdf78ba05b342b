// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "runSequence.h"

#include <string_view>

#include "appLog.h"
#include "contactV4XToV50.h"
#include "dataPaths.h"
#include "devicePaths.h"
#include "dialNowV4XToV50.h"
#include "dialPlanV4XToV50.h"
#include "directIPAccount.h"
#include "doorPhoneV4XToV50.h"
#include "dssKeyV4XToV50.h"
#include "fileReplacement.h"
#include "migrateVersionSettings.h"
#include "profile.h"
#include "remoteBookV4XToV50.h"
#include "saveVersionInfo.h"
#include "startUpFixUps.h"
#include "syncFactoryCerts.h"
#include "transPasswordFile.h"
#include "translateConfigTable.h"

namespace
{

/// Runs one pass. An exception (no memory, mostly) ends the pass that met it, never the run.
template <typename Pass>
void Run(Pass pass)
{
    try {
        (void)pass(); // each pass reports its own failure
    } catch (...) {
        // What the pass has saved stays saved; the passes after it do not depend on it.
    }
}

void TranslateXmlData()
{
    if (!IsEnableFromOld())
        return;
    Run([] { return ContactV4XToV50(kOldContacts, kNewContactList, kNewContactGroups); });
    Run([] { return DialPlanV4XToV50(kOldDialPlan, kNewDialPlan); });
    Run([] { return DialNowV4XToV50(kOldDialNow, kNewDialNow); });
    Run([] { return DSSKeyV4XToV50(kOldDSSKeys, kNewDSSKeys); });
    Run([] { return DoorPhoneV4XToV50(kDoorPhones, kDoorPhones); });
    Run([] { return RemoteBookV4XToV50(kOldRemoteBooks, kNewRemoteBooks); });
}

void SyncFactoryByVersion()
{
    if (etlGetProfileInt(kFactoryUserIni, "Sync", "SyncCfgByVersion", 0) != 1)
        return;
    if (etlGetProfileInt(kUserIni, "Sync", "SyncCfgByVersion", 0) != 0)
        return;
    SaveVersionInfo();
}

void ReportUsage(const char* program)
{
    // Modes "1" and "2" belong to the upgrade scripts and are left out on purpose.
    app_log(kAppLogModule, kAppLogInformation, "Usage: \n#%s [all|dev|pwd]\n", program);
}

void RunMode(std::string_view mode)
{
    Run([] { SetDefaultSCALineKeyNumber(); });
    Run([] { InitRingbackTimeout(); });

    if (mode == "all" || mode == "dev") {
        Run([] { return TranslateConfigTable(); });
        Run([] { TranslateXmlData(); });
        Run([] { SyncFactoryCerts(); });
    }
    if (mode == "all" || mode == "pwd")
        Run([] { return TransPasswordFile(); });

    if (mode == "1") {
        Run([] { SyncFactoryByVersion(); });
        Run([] { ExtractDirectIPAccount(); });
    }
    if (mode == "2") {
        Run([] { MigrateVersionSettings(); });
        Run([] { RestoreDirectIPAccount(); });
    }
}

} // namespace

bool IsEnableFromOld()
{
    return etlGetRegistryInt("/config/version.ini", "SyncConfig", "bEnableFromOld", 1) != 0;
}

int RunSequence(int argumentCount, const char* const* arguments)
{
    if (argumentCount <= 1)
        Run([arguments] { ReportUsage(arguments[0]); });
    else
        Run([arguments] { RunMode(arguments[1]); });
    FlushChangedFolders();
    return 0;
}
