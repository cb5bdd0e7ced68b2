// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "preview/picture_worker.h"

#include <cstdio>
#include <utility>

namespace wren::preview {
namespace {

bool isSet(const void* flag) {
  return *static_cast<const std::atomic<bool>*>(flag);
}

}  // namespace

PictureWorker::PictureWorker() : thread_([this] { run(); }) {}

PictureWorker::~PictureWorker() {
  {
    const std::lock_guard lock(mutex_);
    isStopping_ = true;
  }
  wakeUp_.notify_one();
  thread_.join();
}

void PictureWorker::add(FinishedJob finished) {
  {
    const std::lock_guard lock(mutex_);
    waitingBytes_ += finished.job->paperBytes();
    waiting_.push_back(std::move(finished));
  }
  wakeUp_.notify_one();
}

bool PictureWorker::isFull() const {
  const std::lock_guard lock(mutex_);
  return waiting_.size() >= kMaxWaiting || waitingBytes_ >= kMaxWaitingBytes;
}

void PictureWorker::run() {
  for (;;) {
    std::unique_lock lock(mutex_);
    wakeUp_.wait(lock, [this] { return isStopping_ || !waiting_.empty(); });
    if (waiting_.empty()) return;
    const FinishedJob finished = std::move(waiting_.front());
    waiting_.pop_front();
    waitingBytes_ -= finished.job->paperBytes();
    lock.unlock();
    const std::string line = finished.job->finish(finished.ending, {isSet, &isStopping_});
    std::printf("%s\n", line.c_str());
    std::fflush(stdout);
    ++done_;
  }
}

}  // namespace wren::preview
