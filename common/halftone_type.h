// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The halftone methods as the PPD and the page options name them. What a value does to a
// page is decided in printer/page_dots and dither/.

#pragma once

#include <cstdint>

/// The choice names of the PPD option "HalftoneType", in the order of their values.
enum DitherType : std::int32_t {
  None = 0,
  FloydSteinberg = 1,
  Ordered = 2,
  Burkes = 3,
  Stucki = 4,
  JarvisJudiceNinke = 5,
  Sierra = 6,
  StevensonArce = 7,
  QVDithering = 8,
};

extern "C" {

/// The name of a halftone type; "None" for a value that is not one of the nine.
const char* wrenHalftoneTypeToStr(DitherType type);

/// The halftone type with this name, compared exactly; None for any other text.
/// @param name must not be null.
DitherType wrenHalftoneTypeFromStr(const char* name);
}
