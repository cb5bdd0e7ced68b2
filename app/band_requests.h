// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Puts requests for a printer's status between the bands of a job. A printer that stops in
// mid-page can answer those that its buffer still takes; a request sent after the buffer is full
// would wait behind the job's bytes.

#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "escpos/splitter.h"

namespace wren::app {

/// For the bytes of one connection, from their first on.
class BandRequests {
 public:
  /// The least distance between two requests. The smallest buffers have 4 KiB: a band of the widest
  /// head and this distance fit together, so that one request gets in after the printer has
  /// stopped.
  static constexpr std::size_t kSpacing = 1024;

  BandRequests();
  BandRequests(const BandRequests&) = delete;
  BandRequests& operator=(const BandRequests&) = delete;

  struct Mixed {
    std::vector<std::uint8_t> bytes;
    unsigned requests = 0;  ///< how many were put between them
  };

  /// The next bytes of the job with `kCauseRequest` after some of the feeds that end in them, so
  /// never inside a command. Commands may be split between calls.
  Mixed mix(std::span<const std::uint8_t> bytes);

 private:
  escpos::Splitter splitter_;
  std::uint64_t split_ = 0;              // bytes of whole commands so far
  std::uint64_t passed_ = 0;             // bytes of the job so far
  std::uint64_t lastRequest_ = 0;        // where it stands among them
  std::vector<std::uint64_t> feedEnds_;  // of the feeds that ended in the call
};

}  // namespace wren::app
