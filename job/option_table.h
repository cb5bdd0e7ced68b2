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
  std::int32_t lowest;   ///< of the choices that a printer offers
  std::int32_t highest;  ///< likewise
  std::int32_t initial;  ///< the choice of a new printer
};

/// The value of an indexed option that the printer does not have.
inline constexpr std::int32_t kAbsentOption = -1;

/// Indexes into the tables of control commands and their parameters, in the order in which
/// the filter reads and logs them.
inline constexpr std::array<NumericOption, 13> kIndexedOptions = {{
    {"PageType", &Settings::pageType, 0, 1, 0},
    {"BidiPrinting", &Settings::bidiPrinting, 0, 1, 0},
    {"PageCutType", &Settings::pageCutType, 0, 2, 0},
    {"DocCutType", &Settings::docCutType, 0, 2, 2},
    {"CashDrawerSetting", &Settings::cashDrawerSetting, 0, 2, 0},
    {"CashDrawerPulseWidth", &Settings::cashDrawerPulseWidth, 0, 8, 0},
    {"Buzzer1Setting", &Settings::buzzer1Setting, 0, 2, 0},
    {"Buzzer1OnTime", &Settings::buzzer1OnTime, 0, 9, 1},
    {"Buzzer1Repeat", &Settings::buzzer1Repeat, 0, 9, 1},
    {"Buzzer2Setting", &Settings::buzzer2Setting, 0, 2, 0},
    {"Buzzer2OnTime", &Settings::buzzer2OnTime, 0, 9, 1},
    {"Buzzer2Repeat", &Settings::buzzer2Repeat, 0, 9, 1},
    {"FeedCutAfterJobEnd", &Settings::feedCutAfterJobEnd, 0, 15, 12},
}};

/// 0 if the printer does not have it; not logged. From 26 on bare paper exceeds the threshold:
/// the whole page would be black.
inline constexpr NumericOption kBrightnessOption = {"Brightness", &Settings::brightness, -25, 25,
                                                    0};

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
