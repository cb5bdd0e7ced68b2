// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// `wren drawer`, `beep`, `cut`, `feed` and `selftest`: send a queue a command without a document.

#pragma once

#include <string>

namespace wren::cli {

struct QueueCommandArguments {
  std::string queue;
  std::string cut;  ///< "full", "partial", or empty for the cut of the queue
  int feedMm = 0;
};

/// Whether a command of `wren` is one of the five.
bool isQueueCommand(const std::string& name);

/// The line of a command file for one of the five, such as "Feed 20" for "feed".
std::string commandLineFor(const std::string& name, const QueueCommandArguments& arguments);

/// Sends the command `name` as a job. Returns the exit status.
int runQueueCommand(const std::string& name, const QueueCommandArguments& arguments);

}  // namespace wren::cli
