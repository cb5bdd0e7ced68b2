// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Draws the pictures of received jobs in a thread of its own, one after another, so
// that a long paper does not keep the next job waiting.

#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "common/handles.h"
#include "preview/received_job.h"

namespace wren::preview {

/// A job that was received to its end.
struct FinishedJob {
  std::unique_ptr<ReceivedJob> job;
  std::string ending;         ///< why it ended early, or empty
  FileDescriptor connection;  ///< closed when the job's files are complete
};

class PictureWorker {
 public:
  /// No more jobs should wait, so that their paper does not fill the memory.
  static constexpr std::size_t kMaxWaiting = 64;
  static constexpr std::uint64_t kMaxWaitingBytes = std::uint64_t{64} << 20;

  PictureWorker();
  /// Draws what waits; pictures that take long are cancelled.
  ~PictureWorker();
  PictureWorker(const PictureWorker&) = delete;
  PictureWorker& operator=(const PictureWorker&) = delete;

  /// Finishes the job and prints its line on standard output. Accepts jobs even if `isFull`.
  void add(FinishedJob finished);

  bool isFull() const;

  /// Jobs whose files are complete.
  std::size_t doneCount() const { return done_; }

 private:
  void run();

  mutable std::mutex mutex_;
  std::condition_variable wakeUp_;
  std::deque<FinishedJob> waiting_;
  std::uint64_t waitingBytes_ = 0;
  std::atomic<bool> isStopping_ = false;
  std::atomic<std::size_t> done_ = 0;
  std::thread thread_;
};

}  // namespace wren::preview
