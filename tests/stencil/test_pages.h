// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The pages on which stages and kernels are compared with the reference
// implementation: seven kinds, all small sizes.

#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <ostream>
#include <random>
#include <string>

#include "stencil/qv_image.h"
#include "tests/stencil/grey_page.h"

namespace wren::stencil {

enum class PageKind {
  kNoise,      // any level
  kGradient,   // a slow ramp with a little noise
  kExtremes,   // black and white pixels
  kNearBlack,  // sparse levels on black
  kReceipt,    // blocks like text between blank rows
  kTwoLevels,  // two adjacent levels
  kUniform,    // one level
};
inline constexpr PageKind kPageKinds[] = {
    PageKind::kNoise,   PageKind::kGradient,  PageKind::kExtremes, PageKind::kNearBlack,
    PageKind::kReceipt, PageKind::kTwoLevels, PageKind::kUniform};

inline std::ostream& operator<<(std::ostream& out, PageKind kind) {
  constexpr const char* kNames[] = {"noise",   "gradient",   "extremes", "near black",
                                    "receipt", "two levels", "uniform"};
  return out << kNames[static_cast<std::size_t>(kind)];
}

class PageMaker {
 public:
  explicit PageMaker(unsigned seed) : random_(seed) {}

  QVImage make(PageKind kind, int width, int height) {
    QVImage page(width, height, QV_IMG_GRAY);
    base_ = below(256);
    slope_ = below(7) - 3;
    std::uint8_t* pixel = page.data;
    for (int y = 0; y < height; ++y) {
      blankRow_ = below(3) == 0;
      for (int x = 0; x < width; ++x) *pixel++ = level(kind, x, y);
    }
    return page;
  }

  /// A number from 0 to `bound - 1`.
  int below(int bound) { return static_cast<int>(random_() % static_cast<unsigned>(bound)); }

  PageKind anyKind() { return kPageKinds[below(std::size(kPageKinds))]; }

 private:
  std::uint8_t level(PageKind kind, int x, int y) {
    switch (kind) {
      case PageKind::kNoise:
        return static_cast<std::uint8_t>(below(256));
      case PageKind::kGradient:
        return static_cast<std::uint8_t>(std::clamp(base_ + below(3) + (x + y) * slope_, 0, 255));
      case PageKind::kExtremes:
        return below(2) == 0 ? 0 : 255;
      case PageKind::kNearBlack:
        return below(40) == 0 ? static_cast<std::uint8_t>(below(256)) : 0;
      case PageKind::kReceipt:
        return blankRow_ || (x / 3 + y / 2) % 5 < 2 ? 0 : 255;
      case PageKind::kTwoLevels:
        return static_cast<std::uint8_t>(base_ + below(2));
      case PageKind::kUniform:
        break;
    }
    return static_cast<std::uint8_t>(base_);
  }

  std::mt19937 random_;
  int base_ = 0;
  int slope_ = 0;
  bool blankRow_ = false;
};

/// Calls `check(page, maker)` on one page of every kind and every size up to 70 x 40,
/// until a check fails.
template <typename Check>
void onEveryPage(int firstWidth, const Check& check) {
  PageMaker maker(1);
  for (const PageKind kind : kPageKinds) {
    for (int width = firstWidth; width <= 70; ++width) {
      for (int height = 1; height <= 40; ++height) {
        SCOPED_TRACE(testing::Message() << kind << ", " << width << " x " << height);
        check(maker.make(kind, width, height), maker);
        if (testing::Test::HasFailure()) return;
      }
    }
  }
}

}  // namespace wren::stencil
