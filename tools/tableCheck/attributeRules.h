// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include "finding.h"

class TiXmlElement;

/// Rules about the names of a record's attributes and the texts of its encrypt flags.
void CheckAttributes(const TiXmlElement& record, Findings& findings);
