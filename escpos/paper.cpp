// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "escpos/paper.h"

#include <algorithm>

namespace escpos {
namespace {

std::uint64_t topRow(const Stripe& stripe) {
  return stripe.topUnits / kUnitsPerRow;
}

void renderStripeRow(const Stripe& stripe, unsigned bandRow, std::span<std::uint8_t> dots) {
  const unsigned mask = 0x80U >> bandRow;
  std::size_t x = stripe.leftDots;
  for (const std::uint8_t column : stripe.columns) {
    const std::size_t end = std::min<std::size_t>(x + stripe.columnWidthDots, dots.size());
    for (; x < end; ++x) {
      if ((column & mask) != 0) dots[x] = 1;
    }
  }
}

bool dividesPaper(MarkKind kind) {
  return kind == MarkKind::kPage || kind == MarkKind::kFullCut || kind == MarkKind::kPartialCut;
}

}  // namespace

void renderRow(const Paper& paper, std::uint64_t row, std::span<std::uint8_t> dots) {
  std::fill(dots.begin(), dots.end(), std::uint8_t{0});
  const std::uint64_t highest = row < kBandRows ? 0 : row - (kBandRows - 1);
  auto stripe = std::lower_bound(paper.stripes.begin(), paper.stripes.end(), highest,
                                 [](const Stripe& s, std::uint64_t r) { return topRow(s) < r; });
  for (; stripe != paper.stripes.end() && topRow(*stripe) <= row; ++stripe) {
    renderStripeRow(*stripe, static_cast<unsigned>(row - topRow(*stripe)), dots);
  }
}

std::vector<RowRange> pieces(const Paper& paper) {
  std::vector<RowRange> result;
  std::uint64_t first = 0;
  const auto close = [&](std::uint64_t end) {
    if (end > first) result.push_back({first, end});
    first = std::max(first, end);
  };
  for (const Mark& mark : paper.marks) {
    if (dividesPaper(mark.kind)) close(mark.atUnits / kUnitsPerRow);
  }
  close(paper.allRows().end);
  return result;
}

}  // namespace escpos
