// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The stages and kernels of the stencil method next to the reference implementation, on a receipt
// and on a photo. Both run in the same loop, so the ratio of two lines is the speed-up; items are
// pixels.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "bench/sample_pages.h"
#include "stencil/blur_kernel.h"
#include "stencil/diffusion_plain.h"
#include "stencil/diffusion_wavefront.h"
#include "stencil/error_diffusion.h"
#include "stencil/gaussian.h"
#include "stencil/level_counter.h"
#include "stencil/sharp_rows.h"
#include "stencil/stencil_page.h"
#include "stencil/tattoo_dithering.h"
#include "stencil/tone.h"
#include "stencil/unsharp.h"
#include "tests/reference/stencil.h"

namespace {

using benchmark::State;
using wren::bench::Page;

constexpr int kWidth = 832;
constexpr int kHeight = 1200;
constexpr int kThreshold = 128;

Page drawn(void (*draw)(Page&, wren::bench::Noise&)) {
  Page page(kWidth, kHeight);
  wren::bench::Noise noise(1);
  draw(page, noise);
  return page;
}

const Page& receipt() {
  static const Page page = drawn([](Page& target, wren::bench::Noise& noise) {
    wren::bench::drawReceipt(target, 0, kHeight, noise);
  });
  return page;
}

const Page& photo() {
  static const Page page = drawn(wren::bench::drawPhoto);
  return page;
}

void countPixels(State& state) {
  state.SetItemsProcessed(state.iterations() * kWidth * kHeight);
}

QVImage image(const Page& page) {
  return {kWidth, kHeight, QV_IMG_GRAY, page.pixels.data()};
}

reference::QVImage referenceImage(const Page& page) {
  return {kWidth, kHeight, reference::QV_IMG_GRAY, page.pixels.data()};
}

// Times `stage(source)`; its result is discarded.
template <typename Image, typename Stage>
void measure(State& state, Image source, Stage stage) {
  for (auto _ : state) {
    benchmark::DoNotOptimize(stage(source));
    benchmark::ClobberMemory();
  }
  countPixels(state);
}

template <typename ProductStage, typename ReferenceStage>
void registerStage(const std::string& name, ProductStage product, ReferenceStage slow) {
  const auto add = [&](const std::string& suffix, const Page& page) {
    const std::string full = name + "/" + suffix;
    benchmark::RegisterBenchmark(
        full.c_str(), [=, &page](State& state) { measure(state, image(page), product); });
    benchmark::RegisterBenchmark((full + "/reference").c_str(), [=, &page](State& state) {
      measure(state, referenceImage(page), slow);
    });
  };
  add("receipt", receipt());
  add("photo", photo());
}

std::array<double, stencil::kBlurTaps> stencilKernel() {
  std::array<double, stencil::kBlurTaps> kernel{};
  generateGaussianKernel1D(stencil::kBlurTaps, kUnsharpSigma, kernel.data());
  return kernel;
}

void registerStages() {
  static const auto kernel = stencilKernel();
  registerStage("cvtGray", cvtGray, reference::cvtGray);
  registerStage("thresh_global_moments", thresh_global_moments, reference::thresh_global_moments);
  registerStage(
      "enh_piecewise_gamma",
      [](QVImage& page) {
        enh_piecewise_gamma(page, kStencilKnee, kStencilGammaLow, kStencilGammaHigh);
        return page.data;
      },
      [](reference::QVImage& page) {
        reference::enh_piecewise_gamma(page, kStencilKnee, kStencilGammaLow, kStencilGammaHigh);
        return page.data;
      });
  for (const bool horizontal : {true, false}) {
    registerStage(
        horizontal ? "convolve1D/rows" : "convolve1D/columns",
        [=](const QVImage& page) { return convolve1D(page, kernel.data(), 11, horizontal); },
        [=](const reference::QVImage& page) {
          return reference::convolve1D(page, kernel.data(), 11, horizontal);
        });
  }
  registerStage(
      "enh_unsharp_mask", [](const QVImage& page) { return enh_unsharp_mask(page, 300.0F, 11); },
      [](const reference::QVImage& page) { return reference::enh_unsharp_mask(page, 300.0F, 11); });
  registerStage(
      "edf_cus", [](const QVImage& page) { return edf_cus(page, kThreshold); },
      [](const reference::QVImage& page) { return reference::edf_cus(page, kThreshold); });
  registerStage("qvTattooDithering", qvTattooDithering, reference::qvTattooDithering);
}

// Always the same row: it stays in the L1 cache.
void blurRow(State& state, decltype(&stencil::blur_taps) blur) {
  const stencil::BlurWeights weights = stencil::blur_weights(stencilKernel().data());
  std::vector<float> row(kWidth + stencil::kBlurTaps);
  for (std::size_t x = 0; x < row.size(); ++x) row[x] = photo().pixels[x];
  std::vector<float> out(kWidth);
  std::array<const float*, stencil::kBlurTaps> taps{};
  for (std::size_t k = 0; k < taps.size(); ++k) taps[k] = row.data() + k;
  for (auto _ : state) {
    blur(taps.data(), weights, out.data(), 0, kWidth);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * kWidth);
}

template <typename Diffuser>
void diffuse(State& state, const Page& page) {
  std::vector<std::uint8_t> out(page.pixels.size());
  for (auto _ : state) {
    Diffuser diffuser(kWidth, kHeight, kThreshold);
    for (int y = 0; y < kHeight; y += Diffuser::kBlockRows) {
      const int rows = std::min(Diffuser::kBlockRows, kHeight - y);
      for (int r = 0; r < rows; ++r) {
        std::copy_n(page.pixels.data() + (y + r) * kWidth, kWidth, diffuser.row(r));
      }
      diffuser.run(out.data() + y * kWidth, kWidth, rows);
    }
    benchmark::ClobberMemory();
  }
  countPixels(state);
}

void countLevels(State& state, const Page& page) {
  for (auto _ : state) {
    stencil::LevelCounter counter;
    for (int y = 0; y < kHeight; ++y) counter.add_row(page.pixels.data() + y * kWidth, kWidth);
    benchmark::DoNotOptimize(counter.counts());
  }
  countPixels(state);
}

void sharpenRows(State& state, const Page& page) {
  std::vector<std::uint8_t> row(kWidth + 16);
  for (auto _ : state) {
    stencil::SharpRows rows(page.pixels.data(), kWidth, kWidth, kHeight, stencil_tone_table());
    for (int y = 0; y < kHeight; ++y) {
      rows.next(row.data());
      benchmark::ClobberMemory();
    }
  }
  countPixels(state);
}

void wholePage(State& state, const Page& page) {
  std::vector<std::uint8_t> out(page.pixels.size());
  for (auto _ : state) {
    stencil_page(page.pixels.data(), kWidth, kWidth, kHeight, out.data(), kWidth);
    benchmark::ClobberMemory();
  }
  countPixels(state);
}

void registerOnPages(const char* name, void (*run)(State&, const Page&)) {
  const std::string prefix = name;
  benchmark::RegisterBenchmark((prefix + "/receipt").c_str(),
                               [run](State& state) { run(state, receipt()); });
  benchmark::RegisterBenchmark((prefix + "/photo").c_str(),
                               [run](State& state) { run(state, photo()); });
}

void registerKernels() {
  using benchmark::RegisterBenchmark;
  RegisterBenchmark("blur_taps", [](State& state) { blurRow(state, stencil::blur_taps); });
  RegisterBenchmark("blur_taps/scalar",
                    [](State& state) { blurRow(state, stencil::blur_taps_plain); });
  registerOnPages("diffusion/wavefront", diffuse<stencil::WavefrontDiffuser>);
  registerOnPages("diffusion/scalar", diffuse<stencil::PlainDiffuser>);
  registerOnPages("LevelCounter", countLevels);
  registerOnPages("SharpRows", sharpenRows);
  registerOnPages("stencil_page", wholePage);
}

}  // namespace

int main(int argc, char** argv) {
  registerKernels();
  registerStages();
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
