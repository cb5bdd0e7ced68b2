// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

//
// The printers that are plugged in or answer in the network.

#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "cli/scheduler.h"

namespace wren::cli {

struct DeviceList {
  std::vector<Device> devices;
  /// The scheduler did not answer or refused: the backends were run by this user, who may not
  /// see every USB printer.
  bool isPartial = false;
};

/// Asks the scheduler, or else the backends themselves.
/// @param schemes "usb" alone, or empty for all that can search.
DeviceList findDevices(const std::string& schemes, int seconds);

/// One line of a backend: class, address, and in quotes model, description, id and location.
/// The result has an empty address if the line is not of this form.
Device parseBackendLine(std::string_view line);

/// Whether an address is that of a printer, not the name of a scheme that could be used.
bool isAddress(std::string_view uri);

}  // namespace wren::cli
