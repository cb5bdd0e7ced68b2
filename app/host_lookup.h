// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The addresses of a host name. The system's look-up can take many seconds and cannot be
// interrupted, so it runs in a thread that is left alone if it takes too long.

#pragma once

#include <netdb.h>

#include <chrono>
#include <memory>
#include <string>

#include "common/cancel_check.h"

namespace wren::app {

struct FreeAddresses {
  void operator()(addrinfo* list) const { ::freeaddrinfo(list); }
};
using AddressList = std::unique_ptr<addrinfo, FreeAddresses>;

struct HostLookup {
  AddressList addresses;  ///< null if there are none
  std::string error;      ///< why there are none; empty if it took too long or was cancelled
};

/// Finds the addresses for TCP connections to a host and a decimal port.
HostLookup findHost(const std::string& host, const std::string& port,
                    std::chrono::steady_clock::time_point deadline, const CancelCheck& cancel);

}  // namespace wren::app
