// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Compares long sequences of bytes. A failure shows the sizes and the bytes around the
// first difference, where GoogleTest would show the first 32 elements only.

#pragma once

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace wren_test {

/// Up to 16 bytes from `offset` on in hexadecimal.
inline std::string bytesAt(const std::vector<std::uint8_t>& bytes, std::size_t offset) {
  std::string text;
  for (std::size_t i = offset; i < std::min(bytes.size(), offset + 16); ++i) {
    char digits[4];
    std::snprintf(digits, sizeof digits, "%02X ", bytes[i]);
    text += digits;
  }
  return text + (bytes.size() > offset + 16 ? ".." : "end");
}

/// Where and how the sequences differ; empty if they are equal.
inline std::string firstDifference(const std::vector<std::uint8_t>& actual,
                                   const std::vector<std::uint8_t>& expected) {
  if (actual == expected) return {};
  const auto [a, e] = std::mismatch(actual.begin(), actual.end(), expected.begin(), expected.end());
  const auto offset = static_cast<std::size_t>(a - actual.begin());
  return std::to_string(actual.size()) + " bytes, expected " + std::to_string(expected.size()) +
         "; from offset " + std::to_string(offset) + " on: " + bytesAt(actual, offset) +
         ", expected: " + bytesAt(expected, offset);
}

/// Matches a vector of bytes that equals `expected`.
MATCHER_P(SameBytes, expected,
          (negation ? "differs from the " : "equals the ") + std::to_string(expected.size()) +
              " expected bytes") {
  const std::string difference = firstDifference(arg, expected);
  *result_listener << difference;
  return difference.empty();
}

}  // namespace wren_test
