// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "dither/byte_vector.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "dither/error_terms.h"

#ifdef WREN_HAS_BYTE_VECTORS

namespace {

using namespace wren::dither;

using Bytes = std::vector<std::uint8_t>;

Bytes bytesOf(ByteVector vector) {
  Bytes bytes(16);
  storeBytes(vector, bytes.data());
  return bytes;
}

ByteVector splatInt(int value) {
  return splat(static_cast<std::uint8_t>(value));
}

Bytes sixteenOf(int value) {
  return Bytes(16, static_cast<std::uint8_t>(value));
}

TEST(ByteVector, AddsEveryPairOfSignedBytesSaturated) {
  for (int a = -128; a < 128; ++a) {
    for (int b = -128; b < 128; ++b) {
      ASSERT_EQ(bytesOf(addSaturatedSigned(splatInt(a), splatInt(b))),
                sixteenOf(std::clamp(a + b, -128, 127)))
          << a << " + " << b;
    }
  }
}

TEST(ByteVector, AddsAndSubtractsEveryPairOfUnsignedBytesSaturated) {
  for (int a = 0; a < 256; ++a) {
    for (int b = 0; b < 256; ++b) {
      ASSERT_EQ(bytesOf(addSaturatedUnsigned(splatInt(a), splatInt(b))),
                sixteenOf(std::min(a + b, 255)))
          << a << " + " << b;
      ASSERT_EQ(bytesOf(subtractSaturatedUnsigned(splatInt(a), splatInt(b))),
                sixteenOf(std::max(a - b, 0)))
          << a << " - " << b;
    }
  }
}

TEST(ByteVector, MultipliesEveryErrorByEveryWeightOfTheMethods) {
  for (const Method& method : kMethods) {
    if (!method.isVectorised) continue;
    const int divisor = method.diffusion->divisor;
    const DiffusionTaps taps = tapsOf(*method.diffusion);
    for (std::size_t tap = 0; tap < taps.count; ++tap) {
      const int weight = taps.tap[tap].weight;
      for (int error = 0; error <= kMaxError; ++error) {
        ASSERT_EQ(bytesOf(multiplyQ15(widen(splatInt(error)), errorFactor(weight, divisor))),
                  sixteenOf(error * weight / divisor))
            << error << " * " << weight << " / " << divisor;
      }
    }
  }
}

TEST(ByteVector, ComparesAndNegatesEverySignedByte) {
  for (int a = -128; a < 128; ++a) {
    EXPECT_EQ(bytesOf(greaterThanZero(splatInt(a))), sixteenOf(a > 0 ? 255 : 0)) << a;
    EXPECT_EQ(bytesOf(negateWhere(splatInt(255), splatInt(a))), sixteenOf(-a)) << a;
    EXPECT_EQ(bytesOf(negateWhere(splatInt(0), splatInt(a))), sixteenOf(a)) << a;
  }
}

TEST(ByteVector, ReversesItsLanes) {
  const Bytes bytes = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
  EXPECT_EQ(bytesOf(reversed(loadBytes(bytes.data()))), Bytes(bytes.rbegin(), bytes.rend()));
}

TEST(ByteTile, SwapsRowsAndColumnsWhenTransposed) {
  Bytes bytes(256);
  for (std::size_t i = 0; i < 256; ++i) bytes[i] = static_cast<std::uint8_t>(i);
  ByteTile tile;
  for (std::size_t row = 0; row < 16; ++row) tile[row] = loadBytes(bytes.data() + 16 * row);
  transpose(tile);
  for (std::size_t row = 0; row < 16; ++row) {
    Bytes column;
    for (std::size_t i = 0; i < 16; ++i) column.push_back(bytes[16 * i + row]);
    EXPECT_EQ(bytesOf(tile[row]), column) << "row " << row;
  }
}

}  // namespace

#endif  // WREN_HAS_BYTE_VECTORS
