// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Commands that PAPPL asks for by callbacks: a beep to find a printer, and its test page. They are
// jobs like all others, so that their bytes cannot mix with those of a document.

#pragma once

#include <pappl/pappl.h>

#include <string>

namespace wren::app {

/// The command files of those jobs, which are read when the jobs print.
class ReadyCommands {
 public:
  /// Writes the files.
  /// @param folder exists. PAPPL must not take it for its spool: it would remove them.
  explicit ReadyCommands(const std::string& folder);

  const std::string& beep() const { return beep_; }
  const std::string& selfTest() const { return selfTest_; }

 private:
  std::string beep_;
  std::string selfTest_;
};

/// Sets identification (a beep; flash and display, which the printers do not have, do nothing) and
/// the test page. Expects the JobServices of the application as `data.extension`.
void setCommandCallbacks(pappl_pr_driver_data_t& data);

}  // namespace wren::app
