// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "dither/row_kernels.h"

#include <algorithm>

#include "common/vector_level.h"
#include "common/vector_targets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "dither/row_kernels.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#ifndef WREN_DITHER_ROW_KERNELS_SCALAR
#define WREN_DITHER_ROW_KERNELS_SCALAR

namespace wren::dither::scalar {
namespace {

// Columns `x` to `width` of a row; a vector kernel leaves its last columns to it.
void thresholdRowFrom(std::size_t x, const std::uint8_t* levels, const RowThresholds& thresholds,
                      std::uint8_t flip, std::size_t width, std::uint8_t* dots) {
  for (; x < width; ++x) {
    const bool isWhite = levels[x] > thresholds[x % thresholds.size()];
    dots[x] = static_cast<std::uint8_t>((isWhite ? 255 : 0) ^ flip);
  }
}

void shiftRowFrom(std::size_t x, const std::uint8_t* from, std::size_t width, int shift,
                  std::uint8_t* to) {
  for (; x < width; ++x) to[x] = static_cast<std::uint8_t>(std::clamp(from[x] + shift, 0, 255));
}

void reverseRowFrom(std::size_t x, const std::uint8_t* from, std::size_t width, std::uint8_t* to) {
  for (; x < width; ++x) to[width - 1 - x] = from[x];
}

void thresholdRow(const std::uint8_t* levels, const RowThresholds& thresholds, std::uint8_t flip,
                  std::size_t width, std::uint8_t* dots) {
  thresholdRowFrom(0, levels, thresholds, flip, width, dots);
}

void shiftRow(const std::uint8_t* from, std::size_t width, int shift, std::uint8_t* to) {
  shiftRowFrom(0, from, width, shift, to);
}

void reverseRow(const std::uint8_t* from, std::size_t width, std::uint8_t* to) {
  reverseRowFrom(0, from, width, to);
}

}  // namespace
}  // namespace wren::dither::scalar

#endif  // WREN_DITHER_ROW_KERNELS_SCALAR

#if WREN_IS_VECTOR_TARGET
HWY_BEFORE_NAMESPACE();
namespace wren::dither::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

using Bytes = hn::ScalableTag<std::uint8_t>;
constexpr Bytes kBytes;
constexpr std::size_t kLanes = hn::MaxLanes(kBytes);

}  // namespace

// A level is above its threshold where subtracting the threshold leaves something.
void thresholdRow(const std::uint8_t* levels, const RowThresholds& thresholds, std::uint8_t flip,
                  std::size_t width, std::uint8_t* dots) {
  const auto limits = hn::LoadDup128(kBytes, thresholds.data());
  const auto black = hn::Set(kBytes, flip);
  const auto white = hn::Not(black);
  std::size_t x = 0;
  for (; x + kLanes <= width; x += kLanes) {
    const auto above = hn::SaturatedSub(hn::LoadU(kBytes, levels + x), limits);
    const auto isBlack = hn::Eq(above, hn::Zero(kBytes));
    hn::StoreU(hn::IfThenElse(isBlack, black, white), kBytes, dots + x);
  }
  scalar::thresholdRowFrom(x, levels, thresholds, flip, width, dots);
}

void shiftRow(const std::uint8_t* from, std::size_t width, int shift, std::uint8_t* to) {
  const auto up = hn::Set(kBytes, static_cast<std::uint8_t>(std::max(shift, 0)));
  const auto down = hn::Set(kBytes, static_cast<std::uint8_t>(std::max(-shift, 0)));
  std::size_t x = 0;
  for (; x + kLanes <= width; x += kLanes) {
    const auto raised = hn::SaturatedAdd(hn::LoadU(kBytes, from + x), up);
    hn::StoreU(hn::SaturatedSub(raised, down), kBytes, to + x);
  }
  scalar::shiftRowFrom(x, from, width, shift, to);
}

void reverseRow(const std::uint8_t* from, std::size_t width, std::uint8_t* to) {
  alignas(16) static constexpr std::uint8_t kReverse[16] = {15, 14, 13, 12, 11, 10, 9, 8,
                                                            7,  6,  5,  4,  3,  2,  1, 0};
  const auto reverseBlock = hn::LoadDup128(kBytes, kReverse);
  std::size_t x = 0;
  for (; x + kLanes <= width; x += kLanes) {
    const auto blocks = hn::TableLookupBytes(hn::LoadU(kBytes, from + x), reverseBlock);
    hn::StoreU(hn::ReverseBlocks(kBytes, blocks), kBytes, to + width - x - kLanes);
  }
  scalar::reverseRowFrom(x, from, width, to);
}

}  // namespace wren::dither::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();
#endif  // WREN_IS_VECTOR_TARGET

#if HWY_ONCE

namespace wren::dither {
namespace {

constexpr KernelTable<decltype(&thresholdRow)> kThresholdRow =
    WREN_KERNEL_TABLE(scalar::thresholdRow, thresholdRow);
constexpr KernelTable<decltype(&shiftRow)> kShiftRow =
    WREN_KERNEL_TABLE(scalar::shiftRow, shiftRow);
constexpr KernelTable<decltype(&reverseRow)> kReverseRow =
    WREN_KERNEL_TABLE(scalar::reverseRow, reverseRow);

}  // namespace

void thresholdRow(const std::uint8_t* levels, const RowThresholds& thresholds, std::uint8_t flip,
                  std::size_t width, std::uint8_t* dots) {
  kernelOf(kThresholdRow)(levels, thresholds, flip, width, dots);
}

void shiftRow(const std::uint8_t* from, std::size_t width, int shift, std::uint8_t* to) {
  kernelOf(kShiftRow)(from, width, shift, to);
}

void reverseRow(const std::uint8_t* from, std::size_t width, std::uint8_t* to) {
  kernelOf(kReverseRow)(from, width, to);
}

}  // namespace wren::dither

#endif  // HWY_ONCE
