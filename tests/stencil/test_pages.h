// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The pages on which every stage and every kernel is held to its literal version.

#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <random>

#include "stencil/qv_image.h"
#include "tests/stencil/grey_page.h"

enum class PageKind {
  kNoise,      // any level
  kGradient,   // a slow ramp with a little noise
  kExtremes,   // black and white pixels
  kNearBlack,  // white paper in the sense of the printer, with sparse dots
  kReceipt,    // blocks of text-like runs between blank rows
  kTwoLevels,  // two neighbouring greys
  kUniform,    // one grey
};
inline constexpr PageKind kPageKinds[] = {
    PageKind::kNoise,   PageKind::kGradient,  PageKind::kExtremes, PageKind::kNearBlack,
    PageKind::kReceipt, PageKind::kTwoLevels, PageKind::kUniform};

class PageMaker {
 public:
  explicit PageMaker(unsigned seed) : random_(seed) {}

  QVImage make(PageKind kind, int width, int height) {
    QVImage page(width, height, QV_IMG_GRAY);
    base_ = next(256);
    slope_ = static_cast<int>(next(7)) - 3;
    std::uint8_t* pixel = page.data;
    for (int y = 0; y < height; ++y) {
      blankRow_ = next(3) == 0;
      for (int x = 0; x < width; ++x) *pixel++ = level(kind, x, y);
    }
    return page;
  }

  unsigned next(unsigned bound) { return static_cast<unsigned>(random_() % bound); }

 private:
  std::uint8_t level(PageKind kind, int x, int y) {
    switch (kind) {
      case PageKind::kNoise:
        return static_cast<std::uint8_t>(next(256));
      case PageKind::kGradient:
        return static_cast<std::uint8_t>(
            std::clamp(static_cast<int>(base_ + next(3)) + (x + y) * slope_, 0, 255));
      case PageKind::kExtremes:
        return next(2) == 0 ? 0 : 255;
      case PageKind::kNearBlack:
        return next(40) == 0 ? static_cast<std::uint8_t>(next(256)) : 0;
      case PageKind::kReceipt:
        return blankRow_ || (x / 3 + y / 2) % 5 < 2 ? 0 : 255;
      case PageKind::kTwoLevels:
        return static_cast<std::uint8_t>(base_ + next(2));
      case PageKind::kUniform:
        break;
    }
    return static_cast<std::uint8_t>(base_);
  }

  std::mt19937 random_;
  unsigned base_ = 0;
  int slope_ = 0;
  bool blankRow_ = false;
};
