// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "printer/dot_kernels.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "tests/reference/page.h"
#include "tests/support/same_bytes.h"
#include "tests/support/vector_levels.h"

namespace {

using Bytes = std::vector<std::uint8_t>;
using testing::ElementsAre;
using wren::printer::packWhiteBits;
using wren::printer::unpackColumns;
using wren_test::sameBytes;

constexpr std::uint8_t kUntouched = 0xA5;

// Half of the pixels are dots, of any level but 0.
Bytes noise(std::size_t count, std::mt19937& random) {
  Bytes bytes(count);
  for (std::uint8_t& byte : bytes) {
    const auto bits = random();
    byte = static_cast<std::uint8_t>((bits & 1) != 0 ? 0 : bits >> 8);
  }
  return bytes;
}

class PackColumns : public wren_test::VectorLevelTest {};
class PackWhiteBits : public wren_test::VectorLevelTest {};
class UnpackColumns : public wren_test::VectorLevelTest {};
class PackKernels : public wren_test::VectorLevelTest {};

// Rows that are `stride` bytes apart.
void packColumns(const std::uint8_t* band, unsigned rows, std::size_t stride, std::uint8_t* columns,
                 std::size_t count) {
  wren::printer::BandRows pointers = {};
  for (unsigned row = 0; row < rows; ++row) pointers[row] = band + row * stride;
  wren::printer::packColumns(pointers, rows, columns, count);
}

TEST_P(PackColumns, PutsTheTopRowIntoBitSeven) {
  const Bytes band = {1,   0,   0,  //
                      0,   127, 0,  //
                      0,   0,   0,  //
                      255, 0,   0};
  Bytes columns(3, kUntouched);
  packColumns(band.data(), 4, 3, columns.data(), 3);
  EXPECT_THAT(columns, ElementsAre(0x90, 0x40, 0x00));
}

TEST_P(PackColumns, GivesNoDotsWithoutRows) {
  const Bytes band(20, 255);
  Bytes columns(20, kUntouched);
  packColumns(band.data(), 0, 20, columns.data(), 20);
  EXPECT_EQ(columns, Bytes(20, 0));
}

// One band of the reference: the command's five bytes, then the columns. Its rows are as far
// apart as they are wide.
Bytes referenceColumns(const Bytes& band, unsigned rows, std::size_t count) {
  const Bytes command =
      reference::doPrintImage(reference::PageOptions(), band.data(), rows, count).at(1).bytes;
  return {command.begin() + 5, command.end()};
}

TEST_P(PackColumns, GivesTheColumnsOfTheReferenceAtEveryWidthHeightAndStride) {
  std::mt19937 random(1);
  for (std::size_t count = 1; count <= 150; ++count) {
    for (unsigned rows = 1; rows <= 8; ++rows) {
      const std::size_t stride = count + random() % 5;
      const Bytes band = noise(8 * stride, random);
      Bytes tight;
      for (unsigned row = 0; row < rows; ++row) {
        tight.insert(tight.end(), band.data() + row * stride, band.data() + row * stride + count);
      }
      Bytes expected = referenceColumns(tight, rows, count);
      expected.push_back(kUntouched);
      Bytes columns(count + 1, kUntouched);
      packColumns(band.data(), rows, stride, columns.data(), count);
      ASSERT_TRUE(sameBytes(expected, columns)) << count << " columns, " << rows << " rows";
    }
  }
}

TEST_P(PackColumns, WritesNothingForNoColumns) {
  std::uint8_t column = kUntouched;
  packColumns(nullptr, 8, 0, &column, 0);
  EXPECT_EQ(column, kUntouched);
}

// The reference packs a whole page in place and sets bits for ink; a page of one row will do.
Bytes referenceWhiteBits(Bytes pixels) {
  const std::size_t count = pixels.size();
  for (std::uint8_t& level : pixels) level = level == 0 ? 255 : 0;
  std::vector<std::string> log;
  pixels.resize(static_cast<std::size_t>(
      reference::GrayToMono(static_cast<int>(count), 1, pixels.data(), 0, log)));
  if (count % 8 != 0) pixels.back() |= static_cast<std::uint8_t>(0xFF >> count % 8);
  return pixels;
}

TEST_P(PackWhiteBits, GivesTheBitsOfTheReferenceAtEveryWidthAndAlignment) {
  std::mt19937 random(3);
  for (std::size_t count = 1; count <= 600; ++count) {
    const std::size_t shift = count % 16;
    const Bytes pixels = noise(shift + count, random);
    Bytes expected =
        referenceWhiteBits({pixels.begin() + static_cast<std::ptrdiff_t>(shift), pixels.end()});
    expected.push_back(kUntouched);
    Bytes bits((count + 7) / 8 + 1, kUntouched);
    packWhiteBits(pixels.data() + shift, count, bits.data());
    ASSERT_TRUE(sameBytes(expected, bits)) << count << " pixels";
  }
}

TEST_P(PackWhiteBits, SetsABitForEveryPixelWithoutADotAndForTheUnusedBitsOfTheByte) {
  const Bytes pixels = {0, 1, 0, 255, 0, 0, 128, 0, 7, 0};
  Bytes bits(3, kUntouched);
  packWhiteBits(pixels.data(), pixels.size(), bits.data());
  EXPECT_THAT(bits, ElementsAre(0xAD, 0x7F, kUntouched));
}

// The columns of a band, turned back into its rows of bits.
TEST_P(UnpackColumns, GivesTheBitsOfTheReferenceAtEveryWidthAndHeight) {
  std::mt19937 random(4);
  for (std::size_t count = 1; count <= 300; ++count) {
    const auto rows = static_cast<unsigned>(1 + random() % 8);
    const Bytes band = noise(rows * count, random);
    const Bytes columns = referenceColumns(band, rows, count);
    const std::size_t rowBytes = (count + 7) / 8;
    std::vector<Bytes> bits(8, Bytes(rowBytes + 1, kUntouched));
    std::array<std::uint8_t*, 8> pointers = {};
    for (std::size_t row = 0; row < 8; ++row) pointers[row] = bits[row].data();
    unpackColumns(columns.data(), count, rows, pointers);
    for (unsigned row = 0; row < 8; ++row) {
      const auto first = band.begin() + static_cast<std::ptrdiff_t>(row * count);
      Bytes expected(rowBytes, kUntouched);
      if (row < rows) expected = referenceWhiteBits({first, first + static_cast<long>(count)});
      expected.push_back(kUntouched);
      ASSERT_TRUE(sameBytes(expected, bits[row])) << count << " columns, row " << row;
    }
  }
}

TEST_P(PackKernels, TakeEveryLevelButZeroForADot) {
  for (unsigned level = 0; level <= 255; ++level) {
    const Bytes pixels(128, static_cast<std::uint8_t>(level));
    Bytes columns(16);
    Bytes bits(16);
    packColumns(pixels.data(), 8, 16, columns.data(), 16);
    packWhiteBits(pixels.data(), 128, bits.data());
    EXPECT_EQ(columns, Bytes(16, level == 0 ? 0x00 : 0xFF));
    EXPECT_EQ(bits, Bytes(16, level == 0 ? 0xFF : 0x00));
  }
}

INSTANTIATE_TEST_SUITE_P(Levels, PackColumns, wren_test::everyVectorLevel(),
                         wren_test::vectorLevelTestName);
INSTANTIATE_TEST_SUITE_P(Levels, PackWhiteBits, wren_test::everyVectorLevel(),
                         wren_test::vectorLevelTestName);
INSTANTIATE_TEST_SUITE_P(Levels, UnpackColumns, wren_test::everyVectorLevel(),
                         wren_test::vectorLevelTestName);
INSTANTIATE_TEST_SUITE_P(Levels, PackKernels, wren_test::everyVectorLevel(),
                         wren_test::vectorLevelTestName);

}  // namespace
