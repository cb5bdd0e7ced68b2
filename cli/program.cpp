// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "cli/program.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <new>

#include "cli/command_line.h"
#include "cli/completions.h"
#include "cli/console.h"
#include "cli/failure.h"
#include "cli/interruption.h"
#include "cli/nearest_name.h"
#include "cli/preview_command.h"

namespace wren::cli {
namespace {

int runCommand(CLI::App& app, const CommandLine& line) {
  const CLI::App* chosen = app.get_subcommands().at(0);
  const std::string& name = chosen->get_name();
  if (name == "print") return runPrint(line.print);
  if (name == "halftones") return runHalftones(line.halftones);
  if (name == "devices") return runDevices(line.devices);
  if (name == "add-queue") return runAddQueue(line.addQueue);
  if (name == "remove-queue") return runRemoveQueue(line.removeQueue);
  if (name == "doctor") return runDoctor(line.doctor);
  if (name == "uninstall") return runUninstall(line.uninstall);
  if (isQueueCommand(name)) return runQueueCommand(name, line.queueCommand);
  std::cout << writeCompletions(app, line.shell);
  return kDone;
}

std::vector<std::string> commandNames(const CLI::App& app, bool withHidden) {
  std::vector<std::string> names;
  for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) {
    if (withHidden || !command->get_group().empty()) names.push_back(command->get_name());
  }
  return names;
}

// The name of a command that does not exist; empty if the first word is one.
std::string unknownCommand(const CLI::App& app, const std::vector<std::string>& arguments) {
  if (arguments.empty() || arguments[0].starts_with('-')) return {};
  const auto names = commandNames(app, true);
  const bool isKnown = std::find(names.begin(), names.end(), arguments[0]) != names.end();
  return isKnown ? "" : arguments[0];
}

// One line, where the parser has several.
int refuseUsage(const CLI::App& app, const std::vector<std::string>& arguments,
                const CLI::ParseError& error) {
  const std::string unknown = unknownCommand(app, arguments);
  if (!unknown.empty()) {
    note("unknown command '" + unknown + "'" + suggestion(unknown, commandNames(app, false)) +
         " (wren --help lists them)");
    return kUsage;
  }
  const bool hasCommand = !arguments.empty() && !arguments[0].starts_with('-');
  const std::string command = hasCommand ? arguments[0] + " " : "";
  note(command + "cannot be called like this: " + error.what() + "; see wren " + command +
       "--help");
  return kUsage;
}

int parseAndRun(std::vector<std::string> arguments) {
  if (isPreviewCall(arguments)) {
    arguments.erase(arguments.begin());
    return runPreview(arguments);
  }
  CommandLine line;
  const auto app = makeOptionTree(line);
  try {
    // The parser takes them from the back.
    app->parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) return app->exit(error);
    return refuseUsage(*app, arguments, error);
  }
  return runCommand(*app, line);
}

int runGuarded(const std::vector<std::string>& arguments) {
  try {
    return parseAndRun(arguments);
  } catch (const Failure& failure) {
    note(failure.what());
    return failure.status();
  } catch (const std::bad_alloc&) {
    note("out of memory");
  } catch (const std::exception& error) {
    note(error.what());
  }
  return kFailed;
}

// A file that is opened later must not become a closed standard stream: messages and children
// would write into it. Read-only, so that a write to it fails.
void reserveStandardStreams() {
  for (const int stream : {0, 1, 2}) {
    if (fcntl(stream, F_GETFD) < 0) static_cast<void>(open("/dev/null", O_RDONLY));
  }
}

}  // namespace

int runProgram(const std::vector<std::string>& arguments) {
  reserveStandardStreams();
  watchForInterruption();
  const int status = runGuarded(arguments);
  std::cout.flush();
  if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0 || !std::cout.good()) {
    note(std::string("standard output cannot be written: ") + std::strerror(errno));
    return status == kDone ? kFailed : status;
  }
  return status;
}

}  // namespace wren::cli
