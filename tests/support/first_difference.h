// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Compares pages of bytes. A failed comparison shows the first difference and what is
// around it, not the whole page.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace wren_test {

/// Up to 16 bytes from index `first`, before index `end`, in decimal.
inline std::string bytesFrom(std::span<const std::uint8_t> bytes, std::size_t first,
                             std::size_t end) {
  std::string text;
  for (std::size_t i = first; i < std::min(end, first + 16); ++i) {
    text += ' ' + std::to_string(bytes[i]);
  }
  return text;
}

/// Whether two pages of rows that are `strideBytes` apart are equal, padding included.
inline testing::AssertionResult samePage(std::span<const std::uint8_t> got,
                                         std::span<const std::uint8_t> expected,
                                         std::size_t strideBytes) {
  if (got.size() != expected.size()) {
    return testing::AssertionFailure()
           << got.size() << " bytes instead of " << expected.size() << " bytes";
  }
  const auto [at, other] = std::mismatch(got.begin(), got.end(), expected.begin());
  if (at == got.end()) return testing::AssertionSuccess();
  const auto index = static_cast<std::size_t>(at - got.begin());
  std::size_t count = 0;
  for (std::size_t i = index; i < got.size(); ++i) count += got[i] != expected[i] ? 1 : 0;
  const std::size_t rowEnd = std::min(got.size(), (index / strideBytes + 1) * strideBytes);
  return testing::AssertionFailure()
         << "first difference at column " << index % strideBytes << ", row " << index / strideBytes
         << ": expected " << int{*other} << ", got " << int{*at}
         << "\n  expected from there:" << bytesFrom(expected, index, rowEnd)
         << "\n  got from there:     " << bytesFrom(got, index, rowEnd) << "\n  " << count << " of "
         << got.size() << " bytes differ";
}

}  // namespace wren_test
