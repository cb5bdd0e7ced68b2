// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// How the rest of the filter learns that the job is cancelled. Who sets the flag and
// wakes a waiting reader is the affair of main.
#pragma once

#include <csignal>

struct CancelSignal {
  /// Not 0 once the job is cancelled; null for a job that nobody cancels. Not owned.
  const volatile std::sig_atomic_t* flag = nullptr;
  /// A descriptor that becomes readable with the flag, so that a wait for input ends;
  /// -1 for none. Not owned.
  int wakeUpDescriptor = -1;
  /// Becomes 1 before the first byte for the printer. Until then there is nothing to
  /// finish, and who cancels the job may end the process at once, whatever it waits
  /// for; null where nobody asks. Not owned.
  volatile std::sig_atomic_t* jobHasBegun = nullptr;

  bool isRequested() const { return flag != nullptr && *flag != 0; }
  void announceJob() const {
    if (jobHasBegun != nullptr) *jobHasBegun = 1;
  }
};
