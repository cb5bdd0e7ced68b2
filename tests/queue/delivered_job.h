// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A job that went through the scheduler, and the same job by hand.

#pragma once

#include <cups/cups.h>

#include <cstdint>
#include <string>
#include <vector>

#include "tests/queue/capture_server.h"
#include "tests/queue/scheduler.h"
#include "tests/reference/job.h"

using Bytes = std::vector<std::uint8_t>;

/// One start of the filter: what it was given, and what it writes when run on that by hand.
struct FilterRun {
  std::vector<reference::Page> raster;
  std::string copies;   ///< the fourth argument
  std::string options;  ///< the fifth argument
  Bytes byHand;
};

struct DeliveredJob {
  ipp_jstate_t state = IPP_JSTATE_PENDING;
  std::vector<FilterRun> runs;  ///< one for each document, in the order of their starts
  Bytes received;               ///< what the printer got, all documents over one connection
};

/// The scheduler and the printer behind its queues; made once for all tests.
struct TestBench {
  explicit TestBench(const std::string& work, bool asRoot) : scheduler(work, asRoot) {}

  /// Sends a job with lp: queue, options and files as on its command line, files by their names
  /// among the documents. Returns the number of the job, 0 when lp refuses.
  int submit(const std::string& queue, const std::string& options, const std::string& files) const;

  /// Waits for the end of a job, 30 seconds at most.
  ipp_jstate_t waitForEnd(int job) const;

  /// Forgets earlier runs, sends a job and waits for its end and for its bytes.
  DeliveredJob print(const std::string& queue, const std::string& options,
                     const std::string& files);

  /// The bytes of the one connection since the last call; empty when there was not one.
  Bytes takeReceived();

  /// The starts of the filter since the last call.
  std::vector<FilterRun> takeRuns() const;

  Scheduler scheduler;
  CaptureServer printer;
};

/// The bench of this process; set by main.
extern TestBench* bench;

