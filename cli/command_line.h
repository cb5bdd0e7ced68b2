// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

//
// The commands of `wren` with their options, and what a user has written.

#pragma once

#include <CLI/CLI.hpp>
#include <memory>
#include <string>
#include <vector>

#include "cli/add_queue_command.h"
#include "cli/devices_command.h"
#include "cli/doctor_command.h"
#include "cli/halftones_command.h"
#include "cli/print_command.h"
#include "cli/queue_command.h"
#include "cli/uninstall_command.h"
#include "preview/options.h"

namespace wren::cli {

/// The arguments of every command; those of the command that was given are filled in.
struct CommandLine {
  PrintArguments print;
  preview::Options preview;  ///< for the completions: wren-preview parses its own arguments
  HalftonesArguments halftones;
  DevicesArguments devices;
  AddQueueArguments addQueue;
  RemoveQueueArguments removeQueue;
  QueueCommandArguments queueCommand;  ///< of drawer, beep, cut, feed and selftest
  DoctorArguments doctor;
  UninstallArguments uninstall;
  std::string shell;  ///< of the hidden command `completions`
};

/// The option tree. The values go to `line`, which has to outlive it.
std::unique_ptr<CLI::App> makeOptionTree(CommandLine& line);

/// The arguments with the subcommand's name taken off, if the first one is "preview": they belong
/// to another program.
bool isPreviewCall(const std::vector<std::string>& arguments);

}  // namespace wren::cli
