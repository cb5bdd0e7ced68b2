// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "filter/page_size_name.h"

#include <cstdlib>

namespace wren::filter {
namespace {

// The text of one number, at most 19 characters.
class NumberText {
 public:
  // Appends a digit, or a decimal point for D. False for other characters or if the buffer is
  // full.
  bool append(char character) {
    const bool digit = character >= '0' && character <= '9';
    if ((!digit && character != 'D') || length_ == kLargest) return false;
    text_[length_++] = digit ? character : '.';
    return true;
  }
  float value() const {
    return static_cast<float>(std::atof(text_));  // NOLINT(cert-err34-c): not a number is 0
  }

 private:
  static constexpr unsigned kLargest = 19;
  char text_[kLargest + 1] = {};
  unsigned length_ = 0;
};

// Reads up to the Y; M is skipped. Returns the position after it, null on failure.
const char* readWidth(const char* at, NumberText& width) {
  for (; *at != 'Y'; ++at) {
    if (*at != 'M' && !width.append(*at)) return nullptr;
  }
  return at + 1;
}

// Reads up to the first M and ignores the rest.
bool readHeight(const char* at, NumberText& height) {
  for (; *at != 'M'; ++at) {
    if (!height.append(*at)) return false;
  }
  return true;
}

}  // namespace

PageSizeNumbers parsePageSizeName(const char* name) {
  if (*name != 'X') return {};
  NumberText width;
  NumberText height;
  const char* rest = readWidth(name + 1, width);
  if (rest == nullptr || !readHeight(rest, height)) return {};
  return {width.value(), height.value()};
}

}  // namespace wren::filter
