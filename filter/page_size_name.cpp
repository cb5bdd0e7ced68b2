// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
#include "filter/page_size_name.h"

#include <cstdlib>

namespace {

// The text of one number, at most 19 characters.
class NumberText {
 public:
  // Takes a digit, or D for the decimal point. False for anything else and when full.
  bool append(char character) {
    const bool digit = character >= '0' && character <= '9';
    if ((!digit && character != 'D') || length == kLargest) return false;
    text[length++] = digit ? character : '.';
    return true;
  }
  float value() const {
    return static_cast<float>(std::atof(text));  // NOLINT(cert-err34-c): no number is 0
  }

 private:
  static constexpr unsigned kLargest = 19;
  char text[kLargest + 1] = {};
  unsigned length = 0;
};

// Reads up to the Y; M is skipped. Returns the place after it, null on failure.
const char* readWidth(const char* at, NumberText& width) {
  for (; *at != 'Y'; ++at) {
    if (*at != 'M' && !width.append(*at)) return nullptr;
  }
  return at + 1;
}

// Reads up to the first M; what follows it does not matter.
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
