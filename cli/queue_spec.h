// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

//
// A print queue as a user asks for it, on the command line or in a JSON file.

#pragma once

#include <optional>
#include <string>
#include <vector>

#include "cli/job_options.h"

namespace wren::cli {

struct QueueSpec {
  std::string name;
  std::string uri;
  std::optional<int> paper;  ///< in mm; nothing: as it is, 80 for a new queue
  JobOptions options;        ///< defaults of the queue
  /// The options are all that the queue may have: others return to their defaults.
  bool isComplete = false;
};

/// Throws a Failure if the name, the address or the paper cannot be used.
void checkQueueSpec(const QueueSpec& spec);

/// Reads the queues of a JSON text: {"schema": 1, "queues": [{"name", "uri", "paper", "options"}]},
/// the words of `wren doctor --json`; what else doctor writes is passed over.
/// @param source for messages. Throws a Failure that names the place of an error.
std::vector<QueueSpec> parseQueues(const std::string& text, const std::string& source);

}  // namespace wren::cli
