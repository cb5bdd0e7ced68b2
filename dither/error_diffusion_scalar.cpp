// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "dither/error_diffusion_scalar.h"

#include <algorithm>
#include <cstring>

#include "dither/error_terms.h"

namespace {

using Share = std::int8_t;

// Columns of zeros on both sides of a row of shares: what pixels outside the
// image send.
constexpr std::size_t kMargin = kMaxReachColumns;

std::int8_t addClamped(std::int8_t level, Share share) {
  return static_cast<std::int8_t>(std::clamp(level + share, -128, 127));
}

// The signed share of the error that a pixel makes, from its offset level.
Share signedShare(std::int8_t level, std::int16_t factor) {
  const int whiteMask = level > 0 ? -1 : 0;
  const int error = ((level + kLevelOffset) ^ whiteMask) & 255;
  return static_cast<Share>((shareOf(error, factor) ^ whiteMask) - whiteMask);
}

void addRow(const Share* shares, std::size_t width, std::int8_t* levels) {
  for (std::size_t x = 0; x < width; ++x) levels[x] = addClamped(levels[x], shares[x]);
}

void fillShares(const std::int8_t* levels, std::size_t width, std::int16_t factor, Share* shares) {
  for (std::size_t x = 0; x < width; ++x) shares[x] = signedShare(levels[x], factor);
}

// Shares by offset level + 128.
using ShareTable = std::array<Share, 256>;

class PlainDiffusion {
 public:
  PlainDiffusion(const DiffusionKernel& kernel, const LevelRows& rows);

  bool allocate(BitmapAllocator allocator);
  void run();

 private:
  Share* sharesOfRow(std::size_t y, std::size_t factor);
  void collectFromAbove(std::size_t y);
  void collectAlongRow();
  void writeDots(std::uint8_t* dots) const;
  ShareTable tableOfTapInRow(int dx) const;

  const DiffusionKernel& kernel_;
  const LevelRows& rows_;
  const DiffusionShares shares_;
  const ShareTable toNext_;
  const ShareTable toSecond_;
  const std::size_t shareRowBytes_;
  ByteBlock block_;
  std::int8_t* levels_ = nullptr;
  Share* shareRows_ = nullptr;
};

PlainDiffusion::PlainDiffusion(const DiffusionKernel& kernel, const LevelRows& rows)
    : kernel_(kernel),
      rows_(rows),
      shares_(sharesOf(kernel)),
      toNext_(tableOfTapInRow(1)),
      toSecond_(tableOfTapInRow(2)),
      shareRowBytes_(rows.width() + 2 * kMargin) {}

// All zero when the kernel has no such tap.
ShareTable PlainDiffusion::tableOfTapInRow(int dx) const {
  ShareTable table = {};
  for (std::size_t tap = 0; tap < kernel_.tapCount; ++tap) {
    if (kernel_.taps[tap].dy != 0 || kernel_.taps[tap].dx != dx) continue;
    for (int level = 0; level < 256; ++level) {
      table[static_cast<std::size_t>(level)] = signedShare(
          static_cast<std::int8_t>(level - kLevelOffset), shares_.factors[shares_.ofTap[tap]]);
    }
  }
  return table;
}

bool PlainDiffusion::allocate(BitmapAllocator allocator) {
  const std::size_t shareBytes = kMaxReachRows * shares_.count * shareRowBytes_;
  const std::size_t bytes = shareBytes + rows_.width();
  block_.reset(static_cast<unsigned char*>(allocateBlock(allocator, bytes)));
  if (!block_) return false;
  std::memset(block_.get(), 0, bytes);
  shareRows_ = reinterpret_cast<Share*>(block_.get());
  levels_ = reinterpret_cast<std::int8_t*>(block_.get() + shareBytes);
  return true;
}

// The row's shares by one factor, in the place of those of three rows before.
Share* PlainDiffusion::sharesOfRow(std::size_t y, std::size_t factor) {
  const std::size_t slot = y % kMaxReachRows * shares_.count + factor;
  return shareRows_ + slot * shareRowBytes_ + kMargin;
}

// Going through the taps backwards visits the pixels that send in the order in
// which a page is scanned.
void PlainDiffusion::collectFromAbove(std::size_t y) {
  for (std::size_t tap = kernel_.tapCount; tap-- > 0;) {
    const auto& [dx, dy, weight] = kernel_.taps[tap];
    const auto up = static_cast<std::size_t>(dy);
    if (dy == 0 || up > y) continue;
    addRow(sharesOfRow(y - up, shares_.ofTap[tap]) - dx, rows_.width(), levels_);
  }
}

void PlainDiffusion::collectAlongRow() {
  Share fromSecond = 0;
  Share fromNext = 0;
  Share nextSecond = 0;
  for (std::size_t x = 0; x < rows_.width(); ++x) {
    const std::int8_t level = addClamped(addClamped(levels_[x], fromSecond), fromNext);
    levels_[x] = level;
    const auto entry = static_cast<std::size_t>(level + kLevelOffset);
    fromSecond = nextSecond;
    nextSecond = toSecond_[entry];
    fromNext = toNext_[entry];
  }
}

void PlainDiffusion::writeDots(std::uint8_t* dots) const {
  const std::uint8_t flip = rows_.flip();
  for (std::size_t x = 0; x < rows_.width(); ++x) {
    dots[x] = static_cast<std::uint8_t>((levels_[x] > 0 ? 255 : 0) ^ flip);
  }
}

void PlainDiffusion::run() {
  for (std::size_t y = 0; y < rows_.height(); ++y) {
    const std::uint8_t* source = rows_.levels(y);
    for (std::size_t x = 0; x < rows_.width(); ++x) {
      levels_[x] = static_cast<std::int8_t>(source[x] - kLevelOffset);
    }
    collectFromAbove(y);
    collectAlongRow();
    for (std::size_t factor = 0; factor < shares_.count; ++factor) {
      fillShares(levels_, rows_.width(), shares_.factors[factor], sharesOfRow(y, factor));
    }
    writeDots(rows_.dots(y));
  }
}

}  // namespace

bool diffusePlain(const DiffusionKernel& kernel, const LevelRows& rows, BitmapAllocator allocator) {
  PlainDiffusion diffusion(kernel, rows);
  if (!diffusion.allocate(allocator)) return false;
  diffusion.run();
  return true;
}
