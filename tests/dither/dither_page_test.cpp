// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Holds `ditherPage`, the scalar and the vector kernels to the reference implementation.
//
// The long run is not part of an ordinary test run. WREN_RANDOM_PAGES is its number of
// pages:
//   WREN_RANDOM_PAGES=1000000 dither_test --gtest_also_run_disabled_tests
//       --gtest_filter='*ManyRandomPages*'

#include "dither/dither_page.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <iostream>

#include "dither/error_diffusion_wavefront.h"
#include "dither/methods.h"
#include "tests/dither/dither_fixtures.h"
#include "tests/support/same_bytes.h"
#include "tests/support/vector_levels.h"

namespace {

using namespace wren_test;

using wren::dither::ditherPage;
using wren::dither::kMethods;
using wren::dither::MethodKind;

// How a caller may lay out its page and ask for its dots.
struct Layout {
  bool bottomUp, mirrored, inverted, inPlace, toned;
  std::size_t levelPadding, dotPadding;
};

constexpr std::array<Layout, 7> kLayouts = {{
    {false, false, false, false, false, 0, 0},
    {false, false, false, true, false, 3, 3},
    {false, true, false, false, false, 1, 5},
    {true, false, true, false, false, 7, 0},
    {true, true, false, false, true, 0, 1},
    {false, false, true, true, true, 5, 5},
    {false, true, true, false, true, 2, 9},
}};

void apply(const Layout& layout, Random& random, Sample& sample) {
  sample.bottomUp = layout.bottomUp;
  sample.mirrored = layout.mirrored;
  sample.inverted = layout.inverted;
  sample.inPlace = layout.inPlace;
  if (layout.toned) sample.tone = randomTone(random);
  sample.levelPadding = layout.levelPadding;
  sample.dotPadding = layout.dotPadding;
}

class SmallPages : public testing::TestWithParam<Content> {};

// The layouts take turns, so that every width and every height has all of them.
TEST_P(SmallPages, OfEverySizeHaveTheReferenceDots) {
  Random random(1);
  std::size_t turn = 0;
  for (std::size_t width = 0; width <= 70; ++width) {
    for (std::size_t height = 1; height <= 40; ++height) {
      Sample sample = makeSample(random, GetParam(), width, height);
      apply(kLayouts[turn++ % kLayouts.size()], random, sample);
      ASSERT_NO_FATAL_FAILURE(expectReferenceDots(sample));
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Contents, SmallPages,
                         testing::Values(Content::kNoise, Content::kGradient,
                                         Content::kBlackAndWhite));

class WidePages : public testing::TestWithParam<std::size_t> {};

TEST_P(WidePages, OfNoiseHaveTheReferenceDots) {
  Random random(2);
  for (const std::size_t height : {1, 2, 15, 16, 17, 33, 50}) {
    const Sample sample = makeSample(random, Content::kNoise, GetParam(), height);
    ASSERT_NO_FATAL_FAILURE(expectReferenceDots(sample));
  }
}

// Widths around those at which the lag of the wavefront grows, and widths of paper.
INSTANTIATE_TEST_SUITE_P(Widths, WidePages,
                         testing::Values(71, 128, 286, 287, 288, 289, 301, 302, 303, 304, 305, 306,
                                         317, 318, 319, 320, 384, 576, 590, 591, 832, 1993));

TEST(DitherPage, OfOneLevelHasTheReferenceDots) {
  for (int level = 0; level < 256; ++level) {
    Sample sample;
    sample.width = 40;
    sample.height = 24;
    sample.levels.assign(40 * 24, static_cast<std::uint8_t>(level));
    ASSERT_NO_FATAL_FAILURE(expectReferenceDots(sample)) << "level " << level;
  }
}

TEST(DitherPage, RandomPagesHaveTheReferenceDots) {
  Random random(3);
  for (int i = 0; i < 5000; ++i) {
    const Sample sample = randomSample(random);
    const auto method = static_cast<int>(below(random, kMethods.size()));
    ASSERT_NO_FATAL_FAILURE(expectReferenceDots(sample, method)) << "page " << i;
  }
}

TEST(DitherPage, DISABLED_ManyRandomPagesHaveTheReferenceDots) {
  const char* count = std::getenv("WREN_RANDOM_PAGES");
  const long pages = count != nullptr ? std::strtol(count, nullptr, 10) : 100000;
  Random random(4);
  std::size_t pixels = 0;
  for (long i = 0; i < pages; ++i) {
    const Sample sample = randomSample(random);
    pixels += sample.levels.size();
    const auto method = static_cast<int>(below(random, kMethods.size()));
    ASSERT_NO_FATAL_FAILURE(expectReferenceDots(sample, method)) << "page " << i;
  }
  std::cout << pages << " random pages, " << pixels
            << " pixels: all dots as in the reference implementation\n";
}

TEST(DitherPage, WithoutPixelsSucceeds) {
  for (const auto& [width, height] : {std::pair{0U, 5U}, {5U, 0U}, {0U, 0U}}) {
    Sample sample;
    sample.width = width;
    sample.height = height;
    for (int method = 0; method < methodCount(); ++method) {
      const SampleBuffers buffers(sample);
      for (const Kernel& kernel : kernelsOf(method)) {
        EXPECT_TRUE(kernel.run(buffers.page())) << kernel.name << ", method " << method;
      }
    }
  }
}

void* noMemory(std::size_t) {
  return nullptr;
}

TEST(DitherPage, WithoutMemoryFailsAndWritesNothing) {
  Random random(5);
  const Sample sample = makeSample(random, Content::kNoise, 20, 20);
  for (int method = 0; method < methodCount(); ++method) {
    const bool needsMemory =
        kMethods[static_cast<std::size_t>(method)].kind == MethodKind::kErrorDiffusion;
    const SampleBuffers buffers(sample);
    EXPECT_EQ(ditherPage(method, buffers.page(), noMemory), !needsMemory) << method;
    if (!needsMemory) continue;
    EXPECT_TRUE(sameBytes(Bytes(400, kUntouched), buffers.dots(), 20)) << method;
  }
}

std::size_t largestRequest = 0;

void* noteRequest(std::size_t bytes) {
  largestRequest = std::max(largestRequest, bytes);
  return std::malloc(bytes);
}

TEST(DitherPage, NeedsAsMuchMemoryForATallPageAsForAShortOne) {
  Random random(6);
  for (int method = 0; method < methodCount(); ++method) {
    std::array<std::size_t, 2> requests = {};
    for (std::size_t i = 0; i < 2; ++i) {
      largestRequest = 0;
      const SampleBuffers buffers(makeSample(random, Content::kNoise, 576, i == 0 ? 50 : 400));
      ASSERT_TRUE(ditherPage(method, buffers.page(), noteRequest));
      requests[i] = largestRequest;
    }
    EXPECT_EQ(requests[0], requests[1]) << method;
    EXPECT_LE(requests[1], 24U * 1024) << method;
  }
}

TEST(WavefrontKernel, ExistsForEveryVectorisedMethodAtEveryVectorLevel) {
  for (const wren::VectorLevel level : wren::machineVectorLevels()) {
    const AtVectorLevel at(level);
    for (std::size_t method = 0; method < kMethods.size(); ++method) {
      const bool isVector = level != wren::VectorLevel::kScalar && kMethods[method].isVectorised;
      EXPECT_EQ(wren::dither::wavefrontKernel(method) != nullptr, isVector)
          << method << " at " << wren::vectorLevelName(level);
    }
  }
}

}  // namespace
