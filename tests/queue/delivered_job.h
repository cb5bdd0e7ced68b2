// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A job that went through the scheduler, and the same input printed by running the
// filter directly.

#pragma once

#include <cups/cups.h>

#include <cstdint>
#include <string>
#include <vector>

#include "tests/queue/capture_server.h"
#include "tests/queue/scheduler.h"
#include "tests/reference/job.h"

using Bytes = std::vector<std::uint8_t>;

/// One run of the filter: its input, and what a direct run writes for the same input.
struct FilterRun {
  std::vector<reference::Page> raster;
  std::string copies;   ///< the fourth argument
  std::string options;  ///< the fifth argument
  Bytes directBytes;    ///< printer bytes of the direct run
};

struct DeliveredJob {
  ipp_jstate_t state = IPP_JSTATE_PENDING;
  std::vector<FilterRun> runs;  ///< one per document, in order
  Bytes received;               ///< what the printer received: all documents in one connection
};

/// The scheduler and the printer of its queues, shared by all tests.
struct TestBench {
  explicit TestBench(const std::string& work, bool asRoot) : scheduler(work, asRoot) {}

  /// Sends a job with lp.
  /// @param files names in the folder of documents, separated by spaces.
  /// @return the job number; 0 if lp fails.
  int submit(const std::string& queue, const std::string& options, const std::string& files) const;

  /// The state of a job now; pending if there is none of that number.
  ipp_jstate_t stateOf(int job) const;

  /// Waits for the end of a job, at most 30 seconds.
  ipp_jstate_t waitForEnd(int job) const;

  /// Discards earlier runs, sends a job and waits for its end and its bytes.
  DeliveredJob print(const std::string& queue, const std::string& options,
                     const std::string& files);

  /// The bytes of the connection since the last call; empty unless there was exactly one.
  Bytes takeReceived();

  /// The runs of the filter since the last call.
  std::vector<FilterRun> takeRuns() const;

  Scheduler scheduler;
  CaptureServer printer;
};

/// The test bench of this process; set by `main`.
extern TestBench* bench;
