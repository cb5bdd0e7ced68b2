// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// For the tests of the bitmap: an image with public members, an allocator that fails on
// demand, and images as rows of palette indexes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "bitmap/cximage.h"

namespace wren_test {

using Bytes = std::vector<std::uint8_t>;
using Rows = std::vector<Bytes>;

/// A `CxImage` whose header, information record and block a test may read.
class OpenImage : public CxImage {
 public:
  using CxImage::CxImage;
  using CxImage::dib;
  using CxImage::header;
  using CxImage::info;
};

/// How many allocations `allocateUntilSpent` still grants.
inline int grantedAllocations = 0;

inline void* allocateUntilSpent(std::size_t bytes) {
  return grantedAllocations-- > 0 ? std::malloc(bytes) : nullptr;
}

/// The bytes of a trivially copyable object.
template <class Object>
Bytes bytesOf(const Object& object) {
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(&object);
  return Bytes(bytes, bytes + sizeof object);
}

/// The palette indexes of an image.
inline Rows indexesOf(const CxImage& image) {
  Rows rows;
  for (int y = 0; y < image.GetHeight(); ++y) {
    Bytes row;
    for (int x = 0; x < image.GetWidth(); ++x) row.push_back(image.GetPixelIndex(x, y));
    rows.push_back(row);
  }
  return rows;
}

/// Makes an 8-bit grey image of rows of equal length.
inline void makeGrey(CxImage& image, const Rows& rows) {
  Bytes bytes;
  for (const Bytes& row : rows) bytes.insert(bytes.end(), row.begin(), row.end());
  const auto width = static_cast<std::uint32_t>(rows.front().size());
  image.CreateFromArray(bytes.data(), width, static_cast<std::uint32_t>(rows.size()), 8, width,
                        false);
}

/// Makes an image of any depth with a grey palette and the given indexes.
inline void makeIndexed(CxImage& image, std::uint32_t depth, const Rows& rows) {
  image.Create(static_cast<std::uint32_t>(rows.front().size()),
               static_cast<std::uint32_t>(rows.size()), depth, 0);
  image.SetGrayPalette();
  for (std::size_t y = 0; y < rows.size(); ++y) {
    for (std::size_t x = 0; x < rows[y].size(); ++x) {
      image.SetPixelIndex(static_cast<std::int64_t>(x), static_cast<std::int64_t>(y), rows[y][x]);
    }
  }
}

}  // namespace wren_test
