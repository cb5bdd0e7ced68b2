// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The callbacks by which PAPPL hands over the pages of PWG and Apple raster, row by row, on the
// thread of the client.

#pragma once

#include <pappl/pappl.h>

#include "app/active_job.h"

namespace wren::app {

/// Sets the five raster callbacks.
/// @param services `extension` of the driver data becomes this; outlives the printer.
void setRasterCallbacks(pappl_pr_driver_data_t& data, const JobServices& services);

}  // namespace wren::app
