// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The jobs of all printers, for those who keep them.

#pragma once

#include <pappl/pappl.h>

#include "app/begun_jobs.h"

namespace wren::app {

JobKey keyOf(pappl_job_t* job);

/// Calls `act` with each job that has not ended, or with each that has. While it runs the printer
/// of the job is locked, the system is not: new clients are served.
void forEachActiveJob(pappl_system_t* system, pappl_job_cb_t act, void* data);
void forEachEndedJob(pappl_system_t* system, pappl_job_cb_t act, void* data);

/// Lets each printer remember its last 100 ended jobs; where there are more than five printers, all
/// together 500, but each at least 10. Every save writes them all, and nobody is served meanwhile.
void limitEndedJobs(pappl_system_t* system);

}  // namespace wren::app
