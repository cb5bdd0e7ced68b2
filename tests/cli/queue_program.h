// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

//
// Runs the program wren beside a scheduler that stands in, with Wren installed below a folder.

#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tests/cli/scheduler_stand_in.h"
#include "tests/cli/wren_program.h"

namespace wren::cli {

class WrenProgramQueues : public WrenProgram {
 protected:
  WrenProgramQueues();

  /// Adds a queue with the PPD of a paper and the settings of `add-queue`.
  void addQueue(const std::string& name, const std::string& uri, int paper = 80);
  /// The command with the installation of this test.
  std::vector<std::string> here(std::vector<std::string> command) const;

  std::string root() const { return pathOf("root"); }
  std::string installedPpd(int paper) const;
  static std::string ppdText(int paper);

  SchedulerStandIn scheduler_;
};

/// A PPD with another line in the place of the one that begins like this.
std::string withLine(const std::string& text, const std::string& begin, const std::string& line);

}  // namespace wren::cli
