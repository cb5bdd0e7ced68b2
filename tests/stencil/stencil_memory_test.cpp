// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A roll of paper is a page of forty thousand rows: the memory of the stencil halftone
// must not grow with the page, and images must free theirs. The program counts its
// allocations in `operator new`, so it is separate from the other tests.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <new>
#include <vector>

#include "stencil/stencil_page.h"
#include "stencil/tattoo_dithering.h"

namespace {

std::size_t held = 0;
std::size_t peak = 0;

// Every block starts with its size.
constexpr std::size_t kHeader = alignof(std::max_align_t);

void* countedNew(std::size_t bytes) {
  void* block = std::malloc(bytes + kHeader);
  if (block == nullptr) throw std::bad_alloc();
  *static_cast<std::size_t*>(block) = bytes;
  held += bytes;
  peak = std::max(peak, held);
  return static_cast<char*>(block) + kHeader;
}

void countedDelete(void* pointer) {
  if (pointer == nullptr) return;
  void* block = static_cast<char*>(pointer) - kHeader;
  held -= *static_cast<std::size_t*>(block);
  std::free(block);
}

// The most memory that `work` held, without what was held before it.
template <typename Work>
std::size_t peakOf(Work work) {
  const std::size_t before = held;
  peak = held;
  work();
  return peak - before;
}

}  // namespace

void* operator new(std::size_t bytes) {
  return countedNew(bytes);
}
void* operator new[](std::size_t bytes) {
  return countedNew(bytes);
}
void operator delete(void* pointer) noexcept {
  countedDelete(pointer);
}
void operator delete[](void* pointer) noexcept {
  countedDelete(pointer);
}
void operator delete(void* pointer, std::size_t) noexcept {
  countedDelete(pointer);
}
void operator delete[](void* pointer, std::size_t) noexcept {
  countedDelete(pointer);
}

namespace wren::stencil {
namespace {

constexpr std::size_t kWidth = 576;
constexpr std::size_t kBytesPerColumn = 64;
constexpr std::size_t kFixed = 32768;

std::size_t peakOfPage(int height) {
  std::vector<std::uint8_t> page(kWidth * static_cast<std::size_t>(height), 100);
  for (std::size_t i = 0; i < page.size(); i += 3) page[i] = static_cast<std::uint8_t>(i);
  return peakOf([&] { stencilPage(page.data(), kWidth, kWidth, height, {page.data(), kWidth}); });
}

TEST(StencilMemory, OfAPageIsSomeRowsOfIt) {
  EXPECT_LE(peakOfPage(40), kBytesPerColumn * kWidth + kFixed);
}

TEST(StencilMemory, DoesNotGrowWithThePage) {
  EXPECT_EQ(peakOfPage(4000), peakOfPage(40));
}

TEST(StencilMemory, OfTheWholeImageIsTheResultAndSomeRows) {
  const std::size_t bytes = kWidth * 2000;
  std::vector<std::uint8_t> levels(bytes, 100);
  levels[0] = 3;
  QVImage page(kWidth, 2000, QV_IMG_GRAY, levels.data());
  const std::size_t most = peakOf([&] { qvTattooDithering(page); });
  EXPECT_GE(most, bytes);
  EXPECT_LE(most, bytes + kBytesPerColumn * kWidth + kFixed);
}

// Bytes that are held after `work` and were not before.
template <typename Work>
std::size_t leftBy(Work work) {
  const std::size_t before = held;
  work();
  return held - before;
}

constexpr std::size_t kPixels = 12;
const std::uint8_t kLevels[kPixels] = {};

TEST(QVImageMemory, IsHeldByTheImageUntilItsDestructor) {
  EXPECT_EQ(leftBy([] {
              const std::size_t before = held;
              const QVImage image(4, 3, QV_IMG_GRAY);
              EXPECT_EQ(held - before, kPixels);
            }),
            0U);
}

TEST(QVImageMemory, IsFreedByEveryKindOfImage) {
  EXPECT_EQ(leftBy([] { const QVImage image(4, 3, QV_IMG_GRAY, kLevels); }), 0U) << "with pixels";
  EXPECT_EQ(leftBy([] {
              const QVImage image(4, 3, QV_IMG_GRAY, kLevels);
              const QVImage copy(image);
            }),
            0U)
      << "copied";
  EXPECT_EQ(leftBy([] {
              const QVImage image(4, 3, QV_IMG_GRAY, kLevels);
              QVImage target(50, 60, QV_IMG_RGB);
              target = image;
            }),
            0U)
      << "assigned";
}

TEST(QVImageMemory, OfTheOldPixelsIsFreedByAnAssignment) {
  const QVImage image(4, 3, QV_IMG_GRAY, kLevels);
  QVImage target(50, 60, QV_IMG_RGB);
  const std::size_t before = held;
  target = image;
  EXPECT_EQ(before - held, 50U * 60 * 3 - kPixels);
}

TEST(QVImageMemory, IsFreedWhenAnExceptionPasses) {
  EXPECT_EQ(leftBy([] {
              try {
                const QVImage image(4, 3, QV_IMG_GRAY, kLevels);
                const QVImage impossible(-1, 3, QV_IMG_GRAY);
              } catch (const std::bad_alloc&) {
              }
            }),
            0U);
}

}  // namespace
}  // namespace wren::stencil
