// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The nine previews of the web page: a receipt of 80 x 200 mm from grey levels to PNG files.
// At most 150 ms, so that its controls feel live.

#include <benchmark/benchmark.h>

#include <algorithm>

#include "app/web/halftone_previews.h"
#include "bench/sample_pages.h"

namespace {

using namespace wren::app;

constexpr unsigned kWidthPx = 576;
constexpr unsigned kHeightPx = 1598;

web::GreyPages pageOf(void (*draw)(wren::bench::Page&)) {
  wren::bench::Page page(kWidthPx, kHeightPx);
  draw(page);
  web::GreyPages pages{kWidthPx, {kHeightPx}, page.pixels};
  for (std::uint8_t& level : pages.levels) level = static_cast<std::uint8_t>(255 - level);
  return pages;
}

void drawNine(benchmark::State& state, void (*draw)(wren::bench::Page&)) {
  const web::GreyPages pages = pageOf(draw);
  for (auto _ : state) {
    auto previews = web::drawPreviews(pages, JobSettings(), PageTarget());
    benchmark::DoNotOptimize(previews);
  }
}

BENCHMARK_CAPTURE(drawNine, receipt,
                  [](wren::bench::Page& page) {
                    wren::bench::Noise noise(1);
                    wren::bench::drawReceipt(page, 0, page.height, noise);
                  })
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK_CAPTURE(drawNine, photo,
                  [](wren::bench::Page& page) {
                    wren::bench::Noise noise(1);
                    wren::bench::drawPhoto(page, noise);
                  })
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
