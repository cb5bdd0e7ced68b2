// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The kernels of a page alone, each next to its reference implementation or scalar kernel. One
// iteration handles one page; items are pixels.

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "bench/sample_pages.h"
#include "dither/dither_page.h"
#include "printer/blank_lines.h"
#include "printer/dot_kernels.h"
#include "stencil/tattoo_dithering.h"
#include "tests/reference/cximage.h"
#include "tests/reference/page.h"
#include "tests/reference/stencil.h"

namespace {

using wren::bench::Page;

constexpr int kWidth = 576;
constexpr int kHeight = 1200;

const Page& receipt() {
  static const Page page = [] {
    Page drawn(kWidth, kHeight);
    wren::bench::Noise noise(1);
    wren::bench::drawReceipt(drawn, 0, kHeight, noise);
    return drawn;
  }();
  return page;
}

const Page& photo() {
  static const Page page = [] {
    Page drawn(kWidth, kHeight);
    wren::bench::Noise noise(3);
    wren::bench::drawPhoto(drawn, noise);
    return drawn;
  }();
  return page;
}

// A bilevel page.
const Page& dots() {
  static const Page page = [] {
    Page drawn = photo();
    for (std::uint8_t& pixel : drawn.pixels) pixel = pixel > 128 ? 255 : 0;
    return drawn;
  }();
  return page;
}

void countPixels(benchmark::State& state) {
  state.SetItemsProcessed(state.iterations() * kWidth * kHeight);
}

const char* const kMethods[] = {"threshold", "ordered", "Burkes",         "Stucki",
                                "Jarvis",    "Sierra",  "Stevenson-Arce", "Bayer"};

void dither(benchmark::State& state, int method, const Page& page) {
  std::vector<std::uint8_t> out(page.pixels.size());
  wren::dither::Page job;
  job.levels = page.pixels.data();
  job.dots = out.data();
  job.levelStrideBytes = job.dotStrideBytes = kWidth;
  job.width = kWidth;
  job.height = kHeight;
  for (auto _ : state) {
    if (!wren::dither::ditherPage(method, job)) state.SkipWithError("no memory");
    benchmark::ClobberMemory();
  }
  countPixels(state);
}

void ditherReference(benchmark::State& state, int method, const Page& page) {
  for (auto _ : state) {
    reference::CxImage image;
    image.CreateFromArray(page.pixels.data(), kWidth, kHeight, 8, kWidth, false);
    image.Dither(method);
    benchmark::ClobberMemory();
  }
  countPixels(state);
}

void stencil(benchmark::State& state, const Page& page) {
  for (auto _ : state) {
    QVImage source(kWidth, kHeight, QV_IMG_GRAY, page.pixels.data());
    const QVImage result = qvTattooDithering(source);
    benchmark::DoNotOptimize(result.data);
  }
  countPixels(state);
}

void stencilReference(benchmark::State& state, const Page& page) {
  for (auto _ : state) {
    reference::QVImage source(kWidth, kHeight, reference::QV_IMG_GRAY, page.pixels.data());
    const reference::QVImage result = reference::qvTattooDithering(source);
    benchmark::DoNotOptimize(result.data);
  }
  countPixels(state);
}

void columns(benchmark::State& state) {
  std::vector<std::uint8_t> band(kWidth);
  for (auto _ : state) {
    for (int y = 0; y < kHeight; y += 8) {
      wren::printer::BandRows rows = {};
      for (int row = 0; row < 8; ++row) rows[row] = dots().pixels.data() + (y + row) * kWidth;
      wren::printer::packColumns(rows, 8, band.data(), kWidth);
      benchmark::ClobberMemory();
    }
  }
  countPixels(state);
}

void columnsReference(benchmark::State& state) {
  const reference::PageOptions options;
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        reference::doPrintImage(options, dots().pixels.data(), kHeight, kWidth));
  }
  countPixels(state);
}

void whiteBits(benchmark::State& state) {
  std::vector<std::uint8_t> row(kWidth / 8);
  for (auto _ : state) {
    for (int y = 0; y < kHeight; ++y) {
      wren::printer::packWhiteBits(dots().pixels.data() + y * kWidth, kWidth, row.data());
      benchmark::ClobberMemory();
    }
  }
  countPixels(state);
}

// With the header of the image.
void whiteBitsReference(benchmark::State& state) {
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        reference::saveImage(dots().pixels.data(), kWidth, kHeight, kWidth, 1));
  }
  countPixels(state);
}

// A blank page: the counter has to read all of it.
template <typename Counter>
void blankLines(benchmark::State& state, Counter count) {
  const Page blank(kWidth, kHeight);
  for (auto _ : state) {
    benchmark::DoNotOptimize(count(blank.pixels.data(), kWidth, kHeight, 0, kWidth));
  }
  countPixels(state);
}

void registerDithers() {
  for (int method = 0; method < 8; ++method) {
    const std::string name = kMethods[method];
    benchmark::RegisterBenchmark((name + "/photo").c_str(),
                                 [=](benchmark::State& state) { dither(state, method, photo()); });
    benchmark::RegisterBenchmark((name + "/receipt").c_str(), [=](benchmark::State& state) {
      dither(state, method, receipt());
    });
    benchmark::RegisterBenchmark((name + "/photo/reference").c_str(), [=](benchmark::State& state) {
      ditherReference(state, method, photo());
    });
  }
}

void registerOthers() {
  using benchmark::RegisterBenchmark;
  using benchmark::State;
  RegisterBenchmark("stencil/photo", [](State& state) { stencil(state, photo()); });
  RegisterBenchmark("stencil/receipt", [](State& state) { stencil(state, receipt()); });
  RegisterBenchmark("stencil/photo/reference",
                    [](State& state) { stencilReference(state, photo()); });
  RegisterBenchmark("columns", columns);
  RegisterBenchmark("columns/reference", columnsReference);
  RegisterBenchmark("white-bits", whiteBits);
  RegisterBenchmark("white-bits/reference", whiteBitsReference);
  RegisterBenchmark("blank-lines",
                    [](State& state) { blankLines(state, wrenImageCountBlankLinesFromBack); });
  RegisterBenchmark("blank-lines/reference", [](State& state) {
    blankLines(state, reference::wrenImageCountBlankLinesFromBack);
  });
}

}  // namespace

int main(int argc, char** argv) {
  registerDithers();
  registerOthers();
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
