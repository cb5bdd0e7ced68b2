// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A client that sends a document in a thread of its own: a raster job that waits keeps its client
// waiting.

#pragma once

#include <atomic>
#include <string>
#include <thread>

#include "tests/app/running_app.h"

namespace wren_test {

class PrintingClient {
 public:
  PrintingClient(RunningApp& app, const std::string& document,
                 const std::string& format = "image/pwg-raster")
      : thread_([this, &app, document, format] {
          outcome_ = app.print(document, format);
          ended_ = true;
        }) {}
  PrintingClient(const PrintingClient&) = delete;
  PrintingClient& operator=(const PrintingClient&) = delete;
  ~PrintingClient() {
    if (thread_.joinable()) thread_.join();
  }

  bool hasEnded() const { return ended_; }

  /// Waits for the end of the job.
  JobOutcome outcome() {
    if (thread_.joinable()) thread_.join();
    return outcome_;
  }

 private:
  JobOutcome outcome_;
  std::atomic<bool> ended_ = false;
  std::thread thread_;
};

}  // namespace wren_test
