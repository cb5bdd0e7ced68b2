// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Commands that PAPPL asks for by callbacks: a beep to find a printer, and its test page. They are
// jobs like all others, so that their bytes cannot mix with those of a document.

#pragma once

#include <pappl/pappl.h>

#include <string>
#include <utility>

#include "job/printer_commands.h"

namespace wren::app {

/// The command files of those jobs.
class ReadyCommands {
 public:
  /// @param folder exists.
  explicit ReadyCommands(std::string folder) : folder_(std::move(folder)) {}

  /// Writes a new command file of mode 0600; PAPPL removes it when its job has ended.
  /// @param argument what follows the name of the command; empty: nothing.
  /// @return its path; empty if it cannot be written.
  std::string write(job::CommandKind kind, const std::string& argument = {}) const;

 private:
  std::string folder_;
};

/// Sets identification (a beep; flash and display, which the printers do not have, do nothing) and
/// the test page. Expects the JobServices of the application as `data.extension`.
void setCommandCallbacks(pappl_pr_driver_data_t& data);

}  // namespace wren::app
