// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The transpose of tiles of bytes, for kernels that work on several rows at once. An inline
// header in Highway's sense: included by a kernel's source after hwy/highway.h, and read again
// for each vector level.

#if defined(WREN_COMMON_BYTE_TRANSPOSE_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef WREN_COMMON_BYTE_TRANSPOSE_INL_H
#undef WREN_COMMON_BYTE_TRANSPOSE_INL_H
#else
#define WREN_COMMON_BYTE_TRANSPOSE_INL_H
#endif

#include <hwy/highway.h>

#include <cstddef>

#include "common/vector_targets.h"

#if WREN_IS_VECTOR_TARGET
HWY_BEFORE_NAMESPACE();
namespace wren::HWY_NAMESPACE {

/// Four vectors.
template <class V>
struct Quad {
  V v[4];
};

/// Two rounds of a transpose for vectors i, i + 4, i + 8 and i + 12: each round interleaves
/// vector i with vector i + 8. Four vectors at a time stay in registers.
template <class D, class V = hwy::HWY_NAMESPACE::Vec<D>>
HWY_INLINE Quad<V> interleavedTwice(D d, V a, V b, V c, V e) {
  namespace hn = hwy::HWY_NAMESPACE;
  const V lowerAc = hn::InterleaveLower(d, a, c);
  const V upperAc = hn::InterleaveUpper(d, a, c);
  const V lowerBe = hn::InterleaveLower(d, b, e);
  const V upperBe = hn::InterleaveUpper(d, b, e);
  return {{hn::InterleaveLower(d, lowerAc, lowerBe), hn::InterleaveUpper(d, lowerAc, lowerBe),
           hn::InterleaveLower(d, upperAc, upperBe), hn::InterleaveUpper(d, upperAc, upperBe)}};
}

/// Swaps rows and columns of a tile of 16 vectors of bytes, in each block of 16 x 16 bytes. Each
/// of four rounds rotates the eight-bit number "row, column" of a byte by one bit; then its two
/// halves have changed places.
/// @param load `load(i)` gives vector i.
/// @param store `store(i, v)` takes vector i of the result, after all vectors were loaded.
template <class D, typename Load, typename Store>
HWY_INLINE void transposeBytes(D d, Load load, Store store) {
  using V = hwy::HWY_NAMESPACE::Vec<D>;
  V half[16];
  for (std::size_t i = 0; i < 4; ++i) {
    const Quad<V> quad = interleavedTwice(d, load(i), load(i + 4), load(i + 8), load(i + 12));
    for (std::size_t k = 0; k < 4; ++k) half[4 * i + k] = quad.v[k];
  }
  for (std::size_t i = 0; i < 4; ++i) {
    const Quad<V> quad = interleavedTwice(d, half[i], half[i + 4], half[i + 8], half[i + 12]);
    for (std::size_t k = 0; k < 4; ++k) store(4 * i + k, quad.v[k]);
  }
}

}  // namespace wren::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();
#endif  // WREN_IS_VECTOR_TARGET

#endif  // WREN_COMMON_BYTE_TRANSPOSE_INL_H
