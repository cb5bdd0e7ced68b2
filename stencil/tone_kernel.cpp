// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "stencil/tone_kernel.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>

#include "common/vector_level.h"
#include "common/vector_targets.h"
#include "stencil/blur_kernel.h"
#include "stencil/equal_pixels.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "stencil/tone_kernel.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#if WREN_IS_VECTOR_TARGET
HWY_BEFORE_NAMESPACE();
namespace wren::stencil::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

constexpr std::size_t kTableLevels = 16;  // that one instruction looks up

// Halves the number of tables: those with odd numbers are for the levels in `isOdd`.
template <std::size_t Count, class Vector, class Mask>
HWY_INLINE void selectTables(Vector (&tables)[kTableLevels], Mask isOdd) {
  for (std::size_t i = 0; i < Count; ++i) {
    tables[i] = hn::IfThenElse(isOdd, tables[2 * i + 1], tables[2 * i]);
  }
}

// curve[level]: the lower four bits choose an entry from each of 16 tables, the upper four the
// table.
template <class D>
HWY_INLINE hn::Vec<D> lookedUp(D bytes, const ToneCurve& curve, hn::Vec<D> levels) {
  const auto entry = hn::And(levels, hn::Set(bytes, 0x0F));
  hn::Vec<D> tables[kTableLevels];
  for (std::size_t i = 0; i < kTableLevels; ++i) {
    tables[i] = hn::TableLookupBytes(hn::LoadDup128(bytes, curve.data() + i * kTableLevels), entry);
  }
  selectTables<8>(tables, hn::TestBit(levels, hn::Set(bytes, 0x10)));
  selectTables<4>(tables, hn::TestBit(levels, hn::Set(bytes, 0x20)));
  selectTables<2>(tables, hn::TestBit(levels, hn::Set(bytes, 0x40)));
  selectTables<1>(tables, hn::TestBit(levels, hn::Set(bytes, 0x80)));
  return tables[0];
}

template <class Half>
HWY_INLINE void storeSixteenths(Half half, hn::Vec<Half> levels, std::int16_t* out) {
  const hn::Rebind<std::int16_t, Half> words;
  hn::StoreU(hn::ShiftLeft<kLevelFractionBits>(hn::PromoteTo(words, levels)), words, out);
}

// One chunk in each block of 16 bytes of a vector.
template <class D>
HWY_INLINE void applyToVector(D bytes, const ToneCurve& curve, const std::uint8_t* pixels,
                              std::int16_t* out, std::int16_t* chunkLevels) {
  constexpr std::size_t kLanes = hn::MaxLanes(D());
  constexpr std::size_t kChunks = kLanes / kChunkPx;
  const auto levels = hn::LoadU(bytes, pixels);
  const auto first = hn::TableLookupBytes(levels, hn::Zero(bytes));  // of its chunk
  const auto isFirst = hn::Eq(levels, first);
  const hn::Half<D> half;
  if (hn::AllTrue(bytes, isFirst)) {
    for (std::size_t i = 0; i < kChunks; ++i) {
      const std::uint8_t level = curve[pixels[i * kChunkPx]];
      chunkLevels[i] = level;
      std::fill_n(out + i * kChunkPx, kChunkPx,
                  static_cast<std::int16_t>(level << kLevelFractionBits));
    }
    return;
  }
  std::array<std::uint8_t, 8> bits;
  hn::StoreMaskBits(bytes, isFirst, bits.data());
  for (std::size_t i = 0; i < kChunks; ++i) {
    const bool isUniform = (bits[2 * i] & bits[2 * i + 1]) == 0xFF;
    chunkLevels[i] = isUniform ? curve[pixels[i * kChunkPx]] : kMixedChunk;
  }
  const auto toned = lookedUp(bytes, curve, levels);
  storeSixteenths(half, hn::LowerHalf(half, toned), out);
  storeSixteenths(half, hn::UpperHalf(half, toned), out + hn::MaxLanes(half));
}

}  // namespace

void applyToneCurveVectors(const ToneCurve& curve, const std::uint8_t* pixels, std::int16_t* out,
                           std::int16_t* levels, int chunks) {
  const hn::ScalableTag<std::uint8_t> wide;
  const hn::CappedTag<std::uint8_t, kChunkPx> narrow;
  constexpr int kWideChunks = static_cast<int>(hn::MaxLanes(wide)) / kChunkPx;
  int i = 0;
  for (; i + kWideChunks <= chunks; i += kWideChunks) {
    applyToVector(wide, curve, pixels + i * kChunkPx, out + i * kChunkPx, levels + i);
  }
  for (; i < chunks; ++i) {
    applyToVector(narrow, curve, pixels + i * kChunkPx, out + i * kChunkPx, levels + i);
  }
}

}  // namespace wren::stencil::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();
#endif  // WREN_IS_VECTOR_TARGET

#if HWY_ONCE

namespace wren::stencil {
namespace {

void applyToneCurveScalar(const ToneCurve& curve, const std::uint8_t* pixels, std::int16_t* out,
                          std::int16_t* levels, int chunks) {
  for (int i = 0; i < chunks; ++i, pixels += kChunkPx, out += kChunkPx) {
    levels[i] = areSixteenEqual(pixels) ? curve[pixels[0]] : kMixedChunk;
    for (int x = 0; x < kChunkPx; ++x) {
      out[x] = static_cast<std::int16_t>(curve[pixels[x]] << kLevelFractionBits);
    }
  }
}

constexpr KernelTable<decltype(&applyToneCurveScalar)> kApplyToneCurve =
    WREN_KERNEL_TABLE(applyToneCurveScalar, applyToneCurveVectors);

}  // namespace

void applyToneCurve(const ToneCurve& curve, const std::uint8_t* pixels, std::int16_t* out,
                    std::int16_t* levels, int chunks) {
  kernelOf(kApplyToneCurve)(curve, pixels, out, levels, chunks);
}

}  // namespace wren::stencil

#endif  // HWY_ONCE
