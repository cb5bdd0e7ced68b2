// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "printer/dot_kernels.h"

#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#elif defined(__aarch64__)
#include <arm_neon.h>
#endif

namespace wren::printer {
namespace {

constexpr std::size_t kLanes = 16;

// One byte for each of 16 adjacent pixels; compilers map it to SSE2 and NEON.
using Lanes = std::uint8_t __attribute__((vector_size(kLanes)));

Lanes load(const std::uint8_t* bytes) {
  Lanes lanes;
  std::memcpy(&lanes, bytes, sizeof lanes);
  return lanes;
}

Lanes splat(std::uint8_t value) {
  Lanes lanes;
  std::memset(&lanes, value, sizeof lanes);
  return lanes;
}

// The dots of 16 pixels as one bit of 16 columns. A comparison gives 255 where it is true.
Lanes columnBit(const std::uint8_t* pixels, unsigned row) {
  const Lanes dots = reinterpret_cast<Lanes>(load(pixels) != 0);
  return dots & splat(static_cast<std::uint8_t>(0x80U >> row));
}

void packSixteenColumns(const std::uint8_t* band, unsigned rows, std::size_t stride,
                        std::uint8_t* columns) {
  Lanes bits = {};
  for (unsigned row = 0; row < rows; ++row) bits |= columnBit(band + row * stride, row);
  std::memcpy(columns, &bits, sizeof bits);
}

// Unrolled by hand: not every optimisation level unrolls a loop of eight.
void packSixteenFullColumns(const std::uint8_t* band, std::size_t stride, std::uint8_t* columns) {
  const Lanes bits = (columnBit(band, 0) | columnBit(band + stride, 1)) |
                     (columnBit(band + 2 * stride, 2) | columnBit(band + 3 * stride, 3)) |
                     (columnBit(band + 4 * stride, 4) | columnBit(band + 5 * stride, 5)) |
                     (columnBit(band + 6 * stride, 6) | columnBit(band + 7 * stride, 7));
  std::memcpy(columns, &bits, sizeof bits);
}

// Calls pack(x) for blocks of 16 columns until all are done. The last block overlaps the one
// before it, so that no remainder needs a loop of its own.
template <typename Pack>
void forBlocks(std::size_t count, Pack pack) {
  std::size_t x = 0;
  for (; x + kLanes <= count; x += kLanes) pack(x);
  if (x < count) pack(count - kLanes);
}

constexpr std::size_t kBlock = 8 * kLanes;  // pixels that fill 16 bytes of bits

#if defined(__SSE2__)

// Each pixel becomes 0 or the power of two of its bit; the instruction for sums of absolute
// differences adds up the eight pixels of a byte.
__m128i twoBytes(const std::uint8_t* pixels) {
  const __m128i zero = _mm_setzero_si128();
  const __m128i weights = _mm_set1_epi64x(0x0102040810204080);
  const __m128i lanes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(pixels));
  return _mm_sad_epu8(_mm_and_si128(_mm_cmpeq_epi8(lanes, zero), weights), zero);
}

// Eight bytes as 16-bit numbers.
__m128i eightBytes(const std::uint8_t* pixels) {
  return _mm_packs_epi32(_mm_packs_epi32(twoBytes(pixels), twoBytes(pixels + 16)),
                         _mm_packs_epi32(twoBytes(pixels + 32), twoBytes(pixels + 48)));
}

void packBlock(const std::uint8_t* pixels, std::uint8_t* bits) {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(bits),
                   _mm_packus_epi16(eightBytes(pixels), eightBytes(pixels + 64)));
}

#elif defined(__aarch64__)

// Each pixel as 0 or the power of two of its bit.
uint8x16_t weighted(const std::uint8_t* pixels) {
  const uint8x16_t weights = vreinterpretq_u8_u64(vdupq_n_u64(0x0102040810204080));
  return vandq_u8(vceqzq_u8(vld1q_u8(pixels)), weights);
}

// Sums of four adjacent pixels.
uint8x16_t sumsOfFour(const std::uint8_t* pixels) {
  return vpaddq_u8(vpaddq_u8(weighted(pixels), weighted(pixels + 16)),
                   vpaddq_u8(weighted(pixels + 32), weighted(pixels + 48)));
}

void packBlock(const std::uint8_t* pixels, std::uint8_t* bits) {
  vst1q_u8(bits, vpaddq_u8(sumsOfFour(pixels), sumsOfFour(pixels + 64)));
}

#else

void packBlock(const std::uint8_t* pixels, std::uint8_t* bits) {
  for (std::size_t i = 0; i < kLanes; ++i) {
    unsigned byte = 0;
    for (std::size_t x = 8 * i; x < 8 * i + 8; ++x) {
      byte = byte << 1 | (pixels[x] == 0 ? 1U : 0U);
    }
    bits[i] = static_cast<std::uint8_t>(byte);
  }
}

#endif

// For bands that are narrower than a vector.
void packNarrowColumns(const std::uint8_t* band, unsigned rows, std::size_t stride,
                       std::uint8_t* columns, std::size_t count) {
  for (std::size_t x = 0; x < count; ++x) {
    unsigned bits = 0;
    for (unsigned row = 0; row < rows; ++row) {
      if (band[row * stride + x] != 0) bits |= 0x80U >> row;
    }
    columns[x] = static_cast<std::uint8_t>(bits);
  }
}

}  // namespace

void packColumns(const std::uint8_t* band, unsigned rows, std::size_t stride, std::uint8_t* columns,
                 std::size_t count) {
  if (count < kLanes) {
    packNarrowColumns(band, rows, stride, columns, count);
  } else if (rows == 8) {
    forBlocks(count, [=](std::size_t x) { packSixteenFullColumns(band + x, stride, columns + x); });
  } else {
    forBlocks(count,
              [=](std::size_t x) { packSixteenColumns(band + x, rows, stride, columns + x); });
  }
}

void packWhiteBits(const std::uint8_t* pixels, std::size_t count, std::uint8_t* bits) {
  const std::size_t whole = count / kBlock * kBlock;
  for (std::size_t x = 0; x < whole; x += kBlock) packBlock(pixels + x, bits + x / 8);
  const std::size_t rest = count - whole;
  if (rest == 0) return;
  std::uint8_t lastPixels[kBlock] = {};
  std::uint8_t lastBits[kLanes];
  std::memcpy(lastPixels, pixels + whole, rest);
  packBlock(lastPixels, lastBits);
  std::memcpy(bits + whole / 8, lastBits, (rest + 7) / 8);
}

}  // namespace wren::printer
