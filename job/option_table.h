// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The options of a job by name: the keyword of each and the field of the settings that it
// fills. The PPDs have to offer exactly these.

#pragma once

#include <array>
#include <cstdint>

#include "job/settings.h"

namespace wren::job {

/// An option whose choices are numbers.
struct NumericOption {
  const char* keyword;
  std::int32_t Settings::*field;
};

/// The value of an indexed option that the printer does not have.
inline constexpr std::int32_t kAbsentOption = -1;

/// Indexes into the tables of control commands and their parameters, in the order in which
/// the filter reads and logs them.
inline constexpr std::array<NumericOption, 13> kIndexedOptions = {{
    {"PageType", &Settings::pageType},
    {"BidiPrinting", &Settings::bidiPrinting},
    {"PageCutType", &Settings::pageCutType},
    {"DocCutType", &Settings::docCutType},
    {"CashDrawerSetting", &Settings::cashDrawerSetting},
    {"CashDrawerPulseWidth", &Settings::cashDrawerPulseWidth},
    {"Buzzer1Setting", &Settings::buzzer1Setting},
    {"Buzzer1OnTime", &Settings::buzzer1OnTime},
    {"Buzzer1Repeat", &Settings::buzzer1Repeat},
    {"Buzzer2Setting", &Settings::buzzer2Setting},
    {"Buzzer2OnTime", &Settings::buzzer2OnTime},
    {"Buzzer2Repeat", &Settings::buzzer2Repeat},
    {"FeedCutAfterJobEnd", &Settings::feedCutAfterJobEnd},
}};

/// 0 if the printer does not have it; not logged.
inline constexpr NumericOption kBrightnessOption = {"Brightness", &Settings::brightness};

/// Read by the name of the choice (common/halftone_type.h); None if absent.
inline constexpr const char* kHalftoneTypeOption = "HalftoneType";

/// `kDebugImagesOff` turns `Settings::debugImages` off; any other choice, or no such option,
/// leaves them on.
inline constexpr const char* kDebugImagesOption = "DebugImages";
inline constexpr const char* kDebugImagesOff = "Off";

/// Read by the pattern of the names of its choices.
inline constexpr const char* kPageSizeOption = "PageSize";

/// An attribute, not an option: the widest media in points.
inline constexpr const char* kMaxMediaWidthAttribute = "MaxMediaWidth";

}  // namespace wren::job
