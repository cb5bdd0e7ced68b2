// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

//
// The checks of `wren doctor` that are about one queue.

#pragma once

#include <string>

#include "cli/diagnosis.h"
#include "cli/installation.h"
#include "cli/scheduler.h"

namespace wren::cli {

/// Checks a queue: its PPD, its settings, saved options, state and printer.
void checkQueue(Scheduler& scheduler, const Installation& installation, const std::string& name,
                Diagnosis& diagnosis);

}  // namespace wren::cli
