// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Vectors of 16 bytes for the stencil kernels. They use the vector extensions of GCC
// and clang, so one source compiles to SSE2 and to NEON. Every operation works lane by
// lane and rounds like the scalar operation; do not replace one by an approximation.

#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace wren::stencil {

using F32x4 = float __attribute__((vector_size(16)));
using I32x4 = std::int32_t __attribute__((vector_size(16)));
using U16x8 = std::uint16_t __attribute__((vector_size(16)));
using U8x16 = std::uint8_t __attribute__((vector_size(16)));

/// Reads a vector from any address.
template <typename Vector, typename Element>
inline Vector load(const Element* from) {
  Vector v;
  std::memcpy(&v, from, sizeof v);
  return v;
}

/// Writes a vector to any address.
template <typename Vector, typename Element>
inline void store(Element* to, Vector v) {
  std::memcpy(to, &v, sizeof v);
}

inline F32x4 splat(float v) {
  return F32x4{v, v, v, v};
}
inline I32x4 splat(std::int32_t v) {
  return I32x4{v, v, v, v};
}

/// The same 16 bytes under another type.
inline F32x4 asFloats(I32x4 v) {
  return reinterpret_cast<F32x4>(v);
}
inline I32x4 asInts(F32x4 v) {
  return reinterpret_cast<I32x4>(v);
}

/// Interleaves the lower halves of `a` and `b`.
inline U8x16 zipLow(U8x16 a, U8x16 b) {
  return __builtin_shufflevector(a, b, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
}

/// Interleaves the upper halves of `a` and `b`.
inline U8x16 zipHigh(U8x16 a, U8x16 b) {
  return __builtin_shufflevector(a, b, 8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15,
                                 31);
}

inline U16x8 zipLow(U16x8 a, U16x8 b) {
  return __builtin_shufflevector(a, b, 0, 8, 1, 9, 2, 10, 3, 11);
}

inline U16x8 zipHigh(U16x8 a, U16x8 b) {
  return __builtin_shufflevector(a, b, 4, 12, 5, 13, 6, 14, 7, 15);
}

/// 16 floats.
struct F32x16 {
  F32x4 v[4];
};

/// Converts 16 bytes to floats.
inline F32x16 widen(U8x16 bytes) {
  constexpr bool kLittle = std::endian::native == std::endian::little;
  const U8x16 zeroBytes{};
  const U16x8 zero{};
  const auto low =
      reinterpret_cast<U16x8>(kLittle ? zipLow(bytes, zeroBytes) : zipLow(zeroBytes, bytes));
  const auto high =
      reinterpret_cast<U16x8>(kLittle ? zipHigh(bytes, zeroBytes) : zipHigh(zeroBytes, bytes));
  const auto floats = [](U16x8 halves) {
    return __builtin_convertvector(reinterpret_cast<I32x4>(halves), F32x4);
  };
  return {{floats(kLittle ? zipLow(low, zero) : zipLow(zero, low)),
           floats(kLittle ? zipHigh(low, zero) : zipHigh(zero, low)),
           floats(kLittle ? zipLow(high, zero) : zipLow(zero, high)),
           floats(kLittle ? zipHigh(high, zero) : zipHigh(zero, high))}};
}

/// Narrows four vectors of -1 or 0 to 16 bytes of 255 or 0.
inline U8x16 narrowMasks(I32x4 a, I32x4 b, I32x4 c, I32x4 d) {
#if defined(__SSE2__)
  const __m128i low = _mm_packs_epi32(reinterpret_cast<__m128i>(a), reinterpret_cast<__m128i>(b));
  const __m128i high = _mm_packs_epi32(reinterpret_cast<__m128i>(c), reinterpret_cast<__m128i>(d));
  return reinterpret_cast<U8x16>(_mm_packs_epi16(low, high));
#else
  // All bytes of a mask are equal, so the byte order does not matter.
  const auto halves = [](I32x4 x, I32x4 y) {
    return reinterpret_cast<U8x16>(__builtin_shufflevector(
        reinterpret_cast<U16x8>(x), reinterpret_cast<U16x8>(y), 0, 2, 4, 6, 8, 10, 12, 14));
  };
  return __builtin_shufflevector(halves(a, b), halves(c, d), 0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20,
                                 22, 24, 26, 28, 30);
#endif
}

/// Narrows four vectors of integers to 16 bytes, each clamped to 0..255.
///
/// Precondition: the integers fit in 16 bits with their sign.
inline U8x16 narrowClamped(I32x4 a, I32x4 b, I32x4 c, I32x4 d) {
#if defined(__SSE2__)
  const __m128i low = _mm_packs_epi32(reinterpret_cast<__m128i>(a), reinterpret_cast<__m128i>(b));
  const __m128i high = _mm_packs_epi32(reinterpret_cast<__m128i>(c), reinterpret_cast<__m128i>(d));
  return reinterpret_cast<U8x16>(_mm_packus_epi16(low, high));
#else
  const auto clamped = [](I32x4 v) {
    v &= v > 0;
    const I32x4 over = v > 255;
    const I32x4 level = (v & ~over) | (over & 255);
    // The low byte is the first or the last byte of an element, depending on the byte order.
    return std::endian::native == std::endian::little ? level : level << 24;
  };
  return narrowMasks(clamped(a), clamped(b), clamped(c), clamped(d));
#endif
}

/// True when any bit of `mask` is set.
inline bool any(I32x4 mask) {
#if defined(__SSE2__)
  return _mm_movemask_epi8(reinterpret_cast<__m128i>(mask)) != 0;
#else
  const auto halves = std::bit_cast<std::array<std::uint64_t, 2>>(mask);
  return (halves[0] | halves[1]) != 0;
#endif
}

/// (first, v0, v1, v2): moves every element up by one lane.
inline F32x4 shiftIn(F32x4 v, float first) {
  return __builtin_shufflevector(v, splat(first), 4, 0, 1, 2);
}
inline I32x4 shiftIn(I32x4 v, std::int32_t first) {
  return __builtin_shufflevector(v, splat(first), 4, 0, 1, 2);
}

}  // namespace wren::stencil
