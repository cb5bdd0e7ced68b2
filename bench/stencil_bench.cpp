// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The kernels of the stencil halftone, and its stages beside the reference
// implementation, on a receipt and on a photo. "items" are pixels.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "bench/sample_pages.h"
#include "stencil/blur_kernel.h"
#include "stencil/diffusion_wavefront.h"
#include "stencil/error_diffusion.h"
#include "stencil/gaussian.h"
#include "stencil/gaussian_kernel.h"
#include "stencil/histogram.h"
#include "stencil/recipe.h"
#include "stencil/sharp_rows.h"
#include "stencil/stencil_page.h"
#include "stencil/tattoo_dithering.h"
#include "stencil/tone.h"
#include "stencil/tone_curve.h"
#include "stencil/unsharp.h"
#include "tests/reference/stencil.h"

namespace {

using benchmark::State;
using namespace wren::stencil;
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
void registerStage(const std::string& name, ProductStage product, ReferenceStage referenceStage) {
  const auto add = [&](const std::string& suffix, const Page& page) {
    const std::string full = name + "/" + suffix;
    benchmark::RegisterBenchmark(
        full.c_str(), [=, &page](State& state) { measure(state, image(page), product); });
    benchmark::RegisterBenchmark((full + "/reference").c_str(), [=, &page](State& state) {
      measure(state, referenceImage(page), referenceStage);
    });
  };
  add("receipt", receipt());
  add("photo", photo());
}

std::array<double, kUnsharpSize> stencilKernel() {
  std::array<double, kUnsharpSize> kernel{};
  generateGaussianKernel1D(kUnsharpSize, kUnsharpSigma, kernel.data());
  return kernel;
}

void registerStages() {
  static const auto kernel = stencilKernel();
  registerStage("cvtGray", cvtGray, reference::cvtGray);
  registerStage("thresh_global_moments", thresh_global_moments, reference::thresh_global_moments);
  registerStage(
      "enh_piecewise_gamma",
      [](QVImage& page) {
        enh_piecewise_gamma(page, kKnee, kGammaBelowKnee, kGammaAboveKnee);
        return page.data;
      },
      [](reference::QVImage& page) {
        reference::enh_piecewise_gamma(page, kKnee, kGammaBelowKnee, kGammaAboveKnee);
        return page.data;
      });
  for (const bool horizontal : {true, false}) {
    registerStage(
        horizontal ? "convolve1D/rows" : "convolve1D/columns",
        [=](const QVImage& page) {
          return convolve1D(page, kernel.data(), kUnsharpSize, horizontal);
        },
        [=](const reference::QVImage& page) {
          return reference::convolve1D(page, kernel.data(), kUnsharpSize, horizontal);
        });
  }
  registerStage(
      "enh_unsharp_mask",
      [](const QVImage& page) {
        return enh_unsharp_mask(page, kUnsharpAmountPercent, kUnsharpSize);
      },
      [](const reference::QVImage& page) {
        return reference::enh_unsharp_mask(page, kUnsharpAmountPercent, kUnsharpSize);
      });
  registerStage(
      "edf_cus", [](const QVImage& page) { return edf_cus(page, kThreshold); },
      [](const reference::QVImage& page) { return reference::edf_cus(page, kThreshold); });
  registerStage("qvTattooDithering", qvTattooDithering, reference::qvTattooDithering);
}

// The same row every time, so it stays in the first-level cache.
void blurRow(State& state) {
  const BlurWeights weights = blurWeights(stencilKernel().data());
  std::vector<std::int16_t> row(kWidth + kUnsharpSize);
  for (std::size_t x = 0; x < row.size(); ++x)
    row[x] = static_cast<std::int16_t>(photo().pixels[x] << kLevelFractionBits);
  std::vector<std::int16_t> out(kWidth);
  std::array<const std::int16_t*, kUnsharpSize> taps{};
  for (std::size_t k = 0; k < taps.size(); ++k) taps[k] = row.data() + k;
  for (auto _ : state) {
    blur(taps.data(), weights, out.data(), 0, kWidth);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * kWidth);
}

void diffuse(State& state, const Page& page) {
  std::vector<std::uint8_t> out(page.pixels.size());
  for (auto _ : state) {
    WavefrontDiffuser diffuser(kWidth, kHeight, kThreshold, {out.data(), kWidth});
    for (int y = 0; y < kHeight; y += WavefrontDiffuser::kBlockRows) {
      const int rows = std::min(WavefrontDiffuser::kBlockRows, kHeight - y);
      for (int r = 0; r < rows; ++r) {
        std::copy_n(page.pixels.data() + (y + r) * kWidth, kWidth, diffuser.row(r));
      }
      diffuser.run();
    }
    benchmark::ClobberMemory();
  }
  countPixels(state);
}

void buildHistogram(State& state, const Page& page) {
  for (auto _ : state) {
    HistogramBuilder builder;
    for (int y = 0; y < kHeight; ++y) builder.add(page.pixels.data() + y * kWidth, kWidth);
    benchmark::DoNotOptimize(builder.histogram());
  }
  countPixels(state);
}

void sharpenRows(State& state, const Page& page) {
  std::vector<std::uint8_t> row(kWidth + 16);
  for (auto _ : state) {
    SharpRows rows(page.pixels.data(), kWidth, kWidth, kHeight, stencilToneCurve());
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
    stencilPage(page.pixels.data(), kWidth, kWidth, kHeight, {out.data(), kWidth});
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
  benchmark::RegisterBenchmark("blur", blurRow);
  registerOnPages("WavefrontDiffuser", diffuse);
  registerOnPages("HistogramBuilder", buildHistogram);
  registerOnPages("SharpRows", sharpenRows);
  registerOnPages("stencilPage", wholePage);
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
