// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
#include "printer/dot_kernels.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "tests/reference/page.h"

namespace {

using Bytes = std::vector<unsigned char>;
using testing::ElementsAre;

constexpr unsigned char kUntouched = 0xA5;

// Half of the pixels are dots, of any level but 0.
Bytes noise(std::size_t count, std::mt19937& random) {
  Bytes bytes(count);
  for (unsigned char& byte : bytes) {
    const auto bits = random();
    byte = static_cast<unsigned char>((bits & 1) != 0 ? 0 : bits >> 8);
  }
  return bytes;
}

TEST(PackColumns, PutsTheTopRowIntoBitSeven) {
  const Bytes band = {1,   0,   0,  //
                      0,   127, 0,  //
                      0,   0,   0,  //
                      255, 0,   0};
  Bytes columns(3, kUntouched);
  packColumns(band.data(), 4, 3, columns.data(), 3);
  EXPECT_THAT(columns, ElementsAre(0x90, 0x40, 0x00));
}

TEST(PackColumns, GivesNoDotsWithoutRows) {
  const Bytes band(20, 255);
  Bytes columns(20, kUntouched);
  packColumns(band.data(), 0, 20, columns.data(), 20);
  EXPECT_EQ(columns, Bytes(20, 0));
}

TEST(PackColumns, EqualsThePlainLoopAtEveryWidthHeightAndStride) {
  std::mt19937 random(1);
  for (std::size_t count = 0; count <= 150; ++count) {
    for (unsigned rows = 0; rows <= 8; ++rows) {
      const std::size_t stride = count + random() % 5;
      const Bytes band = noise(8 * stride, random);
      Bytes fast(count + 1, kUntouched);
      Bytes plain(count + 1, kUntouched);
      packColumns(band.data(), rows, stride, fast.data(), count);
      packColumnsPlain(band.data(), rows, stride, plain.data(), count);
      ASSERT_EQ(fast, plain) << count << " columns, " << rows << " rows";
    }
  }
}

// One band of the literal version: the command's five bytes, then the columns.
TEST(PackColumns, BothEqualTheLiteralVersionAtEveryWidthAndHeight) {
  std::mt19937 random(4);
  for (std::size_t count = 1; count <= 150; ++count) {
    for (unsigned rows = 1; rows <= 8; ++rows) {
      const Bytes band = noise(count * rows, random);
      const Bytes command =
          reference::doPrintImage(reference::PageOptions(), band.data(), rows, count).at(1).bytes;
      const Bytes literal(command.begin() + 5, command.end());
      Bytes fast(count);
      Bytes plain(count);
      packColumns(band.data(), rows, count, fast.data(), count);
      packColumnsPlain(band.data(), rows, count, plain.data(), count);
      ASSERT_EQ(fast, literal) << count << " columns, " << rows << " rows";
      ASSERT_EQ(plain, literal) << count << " columns, " << rows << " rows";
    }
  }
}

// The literal version packs a whole page in place; a page of one row is enough here.
TEST(PackWhiteBits, BothEqualTheLiteralVersionAtEveryWidth) {
  std::mt19937 random(3);
  for (std::size_t count = 1; count <= 600; ++count) {
    const Bytes pixels = noise(count, random);
    Bytes literal = pixels;
    for (unsigned char& level : literal) level = level == 0 ? 255 : 0;  // it sets bits for ink
    std::vector<std::string> log;
    literal.resize(static_cast<std::size_t>(
        reference::GrayToMono(static_cast<int>(count), 1, literal.data(), 0, log)));
    if (count % 8 != 0) literal.back() |= static_cast<unsigned char>(0xFF >> count % 8);
    Bytes fast(literal.size());
    Bytes plain(literal.size());
    packWhiteBits(pixels.data(), count, fast.data());
    packWhiteBitsPlain(pixels.data(), count, plain.data());
    ASSERT_EQ(fast, literal) << count;
    ASSERT_EQ(plain, literal) << count;
  }
}

TEST(PackWhiteBits, SetsABitForEveryPixelWithoutADotAndForThoseThatFillTheByte) {
  const Bytes pixels = {0, 1, 0, 255, 0, 0, 128, 0, 7, 0};
  Bytes bits(3, kUntouched);
  packWhiteBits(pixels.data(), pixels.size(), bits.data());
  EXPECT_THAT(bits, ElementsAre(0xAD, 0x7F, kUntouched));
}

TEST(PackWhiteBits, EqualsThePlainLoopAtEveryWidthAndAlignment) {
  std::mt19937 random(2);
  for (std::size_t count = 0; count <= 600; ++count) {
    const std::size_t shift = count % 16;
    const Bytes pixels = noise(shift + count, random);
    Bytes fast((count + 7) / 8 + 1, kUntouched);
    Bytes plain(fast);
    packWhiteBits(pixels.data() + shift, count, fast.data());
    packWhiteBitsPlain(pixels.data() + shift, count, plain.data());
    ASSERT_EQ(fast, plain) << count << " pixels";
  }
}

TEST(PackKernels, SeeEveryLevelButNoneAsADot) {
  for (unsigned level = 0; level <= 255; ++level) {
    const Bytes pixels(128, static_cast<unsigned char>(level));
    Bytes columns(16);
    Bytes bits(16);
    packColumns(pixels.data(), 8, 16, columns.data(), 16);
    packWhiteBits(pixels.data(), 128, bits.data());
    EXPECT_EQ(columns, Bytes(16, level == 0 ? 0x00 : 0xFF));
    EXPECT_EQ(bits, Bytes(16, level == 0 ? 0xFF : 0x00));
  }
}

}  // namespace
