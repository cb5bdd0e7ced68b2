// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Tells how many rows of a page a halftone method has finished, so that they can be taken
// while they are in cache, and so that a page of dots needs room for a few rows only.

#pragma once

#include <cstddef>

namespace wren {

/// A function and its context, copied by value; neither is owned.
class FinishedRows {
 public:
  using Function = void (*)(void* context, std::size_t rows);

  /// Nobody wants to know.
  FinishedRows() = default;
  FinishedRows(Function function, void* context) : function_(function), context_(context) {}

  /// The first `rows` rows of the page are final. The number never falls.
  void report(std::size_t rows) const {
    if (function_ != nullptr) function_(context_, rows);
  }

 private:
  Function function_ = nullptr;
  void* context_ = nullptr;
};

}  // namespace wren
