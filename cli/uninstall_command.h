// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

//
// wren uninstall: removes the queues that print with Wren, then its files. What a package has
// installed is removed by the package manager.

#pragma once

#include <string>

namespace wren::cli {

struct UninstallArguments {
  bool dryRun = false;
  bool keepQueues = false;
  std::string root;  ///< the folder that stands for "/"
};

/// @return the exit status. Throws a Failure.
int runUninstall(const UninstallArguments& arguments);

}  // namespace wren::cli
