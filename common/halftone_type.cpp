// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "common/halftone_type.h"

#include <cstring>

namespace {

// "JarvisJudiceNinke" is spelled as in the PPD: printed output depends on the match.
constexpr const char* sHalftoneTypeStrTable[] = {
    "None",               //
    "FloydSteinberg",     //
    "Ordered",            //
    "Burkes",             //
    "Stucki",             //
    "JarvisJudiceNinke",  //
    "Sierra",             //
    "StevensonArce",      //
    "QVDithering",        //
};

constexpr int kHalftoneTypeCount = 9;
static_assert(sizeof sHalftoneTypeStrTable / sizeof *sHalftoneTypeStrTable == kHalftoneTypeCount);

}  // namespace

const char* wrenHalftoneTypeToStr(DitherType type) {
  const auto value = static_cast<std::int32_t>(type);
  return sHalftoneTypeStrTable[value >= 0 && value < kHalftoneTypeCount ? value : 0];
}

DitherType wrenHalftoneTypeFromStr(const char* name) {
  for (int value = 0; value < kHalftoneTypeCount; ++value) {
    if (std::strcmp(name, sHalftoneTypeStrTable[value]) == 0) return static_cast<DitherType>(value);
  }
  return None;
}
