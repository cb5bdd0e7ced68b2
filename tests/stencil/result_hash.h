// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// One hash over everything that the stencil halftone computes: math functions, kernels,
// thresholds and pages of many kinds. Builds with the same hash have the same bits.

#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

namespace wren::stencil {

// FNV-1a with 64 bits (Fowler, Noll, Vo).
class ResultHash {
 public:
  void add(const void* bytes, std::size_t count) {
    const auto* p = static_cast<const std::uint8_t*>(bytes);
    for (std::size_t i = 0; i < count; ++i) value_ = (value_ ^ p[i]) * 0x100000001B3U;
  }
  template <typename T>
  void add(T value) {
    add(&value, sizeof value);
  }
  std::uint64_t value() const { return value_; }

 private:
  std::uint64_t value_ = 0xCBF29CE484222325U;
};

// `Stencil` has the functions of one implementation as static members.
template <typename Stencil>
class StencilHasher {
 public:
  std::uint64_t run() {
    addFunctions();
    addKernels();
    addThresholds();
    addColours();
    for (int kind = 0; kind < kKinds; ++kind) {
      for (const auto [width, height] : kSizes) addPage(kind, width, height);
    }
    return hash_.value();
  }

 private:
  struct Size {
    int width;
    int height;
  };
  static constexpr int kKinds = 4;
  static constexpr Size kSizes[] = {{1, 1}, {1, 37}, {41, 1}, {5, 3}, {67, 40}, {200, 131}};

  void addFunctions() {
    for (int i = 0; i < 20'000; ++i) {
      const float v =
          std::bit_cast<float>(static_cast<std::uint32_t>(random_()) % 0x7F000000U + 2U);
      hash_.add(Stencil::my_sqrt(v));
      hash_.add(Stencil::my_exp(v));
      hash_.add(Stencil::my_exp(-v));
    }
    for (int i = 1; i < 20'000; ++i) {
      const float v = static_cast<float>(i) * 0.0173F;
      hash_.add(Stencil::my_ln(v));
      hash_.add(Stencil::my_pow(v, 0.85F));
      hash_.add(Stencil::my_round(v - 100.0F));
    }
  }

  void addKernels() {
    double kernel[121];
    for (int size = 1; size <= 11; size += 2) {
      Stencil::generateGaussianKernel1D(size, 0.7 * size, kernel);
      hash_.add(kernel, sizeof(double) * static_cast<std::size_t>(size));
      Stencil::generateGaussianKernel(size, 3.0, 1.5, kernel);
      hash_.add(kernel, sizeof(double) * static_cast<std::size_t>(size * size));
    }
  }

  // On pages of two levels the last bit of every step decides.
  void addThresholds() {
    for (int i = 0; i < 5'000; ++i) {
      std::array<std::int32_t, 256> histogram{};
      histogram[random_() % 256] += 1 + static_cast<std::int32_t>(random_() % 1'000'000);
      histogram[random_() % 256] += 1 + static_cast<std::int32_t>(random_() % 20);
      hash_.add(Stencil::momentThreshold(histogram));
    }
  }

  void addColours() {
    std::vector<std::uint8_t> bytes(4 * 100 * 100);
    for (auto& byte : bytes) byte = static_cast<std::uint8_t>(random_());
    for (int layout = 0; layout <= 4; ++layout) {
      addImage(Stencil::cvtGray(Stencil::image(100, 100, layout, bytes.data())));
    }
  }

  // Noise, a gradient with noise, sparse dots on white, and two levels.
  std::uint8_t levelOf(int kind, int x, int y) {
    const auto noise = static_cast<unsigned>(random_());
    if (kind == 0) return static_cast<std::uint8_t>(noise);
    if (kind == 1) return static_cast<std::uint8_t>((3 * x + 2 * y) / 4 + noise % 9);
    if (kind == 2) return noise % 50 == 0 ? 255 : 0;
    return noise % 3 == 0 ? 200 : 90;
  }

  void addPage(int kind, int width, int height) {
    std::vector<std::uint8_t> levels;
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) levels.push_back(levelOf(kind, x, y));
    }
    typename Stencil::Image page = Stencil::image(width, height, 0, levels.data());
    const int threshold = Stencil::thresh_global_moments(page);
    hash_.add(threshold);
    addImage(Stencil::enh_gaussian_filter_fast(page, 11, 3.0));
    addImage(Stencil::enh_gaussian_filter(page, 5, 2.0, 1.0));
    addImage(Stencil::enh_unsharp_mask(page, 300.0F, 11));
    addImage(Stencil::edf_cus(page, threshold));
    addImage(Stencil::edf_cus(page, 128));
    addImage(Stencil::qvTattooDithering(page));
  }

  void addImage(const typename Stencil::Image& image) {
    hash_.add(image.data,
              static_cast<std::size_t>(image.width) * static_cast<std::size_t>(image.height));
  }

  ResultHash hash_;
  std::mt19937 random_{1234567U};
};

}  // namespace wren::stencil
