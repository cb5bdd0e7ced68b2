// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
#include "common/log.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

constexpr const char* kLevelTexts[] = {"DEBUG:", "DEBUG:", "WARN:", "ERROR:", "CRIT:", "INVALID:"};

const char* levelText(int level) {
  return kLevelTexts[level >= 0 && level <= 5 ? level : 5];
}

// Standard error has no buffer, so one fwrite is one write to the descriptor.
void writeAtOnce(const char* text, std::size_t length) {
  static_cast<void>(std::fwrite(text, 1, length, stderr));
}

// The last resort without memory: the text in pieces is better than no text.
WREN_PRINTF_LIKE(2, 0)
void writeInPieces(const char* prefix, const char* format, std::va_list arguments,
                   const char* suffix) {
  std::fputs(prefix, stderr);
  std::vfprintf(stderr, format, arguments);
  std::fputs(suffix, stderr);
}

// Lays prefix, message and suffix out in room, which holds size bytes, as far as
// they fit. Returns the length of the whole text.
WREN_PRINTF_LIKE(4, 0)
std::size_t compose(char* room, std::size_t size, const char* prefix, const char* format,
                    std::va_list arguments, const char* suffix) {
  const std::size_t prefixLength = std::strlen(prefix);
  const std::size_t suffixLength = std::strlen(suffix);
  std::memcpy(room, prefix, prefixLength);
  const int written = std::vsnprintf(room + prefixLength, size - prefixLength, format, arguments);
  const std::size_t length = prefixLength + (written > 0 ? static_cast<std::size_t>(written) : 0);
  if (length + suffixLength < size) std::memcpy(room + length, suffix, suffixLength);
  return length + suffixLength;
}

WREN_PRINTF_LIKE(2, 0)
void writeMessage(const char* prefix, const char* format, std::va_list arguments,
                  const char* suffix) {
  char room[512];
  std::va_list again;
  va_copy(again, arguments);
  const std::size_t length = compose(room, sizeof room, prefix, format, arguments, suffix);
  if (length < sizeof room) {
    writeAtOnce(room, length);
  } else if (auto* large = static_cast<char*>(std::malloc(length + 1))) {
    writeAtOnce(large, compose(large, length + 1, prefix, format, again, suffix));
    std::free(large);
  } else {
    writeInPieces(prefix, format, again, suffix);
  }
  va_end(again);
}

}  // namespace

void wrenLogCommon(int level, const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  writeMessage(levelText(level), format, arguments, "\n");
  va_end(arguments);
}

void wrenWriteMessage(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  writeMessage("", format, arguments, "");
  va_end(arguments);
}
