// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/page_composer.h"

#include <algorithm>

namespace wren::app {
namespace {

unsigned composedHeight(bool scaled, unsigned headWidthPx, unsigned widthPx, unsigned heightPx) {
  if (!scaled) return heightPx;
  const std::uint64_t rounded = (std::uint64_t{heightPx} * headWidthPx + widthPx / 2) / widthPx;
  return static_cast<unsigned>(std::max<std::uint64_t>(rounded, 1));
}

}  // namespace

PageComposer::PageComposer(const PageTarget& target, unsigned widthPx, unsigned heightPx)
    : widthPx_(widthPx),
      heightPx_(heightPx),
      headWidthPx_(target.headWidthPx),
      area_(std::uint64_t{widthPx} * heightPx),
      scaled_(target.fitWidePages && widthPx > target.paperWidthPx) {
  composedHeightPx_ = composedHeight(scaled_, headWidthPx_, widthPx, heightPx);
  levels_.resize(std::size_t{composedHeightPx_} * headWidthPx_);
  if (scaled_) sums_.resize(headWidthPx_);
}

void PageComposer::addRow(const std::uint8_t* ink) {
  if (isComplete()) return;
  if (scaled_) {
    scaleRow(ink);
  } else {
    placeRow(ink);
  }
  ++rowsAdded_;
}

// An odd pixel of difference goes to the right.
void PageComposer::placeRow(const std::uint8_t* ink) {
  std::uint8_t* row = levels_.data() + std::size_t{rowsAdded_} * headWidthPx_;
  if (widthPx_ >= headWidthPx_) {
    std::copy_n(ink + (widthPx_ - headWidthPx_) / 2, headWidthPx_, row);
  } else {
    std::copy_n(ink, widthPx_, row + (headWidthPx_ - widthPx_) / 2);
  }
}

// Area averaging in integers: a row of the page covers `composedHeightPx_` of the units of which
// a composed row takes `heightPx_`, and the same across.
void PageComposer::scaleRow(const std::uint8_t* ink) {
  std::uint64_t top = std::uint64_t{rowsAdded_} * composedHeightPx_;
  const std::uint64_t bottom = top + composedHeightPx_;
  while (top < bottom) {
    const std::uint64_t rowEnd = std::uint64_t{rowsComposed_ + 1} * heightPx_;
    const std::uint64_t until = std::min(bottom, rowEnd);
    addToSums(ink, until - top);
    if (until == rowEnd) finishScaledRow();
    top = until;
  }
}

void PageComposer::addToSums(const std::uint8_t* ink, std::uint64_t weight) {
  std::uint64_t left = 0;
  std::uint64_t columnEnd = widthPx_;
  unsigned column = 0;
  for (unsigned x = 0; x < widthPx_; ++x) {
    const std::uint64_t right = left + headWidthPx_;
    while (left < right) {
      const std::uint64_t until = std::min(right, columnEnd);
      sums_[column] += weight * (until - left) * ink[x];
      if (until == columnEnd) {
        ++column;
        columnEnd += widthPx_;
      }
      left = until;
    }
  }
}

void PageComposer::finishScaledRow() {
  std::uint8_t* row = levels_.data() + std::size_t{rowsComposed_} * headWidthPx_;
  for (unsigned x = 0; x < headWidthPx_; ++x) {
    row[x] = static_cast<std::uint8_t>((sums_[x] + area_ / 2) / area_);
  }
  std::fill(sums_.begin(), sums_.end(), 0);
  ++rowsComposed_;
}

}  // namespace wren::app
