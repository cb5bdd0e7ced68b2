// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/job_turns.h"

#include <chrono>

namespace wren::app {
namespace {

// A printer that is resumed or a client that goes away tells nobody.
constexpr std::chrono::milliseconds kAskAgain(50);

}  // namespace

bool JobTurns::take(const JobKey& job) {
  const std::lock_guard lock(mutex_);
  Line& line = lines_[job.printerId];
  const bool isFirst = line.waiting.empty() || job.jobId < *line.waiting.begin();
  if (closed_ || line.taken || !isFirst) return false;
  line.taken = true;
  return true;
}

bool JobTurns::wait(const JobKey& job, const Question& isFirst, const Question& goesOn) {
  std::unique_lock lock(mutex_);
  Line& line = lines_[job.printerId];
  if (closed_ || line.waiting.size() >= kMostWaiting) return false;
  line.waiting.insert(job.jobId);
  ++inside_;
  bool isTaken = false;
  while (!closed_) {
    const bool mayBeNext = !line.taken && *line.waiting.begin() == job.jobId;
    lock.unlock();
    const bool goes = goesOn();
    const bool isNext = goes && mayBeNext && isFirst();
    lock.lock();
    isTaken = isNext && !closed_ && !line.taken && *line.waiting.begin() == job.jobId;
    if (isTaken) line.taken = true;
    if (isTaken || !goes) break;
    changed_.wait_for(lock, kAskAgain);
  }
  line.waiting.erase(job.jobId);
  --inside_;
  changed_.notify_all();
  return isTaken;
}

void JobTurns::give(int printerId, const std::function<void()>& startNext) {
  {
    const std::lock_guard lock(mutex_);
    lines_[printerId].taken = false;
    changed_.notify_all();
    if (closed_) return;
    ++inside_;
  }
  startNext();
  const std::lock_guard lock(mutex_);
  --inside_;
  changed_.notify_all();
}

void JobTurns::close() {
  std::unique_lock lock(mutex_);
  closed_ = true;
  changed_.notify_all();
  changed_.wait(lock, [this] { return inside_ == 0; });
}

bool JobTurns::isClosed() {
  const std::lock_guard lock(mutex_);
  return closed_;
}

}  // namespace wren::app
