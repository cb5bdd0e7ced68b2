// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Network printers as devices of PAPPL, in place of its own `socket` scheme, whose writes cannot
// be cancelled. Opening one succeeds at once, because PAPPL holds the printer's lock meanwhile;
// the connection is made by `beginDeviceJob`, which can wait and be cancelled.

#pragma once

#include <pappl/pappl.h>

#include <string>

#include "app/known_printer.h"

namespace wren::app {

/// Registers `socket://HOST[:PORT][/?status=off]` and PAPPL's USB printers; with `withFiles` also
/// PAPPL's `file`. Must be called before every other function of PAPPL: it keeps the first
/// registration of a scheme, and adds its own only where there are none.
/// @return false if this version of PAPPL does not let its USB printers be added.
bool addDeviceSchemes(bool withFiles);

// The functions for a job take any device of PAPPL. For one at a USB port the begin waits too and
// the end asks how the printer is, if it answers. For all others that are not ours they succeed,
// and only report what PAPPL knows of the device.

/// Makes the device wait for its printer without a limit, until the job is cancelled or the system
/// shuts down, and show what it waits for in the reasons of the printer and the message of the job.
void attachJob(pappl_device_t* device, pappl_job_t* job);

/// Waits until the printer is there and ready. Writing to a network printer does that too if it was
/// not done.
/// @return false if the job was cancelled meanwhile.
bool beginDeviceJob(pappl_device_t* device, pappl_job_t* job);

/// Sends what is buffered, which must end with a whole command, and asks the printer how it is.
void betweenPages(pappl_device_t* device);

/// Sends what is buffered and waits until the printer has it and, where it can say so, has
/// printed it. Shows how the printer then is.
/// @return false if the printer did not take everything or the job was cancelled meanwhile.
bool endDeviceJob(pappl_device_t* device, pappl_job_t* job);

/// Why one of the above, or a write, failed; empty if nothing did or the job was cancelled. Tells
/// more than papplJobIsCanceled, which is true of a job that PAPPL aborts because of the failure.
std::string deviceFault(pappl_device_t* device);

/// Shows how an idle printer is in its reasons: for the status callback of a driver. Asks at most
/// once in a few seconds, and a printer that never answers only once.
/// @return true, as PAPPL wants it.
bool showPrinterCondition(pappl_printer_t* printer);

/// What is known of the printer at a device address; the default condition for other devices.
PrinterCondition printerConditionAt(const char* deviceUri);

}  // namespace wren::app
