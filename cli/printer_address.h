// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

//
// The address of a network printer, and whether something answers there.

#pragma once

#include <optional>
#include <string>

namespace wren::cli {

struct PrinterAddress {
  std::string host;  ///< without the brackets of an IPv6 address
  int port = 0;
};

/// Host and port of a device URI; the port of the scheme if it names none. Nothing for a scheme
/// without a network, such as usb.
std::optional<PrinterAddress> parsePrinterAddress(const std::string& uri);

/// Whether a connection can be opened within `seconds`. No byte is sent.
bool canConnect(const PrinterAddress& address, int seconds);

}  // namespace wren::cli
