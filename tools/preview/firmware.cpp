// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "firmware.h"

#include <optional>

#include "keyedCipher.h"
#include "phoneFacts.h"
#include "phoneImage/imageCopy.h"
#include "phoneImage/imageLimits.h"
#include "phoneImage/phoneFolder.h"

namespace fs = std::filesystem;

Firmware::Firmware(const fs::path& firmware, const fs::path& table) : hasTable_(!table.empty())
{
    if (hasTable_)
        table_ = ReadWhole(table, kMostFileBytes);
    if (firmware.empty())
        return;
    scratch_ = std::make_unique<Scratch>();
    trees_ = OpenFirmware(firmware, scratch_->Path("firmware"));
}

void Firmware::Install(const fs::path& source, const fs::path& phone) const
{
    CopyPhone(source, phone, trees_);
    const std::optional<std::string> ownKey = PhoneFolder(source.string()).Find(kCipherKeyFile);
    if (ownKey && !PhoneFolder(phone.string()).Find(kCipherKeyFile))
        PutFile(phone, kCipherKeyFile, ReadWhole(*ownKey, kMostFileBytes));
    if (hasTable_)
        PutFile(phone, kTableFile, table_);
}
