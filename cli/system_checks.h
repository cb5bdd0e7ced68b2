// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

//
// The checks of `wren doctor` that are about the machine: programs, fonts, filter, PPDs and
// the folder
// for debug images.

#pragma once

#include "cli/diagnosis.h"
#include "cli/installation.h"

namespace wren::cli {

void checkPrograms(Diagnosis& diagnosis);
/// Only text files need fonts of the system: what is missing is advice.
void checkFonts(Diagnosis& diagnosis);
void checkFilters(const Installation& installation, Diagnosis& diagnosis);
void checkPpds(const Installation& installation, Diagnosis& diagnosis);
void checkImageFolder(const Installation& installation, Diagnosis& diagnosis);

}  // namespace wren::cli
