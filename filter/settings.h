// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Reads the settings of a job from the printer's PPD and the job options.

#pragma once

#include "job/settings.h"

struct ppd_file_s;

/// Fills `*settings` from the PPD file named by the environment variable PPD, with the job
/// options marked over the PPD's defaults.
/// @param options the filter's fifth argument; may be null.
/// @return false, after one "ERROR:" line, if there is no readable PPD; `*settings` is then
///   unchanged.
bool initializeSettings(const char* options, Settings* settings);

/// The same with the path of the PPD file; null gives the message of a variable that is not set.
bool initializeSettingsFrom(const char* path, const char* options, Settings* settings);

/// The leading number of the option's selected choice (0 if its name is not a number), or -1
/// if there is none. A choice found is logged.
int getOptionChoiceIndex(const char* keyword, ppd_file_s* ppd);

/// Sets pageWidth and pageHeight from the name of the selected page size.
void getPageWidthPageHeight(ppd_file_s* ppd, Settings* settings);
