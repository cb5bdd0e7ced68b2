// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The bitmap and the dither kernels beside the reference implementation, on one page of a
// receipt printer. "pixels" is the rate per second.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include "bitmap/cximage.h"
#include "dither/dither_page.h"
#include "dither/error_diffusion_scalar.h"
#include "dither/level_rows.h"
#include "dither/methods.h"
#include "tests/reference/cximage.h"

namespace {

using wren::dither::ditherPage;
using wren::dither::Page;

constexpr std::uint32_t kWidth = 576;
constexpr std::uint32_t kHeight = 1200;

using Pixels = std::vector<std::uint8_t>;

// Slow waves with noise: every level occurs, and all rows differ.
const Pixels& photo() {
  static const Pixels pixels = [] {
    std::mt19937 random(1);
    Pixels page;
    for (std::uint32_t y = 0; y < kHeight; ++y) {
      for (std::uint32_t x = 0; x < kWidth; ++x) {
        const double wave = std::sin(x * 0.013) + std::cos(y * 0.017 + x * 0.003);
        page.push_back(
            static_cast<std::uint8_t>(127 + 55 * wave + static_cast<int>(random() % 17)));
      }
    }
    return page;
  }();
  return pixels;
}

void countPixels(benchmark::State& state) {
  state.counters["pixels"] =
      benchmark::Counter(double{kWidth} * kHeight, benchmark::Counter::kIsIterationInvariantRate);
}

template <class Image>
void load(Image& image) {
  image.CreateFromArray(photo().data(), kWidth, kHeight, 8, kWidth, false);
}

template <class Image>
void create(benchmark::State& state) {
  for (auto _ : state) {
    Image image;
    load(image);
    benchmark::DoNotOptimize(image.GetBits(0));
  }
  countPixels(state);
}

template <class Image>
void rotate180(benchmark::State& state) {
  Image image;
  load(image);
  for (auto _ : state) image.Rotate180(nullptr);
  countPixels(state);
}

template <class Image>
void mirror(benchmark::State& state) {
  Image image;
  load(image);
  for (auto _ : state) image.Mirror();
  countPixels(state);
}

template <class Image>
void negative(benchmark::State& state) {
  Image image;
  load(image);
  for (auto _ : state) image.Negative();
  countPixels(state);
}

template <class Image>
void light(benchmark::State& state) {
  Image image;
  load(image);
  for (auto _ : state) image.Light(0, 0);
  countPixels(state);
}

template <class Image>
void increaseBpp(benchmark::State& state) {
  for (auto _ : state) {
    state.PauseTiming();
    Image image;
    image.Create(kWidth, kHeight, 1, 0);
    state.ResumeTiming();
    image.IncreaseBpp(8);
  }
  countPixels(state);
}

// Page in, bitmap of dots out. Both implementations copy the page first.
template <class Image>
void dither(benchmark::State& state) {
  for (auto _ : state) {
    Image image;
    load(image);
    image.Dither(state.range(0));
    benchmark::DoNotOptimize(image.GetBits(0));
  }
  countPixels(state);
}

Page pageInto(Pixels& dots) {
  Page page;
  page.levels = photo().data();
  page.levelStrideBytes = kWidth;
  page.dots = dots.data();
  page.dotStrideBytes = kWidth;
  page.width = kWidth;
  page.height = kHeight;
  return page;
}

// The kernel that a job runs.
void kernel(benchmark::State& state) {
  Pixels dots(photo().size());
  for (auto _ : state) {
    ditherPage(state.range(0), pageInto(dots));
    benchmark::DoNotOptimize(dots.data());
  }
  countPixels(state);
}

// A roll that does not fit in cache.
void kernelRoll(benchmark::State& state) {
  constexpr std::size_t kRollHeight = 40000;
  Pixels levels;
  while (levels.size() < kWidth * kRollHeight) {
    levels.insert(levels.end(), photo().begin(), photo().end());
  }
  Pixels dots(levels.size());
  Page page = pageInto(dots);
  page.levels = levels.data();
  page.height = kRollHeight;
  for (auto _ : state) {
    ditherPage(state.range(0), page);
    benchmark::DoNotOptimize(dots.data());
  }
  state.counters["pixels"] = benchmark::Counter(double{kWidth} * kRollHeight,
                                                benchmark::Counter::kIsIterationInvariantRate);
}

// With brightness, with contrast, and mirrored with contrast.
void kernelToned(benchmark::State& state) {
  Pixels dots(photo().size());
  Pixels tone(256);
  for (std::size_t i = 0; i < 256; ++i) {
    tone[i] = static_cast<std::uint8_t>(state.range(1) == 0 ? std::min<std::size_t>(i + 50, 255)
                                                            : (i * i) / 255);
  }
  Page page = pageInto(dots);
  page.tone = tone.data();
  page.mirrored = state.range(1) == 2;
  for (auto _ : state) {
    ditherPage(state.range(0), page);
    benchmark::DoNotOptimize(dots.data());
  }
  countPixels(state);
}

// The scalar kernel of the error diffusion methods.
void scalar(benchmark::State& state) {
  const auto* diffusion =
      wren::dither::kMethods[static_cast<std::size_t>(state.range(0))].diffusion;
  Pixels dots(photo().size());
  const wren::dither::LevelRows rows(pageInto(dots));
  for (auto _ : state) {
    wren::dither::diffuseScalar(*diffusion, rows);
    benchmark::DoNotOptimize(dots.data());
  }
  countPixels(state);
}

BENCHMARK_TEMPLATE(create, reference::CxImage)->Name("create/reference");
BENCHMARK_TEMPLATE(create, CxImage)->Name("create");
BENCHMARK_TEMPLATE(rotate180, reference::CxImage)->Name("rotate180/reference");
BENCHMARK_TEMPLATE(rotate180, CxImage)->Name("rotate180");
BENCHMARK_TEMPLATE(mirror, reference::CxImage)->Name("mirror/reference");
BENCHMARK_TEMPLATE(mirror, CxImage)->Name("mirror");
BENCHMARK_TEMPLATE(negative, reference::CxImage)->Name("negative/reference");
BENCHMARK_TEMPLATE(negative, CxImage)->Name("negative");
BENCHMARK_TEMPLATE(light, reference::CxImage)->Name("light/reference");
BENCHMARK_TEMPLATE(light, CxImage)->Name("light");
BENCHMARK_TEMPLATE(increaseBpp, reference::CxImage)->Name("increaseBpp/reference");
BENCHMARK_TEMPLATE(increaseBpp, CxImage)->Name("increaseBpp");
BENCHMARK_TEMPLATE(dither, reference::CxImage)->Name("dither/reference")->DenseRange(0, 8);
BENCHMARK_TEMPLATE(dither, CxImage)->Name("dither")->DenseRange(0, 8);
BENCHMARK(kernel)->DenseRange(0, 8);
BENCHMARK(kernelRoll)->Arg(0)->Arg(4)->Arg(6);
BENCHMARK(kernelToned)->ArgsProduct({{0, 4}, {0, 1, 2}});
BENCHMARK(scalar)->DenseRange(2, 6)->Arg(8);

}  // namespace

BENCHMARK_MAIN();
