// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "escpos/paper.h"

#include <algorithm>

namespace wren::escpos {
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

bool isCut(MarkKind kind) {
  return kind == MarkKind::kFullCut || kind == MarkKind::kPartialCut;
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

Piece wholeStrip(const Paper& paper) {
  return {paper.allRows(), 0, paper.marks.size()};
}

std::vector<Piece> pieces(const Paper& paper) {
  std::vector<Piece> result;
  Piece open;
  const auto close = [&](std::uint64_t endRow, std::size_t endMark) {
    if (endRow <= open.rows.first) return;
    open.rows.end = endRow;
    open.endMark = endMark;
    result.push_back(open);
    open = {{endRow, 0}, endMark, 0};
  };
  for (std::size_t i = 0; i < paper.marks.size(); ++i) {
    const Mark& mark = paper.marks[i];
    if (mark.kind == MarkKind::kPage) close(mark.atUnits / kUnitsPerRow, i);
    if (isCut(mark.kind)) close(mark.atUnits / kUnitsPerRow, i + 1);
  }
  close(paper.allRows().end, paper.marks.size());
  if (!result.empty()) result.back().endMark = paper.marks.size();
  return result;
}

}  // namespace wren::escpos
