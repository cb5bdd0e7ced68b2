// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

//
// The options that a user or an administrator has saved for a queue with lpoptions: CUPS adds
// them to every job and ignores in silence what the PPD does not know.

#pragma once

#include <string>
#include <vector>

#include "cli/job_options.h"

namespace wren::cli {

struct SavedOptions {
  std::string file;
  bool isOfMachine = false;  ///< Holds for all users, not for this one alone.
  JobOptions options;
};

/// The options for a queue in the text of a file lpoptions.
JobOptions parseSavedOptions(const std::string& text, const std::string& queue);

/// Those of this user and of the machine, as far as there are any.
/// @param configuration the folder of CUPS's configuration.
std::vector<SavedOptions> readSavedOptions(const std::string& configuration,
                                           const std::string& queue);

/// The shell command that removes an option of a queue and its instances from the file.
/// @param isRoot whether root is to call it.
std::string removalCommand(const SavedOptions& saved, const std::string& queue,
                           const std::string& option, bool isRoot);

}  // namespace wren::cli
