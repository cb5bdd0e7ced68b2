// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Compares long sequences of bytes. A failure shows the first difference and the bytes around
// it, where GoogleTest would show the first 32 elements only.

#pragma once

#include <gmock/gmock.h>

#include <algorithm>
#include <cstddef>
#include <iomanip>
#include <sstream>
#include <string>

namespace wren_test {

/// Up to 16 bytes around index `at` in hexadecimal, that one in brackets.
template <typename Bytes>
std::string bytesAround(const Bytes& bytes, std::size_t at) {
  std::ostringstream text;
  const std::size_t first = at < 4 ? 0 : at - 4;
  for (std::size_t i = first; i < std::min<std::size_t>(first + 16, bytes.size()); ++i) {
    text << (i == at ? " [" : " ") << std::hex << std::setw(2) << std::setfill('0')
         << (static_cast<unsigned>(bytes[i]) & 0xFFU) << (i == at ? "]" : "");
  }
  return text.str();
}

/// Succeeds if two containers of bytes are equal. The message names the first byte that
/// differs, and its row and column if the rows have `rowBytes` bytes.
template <typename Expected, typename Got>
testing::AssertionResult sameBytes(const Expected& expected, const Got& got,
                                   std::size_t rowBytes = 0) {
  const auto [e, g] = std::mismatch(expected.begin(), expected.end(), got.begin(), got.end());
  if (e == expected.end() && g == got.end()) return testing::AssertionSuccess();
  const auto at = static_cast<std::size_t>(e - expected.begin());
  auto failure = testing::AssertionFailure() << "first difference at byte " << at;
  if (rowBytes != 0) failure << " (row " << at / rowBytes << ", column " << at % rowBytes << ")";
  return failure << " of " << expected.size() << " expected and " << got.size()
                 << " got\nexpected:" << bytesAround(expected, at)
                 << "\n     got:" << bytesAround(got, at);
}

/// The same as a matcher.
MATCHER_P(SameBytes, expected,
          (negation ? "differs from the " : "equals the ") + std::to_string(expected.size()) +
              " expected bytes") {
  const testing::AssertionResult result = sameBytes(expected, arg);
  *result_listener << result.message();
  return static_cast<bool>(result);
}

}  // namespace wren_test
