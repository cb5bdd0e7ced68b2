// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "filter/command_run.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "common/handles.h"
#include "common/log.h"
#include "common/path.h"
#include "filter/settings.h"
#include "job/command_file.h"

namespace wren::filter {
namespace {

constexpr int kFewestArguments = 6;
constexpr int kOptionsArgument = 5;
constexpr int kFileArgument = 6;

void writeUsage(const char* program) {
  wrenWriteMessage("Usage: %s job_id user title copies options [file]\n",
                   program == nullptr ? "" : wrenPathGetBasename(program));
}

// At most one byte more than a command file may have, which tells that it is too long. False if
// it cannot be read.
bool readText(int descriptor, std::string& text) {
  std::array<char, 4096> part;
  while (text.size() <= job::kMaxCommandFile) {
    const ssize_t count = read(descriptor, part.data(), part.size());
    if (count == 0) return true;
    if (count > 0) {
      text.append(part.data(), static_cast<std::size_t>(count));
    } else if (errno != EINTR) {
      return false;
    }
  }
  return true;
}

// `path` may be null: standard input. False, after one line, if it cannot be read.
bool readCommands(const char* path, std::string& text) {
  const FileDescriptor file(path == nullptr ? -1 : open(path, O_RDONLY | O_CLOEXEC));
  const bool isOpen = path == nullptr || file;
  if (isOpen && readText(file ? file.get() : STDIN_FILENO, text)) return true;
  wrenLogCommon(3, "Unable to read the command file: %s", std::strerror(errno));
  return false;
}

// One line for each command that is not done. Returns the number of those that are.
int writeCommands(const job::CommandFile& file, const Settings& settings,
                  const CancelSignal& cancel) {
  int done = 0;
  for (const job::PrinterCommand& command : file.commands) {
    if (cancel.isRequested()) break;
    const char* fault = job::writePrinterCommand(stdout, command, settings, cancel.check());
    if (fault == nullptr) {
      ++done;
    } else {
      wrenLogCommon(3, "%s: %s", job::kCommandNames[static_cast<std::size_t>(command.kind)], fault);
    }
  }
  return done;
}

}  // namespace

int runCommandFilter(int argc, char** argv, const CancelSignal& cancel) {
  if (argc < kFewestArguments) {
    writeUsage(argc > 0 ? argv[0] : nullptr);
    return EXIT_FAILURE;
  }
  std::string text;
  if (!readCommands(argc > kFileArgument ? argv[kFileArgument] : nullptr, text)) {
    return EXIT_FAILURE;
  }
  Settings settings;
  if (!initializeSettings(argv[kOptionsArgument], &settings)) return EXIT_FAILURE;
  const job::CommandFile file = job::parseCommandFile(text);
  for (const std::string& error : file.errors) wrenLogCommon(3, "%s", error.c_str());
  if (file.commands.empty() && file.errors.empty()) wrenLogCommon(3, "No commands found!");
  cancel.announceJob();
  const int done = writeCommands(file, settings, cancel);
  return done > 0 || cancel.isRequested() ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace wren::filter
