// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

//
// wren add-queue and remove-queue: print queues of the scheduler, one from the command line or
// several from a file.

#pragma once

#include <string>
#include <vector>

namespace wren::cli {

struct AddQueueArguments {
  std::string name;
  std::string uri;
  int paper = 0;  ///< 0: as it is, 80 for a new queue
  std::vector<std::string> options;
  std::string file;  ///< JSON; then name and uri are empty
  bool dryRun = false;
  bool replace = false;
  std::string root;  ///< the folder that stands for "/"
};

struct RemoveQueueArguments {
  std::string name;
  bool dryRun = false;
};

/// @return the exit status. Throws a Failure.
int runAddQueue(const AddQueueArguments& arguments);
int runRemoveQueue(const RemoveQueueArguments& arguments);

}  // namespace wren::cli
