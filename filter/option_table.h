// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The options that the filter reads by number, in the order in which it reads (and
// logs) them. The PPDs have to offer exactly these.
#pragma once

#include <array>

#include "filter/settings.h"

struct OptionRow {
  const char* keyword;
  std::int32_t Settings::*field;
  std::int32_t whenAbsent;  ///< the field's value when the PPD lacks the option
};

/// Read by getOptionChoiceIndex.
inline constexpr std::array<OptionRow, 13> kIndexedOptions = {{
    {"PageType", &Settings::pageType, -1},
    {"BidiPrinting", &Settings::bidiPrinting, -1},
    {"PageCutType", &Settings::pageCutType, -1},
    {"DocCutType", &Settings::docCutType, -1},
    {"CashDrawerSetting", &Settings::cashDrawerSetting, -1},
    {"CashDrawerPulseWidth", &Settings::cashDrawerPulseWidth, -1},
    {"Buzzer1Setting", &Settings::buzzer1Setting, -1},
    {"Buzzer1OnTime", &Settings::buzzer1OnTime, -1},
    {"Buzzer1Repeat", &Settings::buzzer1Repeat, -1},
    {"Buzzer2Setting", &Settings::buzzer2Setting, -1},
    {"Buzzer2OnTime", &Settings::buzzer2OnTime, -1},
    {"Buzzer2Repeat", &Settings::buzzer2Repeat, -1},
    {"FeedCutAfterJobEnd", &Settings::feedCutAfterJobEnd, -1},
}};

/// Read without a log line.
inline constexpr OptionRow kBrightnessOption = {"Brightness", &Settings::brightness, 0};

/// Read by name; the field is Settings::halftoneType, None when absent.
inline constexpr const char* kHalftoneTypeOption = "HalftoneType";

/// Read by the pattern of its choice names.
inline constexpr const char* kPageSizeOption = "PageSize";

/// An attribute, not an option: the widest media in points.
inline constexpr const char* kMaxMediaWidthAttribute = "MaxMediaWidth";
