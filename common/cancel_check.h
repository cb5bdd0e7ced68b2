// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The question that long work asks between its steps: is the job cancelled? Who sets
// the answer (a signal handler, another thread) is the caller's business.

#pragma once

namespace wren {

/// A function and its context, copied by value; neither is owned. The function may be
/// called often, from the thread that does the work, and must not block.
class CancelCheck {
 public:
  using Function = bool (*)(const void* context);

  /// A job that nobody cancels.
  CancelCheck() = default;
  CancelCheck(Function function, const void* context) : function_(function), context_(context) {}

  bool isCancelled() const { return function_ != nullptr && function_(context_); }

 private:
  Function function_ = nullptr;
  const void* context_ = nullptr;
};

}  // namespace wren
