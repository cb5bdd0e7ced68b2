// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include <cstddef>
#include <cstdint>
#include <vector>

#include "tests/reference/cximage.h"

namespace reference {

namespace {

struct KernelEntry {
  std::int64_t dx;
  std::int64_t dy;
  std::int64_t weight;
};

struct Kernel {
  std::int64_t divisor;
  std::vector<KernelEntry> entries;  // in the order of application
};

Kernel kernelOf(std::uint64_t method) {
  switch (method) {
    case 2:  // Burkes
      return {32, {{1, 0, 8}, {2, 0, 4}, {-2, 1, 2}, {-1, 1, 4}, {0, 1, 8}, {1, 1, 4}, {2, 1, 2}}};
    case 3:  // Stucki
      return {42,
              {{1, 0, 8},
               {2, 0, 4},
               {-2, 1, 2},
               {-1, 1, 4},
               {0, 1, 8},
               {1, 1, 4},
               {2, 1, 2},
               {-2, 2, 1},
               {-1, 2, 2},
               {0, 2, 4},
               {1, 2, 2},
               {2, 2, 1}}};
    case 4:  // Jarvis-Judice-Ninke
      return {48,
              {{1, 0, 7},
               {2, 0, 5},
               {-2, 1, 3},
               {-1, 1, 5},
               {0, 1, 7},
               {1, 1, 5},
               {2, 1, 3},
               {-2, 2, 1},
               {-1, 2, 3},
               {0, 2, 5},
               {1, 2, 3},
               {2, 2, 1}}};
    case 5:  // Sierra
      return {32,
              {{1, 0, 5},
               {2, 0, 3},
               {-2, 1, 2},
               {-1, 1, 4},
               {0, 1, 5},
               {1, 1, 4},
               {2, 1, 2},
               {-1, 2, 2},
               {0, 2, 3},
               {1, 2, 2}}};
    case 6:  // Stevenson-Arce
      return {200,
              {{2, 0, 32},
               {-3, 1, 12},
               {-1, 1, 26},
               {1, 1, 30},
               {3, 1, 16},
               {-2, 2, 12},
               {0, 2, 26},
               {2, 2, 12},
               {-3, 3, 5},
               {-1, 3, 12},
               {1, 3, 12},
               {3, 3, 5}}};
    default:  // Floyd-Steinberg
      return {16, {{1, 0, 7}, {-1, 1, 3}, {0, 1, 5}, {1, 1, 1}}};
  }
}

}  // namespace

bool CxImage::Dither(std::int64_t method) {
  if (dib == nullptr) return false;
  if (header.bitsPerPixel == 1) return true;
  CxImage result;
  result.CopyInfo(*this);
  result.Create(static_cast<std::uint32_t>(header.width), static_cast<std::uint32_t>(header.height),
                1, info.imageType);
  if (!result.IsValid()) {
    setLastError(result.GetLastError());
    return false;
  }
  if (method == 0) {
    ditherThreshold(result);
  } else if (method == 1) {
    ditherOrdered(result);
  } else if (method == 7) {
    ditherBayer(result);
  } else {
    ditherDiffusion(result, method);
  }
  result.SetPaletteColor(0, 0, 0, 0, 0);
  result.SetPaletteColor(1, 255, 255, 255, 0);
  Transfer(result);
  return true;
}

void CxImage::ditherThreshold(CxImage& result) const {
  for (std::int64_t y = 0; y < header.height; ++y) {
    for (std::int64_t x = 0; x < header.width; ++x) {
      result.SetPixelIndex(x, y, BlindGetPixelIndex(x, y) < 129 ? 0 : 255);
    }
  }
}

void CxImage::ditherOrdered(CxImage& result) const {
  const std::int32_t matrix[4][4] = {{0, 8, 2, 10}, {12, 4, 14, 6}, {3, 11, 1, 9}, {15, 7, 13, 5}};
  const std::uint8_t output[2] = {0, 1};
  for (std::int64_t y = 0; y < header.height; ++y) {
    for (std::int64_t x = 0; x < header.width; ++x) {
      const std::int32_t t = std::int32_t{BlindGetPixelIndex(x, y)} * 16 / 255;
      const std::int32_t r = t % 16;
      const std::int32_t q = t / 16;
      result.BlindSetPixelIndex(x, y, matrix[y & 3][x & 3] < r ? output[q + 1] : output[q]);
    }
  }
}

void CxImage::ditherBayer(CxImage& result) const {
  const int order = 4;
  std::vector<std::uint8_t> table(std::size_t{1} << (2 * order));
  for (std::size_t i = 0; i < table.size(); ++i) {
    int a = static_cast<int>(i) / order;
    int b = static_cast<int>(i) % order;
    int d = 0;
    for (int k = 0; k < order; ++k) {
      d = (((d << 1) | ((a & 1) ^ (b & 1))) << 1) | (b & 1);
      a >>= 1;
      b >>= 1;
    }
    table[i] = static_cast<std::uint8_t>(d & 255);
  }
  const int scale = 8 - 2 * order > 0 ? 8 - 2 * order : 0;
  for (std::int64_t y = 0; y < header.height; ++y) {
    for (std::int64_t x = 0; x < header.width; ++x) {
      const int level = BlindGetPixelIndex(x, y) >> scale;
      const int threshold = table[static_cast<std::size_t>(x % order + order * (y % order))];
      result.SetPixelIndex(x, y, level > threshold ? 1 : 0);
    }
  }
}

void CxImage::ditherDiffusion(CxImage& result, std::int64_t method) {
  const Kernel kernel = kernelOf(static_cast<std::uint64_t>(method));
  for (std::int64_t y = 0; y < header.height; ++y) {
    for (std::int64_t x = 0; x < header.width; ++x) {
      const std::int64_t level = BlindGetPixelIndex(x, y);
      const bool white = level > 128;
      const std::int64_t error = white ? level - 255 : level;
      result.SetPixelIndex(x, y, white ? 1 : 0);
      for (const KernelEntry& entry : kernel.entries) {
        std::int64_t v = GetPixelIndex(x + entry.dx, y + entry.dy);
        v += error * entry.weight / kernel.divisor;
        if (v < 0) v = 0;
        if (v > 255) v = 255;
        SetPixelIndex(x + entry.dx, y + entry.dy, static_cast<std::uint8_t>(v));
      }
    }
  }
}

}  // namespace reference
