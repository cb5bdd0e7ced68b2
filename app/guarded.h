// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The border between PAPPL, which is C, and our code: nothing that is thrown may cross it.

#pragma once

#include <pappl/pappl.h>

#include <exception>
#include <new>

#include "app/active_job.h"

namespace wren::app {

/// Runs the work of a callback; an exception ends the job with a reason for people.
/// @param work returns whether the job goes on.
template <typename Work>
bool guarded(pappl_job_t* job, Work work) noexcept {
  try {
    return work();
  } catch (const std::bad_alloc&) {
    refuseJob(job, PAPPL_JREASON_ABORTED_BY_SYSTEM, "out of memory");
  } catch (const std::exception& error) {
    refuseJob(job, PAPPL_JREASON_ABORTED_BY_SYSTEM, error.what());
  }
  return false;
}

}  // namespace wren::app
