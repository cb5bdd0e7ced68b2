// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "cli/preview_command.h"

#include <cstdio>

#include "cli/child_process.h"
#include "cli/failure.h"
#include "cli/installation.h"

namespace wren::cli {

int runPreview(const std::vector<std::string>& arguments) {
  const std::string program = previewProgram();
  if (program.empty()) {
    throw Failure(kSetup, "wren-preview is missing; install the package again");
  }
  Arguments command = {program};
  command.insert(command.end(), arguments.begin(), arguments.end());
  std::fflush(stdout);
  becomeProgram(command);
  throw Failure(kSetup, program + " cannot be started");
}

}  // namespace wren::cli
