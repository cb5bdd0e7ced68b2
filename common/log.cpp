// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "common/log.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "common/handles.h"

namespace {

constexpr const char* kLevelTexts[] = {"DEBUG:", "DEBUG:", "WARN:", "ERROR:", "CRIT:", "INVALID:"};

const char* levelText(int level) {
  return kLevelTexts[level >= 0 && level <= 5 ? level : 5];
}

// Null: standard error.
thread_local const wren::MessageSink* threadSink = nullptr;

// Standard error is not buffered, so one fwrite is one write to the descriptor.
void deliver(const char* text, std::size_t length) {
  if (threadSink != nullptr) {
    threadSink->take(text, length);
  } else {
    static_cast<void>(std::fwrite(text, 1, length, stderr));
  }
}

// Formats prefix, message and suffix into `buffer` as far as they fit. Returns the length
// of the whole text.
WREN_PRINTF_LIKE(4, 0)
std::size_t compose(char* buffer, std::size_t size, const char* prefix, const char* format,
                    std::va_list arguments, const char* suffix) {
  const std::size_t prefixLength = std::strlen(prefix);
  const std::size_t suffixLength = std::strlen(suffix);
  std::memcpy(buffer, prefix, prefixLength);
  const int written = std::vsnprintf(buffer + prefixLength, size - prefixLength, format, arguments);
  const std::size_t length = prefixLength + (written > 0 ? static_cast<std::size_t>(written) : 0);
  if (length + suffixLength < size) std::memcpy(buffer + length, suffix, suffixLength);
  return length + suffixLength;
}

// Out of memory for a long message: standard error gets it in several writes, a sink gets
// the part that `compose` has put into `buffer`.
WREN_PRINTF_LIKE(4, 0)
void deliverWithoutMemory(char* buffer, std::size_t size, const char* prefix, const char* format,
                          std::va_list arguments, const char* suffix) {
  if (threadSink != nullptr) {
    const std::size_t suffixLength = std::strlen(suffix);
    std::memcpy(buffer + size - 1 - suffixLength, suffix, suffixLength);
    threadSink->take(buffer, size - 1);
    return;
  }
  std::fputs(prefix, stderr);
  std::vfprintf(stderr, format, arguments);
  std::fputs(suffix, stderr);
}

WREN_PRINTF_LIKE(2, 0)
void writeMessage(const char* prefix, const char* format, std::va_list arguments,
                  const char* suffix) {
  char buffer[512];
  std::va_list again;
  va_copy(again, arguments);
  const std::size_t length = compose(buffer, sizeof buffer, prefix, format, arguments, suffix);
  if (length < sizeof buffer) {
    deliver(buffer, length);
  } else if (const wren::MallocBytes memory{static_cast<unsigned char*>(std::malloc(length + 1))}) {
    auto* large = reinterpret_cast<char*>(memory.get());
    deliver(large, compose(large, length + 1, prefix, format, again, suffix));
  } else {
    deliverWithoutMemory(buffer, sizeof buffer, prefix, format, again, suffix);
  }
  va_end(again);
}

}  // namespace

namespace wren {

MessageSink::MessageSink(Function function, void* context)
    : function_(function), context_(context), previous_(threadSink) {
  threadSink = this;
}

MessageSink::~MessageSink() {
  threadSink = previous_;
}

}  // namespace wren

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
