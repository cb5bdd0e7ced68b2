// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

//
// wren devices: the printers that can be found, with the address for `wren add-queue`.

#pragma once

namespace wren::cli {

struct DevicesArguments {
  int seconds = 10;  ///< for the search in the network
  bool json = false;
};

/// @return the exit status.
int runDevices(const DevicesArguments& arguments);

}  // namespace wren::cli
