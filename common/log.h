// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The messages of the program. They go to standard error, which the print system reads
// line by line and sorts by the leading keyword. Every filter of the chain writes to the same
// stream, so each message leaves in one write.

#pragma once

#include <cstddef>

#ifdef __GNUC__
#define WREN_PRINTF_LIKE(text, first) __attribute__((format(printf, text, first)))
#else
#define WREN_PRINTF_LIKE(text, first)
#endif

extern "C" {

/// Writes one line: the keyword of the level, the message as printf formats it, and a
/// newline. There is no blank after the keyword. The newline is added even if the format
/// ends with one.
/// @param level 0 and 1 "DEBUG:", 2 "WARN:", 3 "ERROR:", 4 "CRIT:"; 5 and
///   everything else "INVALID:".
/// Write errors are ignored. The length of a message is not limited.
void wrenLogCommon(int level, const char* format, ...) WREN_PRINTF_LIKE(2, 3);

/// Writes a message without keyword and without an added newline.
void wrenWriteMessage(const char* format, ...) WREN_PRINTF_LIKE(1, 2);
}

namespace wren {

/// Receives the messages of one thread in place of standard error, from its construction
/// to its destruction. Sinks nest; destroy them in the reverse order, in the thread that
/// made them.
class MessageSink {
 public:
  /// Gets one complete message per call: `length` bytes, not terminated, valid during the
  /// call. Must not throw.
  using Function = void (*)(void* context, const char* text, std::size_t length);

  /// @param context passed to each call; not owned.
  MessageSink(Function function, void* context);
  MessageSink(const MessageSink&) = delete;
  MessageSink& operator=(const MessageSink&) = delete;
  ~MessageSink();

  /// Passes one message on.
  void take(const char* text, std::size_t length) const { function_(context_, text, length); }

 private:
  Function function_;
  void* context_;
  const MessageSink* previous_;
};

}  // namespace wren
