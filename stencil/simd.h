// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Vectors of 16 bytes for the stencil kernels, written with the vector types that
// both compilers know, so that one source becomes SSE2 on a PC and NEON on an ARM
// board. Every operation works lane by lane and rounds like its scalar
// counterpart; nothing here may be replaced by an approximation.

#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace stencil {

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
inline F32x4 as_floats(I32x4 v) {
  return reinterpret_cast<F32x4>(v);
}
inline I32x4 as_ints(F32x4 v) {
  return reinterpret_cast<I32x4>(v);
}

/// The lower halves of a and b, element by element in turns.
inline U8x16 zip_low(U8x16 a, U8x16 b) {
  return __builtin_shufflevector(a, b, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
}

/// The upper halves of a and b, element by element in turns.
inline U8x16 zip_high(U8x16 a, U8x16 b) {
  return __builtin_shufflevector(a, b, 8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15,
                                 31);
}

inline U16x8 zip_low(U16x8 a, U16x8 b) {
  return __builtin_shufflevector(a, b, 0, 8, 1, 9, 2, 10, 3, 11);
}

inline U16x8 zip_high(U16x8 a, U16x8 b) {
  return __builtin_shufflevector(a, b, 4, 12, 5, 13, 6, 14, 7, 15);
}

/// 16 bytes as four vectors of floats.
struct Quad {
  F32x4 v[4];
};

inline Quad widen(U8x16 bytes) {
  constexpr bool kLittle = std::endian::native == std::endian::little;
  const U8x16 none{};
  const U16x8 zero{};
  const auto low = reinterpret_cast<U16x8>(kLittle ? zip_low(bytes, none) : zip_low(none, bytes));
  const auto high =
      reinterpret_cast<U16x8>(kLittle ? zip_high(bytes, none) : zip_high(none, bytes));
  const auto floats = [](U16x8 halves) {
    return __builtin_convertvector(reinterpret_cast<I32x4>(halves), F32x4);
  };
  return {{floats(kLittle ? zip_low(low, zero) : zip_low(zero, low)),
           floats(kLittle ? zip_high(low, zero) : zip_high(zero, low)),
           floats(kLittle ? zip_low(high, zero) : zip_low(zero, high)),
           floats(kLittle ? zip_high(high, zero) : zip_high(zero, high))}};
}

/// Four vectors whose elements are -1 or 0 as 16 bytes of 255 or 0.
inline U8x16 narrow_masks(I32x4 a, I32x4 b, I32x4 c, I32x4 d) {
#if defined(__SSE2__)
  const __m128i low = _mm_packs_epi32(reinterpret_cast<__m128i>(a), reinterpret_cast<__m128i>(b));
  const __m128i high = _mm_packs_epi32(reinterpret_cast<__m128i>(c), reinterpret_cast<__m128i>(d));
  return reinterpret_cast<U8x16>(_mm_packs_epi16(low, high));
#else
  // All bytes of a mask are equal, so any byte of an element will do.
  const auto halves = [](I32x4 x, I32x4 y) {
    return reinterpret_cast<U8x16>(__builtin_shufflevector(
        reinterpret_cast<U16x8>(x), reinterpret_cast<U16x8>(y), 0, 2, 4, 6, 8, 10, 12, 14));
  };
  return __builtin_shufflevector(halves(a, b), halves(c, d), 0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20,
                                 22, 24, 26, 28, 30);
#endif
}

/// Four vectors of integers as 16 bytes, each clamped to 0..255.
///
/// Precondition: the integers fit in 16 bits with their sign.
inline U8x16 narrow_clamped(I32x4 a, I32x4 b, I32x4 c, I32x4 d) {
#if defined(__SSE2__)
  const __m128i low = _mm_packs_epi32(reinterpret_cast<__m128i>(a), reinterpret_cast<__m128i>(b));
  const __m128i high = _mm_packs_epi32(reinterpret_cast<__m128i>(c), reinterpret_cast<__m128i>(d));
  return reinterpret_cast<U8x16>(_mm_packus_epi16(low, high));
#else
  const auto clamped = [](I32x4 v) {
    v &= v > 0;
    const I32x4 over = v > 255;
    const I32x4 level = (v & ~over) | (over & 255);
    // The low byte is the first one or the last one of an element.
    return std::endian::native == std::endian::little ? level : level << 24;
  };
  return narrow_masks(clamped(a), clamped(b), clamped(c), clamped(d));
#endif
}

/// True when any bit of the mask is set.
inline bool any(I32x4 mask) {
#if defined(__SSE2__)
  return _mm_movemask_epi8(reinterpret_cast<__m128i>(mask)) != 0;
#else
  const auto halves = std::bit_cast<std::array<std::uint64_t, 2>>(mask);
  return (halves[0] | halves[1]) != 0;
#endif
}

/// (first, v0, v1, v2): every element one lane on, with a new one in front.
inline F32x4 shift_in(F32x4 v, float first) {
  return __builtin_shufflevector(v, splat(first), 4, 0, 1, 2);
}
inline I32x4 shift_in(I32x4 v, std::int32_t first) {
  return __builtin_shufflevector(v, splat(first), 4, 0, 1, 2);
}

}  // namespace stencil
