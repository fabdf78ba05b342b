// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <gtest/gtest.h>
#include <string>

#include "phoneImage.h"

/// Runs one operation of operationResults.cpp on the phone.
///
/// @return what it left; the lines of its result are the last ones on its standard output
inline ProcessResult RunForResult(PhoneImage& phone, const std::string& operation)
{
    phone.AddSandboxOptions({"--ro-bind", KESTRUNE_OPERATION_RESULTS, "/operation-results"});
    ProcessResult result = RunProcess(phone.Command({operation}, "/operation-results"), phone.Environment());
    EXPECT_EQ(result.exitStatus, 0) << result.errors;
    return result;
}

/// @return from "result" on
inline std::string ResultOf(const ProcessResult& process)
{
    const std::size_t position = process.output.rfind("result ");
    return position == std::string::npos ? "no result" : process.output.substr(position);
}
