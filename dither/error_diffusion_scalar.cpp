// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "dither/error_diffusion_scalar.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "dither/error_terms.h"

namespace wren::dither {

namespace {

using ErrorTerm = std::int8_t;

// Columns of zeros on both sides of a row of error terms: pixels outside the page.
constexpr std::size_t kMargin = kMaxReachColumns;

std::int8_t addSaturated(std::int8_t level, ErrorTerm term) {
  return static_cast<std::int8_t>(std::clamp(level + term, -128, 127));
}

// Error term of a pixel, from its offset level.
ErrorTerm signedErrorTerm(std::int8_t level, std::int16_t factor) {
  const int whiteMask = level > 0 ? -1 : 0;
  const int error = ((level + kLevelOffset) ^ whiteMask) & 255;
  return static_cast<ErrorTerm>((errorTerm(error, factor) ^ whiteMask) - whiteMask);
}

void addTerms(const ErrorTerm* terms, std::size_t width, std::int8_t* levels) {
  for (std::size_t x = 0; x < width; ++x) levels[x] = addSaturated(levels[x], terms[x]);
}

void fillTerms(const std::int8_t* levels, std::size_t width, std::int16_t factor,
               ErrorTerm* terms) {
  for (std::size_t x = 0; x < width; ++x) terms[x] = signedErrorTerm(levels[x], factor);
}

// Error terms by offset level + 128.
using TermTable = std::array<ErrorTerm, 256>;

class ScalarDiffusion {
 public:
  ScalarDiffusion(const DiffusionKernel& kernel, const LevelRows& rows);

  bool allocate(Allocator allocator);
  void run();

 private:
  ErrorTerm* termsOfRow(std::size_t y, std::size_t factor);
  void addTermsFromAbove(std::size_t y);
  void addTermsFromLeft();
  void writeDots(std::uint8_t* dots) const;
  TermTable termsInRow(int dx) const;

  const LevelRows& rows_;
  const DiffusionTaps taps_;
  const ErrorFactors factors_;
  const TermTable toNext_;    // tap dx = 1 of the pixel's own row
  const TermTable toSecond_;  // tap dx = 2
  const std::size_t termRowBytes_;
  MallocBytes block_;
  std::int8_t* levels_ = nullptr;
  ErrorTerm* termRows_ = nullptr;
};

ScalarDiffusion::ScalarDiffusion(const DiffusionKernel& kernel, const LevelRows& rows)
    : rows_(rows),
      taps_(tapsOf(kernel)),
      factors_(errorFactorsOf(kernel)),
      toNext_(termsInRow(1)),
      toSecond_(termsInRow(2)),
      termRowBytes_(rows.width() + 2 * kMargin) {}

// All zero if the kernel has no such tap.
TermTable ScalarDiffusion::termsInRow(int dx) const {
  TermTable table = {};
  for (std::size_t tap = 0; tap < taps_.count; ++tap) {
    if (taps_.tap[tap].dy != 0 || taps_.tap[tap].dx != dx) continue;
    const std::int16_t factor = factors_.factor[factors_.indexOfTap[tap]];
    for (int entry = 0; entry < 256; ++entry) {
      const auto level = static_cast<std::int8_t>(entry - kLevelOffset);
      table[static_cast<std::size_t>(entry)] = signedErrorTerm(level, factor);
    }
  }
  return table;
}

bool ScalarDiffusion::allocate(Allocator allocator) {
  const std::size_t termBytes = kMaxReachRows * factors_.count * termRowBytes_;
  const std::size_t bytes = termBytes + rows_.width();
  block_ = allocateBytes(allocator, bytes);
  if (block_ == nullptr) return false;
  std::memset(block_.get(), 0, bytes);
  termRows_ = reinterpret_cast<ErrorTerm*>(block_.get());
  levels_ = reinterpret_cast<std::int8_t*>(block_.get() + termBytes);
  return true;
}

// The row's error terms for one factor; they overwrite those of three rows above.
ErrorTerm* ScalarDiffusion::termsOfRow(std::size_t y, std::size_t factor) {
  const std::size_t slot = y % kMaxReachRows * factors_.count + factor;
  return termRows_ + slot * termRowBytes_ + kMargin;
}

// The taps backwards are the pixels above in scan order.
void ScalarDiffusion::addTermsFromAbove(std::size_t y) {
  for (std::size_t tap = taps_.count; tap-- > 0;) {
    const auto& [dx, dy, weight] = taps_.tap[tap];
    const auto up = static_cast<std::size_t>(dy);
    if (dy == 0 || up > y) continue;
    addTerms(termsOfRow(y - up, factors_.indexOfTap[tap]) - dx, rows_.width(), levels_);
  }
}

void ScalarDiffusion::addTermsFromLeft() {
  ErrorTerm twoLeft = 0;
  ErrorTerm oneLeft = 0;
  ErrorTerm nextTwoLeft = 0;
  for (std::size_t x = 0; x < rows_.width(); ++x) {
    const std::int8_t level = addSaturated(addSaturated(levels_[x], twoLeft), oneLeft);
    levels_[x] = level;
    const auto entry = static_cast<std::size_t>(level + kLevelOffset);
    twoLeft = nextTwoLeft;
    nextTwoLeft = toSecond_[entry];
    oneLeft = toNext_[entry];
  }
}

void ScalarDiffusion::writeDots(std::uint8_t* dots) const {
  const std::uint8_t flip = rows_.flip();
  for (std::size_t x = 0; x < rows_.width(); ++x) {
    dots[x] = static_cast<std::uint8_t>((levels_[x] > 0 ? 255 : 0) ^ flip);
  }
}

void ScalarDiffusion::run() {
  for (std::size_t y = 0; y < rows_.height(); ++y) {
    const std::uint8_t* source = rows_.levels(y);
    for (std::size_t x = 0; x < rows_.width(); ++x) {
      levels_[x] = static_cast<std::int8_t>(source[x] - kLevelOffset);
    }
    addTermsFromAbove(y);
    addTermsFromLeft();
    for (std::size_t factor = 0; factor < factors_.count; ++factor) {
      fillTerms(levels_, rows_.width(), factors_.factor[factor], termsOfRow(y, factor));
    }
    writeDots(rows_.dots(y));
    rows_.finish(y + 1);
  }
}

}  // namespace

bool diffuseScalar(const DiffusionKernel& kernel, const LevelRows& rows, Allocator allocator) {
  ScalarDiffusion diffusion(kernel, rows);
  if (!diffusion.allocate(allocator)) return false;
  diffusion.run();
  return true;
}

}  // namespace wren::dither
