// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The page with which a printer shows what it can do: its width, a grid, every halftone method
// as a ramp, the settings, a bar code and a QR code. It needs no document.

#pragma once

#include <cstdint>
#include <vector>

#include "job/settings.h"

namespace wren::job {

/// Dots per inch of the page, in both directions.
inline constexpr std::uint32_t kSelfTestDpi = 203;

/// A page of dots: `heightPx` rows of `widthPx` bytes, 0 or 255 (a dot).
struct SelfTestPage {
  std::uint32_t widthPx = 0;
  std::uint32_t heightPx = 0;
  std::vector<std::uint8_t> dots;
};

/// Draws the page as wide as `Settings::maxMediaWidth` allows, from 96 to 4096 dots; 576 where it
/// has no limit. The codes are left out where they do not fit (below 308 dots). The halftone
/// methods are shown without Brightness.
SelfTestPage drawSelfTestPage(const Settings& settings);

}  // namespace wren::job
