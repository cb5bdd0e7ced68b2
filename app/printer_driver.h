// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// What a printer of the application says of itself to PAPPL, and the callbacks that print.

#pragma once

#include <pappl/pappl.h>

#include <span>

#include "app/active_job.h"

namespace wren::app {

/// The format of our printers: documents of other types are turned into it.
inline constexpr const char* kPrinterFormat = "application/vnd.wren-escpos";

/// The drivers by name, one for each paper. They live as long as the process.
std::span<pappl_pr_driver_t> printerDrivers();

/// Fills in the capabilities of a driver: a callback of type pappl_pr_driver_cb_t.
/// @param services of the jobs, as `const JobServices*`; outlives the system.
bool describeDriver(pappl_system_t* system, const char* driverName, const char* deviceUri,
                    const char* deviceId, pappl_pr_driver_data_t* data, ipp_t** attributes,
                    void* services);

/// The name of the driver for an IEEE-1284 device ID: a callback of type pappl_pr_autoadd_cb_t.
/// Null unless the device says that it is one of ours.
const char* driverForDevice(const char* info, const char* uri, const char* deviceId, void* data);

}  // namespace wren::app
