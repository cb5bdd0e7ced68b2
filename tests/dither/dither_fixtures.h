// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Pages for the tests of dither/, and the comparison of a kernel with the reference
// implementation.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "dither/page.h"

namespace wren_test {

using Bytes = std::vector<std::uint8_t>;

/// Fills padding and unwritten dots, so that a write to them shows.
inline constexpr std::uint8_t kUntouched = 0x5A;

/// A page and how a caller asks for its dots.
struct Sample {
  std::size_t width = 0;
  std::size_t height = 0;
  Bytes levels;  ///< width * height
  Bytes tone;    ///< empty for none
  bool bottomUp = false;
  bool mirrored = false;
  bool inverted = false;
  bool inPlace = false;
  std::size_t levelPadding = 0;  ///< bytes after each row of levels
  std::size_t dotPadding = 0;    ///< bytes after each row of dots; in place `levelPadding` holds
};

/// The buffers of a sample, with padding after each row. Not copyable: `page` points to
/// them.
class SampleBuffers {
 public:
  explicit SampleBuffers(const Sample& sample);
  SampleBuffers(const SampleBuffers&) = delete;
  SampleBuffers& operator=(const SampleBuffers&) = delete;

  const wren::dither::Page& page() const { return page_; }
  const Bytes& dots() const { return dots_; }
  std::size_t dotStrideBytes() const { return dotStrideBytes_; }

 private:
  Bytes tone_;
  Bytes levels_;  // empty in place
  Bytes dots_;
  std::size_t dotStrideBytes_;
  wren::dither::Page page_;
};

/// A function that dithers a page by one method.
struct Kernel {
  std::string name;
  std::function<bool(const wren::dither::Page&)> run;
};

/// `ditherPage` by a method at every vector level of the machine, into a page and into a ring
/// of rows.
std::vector<Kernel> kernelsOf(int method);

/// The number of methods, Floyd-Steinberg included.
int methodCount();

/// Fails unless every kernel of `method` gives the dots of the reference implementation
/// and leaves the padding alone.
void expectReferenceDots(const Sample& sample, int method);

/// The same for every method.
void expectReferenceDots(const Sample& sample);

/// The dots of `ditherPage` as 1 for white and 0 for black, row after row.
Bytes dithered(std::int64_t method, std::size_t width, const Bytes& levels);

using Random = std::mt19937;

inline std::size_t below(Random& random, std::size_t bound) {
  return random() % bound;
}

/// What printed pages are made of, and what makes clamping matter.
enum class Content {
  kNoise,
  kFlat,
  kGradient,
  kBlackAndWhite,
  kNearThreshold,
  kNoisyGradient,
};
inline constexpr std::size_t kContentCount = 6;

Sample makeSample(Random& random, Content content, std::size_t width, std::size_t height);

/// A tone curve: a shift, a contrast or random levels.
Bytes randomTone(Random& random);

/// A page of up to 70 x 40 pixels with random content and options.
Sample randomSample(Random& random);

}  // namespace wren_test
