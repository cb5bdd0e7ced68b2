// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Helpers of the fuzz targets: values from the input, and a check that aborts.

#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace fuzz {

/// The first byte of an input that describes fields and not the bytes themselves. The inputs that
/// are kept in their other form do not begin with it.
inline constexpr std::uint8_t kFieldsMark = 0xF1;

/// Reads values from the start of an input. Past its end all bytes are zero.
class Input {
 public:
  Input(const std::uint8_t* data, std::size_t size) : data_(data), left_(size) {}

  std::size_t left() const { return left_; }

  /// Whether `kFieldsMark` comes next, which is consumed then.
  bool takeFieldsMark() {
    if (left_ == 0 || *data_ != kFieldsMark) return false;
    byte();
    return true;
  }

  std::uint8_t byte() {
    if (left_ == 0) return 0;
    --left_;
    return *data_++;
  }

  /// From 0 to `limit` - 1.
  std::uint32_t below(std::uint32_t limit) { return byte() % limit; }

  std::uint32_t word() {
    std::uint32_t value = 0;
    for (int shift = 0; shift < 32; shift += 8) value |= std::uint32_t{byte()} << shift;
    return value;
  }

  /// The next `count` bytes; missing ones are zero.
  std::vector<std::uint8_t> bytes(std::size_t count) {
    std::vector<std::uint8_t> result(count);
    const std::size_t taken = std::min(count, left_);
    if (taken > 0) std::memcpy(result.data(), data_, taken);
    data_ += taken;
    left_ -= taken;
    return result;
  }

  /// `count` bytes: up to 40 from the input, the others generated from these, so that a short
  /// input can fill a page.
  std::vector<std::uint8_t> filling(std::size_t count) {
    const std::uint8_t mask = byte();
    std::vector<std::uint8_t> result = bytes(std::min<std::size_t>(count, 40));
    std::uint32_t state = 2166136261U;
    for (const std::uint8_t taken : result) state = (state ^ taken) * 16777619U;
    while (result.size() < count) {
      state = state * 1664525U + 1013904223U;
      result.push_back(static_cast<std::uint8_t>(state >> 24 | mask));
    }
    return result;
  }

  std::vector<std::uint8_t> rest() { return bytes(left_); }

  /// The bytes before the next zero byte, which is consumed too.
  std::string text() {
    std::string result;
    while (left_ > 0) {
      const std::uint8_t next = byte();
      if (next == 0) break;
      result.push_back(static_cast<char>(next));
    }
    return result;
  }

 private:
  const std::uint8_t* data_;
  std::size_t left_;
};

/// Aborts with the text `promise` unless `holds`.
inline void check(bool holds, const char* promise) {
  if (holds) return;
  std::fprintf(stderr, "broken promise: %s\n", promise);
  std::abort();
}

}  // namespace fuzz
