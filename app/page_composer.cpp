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
    : widthPx_(widthPx), heightPx_(heightPx), headWidthPx_(target.headWidthPx) {
  const bool scaled = target.fitWidePages && widthPx > target.paperWidthPx;
  composedHeightPx_ = composedHeight(scaled, headWidthPx_, widthPx, heightPx);
  levels_.resize(std::size_t{composedHeightPx_} * headWidthPx_);
  if (scaled) {
    scaler_.emplace(widthPx, heightPx, headWidthPx_, composedHeightPx_, levels_.data());
  }
}

void PageComposer::addRow(const std::uint8_t* ink) {
  if (isComplete()) return;
  if (scaler_) {
    scaler_->addRow(ink);
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

}  // namespace wren::app
