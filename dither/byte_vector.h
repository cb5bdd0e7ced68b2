// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Sixteen bytes in one processor register, with the operations that the dither kernels
// need. Each is one or two instructions of the architecture's baseline, SSE2 or NEON, and
// gives the same bytes on both: all of it is exact integer arithmetic.
//
// `WREN_HAS_BYTE_VECTORS` is not defined on other processors, where the scalar kernels run.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>

#if defined(__SSE2__)
#include <emmintrin.h>
#define WREN_HAS_BYTE_VECTORS 1
#elif defined(__aarch64__) && defined(__ARM_NEON) && __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
#include <arm_neon.h>
#define WREN_HAS_BYTE_VECTORS 1
#endif

#ifdef WREN_HAS_BYTE_VECTORS

namespace wren::dither {

/// Sixteen bytes, one per lane. The operation decides whether they are signed.
struct ByteVector {
  static constexpr std::size_t kBytes = 16;

#ifdef __SSE2__
  __m128i lanes;
#else
  uint8x16_t lanes;
#endif
};

/// Sixteen bytes, zero-extended to 16 bits each.
struct WideVector {
#ifdef __SSE2__
  __m128i low;
  __m128i high;
#else
  int16x8_t low;
  int16x8_t high;
#endif
};

#ifdef __SSE2__

/// Loads and stores 16 bytes; the address need not be aligned.
inline ByteVector loadBytes(const void* from) {
  return {_mm_loadu_si128(static_cast<const __m128i*>(from))};
}
inline void storeBytes(ByteVector v, void* to) {
  _mm_storeu_si128(static_cast<__m128i*>(to), v.lanes);
}

/// The same byte in every lane.
inline ByteVector splat(std::uint8_t byte) {
  return {_mm_set1_epi8(static_cast<char>(byte))};
}

inline ByteVector operator^(ByteVector a, ByteVector b) {
  return {_mm_xor_si128(a.lanes, b.lanes)};
}
inline ByteVector operator&(ByteVector a, ByteVector b) {
  return {_mm_and_si128(a.lanes, b.lanes)};
}

/// Signed sums, clamped to -128..127.
inline ByteVector addSaturatedSigned(ByteVector a, ByteVector b) {
  return {_mm_adds_epi8(a.lanes, b.lanes)};
}

/// Unsigned sums and differences, clamped to 0..255.
inline ByteVector addSaturatedUnsigned(ByteVector a, ByteVector b) {
  return {_mm_adds_epu8(a.lanes, b.lanes)};
}
inline ByteVector subtractSaturatedUnsigned(ByteVector a, ByteVector b) {
  return {_mm_subs_epu8(a.lanes, b.lanes)};
}

/// 255 where the signed byte is above 0, else 0.
inline ByteVector greaterThanZero(ByteVector v) {
  return {_mm_cmpgt_epi8(v.lanes, _mm_setzero_si128())};
}

/// -v where `mask` is 255, v where it is 0.
inline ByteVector negateWhere(ByteVector mask, ByteVector v) {
  return {_mm_sub_epi8(_mm_xor_si128(v.lanes, mask.lanes), mask.lanes)};
}

inline WideVector widen(ByteVector v) {
  const __m128i zero = _mm_setzero_si128();
  return {_mm_unpacklo_epi8(v.lanes, zero), _mm_unpackhi_epi8(v.lanes, zero)};
}

/// v * factor / 32768 in every lane, rounded down, as bytes. The lanes hold 0 to 255; the
/// products must be at most 127.
inline ByteVector multiplyQ15(WideVector v, std::int16_t factor) {
  const __m128i doubled = _mm_set1_epi16(static_cast<std::int16_t>(2 * factor));
  return {_mm_packs_epi16(_mm_mulhi_epu16(v.low, doubled), _mm_mulhi_epu16(v.high, doubled))};
}

/// The lower (first) or upper eight lanes of `a` and `b` in turn: a0 b0 a1 b1 ...
inline ByteVector interleaveLower(ByteVector a, ByteVector b) {
  return {_mm_unpacklo_epi8(a.lanes, b.lanes)};
}
inline ByteVector interleaveUpper(ByteVector a, ByteVector b) {
  return {_mm_unpackhi_epi8(a.lanes, b.lanes)};
}

/// The lanes in reverse order.
inline ByteVector reversed(ByteVector v) {
  constexpr int kReverse = _MM_SHUFFLE(0, 1, 2, 3);
  const __m128i words = _mm_shufflehi_epi16(_mm_shufflelo_epi16(v.lanes, kReverse), kReverse);
  const __m128i halves = _mm_shuffle_epi32(words, _MM_SHUFFLE(1, 0, 3, 2));
  return {_mm_or_si128(_mm_slli_epi16(halves, 8), _mm_srli_epi16(halves, 8))};
}

#else

inline ByteVector loadBytes(const void* from) {
  return {vld1q_u8(static_cast<const std::uint8_t*>(from))};
}
inline void storeBytes(ByteVector v, void* to) {
  vst1q_u8(static_cast<std::uint8_t*>(to), v.lanes);
}

inline ByteVector splat(std::uint8_t byte) {
  return {vdupq_n_u8(byte)};
}

inline ByteVector operator^(ByteVector a, ByteVector b) {
  return {veorq_u8(a.lanes, b.lanes)};
}
inline ByteVector operator&(ByteVector a, ByteVector b) {
  return {vandq_u8(a.lanes, b.lanes)};
}

inline ByteVector addSaturatedSigned(ByteVector a, ByteVector b) {
  return {
      vreinterpretq_u8_s8(vqaddq_s8(vreinterpretq_s8_u8(a.lanes), vreinterpretq_s8_u8(b.lanes)))};
}

inline ByteVector addSaturatedUnsigned(ByteVector a, ByteVector b) {
  return {vqaddq_u8(a.lanes, b.lanes)};
}
inline ByteVector subtractSaturatedUnsigned(ByteVector a, ByteVector b) {
  return {vqsubq_u8(a.lanes, b.lanes)};
}

inline ByteVector greaterThanZero(ByteVector v) {
  return {vcgtzq_s8(vreinterpretq_s8_u8(v.lanes))};
}

inline ByteVector negateWhere(ByteVector mask, ByteVector v) {
  return {vsubq_u8(veorq_u8(v.lanes, mask.lanes), mask.lanes)};
}

inline WideVector widen(ByteVector v) {
  return {vreinterpretq_s16_u16(vmovl_u8(vget_low_u8(v.lanes))),
          vreinterpretq_s16_u16(vmovl_high_u8(v.lanes))};
}

// The instruction doubles the product before it takes the high half.
inline ByteVector multiplyQ15(WideVector v, std::int16_t factor) {
  const int16x8_t low = vqdmulhq_n_s16(v.low, factor);
  const int16x8_t high = vqdmulhq_n_s16(v.high, factor);
  return {vuzp1q_u8(vreinterpretq_u8_s16(low), vreinterpretq_u8_s16(high))};
}

inline ByteVector interleaveLower(ByteVector a, ByteVector b) {
  return {vzip1q_u8(a.lanes, b.lanes)};
}
inline ByteVector interleaveUpper(ByteVector a, ByteVector b) {
  return {vzip2q_u8(a.lanes, b.lanes)};
}

inline ByteVector reversed(ByteVector v) {
  const uint8x16_t halves = vrev64q_u8(v.lanes);
  return {vextq_u8(halves, halves, 8)};
}

#endif  // __SSE2__

/// Sixteen rows of sixteen bytes.
using ByteTile = std::array<ByteVector, ByteVector::kBytes>;

/// Interleaves row i with row i + 8. Written out for every row, so that as much of the tile
/// as possible stays in registers.
template <std::size_t... Rows>
[[gnu::always_inline]] inline ByteTile interleavedRows(const ByteTile& tile,
                                                       std::index_sequence<Rows...>) {
  return {(Rows % 2 == 0 ? interleaveLower(tile[Rows / 2], tile[Rows / 2 + 8])
                         : interleaveUpper(tile[Rows / 2], tile[Rows / 2 + 8]))...};
}

/// Swaps rows and columns. Each round rotates the eight-bit number "row, column" of a byte
/// by one bit; after four rounds its two halves have changed places.
[[gnu::always_inline]] inline void transpose(ByteTile& tile) {
  constexpr auto kRows = std::make_index_sequence<ByteVector::kBytes>();
  tile = interleavedRows(tile, kRows);
  tile = interleavedRows(tile, kRows);
  tile = interleavedRows(tile, kRows);
  tile = interleavedRows(tile, kRows);
}

}  // namespace wren::dither

#endif  // WREN_HAS_BYTE_VECTORS
