// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// How the filter learns that the job is cancelled. `main` sets the flag and wakes a waiting
// reader.

#pragma once

#include <csignal>

#include "common/cancel_check.h"

namespace wren::filter {

struct CancelSignal {
  /// Not 0 once the job is cancelled; null for a job that nobody cancels. Not owned.
  const volatile std::sig_atomic_t* flag = nullptr;
  /// A descriptor that becomes readable with the flag, so that a wait for input ends;
  /// -1 for none. Not owned.
  int wakeUpDescriptor = -1;
  /// Becomes 1 before the first byte for the printer. Until then nothing has to be finished,
  /// and a signal may end the process at once; null if nobody asks. Not owned.
  volatile std::sig_atomic_t* jobHasBegun = nullptr;

  bool isRequested() const { return flag != nullptr && *flag != 0; }
  void announceJob() const {
    if (jobHasBegun != nullptr) *jobHasBegun = 1;
  }

  /// The question for the job. This object has to outlive it.
  CancelCheck check() const {
    return {[](const void* self) { return static_cast<const CancelSignal*>(self)->isRequested(); },
            this};
  }
};

}  // namespace wren::filter
