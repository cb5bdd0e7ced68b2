// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "preview/picture.h"

#include <algorithm>
#include <span>

namespace wren::preview {
namespace {

// Calls use(source pixel, target pixel, length) for each overlap of a source pixel and a target
// pixel on one axis. A source pixel is `to` units long, a target pixel `from` units.
template <class Use>
void forEachOverlap(std::uint64_t from, std::uint64_t to, Use use) {
  std::uint64_t position = 0;
  while (position < from * to) {
    const std::uint64_t source = position / to;
    const std::uint64_t target = position / from;
    const std::uint64_t end = std::min((source + 1) * to, (target + 1) * from);
    use(source, target, end - position);
    position = end;
  }
}

// Adds a source row, weighted, to the sums of a target row.
void addRow(std::span<const std::uint8_t> source, std::uint64_t weight,
            std::span<std::uint64_t> sums) {
  forEachOverlap(source.size(), sums.size(), [&](auto from, auto to, std::uint64_t length) {
    sums[to] += source[from] * length * weight;
  });
}

std::uint32_t proportionalHeight(const Picture& picture, std::uint32_t widthPx) {
  const std::uint64_t height =
      (std::uint64_t{picture.heightPx} * widthPx + picture.widthPx / 2) / picture.widthPx;
  return static_cast<std::uint32_t>(std::max<std::uint64_t>(1, height));
}

}  // namespace

Picture Picture::white(std::uint32_t widthPx, std::uint32_t heightPx) {
  return {widthPx, heightPx,
          std::vector<std::uint8_t>(std::size_t{widthPx} * heightPx, kWhiteLevel)};
}

Picture cropped(const Picture& picture, const Area& area) {
  const std::uint32_t left = std::min(area.left, picture.widthPx);
  const std::uint32_t top = std::min(area.top, picture.heightPx);
  Picture part = Picture::white(std::min(area.widthPx, picture.widthPx - left),
                                std::min(area.heightPx, picture.heightPx - top));
  for (std::uint32_t y = 0; y < part.heightPx; ++y) {
    std::copy_n(picture.row(top + y) + left, part.widthPx, part.row(y));
  }
  return part;
}

Picture scaledDown(const Picture& picture, std::uint32_t widthPx) {
  if (picture.widthPx <= widthPx || picture.heightPx == 0) return picture;
  Picture small = Picture::white(widthPx, proportionalHeight(picture, widthPx));
  const std::uint64_t unitsPerPixel = std::uint64_t{picture.widthPx} * picture.heightPx;
  std::vector<std::uint64_t> sums(widthPx);
  std::uint64_t unitsInRow = 0;
  forEachOverlap(picture.heightPx, small.heightPx, [&](auto from, auto to, std::uint64_t length) {
    const auto sourceRow = static_cast<std::uint32_t>(from);
    addRow({picture.row(sourceRow), picture.widthPx}, length, sums);
    unitsInRow += length;
    if (unitsInRow < picture.heightPx) return;
    // The target row is complete.
    std::transform(sums.begin(), sums.end(), small.row(static_cast<std::uint32_t>(to)),
                   [&](std::uint64_t sum) {
                     return static_cast<std::uint8_t>((sum + unitsPerPixel / 2) / unitsPerPixel);
                   });
    std::fill(sums.begin(), sums.end(), 0);
    unitsInRow = 0;
  });
  return small;
}

}  // namespace wren::preview
