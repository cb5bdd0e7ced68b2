// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/ready_commands.h"

#include <cstdio>
#include <cstdlib>

#include "app/active_job.h"
#include "app/command_job.h"
#include "common/handles.h"
#include "job/command_file.h"

namespace wren::app {
namespace {

const ReadyCommands* commandsOf(pappl_printer_t* printer) {
  pappl_pr_driver_data_t data = {};
  papplPrinterGetDriverData(printer, &data);
  return static_cast<const JobServices*>(data.extension)->commands;
}

// Not behind other jobs: who looks for a printer looks now, and a client must not be able to pile
// up beeps.
void identify(pappl_printer_t* printer, pappl_identify_actions_t actions, const char* /*message*/) {
  const ReadyCommands* commands = commandsOf(printer);
  if ((actions & PAPPL_IDENTIFY_ACTIONS_SOUND) == 0 || commands == nullptr) return;
  if (papplPrinterGetNumberOfActiveJobs(printer) != 0) {
    papplLogPrinter(printer, PAPPL_LOGLEVEL_INFO, "No beep: the printer has jobs.");
    return;
  }
  papplJobCreateWithFile(printer, "identify", kCommandFormat, "Identify", 0, nullptr,
                         commands->write(job::CommandKind::kBeep).c_str());
}

const char* testPage(pappl_printer_t* printer, char* buffer, std::size_t size) {
  const ReadyCommands* commands = commandsOf(printer);
  if (commands == nullptr) return nullptr;
  std::snprintf(buffer, size, "%s", commands->write(job::CommandKind::kPrintSelfTestPage).c_str());
  return buffer;
}

}  // namespace

std::string ReadyCommands::write(job::CommandKind kind, const std::string& argument) const {
  std::string path = folder_ + "/XXXXXX.command";
  constexpr int kSuffixLength = 8;
  FileDescriptor descriptor(::mkstemps(path.data(), kSuffixLength));
  const FilePtr file(descriptor ? ::fdopen(descriptor.get(), "w") : nullptr);
  if (file == nullptr) return {};
  descriptor.release();
  std::fprintf(file.get(), "%s\n%s %s\n", std::string(job::kCommandFileHead).c_str(),
               job::kCommandNames[static_cast<std::size_t>(kind)], argument.c_str());
  return path;
}

void setCommandCallbacks(pappl_pr_driver_data_t& data) {
  data.identify_cb = identify;
  data.identify_supported =
      PAPPL_IDENTIFY_ACTIONS_SOUND | PAPPL_IDENTIFY_ACTIONS_FLASH | PAPPL_IDENTIFY_ACTIONS_DISPLAY;
  data.identify_default = PAPPL_IDENTIFY_ACTIONS_SOUND;
  data.testpage_cb = testPage;
}

}  // namespace wren::app
