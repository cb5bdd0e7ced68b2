// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "stencil/tone_kernel.h"

#include <array>
#include <cstddef>

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

// The entries of the 2^Bits tables from `table` on: the bits 4, 5, ... of the levels choose the
// table.
template <int Bits, class D>
HWY_INLINE hn::Vec<D> entryOf(D bytes, const std::uint8_t* table, hn::Vec<D> entry,
                              const hn::Mask<D>* bits) {
  if constexpr (Bits == 0) {
    return hn::TableLookupBytes(hn::LoadDup128(bytes, table), entry);
  } else {
    const auto even = entryOf<Bits - 1>(bytes, table, entry, bits);
    const auto odd = entryOf<Bits - 1>(bytes, table + (kTableLevels << (Bits - 1)), entry, bits);
    return hn::IfThenElse(bits[Bits - 1], odd, even);
  }
}

// curve[level]: the lower four bits choose an entry from each of 16 tables, the upper four the
// table.
template <class D>
HWY_INLINE hn::Vec<D> lookedUp(D bytes, const ToneCurve& curve, hn::Vec<D> levels) {
  const hn::Mask<D> bits[4] = {
      hn::TestBit(levels, hn::Set(bytes, 0x10)), hn::TestBit(levels, hn::Set(bytes, 0x20)),
      hn::TestBit(levels, hn::Set(bytes, 0x40)), hn::TestBit(levels, hn::Set(bytes, 0x80))};
  return entryOf<4>(bytes, curve.data(), hn::And(levels, hn::Set(bytes, 0x0F)), bits);
}

template <class Half>
HWY_INLINE void storeHalf(Half /*half*/, hn::Vec<Half> levels, std::int16_t* out) {
  const hn::Rebind<std::int16_t, Half> words;
  hn::StoreU(hn::ShiftLeft<kLevelFractionBits>(hn::PromoteTo(words, levels)), words, out);
}

template <class D>
HWY_INLINE void storeSixteenths(D /*bytes*/, hn::Vec<D> levels, std::int16_t* out) {
  const hn::Half<D> half;
  storeHalf(half, hn::LowerHalf(half, levels), out);
  storeHalf(half, hn::UpperHalf(half, levels), out + hn::MaxLanes(half));
}

// The chunks of a vector are its blocks of 16 bytes.
template <class D>
HWY_INLINE void applyToVector(D bytes, const ToneCurve& curve, const std::uint8_t* pixels,
                              std::int16_t* out, std::int16_t* chunkLevels) {
  constexpr std::size_t kChunks = hn::MaxLanes(D()) / kChunkPx;
  const auto levels = hn::LoadU(bytes, pixels);
  const auto firsts = hn::TableLookupBytes(levels, hn::Zero(bytes));  // of each chunk
  const auto isFirst = hn::Eq(levels, firsts);
  std::array<std::uint16_t, 4> equal;  // one bit for each pixel
  hn::StoreMaskBits(bytes, isFirst, reinterpret_cast<std::uint8_t*>(equal.data()));
  bool isUniform = true;
  for (std::size_t i = 0; i < kChunks; ++i) {
    const bool isUniformChunk = equal[i] == 0xFFFF;
    chunkLevels[i] = isUniformChunk ? curve[pixels[i * kChunkPx]] : kMixedChunk;
    isUniform = isUniform && isUniformChunk;
  }
  if (!isUniform) {
    storeSixteenths(bytes, lookedUp(bytes, curve, levels), out);
    return;
  }
  const hn::CappedTag<std::int16_t, kChunkPx> words;
  for (std::size_t i = 0; i < kChunks; ++i) {
    const auto level = static_cast<std::int16_t>(chunkLevels[i] << kLevelFractionBits);
    for (std::size_t x = 0; x < kChunkPx; x += hn::MaxLanes(words)) {
      hn::StoreU(hn::Set(words, level), words, out + i * kChunkPx + x);
    }
  }
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
