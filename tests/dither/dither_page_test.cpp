// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Holds the dither kernels to the literal version: the choice that a page gets,
// the plain twin and the vector kernel, each by itself.
//
// The long run is not part of an ordinary test run. It takes the number of its
// pages from WREN_RANDOM_PAGES:
//   WREN_RANDOM_PAGES=1000000 bitmap_test --gtest_also_run_disabled_tests
//       --gtest_filter='*ManyRandomPages*'

#include "dither/dither_page.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <random>
#include <string>

#include "dither/byte_vector.h"
#include "dither/error_diffusion_scalar.h"
#include "dither/error_diffusion_wavefront.h"
#include "dither/error_terms.h"
#include "dither/methods.h"
#include "dither/ordered_dither.h"
#include "tests/bitmap/bitmap_fixtures.h"
#include "tests/reference/cximage.h"

namespace {

constexpr std::uint8_t kUntouched = 0x5A;

// A page and the ways in which a caller may ask for it.
struct Sample {
  std::size_t width = 0;
  std::size_t height = 0;
  Bytes levels;
  Bytes tone;  // empty for none
  bool bottomUp = false;
  bool mirrored = false;
  bool inverted = false;
  bool inPlace = false;
  std::size_t slackBytes = 0;  // of a row, behind its last pixel
};

std::string nameOf(const Sample& sample, int method) {
  return std::to_string(sample.width) + " x " + std::to_string(sample.height) + ", method " +
         std::to_string(method) + (sample.tone.empty() ? "" : ", toned") +
         (sample.bottomUp ? ", bottom up" : "") + (sample.mirrored ? ", mirrored" : "") +
         (sample.inverted ? ", inverted" : "") + (sample.inPlace ? ", in place" : "");
}

// Row after row without slack, 255 for white and 0 for black or the other way round.
Bytes literalDots(const Sample& sample, int method) {
  reference::CxImage image;
  const auto width = static_cast<std::uint32_t>(sample.width);
  image.CreateFromArray(sample.levels.data(), width, static_cast<std::uint32_t>(sample.height), 8,
                        width, sample.bottomUp);
  if (!sample.tone.empty()) image.Lut(sample.tone.data());
  if (sample.mirrored) image.Mirror();
  image.Dither(method);
  Bytes dots;
  for (int y = 0; y < image.GetHeight(); ++y) {
    for (int x = 0; x < image.GetWidth(); ++x) {
      const bool isWhite = image.GetPixelIndex(x, y) == 1;
      dots.push_back(isWhite != sample.inverted ? 255 : 0);
    }
  }
  return dots;
}

// The kernels under test. The last knows the diffusions only.
enum class Kernel { kChosen, kPlain, kWavefront };

bool comparePlain(const ThresholdCell& cell, const LevelRows& rows) {
  ditherByThresholdsPlain(cell, rows);
  return true;
}

bool runPlain(int method, const LevelRows& rows) {
  switch (method) {
    case 0:
      return comparePlain(fixedThresholdCell(), rows);
    case 1:
      return comparePlain(orderedCell(), rows);
    case 7:
      return comparePlain(bayerCell(), rows);
    case 2:
      return diffusePlain(kBurkes, rows);
    case 3:
      return diffusePlain(kStucki, rows);
    case 4:
      return diffusePlain(kJarvisJudiceNinke, rows);
    case 5:
      return diffusePlain(kSierra, rows);
    case 6:
      return diffusePlain(kStevensonArce, rows);
    default:
      return diffusePlain(kFloydSteinberg, rows);
  }
}

#ifdef WREN_HAS_BYTE_VECTORS
bool runWavefront(int method, const LevelRows& rows) {
  switch (method) {
    case 2:
      return diffuseWavefront<kBurkes>(rows);
    case 3:
      return diffuseWavefront<kStucki>(rows);
    case 4:
      return diffuseWavefront<kJarvisJudiceNinke>(rows);
    case 5:
      return diffuseWavefront<kSierra>(rows);
    case 6:
      return diffuseWavefront<kStevensonArce>(rows);
    default:
      return false;
  }
}
constexpr bool kHasWavefront = true;
#else
bool runWavefront(int, const LevelRows&) {
  return false;
}
constexpr bool kHasWavefront = false;
#endif

bool run(Kernel kernel, int method, const DitherPage& page) {
  if (kernel == Kernel::kChosen) return ditherPage(method, page);
  const LevelRows rows(page);
  return kernel == Kernel::kPlain ? runPlain(method, rows) : runWavefront(method, rows);
}

DitherPage pageOf(const Sample& sample, const Bytes& levels, Bytes& dots) {
  const std::size_t stride = sample.width + sample.slackBytes;
  DitherPage page;
  page.levels = levels.data();
  page.levelStrideBytes = static_cast<std::ptrdiff_t>(stride);
  if (sample.bottomUp && sample.height > 0) {
    page.levels += (sample.height - 1) * stride;
    page.levelStrideBytes = -page.levelStrideBytes;
  }
  page.dots = dots.data();
  page.dotStrideBytes = static_cast<std::ptrdiff_t>(stride);
  page.width = sample.width;
  page.height = sample.height;
  page.tone = sample.tone.empty() ? nullptr : sample.tone.data();
  page.mirrored = sample.mirrored;
  page.inverted = sample.inverted;
  return page;
}

// The rows of `bytes` with the sample's slack behind each.
Bytes withSlack(const Sample& sample, const Bytes& bytes) {
  Bytes result;
  for (std::size_t y = 0; y < sample.height; ++y) {
    const auto row = bytes.begin() + static_cast<std::ptrdiff_t>(y * sample.width);
    result.insert(result.end(), row, row + static_cast<std::ptrdiff_t>(sample.width));
    result.insert(result.end(), sample.slackBytes, kUntouched);
  }
  return result;
}

void expectDots(Kernel kernel, const Sample& sample, int method, const Bytes& expected) {
  const Bytes levels = withSlack(sample, sample.levels);
  Bytes dots = sample.inPlace ? levels : Bytes(levels.size(), kUntouched);
  const DitherPage page = pageOf(sample, sample.inPlace ? dots : levels, dots);
  ASSERT_TRUE(run(kernel, method, page));
  ASSERT_EQ(dots, withSlack(sample, expected))
      << nameOf(sample, method) << ", kernel " << static_cast<int>(kernel);
}

bool isDiffusion(int method) {
  return method >= 2 && method <= 6;
}

void compare(const Sample& sample, int method) {
  const Bytes expected = literalDots(sample, method);
  ASSERT_NO_FATAL_FAILURE(expectDots(Kernel::kChosen, sample, method, expected));
  ASSERT_NO_FATAL_FAILURE(expectDots(Kernel::kPlain, sample, method, expected));
  if (!kHasWavefront || !isDiffusion(method)) return;
  ASSERT_NO_FATAL_FAILURE(expectDots(Kernel::kWavefront, sample, method, expected));
}

void compareAllMethods(const Sample& sample) {
  for (int method = 0; method <= 8; ++method) ASSERT_NO_FATAL_FAILURE(compare(sample, method));
}

using Random = std::mt19937;

std::size_t below(Random& random, std::size_t bound) {
  return random() % bound;
}

Sample noise(Random& random, std::size_t width, std::size_t height) {
  Sample sample;
  sample.width = width;
  sample.height = height;
  sample.levels.resize(width * height);
  for (auto& level : sample.levels) level = static_cast<std::uint8_t>(random());
  return sample;
}

constexpr std::size_t kPageKinds = 6;

// What printed pages are made of, and what is hard on the clamping.
void fill(Random& random, std::size_t kind, Sample& sample) {
  const auto base = static_cast<std::uint8_t>(random());
  const std::size_t right = below(random, 9);
  const std::size_t down = below(random, 9);
  for (std::size_t i = 0; i < sample.levels.size(); ++i) {
    const std::size_t slope = i % sample.width * right + i / sample.width * down;
    std::size_t level = 0;
    switch (kind) {
      case 0:
        level = random();
        break;
      case 1:  // flat
        level = base;
        break;
      case 2:  // gradient
        level = base + slope;
        break;
      case 3:  // black and white only
        level = random() % 2 * 255;
        break;
      case 4:  // around the threshold
        level = 126 + random() % 5;
        break;
      default:  // a little noise over a gradient
        level = base + slope / 4 + random() % 3;
        break;
    }
    sample.levels[i] = static_cast<std::uint8_t>(level);
  }
}

Bytes randomTone(Random& random) {
  const auto shift = static_cast<int>(below(random, 700)) - 350;
  const std::size_t kind = below(random, 3);
  Bytes tone;
  for (int level = 0; level < 256; ++level) {
    const int toned = kind == 0 ? level + shift : (level - 128) * shift / 100 + 128;
    tone.push_back(static_cast<std::uint8_t>(kind == 2 ? random() : std::clamp(toned, 0, 255)));
  }
  return tone;
}

Sample randomSample(Random& random) {
  Sample sample = noise(random, below(random, 71), 1 + below(random, 40));
  fill(random, below(random, kPageKinds), sample);
  if (below(random, 4) == 0) sample.tone = randomTone(random);
  sample.inPlace = below(random, 3) == 0;
  sample.bottomUp = !sample.inPlace && below(random, 3) == 0;
  sample.mirrored = !sample.inPlace && below(random, 3) == 0;
  sample.inverted = below(random, 2) == 0;
  sample.slackBytes = below(random, 6);
  return sample;
}

// Noise, gradients, and pages of black and white pixels.
class DitherKernelsSmall : public testing::TestWithParam<std::size_t> {};

TEST_P(DitherKernelsSmall, EverySizeAndMethod) {
  Random random(1);
  for (std::size_t width = 0; width <= 70; ++width) {
    for (std::size_t height = 1; height <= 40; ++height) {
      Sample sample = noise(random, width, height);
      fill(random, GetParam(), sample);
      ASSERT_NO_FATAL_FAILURE(compareAllMethods(sample));
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Kinds, DitherKernelsSmall, testing::Values(0, 2, 3));

// Sizes around those where the rows of the vector kernel come to be farther
// apart than they must, and as wide as paper.
class DitherKernelsWide : public testing::TestWithParam<std::size_t> {};

TEST_P(DitherKernelsWide, NoiseOfEveryMethod) {
  Random random(2);
  for (const std::size_t height : {1, 2, 15, 16, 17, 33, 50}) {
    ASSERT_NO_FATAL_FAILURE(compareAllMethods(noise(random, GetParam(), height)));
  }
}

INSTANTIATE_TEST_SUITE_P(Widths, DitherKernelsWide,
                         testing::Values(71, 128, 286, 287, 288, 289, 301, 302, 303, 304, 305, 306,
                                         317, 318, 319, 320, 384, 576, 590, 591, 832, 1993));

TEST(DitherKernels, EveryFlatLevel) {
  for (int level = 0; level < 256; ++level) {
    Sample sample;
    sample.width = 40;
    sample.height = 24;
    sample.levels.assign(40 * 24, static_cast<std::uint8_t>(level));
    ASSERT_NO_FATAL_FAILURE(compareAllMethods(sample)) << "level " << level;
  }
}

TEST(DitherKernels, RandomPages) {
  Random random(3);
  for (int i = 0; i < 5000; ++i) {
    const Sample sample = randomSample(random);
    ASSERT_NO_FATAL_FAILURE(compare(sample, static_cast<int>(below(random, 9)))) << "page " << i;
  }
}

TEST(DitherKernels, DISABLED_ManyRandomPages) {
  const char* count = std::getenv("WREN_RANDOM_PAGES");
  const long pages = count ? std::strtol(count, nullptr, 10) : 100000;
  Random random(4);
  std::size_t pixels = 0;
  for (long i = 0; i < pages; ++i) {
    const Sample sample = randomSample(random);
    pixels += sample.levels.size();
    ASSERT_NO_FATAL_FAILURE(compare(sample, static_cast<int>(below(random, 9)))) << "page " << i;
  }
  std::cout << pages << " random pages, " << pixels
            << " pixels: all dots as in the literal version\n";
}

TEST(ThresholdCells, CompareEveryLevelWithEveryThreshold) {
  Bytes levels(256 + 7);
  for (std::size_t x = 0; x < levels.size(); ++x) levels[x] = static_cast<std::uint8_t>(x);
  for (int threshold = 0; threshold < 256; ++threshold) {
    ThresholdCell cell;
    cell.fill(static_cast<std::uint8_t>(threshold));
    Bytes dots(levels.size());
    DitherPage page;
    page.levels = levels.data();
    page.dots = dots.data();
    page.width = levels.size();
    page.height = 1;
    ditherByThresholds(cell, LevelRows(page));
    for (std::size_t x = 0; x < levels.size(); ++x) {
      ASSERT_EQ(dots[x], levels[x] > threshold ? 255 : 0) << x << ' ' << threshold;
    }
  }
}

// Every cell of a row and a column has its own threshold.
TEST(ThresholdCells, RepeatAfterFourColumnsAndRows) {
  const ThresholdCell cell = {0,   16,  32,  48,  64,  80,  96,  112,
                              128, 144, 160, 176, 192, 208, 224, 240};
  Sample sample;
  sample.width = 37;
  sample.height = 9;
  sample.levels.assign(37 * 9, 120);
  Bytes dots(sample.levels.size());
  ditherByThresholds(cell, LevelRows(pageOf(sample, sample.levels, dots)));
  for (std::size_t y = 0; y < 9; ++y) {
    for (std::size_t x = 0; x < 37; ++x) {
      EXPECT_EQ(dots[37 * y + x], 120 > 16 * (4 * (y % 4) + x % 4) ? 255 : 0) << x << ',' << y;
    }
  }
}

TEST(DitherKernels, AnEmptyPageIsDone) {
  Sample sample;
  sample.height = 5;
  ASSERT_NO_FATAL_FAILURE(compareAllMethods(sample));
  sample.width = 5;
  sample.height = 0;
  for (int method = 0; method <= 8; ++method) {
    expectDots(Kernel::kChosen, sample, method, {});
  }
}

TEST(DitherKernels, WithoutMemoryNothingIsWritten) {
  Random random(5);
  for (int method = 2; method <= 8; ++method) {
    if (method == 7) continue;  // compares, and needs none
    const Sample sample = noise(random, 20, 20);
    Bytes dots(400, kUntouched);
    grantedAllocations = 0;
    EXPECT_FALSE(ditherPage(method, pageOf(sample, sample.levels, dots), allocateUntilSpent));
    EXPECT_EQ(dots, Bytes(400, kUntouched));
  }
}

// A few rows of working memory: the same for a tall page as for a short one.
std::size_t largestRequest = 0;

void* noteRequest(std::size_t bytes) {
  largestRequest = std::max(largestRequest, bytes);
  return std::malloc(bytes);
}

TEST(DitherKernels, WorkingMemoryDoesNotGrowWithThePage) {
  Random random(6);
  for (int method = 0; method <= 8; ++method) {
    largestRequest = 0;
    const Sample sample = noise(random, 576, 200);
    Bytes dots(sample.levels.size());
    ASSERT_TRUE(ditherPage(method, pageOf(sample, sample.levels, dots), noteRequest));
    EXPECT_LE(largestRequest, 24u * 1024) << method;
  }
}

TEST(DiffusionShares, AreTheTruncatedQuotients) {
  for (const DiffusionKernel* kernel :
       {&kBurkes, &kStucki, &kJarvisJudiceNinke, &kSierra, &kStevensonArce, &kFloydSteinberg}) {
    for (std::size_t tap = 0; tap < kernel->tapCount; ++tap) {
      const int weight = kernel->taps[tap].weight;
      for (int error = 0; error <= 128; ++error) {
        EXPECT_EQ(shareOf(error, shareFactor(weight, kernel->divisor)),
                  error * weight / kernel->divisor);
      }
    }
  }
}

#ifdef WREN_HAS_BYTE_VECTORS

Bytes bytesOf(ByteVector vector) {
  Bytes bytes(16);
  storeBytes(vector, bytes.data());
  return bytes;
}

TEST(ByteVector, AddsEveryPairOfSignedBytesClamped) {
  for (int a = -128; a < 128; ++a) {
    for (int b = -128; b < 128; ++b) {
      const auto sum =
          addClamped(splat(static_cast<std::uint8_t>(a)), splat(static_cast<std::uint8_t>(b)));
      ASSERT_EQ(bytesOf(sum), Bytes(16, static_cast<std::uint8_t>(std::clamp(a + b, -128, 127))));
    }
  }
}

TEST(ByteVector, TakesFractionsOfEveryErrorByEveryFactorInUse) {
  for (const DiffusionKernel* kernel :
       {&kBurkes, &kStucki, &kJarvisJudiceNinke, &kSierra, &kStevensonArce}) {
    const DiffusionShares shares = sharesOf(*kernel);
    for (std::size_t i = 0; i < shares.count; ++i) {
      for (int error = 0; error <= 128; ++error) {
        const auto share = shareOf(error, shares.factors[i]);
        const WideVector wide = widen(splat(static_cast<std::uint8_t>(error)));
        ASSERT_EQ(bytesOf(fractionOf(wide, shares.factors[i])),
                  Bytes(16, static_cast<std::uint8_t>(share)));
      }
    }
  }
}

TEST(ByteVector, ComparesAndNegatesEverySignedByte) {
  for (int a = -128; a < 128; ++a) {
    const ByteVector v = splat(static_cast<std::uint8_t>(a));
    ASSERT_EQ(bytesOf(aboveZero(v)), Bytes(16, a > 0 ? 255 : 0));
    ASSERT_EQ(bytesOf(negateWhere(splat(255), v)), Bytes(16, static_cast<std::uint8_t>(-a)));
    ASSERT_EQ(bytesOf(negateWhere(splat(0), v)), Bytes(16, static_cast<std::uint8_t>(a)));
  }
}

TEST(ByteVector, ReversesItsLanes) {
  const Bytes bytes = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
  EXPECT_EQ(bytesOf(reversed(loadBytes(bytes.data()))), Bytes(bytes.rbegin(), bytes.rend()));
}

TEST(ByteVector, TransposesASquare) {
  Bytes bytes(256);
  for (std::size_t i = 0; i < 256; ++i) bytes[i] = static_cast<std::uint8_t>(i);
  ByteSquare square;
  for (std::size_t row = 0; row < 16; ++row) square[row] = loadBytes(bytes.data() + 16 * row);
  transpose(square);
  for (std::size_t row = 0; row < 16; ++row) {
    for (std::size_t column = 0; column < 16; ++column) {
      EXPECT_EQ(bytesOf(square[row])[column], 16 * column + row);
    }
  }
}

#endif  // WREN_HAS_BYTE_VECTORS

}  // namespace
