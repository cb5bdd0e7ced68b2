// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// page_at_level levels
// page_at_level steps
// page_at_level LEVEL STEP WIDTH HEIGHT
//
// Lists the vector levels or the steps, or runs one step of a page at one level: a halftone method,
// as a job runs it, or one of the kernels around it. For counting its instructions: everything
// outside of the step costs the same at every height, so the difference between two heights is the
// step alone.

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string_view>
#include <vector>

#include "common/vector_level.h"
#include "dither/methods.h"
#include "printer/dot_bands.h"
#include "printer/dot_kernels.h"
#include "printer/page_dots.h"
#include "tests/levels/level_argument.h"

namespace {

using wren::printer::DotBands;
using wren::printer::DotOptions;
using wren::printer::GreyPage;
using wren::printer::kRowsPerBand;

constexpr int kStatusFailed = 1;
constexpr int kStatusUsage = 2;

// Every page has this height, whatever part of it the step gets.
constexpr std::uint32_t kMaxWidth = 576;
constexpr std::uint32_t kMaxHeight = 192;

using Pixels = std::vector<std::uint8_t>;

// A gradient with noise of a linear congruential generator. The same few rows again and again:
// drawing has to take few instructions.
Pixels photo(std::uint32_t width) {
  constexpr std::uint32_t kDrawnRows = 16;
  Pixels pixels(std::size_t{width} * kMaxHeight);
  std::uint32_t noise = 1;
  for (std::uint32_t i = 0; i < width * kDrawnRows; ++i) {
    noise = noise * 1664525 + 1013904223;
    pixels[i] = static_cast<std::uint8_t>((i >> 4) + (noise >> 28));
  }
  for (std::uint32_t y = kDrawnRows; y < kMaxHeight; y += kDrawnRows) {
    std::copy_n(pixels.begin(), width * kDrawnRows, pixels.begin() + width * y);
  }
  return pixels;
}

const std::uint8_t* rowOf(const GreyPage& page, std::size_t y) {
  return page.levels + y * page.strideBytes;
}

// A page of bands, as a job makes it, or of bytes where a method cannot.
bool makeDots(const DotOptions& options, const GreyPage& page, std::uint8_t* out) {
  if (!canMakeDotRows(options, page)) return makePageDots(options, page, out, {});
  DotBands bands;
  if (!bands.resize(page.width, page.height)) return false;
  wren::printer::BandPacker packer(out, wren::printer::kDotRingRows, 0, bands);
  makeDotRows(options, page, page.height, {out, packer.finishedRows()}, {});
  return true;
}

DotOptions classic(std::int64_t method) {
  DotOptions options;
  options.method = method;
  return options;
}

bool stencil(const GreyPage& page, std::uint8_t* out) {
  DotOptions options;
  options.stencil = true;
  return makeDots(options, page, out);
}

bool mirroredThreshold(const GreyPage& page, std::uint8_t* out) {
  DotOptions options;
  options.mirror = true;
  return makeDots(options, page, out);
}

bool tonedThreshold(const GreyPage& page, std::uint8_t* out) {
  DotOptions options;
  options.brightness = 20;
  return makeDots(options, page, out);
}

bool packColumns(const GreyPage& page, std::uint8_t* out) {
  for (std::uint32_t y = 0; y + kRowsPerBand <= page.height; y += kRowsPerBand) {
    wren::printer::BandRows rows = {};
    for (std::size_t i = 0; i < kRowsPerBand; ++i) rows[i] = rowOf(page, y + i);
    wren::printer::packColumns(rows, kRowsPerBand, out, page.width);
  }
  return true;
}

bool unpackColumns(const GreyPage& page, std::uint8_t* out) {
  std::array<std::uint8_t*, kRowsPerBand> bits;
  for (std::size_t i = 0; i < kRowsPerBand; ++i) bits[i] = out + i * page.width;
  for (std::uint32_t y = 0; y + kRowsPerBand <= page.height; y += kRowsPerBand) {
    wren::printer::unpackColumns(rowOf(page, y), page.width, kRowsPerBand, bits);
  }
  return true;
}

bool packWhiteBits(const GreyPage& page, std::uint8_t* out) {
  for (std::uint32_t y = 0; y < page.height; ++y) {
    wren::printer::packWhiteBits(rowOf(page, y), page.width, out);
  }
  return true;
}

struct Step {
  const char* name;
  bool (*run)(const GreyPage& page, std::uint8_t* out);
};

constexpr Step kSteps[] = {
    {"stencil", stencil},
    {"threshold-mirrored", mirroredThreshold},
    {"threshold-toned", tonedThreshold},
    {"packColumns", packColumns},
    {"unpackColumns", unpackColumns},
    {"packWhiteBits", packWhiteBits},
};

// A row of kMethods that a job can reach; nothing for any other name.
std::optional<std::int64_t> methodNamed(std::string_view name) {
  for (std::size_t i = 0; i < wren::dither::kMethods.size() - 1; ++i) {
    if (wren::dither::kMethods[i].name == name) return static_cast<std::int64_t>(i);
  }
  return std::nullopt;
}

int list(std::string_view what) {
  if (what == "levels") {
    for (const auto level : wren::machineVectorLevels()) {
      std::printf("%s\n", vectorLevelName(level).data());
    }
    return 0;
  }
  if (what != "steps") return kStatusUsage;
  for (std::size_t i = 0; i < wren::dither::kMethods.size() - 1; ++i) {
    std::printf("%s\n", wren::dither::kMethods[i].name.data());
  }
  for (const Step& step : kSteps) std::printf("%s\n", step.name);
  return 0;
}

bool run(std::string_view name, const GreyPage& page, std::uint8_t* out) {
  if (const auto method = methodNamed(name)) return makeDots(classic(*method), page, out);
  for (const Step& step : kSteps) {
    if (step.name == name) return step.run(page, out);
  }
  return false;
}

std::uint32_t number(const char* text) {
  return static_cast<std::uint32_t>(std::strtoul(text, nullptr, 10));
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 2) return list(argv[1]);
  if (argc != 5) return kStatusUsage;
  const auto level = wren::machineLevelNamed(argv[1]);
  const std::uint32_t width = number(argv[3]);
  const std::uint32_t height = number(argv[4]);
  if (!level || width == 0 || width > kMaxWidth || height > kMaxHeight) return kStatusUsage;
  wren::useVectorLevel(*level);
  const Pixels pixels = photo(width);
  Pixels out(pixels.size());
  return run(argv[2], {pixels.data(), width, width, height}, out.data()) ? 0 : kStatusFailed;
}
