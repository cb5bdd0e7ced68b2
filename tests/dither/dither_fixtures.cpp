// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
#include "tests/dither/dither_fixtures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "dither/dither_page.h"
#include "dither/methods.h"
#include "tests/reference/cximage.h"
#include "tests/support/same_bytes.h"
#include "tests/support/vector_levels.h"

namespace wren_test {

namespace {

using wren::dither::kMethods;
using wren::dither::Page;

std::string nameOf(const Sample& sample, int method) {
  return std::to_string(sample.width) + " x " + std::to_string(sample.height) + ", " +
         std::string(kMethods[static_cast<std::size_t>(method)].name) +
         (sample.tone.empty() ? "" : ", toned") + (sample.bottomUp ? ", bottom up" : "") +
         (sample.mirrored ? ", mirrored" : "") + (sample.inverted ? ", inverted" : "") +
         (sample.inPlace ? ", in place" : "");
}

// Copies rows of `width` bytes and adds `padding` bytes after each.
Bytes padded(const Bytes& bytes, std::size_t width, std::size_t height, std::size_t padding) {
  Bytes result;
  for (std::size_t y = 0; y < height; ++y) {
    const auto row = bytes.begin() + static_cast<std::ptrdiff_t>(y * width);
    result.insert(result.end(), row, row + static_cast<std::ptrdiff_t>(width));
    result.insert(result.end(), padding, kUntouched);
  }
  return result;
}

// 255 for white and 0 for black, or the other way round; without padding.
Bytes referenceDots(const Sample& sample, int method) {
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

}  // namespace

SampleBuffers::SampleBuffers(const Sample& sample)
    : tone_(sample.tone),
      dotStrideBytes_(sample.width + (sample.inPlace ? sample.levelPadding : sample.dotPadding)) {
  const std::size_t levelStride = sample.width + sample.levelPadding;
  Bytes levels = padded(sample.levels, sample.width, sample.height, sample.levelPadding);
  if (sample.inPlace) {
    dots_ = std::move(levels);
    page_.levels = dots_.data();
  } else {
    levels_ = std::move(levels);
    dots_.assign(sample.height * dotStrideBytes_, kUntouched);
    page_.levels = levels_.data();
  }
  page_.levelStrideBytes = static_cast<std::ptrdiff_t>(levelStride);
  if (sample.bottomUp && sample.height > 0) {
    page_.levels += (sample.height - 1) * levelStride;
    page_.levelStrideBytes = -page_.levelStrideBytes;
  }
  page_.dots = dots_.data();
  page_.dotStrideBytes = static_cast<std::ptrdiff_t>(dotStrideBytes_);
  page_.width = sample.width;
  page_.height = sample.height;
  page_.tone = tone_.empty() ? nullptr : tone_.data();
  page_.mirrored = sample.mirrored;
  page_.inverted = sample.inverted;
}

namespace {

// Copies finished rows from a ring to the page, 8 at a time, and ruins them in the ring: its
// owner may do what it likes with rows that it has taken.
struct RingReader {
  const Page& page;
  Bytes ring;
  std::size_t taken = 0;

  explicit RingReader(const Page& target) : page(target), ring(Page::kMinDotRows * page.width) {}

  std::uint8_t* place(std::size_t y) { return ring.data() + y % Page::kMinDotRows * page.width; }

  static void take(void* context, std::size_t rows) {
    auto* self = static_cast<RingReader*>(context);
    const bool isLast = rows == self->page.height;
    for (; self->taken + (isLast ? 1 : 8) <= rows; ++self->taken) {
      std::uint8_t* dots =
          self->page.dots + static_cast<std::ptrdiff_t>(self->taken) * self->page.dotStrideBytes;
      std::copy_n(self->place(self->taken), self->page.width, dots);
      std::fill_n(self->place(self->taken), self->page.width, kUntouched);
    }
  }
};

bool ditherThroughRing(int method, const Page& page) {
  RingReader reader(page);
  Page job = page;
  job.dots = reader.ring.data();
  job.dotStrideBytes = static_cast<std::ptrdiff_t>(page.width);
  job.dotRows = Page::kMinDotRows;
  job.finished = {RingReader::take, &reader};
  return wren::dither::ditherPage(method, job) && reader.taken == page.height;
}

}  // namespace

std::vector<Kernel> kernelsOf(int method) {
  std::vector<Kernel> kernels;
  for (const wren::VectorLevel level : wren::machineVectorLevels()) {
    kernels.push_back({std::string(wren::vectorLevelName(level)), [=](const Page& page) {
                         const AtVectorLevel at(level);
                         return wren::dither::ditherPage(method, page);
                       }});
    kernels.push_back(
        {std::string(wren::vectorLevelName(level)) + " through a ring", [=](const Page& page) {
           const AtVectorLevel at(level);
           const bool isInPlace = page.levels == page.dots;
           return isInPlace || page.width == 0 ? wren::dither::ditherPage(method, page)
                                               : ditherThroughRing(method, page);
         }});
  }
  return kernels;
}

int methodCount() {
  return static_cast<int>(kMethods.size());
}

void expectReferenceDots(const Sample& sample, int method) {
  const Bytes expected = referenceDots(sample, method);
  for (const Kernel& kernel : kernelsOf(method)) {
    const SampleBuffers buffers(sample);
    ASSERT_TRUE(kernel.run(buffers.page())) << nameOf(sample, method) << ", " << kernel.name;
    const std::size_t stride = buffers.dotStrideBytes();
    ASSERT_TRUE(sameBytes(padded(expected, sample.width, sample.height, stride - sample.width),
                          buffers.dots(), stride))
        << nameOf(sample, method) << ", " << kernel.name;
  }
}

void expectReferenceDots(const Sample& sample) {
  for (int method = 0; method < methodCount(); ++method) {
    ASSERT_NO_FATAL_FAILURE(expectReferenceDots(sample, method));
  }
}

Bytes dithered(std::int64_t method, std::size_t width, const Bytes& levels) {
  Sample sample;
  sample.width = width;
  sample.height = levels.size() / width;
  sample.levels = levels;
  const SampleBuffers buffers(sample);
  EXPECT_TRUE(wren::dither::ditherPage(method, buffers.page()));
  Bytes dots = buffers.dots();
  for (auto& dot : dots) dot = static_cast<std::uint8_t>(dot == 255 ? 1 : dot);
  return dots;
}

Sample makeSample(Random& random, Content content, std::size_t width, std::size_t height) {
  Sample sample;
  sample.width = width;
  sample.height = height;
  const auto base = static_cast<std::uint8_t>(random());
  const std::size_t right = below(random, 9);
  const std::size_t down = below(random, 9);
  for (std::size_t i = 0; i < width * height; ++i) {
    const std::size_t slope = i % width * right + i / width * down;
    std::size_t level = 0;
    switch (content) {
      case Content::kNoise:
        level = random();
        break;
      case Content::kFlat:
        level = base;
        break;
      case Content::kGradient:
        level = base + slope;
        break;
      case Content::kBlackAndWhite:
        level = random() % 2 * 255;
        break;
      case Content::kNearThreshold:
        level = 126 + random() % 5;
        break;
      case Content::kNoisyGradient:
        level = base + slope / 4 + random() % 3;
        break;
    }
    sample.levels.push_back(static_cast<std::uint8_t>(level));
  }
  return sample;
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
  const auto content = static_cast<Content>(below(random, kContentCount));
  const std::size_t width = below(random, 71);
  Sample sample = makeSample(random, content, width, 1 + below(random, 40));
  if (below(random, 4) == 0) sample.tone = randomTone(random);
  sample.inPlace = below(random, 3) == 0;
  sample.bottomUp = !sample.inPlace && below(random, 3) == 0;
  sample.mirrored = !sample.inPlace && below(random, 3) == 0;
  sample.inverted = below(random, 2) == 0;
  sample.levelPadding = below(random, 6);
  sample.dotPadding = below(random, 6);
  return sample;
}

}  // namespace wren_test
