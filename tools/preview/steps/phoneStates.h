// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <vector>

#include "phoneImage/snapshot.h"

/// The phone after a pass.
struct PassState {
    std::string pass;
    Snapshot phone;
};

/// Finds out which passes did something.
///
/// @param states  the phone before the first pass, with an empty name, and after each pass
/// @return the names of the passes between whose states `differ` finds a difference, each once, in their order
template <typename Differ>
std::vector<std::string> PassesThat(const std::vector<PassState>& states, Differ differ)
{
    std::vector<std::string> passes;
    for (std::size_t i = 1; i < states.size(); ++i) {
        const bool isKnown = !passes.empty() && passes.back() == states[i].pass;
        if (!isKnown && differ(states[i - 1].phone, states[i].phone))
            passes.push_back(states[i].pass);
    }
    return passes;
}
