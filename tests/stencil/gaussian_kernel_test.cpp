// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "stencil/gaussian_kernel.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

#include "stencil/recipe.h"
#include "tests/reference/stencil.h"

namespace wren::stencil {
namespace {

constexpr double kUntouched = 7.0;
using Kernel = std::array<double, 15 * 15 + 1>;

Kernel untouchedKernel() {
  Kernel kernel{};
  kernel.fill(kUntouched);
  return kernel;
}

std::array<double, kUnsharpSize> stencilKernel() {
  std::array<double, kUnsharpSize> kernel{};
  generateGaussianKernel1D(kUnsharpSize, kUnsharpSigma, kernel.data());
  return kernel;
}

TEST(GaussianKernel1D, HasTheWeightsOfTheUnsharpMask) {
  const auto kernel = stencilKernel();
  constexpr double kExpected[] = {0.035483, 0.058501, 0.086310, 0.113945, 0.134610, 0.142300};
  for (std::size_t i = 0; i < std::size(kExpected); ++i) {
    EXPECT_NEAR(kernel[i], kExpected[i], 0.5e-6) << i;
  }
}

// The blur kernel adds the two inputs with the same weight first.
TEST(GaussianKernel1D, IsSymmetricToTheBit) {
  const auto kernel = stencilKernel();
  for (std::size_t i = 0; i < kernel.size(); ++i) {
    EXPECT_EQ(std::bit_cast<std::uint64_t>(kernel[i]),
              std::bit_cast<std::uint64_t>(kernel[kernel.size() - 1 - i]))
        << i;
  }
}

TEST(GaussianKernel1D, OfSizeOneIsExactlyOne) {
  double kernel = 0.0;
  generateGaussianKernel1D(1, kUnsharpSigma, &kernel);
  EXPECT_EQ(kernel, 1.0);
}

// Sizes without a kernel included; entries beyond the kernel stay untouched.
TEST(GaussianKernels, EqualTheReferenceForEverySize) {
  for (int size = -3; size <= 15; ++size) {
    for (const double sigma : {0.5, 1.0, 3.0, 8.25}) {
      Kernel line = untouchedKernel();
      Kernel square = untouchedKernel();
      Kernel expectedLine = untouchedKernel();
      Kernel expectedSquare = untouchedKernel();
      generateGaussianKernel1D(size, sigma, line.data());
      generateGaussianKernel(size, sigma, 2.0, square.data());
      reference::generateGaussianKernel1D(size, sigma, expectedLine.data());
      reference::generateGaussianKernel(size, sigma, 2.0, expectedSquare.data());
      for (std::size_t i = 0; i < line.size(); ++i) {
        ASSERT_EQ(line[i], expectedLine[i]) << size << ", " << sigma << " at " << i;
        ASSERT_EQ(square[i], expectedSquare[i]) << size << ", " << sigma << " at " << i;
      }
    }
  }
}

TEST(GaussianKernels, LeaveAnEvenOrNonPositiveSizeUntouched) {
  for (const int size : {-3, -2, 0, 2, 4}) {
    Kernel kernel = untouchedKernel();
    generateGaussianKernel1D(size, 3.0, kernel.data());
    generateGaussianKernel(size, 3.0, 3.0, kernel.data());
    EXPECT_EQ(kernel, untouchedKernel()) << "size " << size;
  }
}

}  // namespace
}  // namespace wren::stencil
