// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "printer/dot_kernels.h"

#include <cstring>

#include "common/vector_level.h"
#include "common/vector_targets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "printer/dot_kernels.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#ifndef WREN_PRINTER_DOT_KERNELS_SCALAR
#define WREN_PRINTER_DOT_KERNELS_SCALAR

namespace wren::printer::scalar {
namespace {

void packColumns(const BandRows& band, std::size_t rows, std::uint8_t* columns, std::size_t count) {
  std::memset(columns, 0, count);
  for (std::size_t row = 0; row < rows; ++row) {
    const std::uint8_t* pixels = band[row];
    const auto bit = static_cast<std::uint8_t>(0x80U >> row);
    for (std::size_t x = 0; x < count; ++x) columns[x] |= pixels[x] != 0 ? bit : 0;
  }
}

void packWhiteBits(const std::uint8_t* pixels, std::size_t count, std::uint8_t* bits) {
  for (std::size_t x = 0; x < count; x += 8) {
    unsigned byte = 0;
    for (std::size_t i = x; i < x + 8; ++i) {
      byte = byte << 1 | (i >= count || pixels[i] == 0 ? 1U : 0U);
    }
    bits[x / 8] = static_cast<std::uint8_t>(byte);
  }
}

void unpackColumns(const std::uint8_t* columns, std::size_t count, std::size_t rows,
                   const std::array<std::uint8_t*, 8>& bits) {
  for (std::size_t row = 0; row < rows; ++row) {
    for (std::size_t x = 0; x < count; x += 8) {
      unsigned byte = 0;
      for (std::size_t i = x; i < x + 8; ++i) {
        byte = byte << 1 | (i >= count || (columns[i] & (0x80U >> row)) == 0 ? 1U : 0U);
      }
      bits[row][x / 8] = static_cast<std::uint8_t>(byte);
    }
  }
}

}  // namespace
}  // namespace wren::printer::scalar

#endif  // WREN_PRINTER_DOT_KERNELS_SCALAR

#if WREN_IS_VECTOR_TARGET
HWY_BEFORE_NAMESPACE();
namespace wren::printer::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

using Bytes = hn::ScalableTag<std::uint8_t>;
using ByteVector = hn::Vec<Bytes>;
constexpr Bytes kBytes;
constexpr std::size_t kLanes = hn::MaxLanes(kBytes);

// The dots of one row as one bit of each column.
HWY_INLINE ByteVector columnBit(const std::uint8_t* pixels, std::size_t row) {
  const auto isPaper = hn::Eq(hn::LoadU(kBytes, pixels), hn::Zero(kBytes));
  return hn::IfThenZeroElse(isPaper, hn::Set(kBytes, static_cast<std::uint8_t>(0x80U >> row)));
}

HWY_INLINE void packVector(const BandRows& band, std::size_t rows, std::uint8_t* columns,
                           std::size_t x) {
  ByteVector bits = hn::Zero(kBytes);
  for (std::size_t row = 0; row < rows; ++row) {
    bits = hn::Or(bits, columnBit(band[row] + x, row));
  }
  hn::StoreU(bits, kBytes, columns + x);
}

// Unrolled by hand: not every optimisation level unrolls a loop of eight.
HWY_INLINE void packFullVector(const BandRows& band, std::uint8_t* columns, std::size_t x) {
  const auto two = [&](std::size_t row) HWY_ATTR {
    return hn::Or(columnBit(band[row] + x, row), columnBit(band[row + 1] + x, row + 1));
  };
  hn::StoreU(hn::Or(hn::Or(two(0), two(2)), hn::Or(two(4), two(6))), kBytes, columns + x);
}

// Reverses each group of eight bytes: the first byte of a mask is its lowest bit, and the
// first pixel of a byte its highest.
HWY_INLINE ByteVector reversedGroups(ByteVector v) {
  alignas(16) static constexpr std::uint8_t kReverse[16] = {7,  6,  5,  4,  3,  2,  1, 0,
                                                            15, 14, 13, 12, 11, 10, 9, 8};
  return hn::TableLookupBytes(v, hn::LoadDup128(kBytes, kReverse));
}

HWY_INLINE void packWhiteVector(const std::uint8_t* pixels, std::uint8_t* bits) {
  const ByteVector v = reversedGroups(hn::LoadU(kBytes, pixels));
  hn::StoreMaskBits(kBytes, hn::Eq(v, hn::Zero(kBytes)), bits);
}

HWY_INLINE void unpackVector(const std::uint8_t* columns, std::size_t rows,
                             const std::array<std::uint8_t*, 8>& bits, std::size_t byte) {
  const hn::RebindToSigned<Bytes> signedBytes;
  ByteVector white = hn::Not(reversedGroups(hn::LoadU(kBytes, columns)));
  for (std::size_t row = 0; row < rows; ++row) {
    const auto isWhite = hn::Lt(hn::BitCast(signedBytes, white), hn::Zero(signedBytes));
    hn::StoreMaskBits(signedBytes, isWhite, bits[row] + byte);
    white = hn::Add(white, white);  // the next row's bit
  }
}

}  // namespace

void packColumns(const BandRows& band, std::size_t rows, std::uint8_t* columns, std::size_t count) {
  if (count < kLanes) return scalar::packColumns(band, rows, columns, count);
  // The last vector overlaps the one before it, so that no remainder needs a loop of its own.
  const std::size_t last = count - kLanes;
  if (rows == 8) {
    for (std::size_t x = 0; x < last; x += kLanes) packFullVector(band, columns, x);
    packFullVector(band, columns, last);
  } else {
    for (std::size_t x = 0; x < last; x += kLanes) packVector(band, rows, columns, x);
    packVector(band, rows, columns, last);
  }
}

void packWhiteBits(const std::uint8_t* pixels, std::size_t count, std::uint8_t* bits) {
  std::size_t x = 0;
  for (; x + kLanes <= count; x += kLanes) packWhiteVector(pixels + x, bits + x / 8);
  scalar::packWhiteBits(pixels + x, count - x, bits + x / 8);
}

void unpackColumns(const std::uint8_t* columns, std::size_t count, std::size_t rows,
                   const std::array<std::uint8_t*, 8>& bits) {
  std::size_t x = 0;
  if (rows == 8) {
    for (; x + kLanes <= count; x += kLanes) unpackVector(columns + x, 8, bits, x / 8);
  } else {
    for (; x + kLanes <= count; x += kLanes) unpackVector(columns + x, rows, bits, x / 8);
  }
  std::array<std::uint8_t*, 8> rest = bits;
  for (std::size_t row = 0; row < rows; ++row) rest[row] += x / 8;
  scalar::unpackColumns(columns + x, count - x, rows, rest);
}

}  // namespace wren::printer::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();
#endif  // WREN_IS_VECTOR_TARGET

#if HWY_ONCE

namespace wren::printer {
namespace {

constexpr KernelTable<decltype(&packColumns)> kPackColumns =
    WREN_KERNEL_TABLE(scalar::packColumns, packColumns);
constexpr KernelTable<decltype(&packWhiteBits)> kPackWhiteBits =
    WREN_KERNEL_TABLE(scalar::packWhiteBits, packWhiteBits);
constexpr KernelTable<decltype(&unpackColumns)> kUnpackColumns =
    WREN_KERNEL_TABLE(scalar::unpackColumns, unpackColumns);

}  // namespace

void packColumns(const BandRows& band, std::size_t rows, std::uint8_t* columns, std::size_t count) {
  kernelOf(kPackColumns)(band, rows, columns, count);
}

void packWhiteBits(const std::uint8_t* pixels, std::size_t count, std::uint8_t* bits) {
  kernelOf(kPackWhiteBits)(pixels, count, bits);
}

void unpackColumns(const std::uint8_t* columns, std::size_t count, std::size_t rows,
                   const std::array<std::uint8_t*, 8>& bits) {
  kernelOf(kUnpackColumns)(columns, count, rows, bits);
}

}  // namespace wren::printer

#endif  // HWY_ONCE
