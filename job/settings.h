// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The settings of a job. The calling program fills them in once, from a PPD or from job
// attributes, and never changes them afterwards.

#pragma once

#include <cstdint>

#include "common/halftone_type.h"

/// A plain record, passed by value. An option that the printer does not have is -1.
struct Settings {
  std::int32_t modelNumber = 0;
  float pageWidth = 0.0F;      ///< in the unit of the page size's name; 0 if it has no numbers
  float pageHeight = 0.0F;     ///< likewise
  double maxMediaWidth = 0.0;  ///< points of 1/72 inch; 0 means no limit
  std::int32_t pageType = 0;   ///< 1 keeps blank edges
  std::int32_t bidiPrinting = 0;
  std::int32_t pageCutType = 0;
  std::int32_t docCutType = 0;      ///< not 0 also enables the feed at the end of the job
  std::int32_t buzzer1Setting = 0;  ///< 0 off, 1 at page start, 2 at page end
  std::int32_t buzzer1OnTime = 0;
  std::int32_t buzzer1Reserved = 0;
  std::int32_t buzzer1Repeat = 0;
  std::int32_t buzzer2Setting = 0;  ///< 0 off, 1 at job start, 2 at job end
  std::int32_t buzzer2OnTime = 0;
  std::int32_t buzzer2Reserved = 0;
  std::int32_t buzzer2Repeat = 0;
  std::int32_t cashDrawerSetting = 0;  ///< 0 off, 1 at job start, 2 at job end
  std::int32_t cashDrawerPulseWidth = 0;
  std::int32_t feedCutAfterJobEnd = 0;  ///< units of 16 half dot rows, about 1 mm at 203 dpi
  std::int32_t brightness = 0;
  DitherType halftoneType = None;
  bool debugImages = true;  ///< whether the two images of every page are saved
};
