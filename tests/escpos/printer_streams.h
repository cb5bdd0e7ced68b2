// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Builds printer streams for the tests of escpos/ and preview/.

#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace streams {

using Bytes = std::vector<std::uint8_t>;

inline Bytes operator+(Bytes left, const Bytes& right) {
  // Not by insert(): g++ 16 warns of its copy, wrongly.
  for (const std::uint8_t byte : right) left.push_back(byte);
  return left;
}

/// Hexadecimal digits as bytes; blanks are ignored.
inline Bytes hex(const std::string& text) {
  Bytes bytes;
  std::string digits;
  for (const char c : text) {
    if (c == ' ') continue;
    digits += c;
    if (digits.size() < 2) continue;
    bytes.push_back(static_cast<std::uint8_t>(std::stoul(digits, nullptr, 16)));
    digits.clear();
  }
  return bytes;
}

inline Bytes repeat(std::size_t count, std::uint8_t byte) {
  return Bytes(count, byte);
}

/// A bit image command; `m` is 0 for single density and 1 for double density.
inline Bytes bitImage(std::uint8_t m, const Bytes& columns) {
  const auto count = columns.size();
  return Bytes{0x1B, 0x2A, m, static_cast<std::uint8_t>(count & 0xFF),
               static_cast<std::uint8_t>(count >> 8)} +
         columns;
}

inline Bytes feed(std::uint8_t units) {
  return {0x1B, 0x4A, units};
}

/// A job with default settings around `pages`.
inline Bytes job(const Bytes& pages) {
  return repeat(64, 0) + hex("1B40 1F1B1F4265657006 1B5500") + pages + hex("1F1B1F4265657006 1B76");
}

}  // namespace streams
