// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Asks a printer at a USB port how it is, before and after the bytes of a job and never between
// them. PAPPL's read of that port waits ten seconds for a printer that says nothing and cannot be
// told to wait less, so such a printer is not asked again.

#pragma once

#include <pappl/pappl.h>

#include <functional>
#include <memory>
#include <optional>

#include "app/known_printer.h"
#include "app/printer_status.h"
#include "common/cancel_check.h"

namespace wren::app {

/// What this process knows of the printer at a `usb://` address.
/// @return null for another address.
std::shared_ptr<KnownPrinter> findUsbPrinter(const char* deviceUri);

/// Asks and notes the answer. One that leaves a question open is asked once more if it has
/// answered before, and otherwise never again.
/// @param device open and of this printer; what was written to it ends with a whole command.
/// @return nothing if the printer did not answer or was not asked.
std::optional<PrinterStatus> askUsbPrinter(pappl_device_t* device,
                                           const std::shared_ptr<KnownPrinter>& printer);

/// Asks once a second until the printer is ready or leaves a question open: what cannot be known
/// holds up no job.
/// @param onCondition called after each round of questions.
/// @return false if the job was cancelled while the printer was not ready.
bool waitForUsbPrinter(pappl_device_t* device, const std::shared_ptr<KnownPrinter>& printer,
                       CancelCheck cancel,
                       const std::function<void(const PrinterCondition&)>& onCondition);

}  // namespace wren::app
