// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include "phoneImage/snapshot.h"

inline Snapshot PhoneWith(const std::string& path, const std::string& content)
{
    PhoneFile file;
    file.kind = PhoneFile::Kind::File;
    file.content = std::make_shared<const std::string>(content);
    return {{path, file}};
}
