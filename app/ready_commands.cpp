// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/ready_commands.h"

#include <cstdio>

#include "app/active_job.h"
#include "app/command_job.h"
#include "common/handles.h"
#include "job/command_file.h"

namespace wren::app {
namespace {

std::string writeFile(const std::string& path, job::CommandKind kind) {
  const FilePtr file(std::fopen(path.c_str(), "w"));
  if (file == nullptr) return {};
  std::fprintf(file.get(), "%s\n%s\n", std::string(job::kCommandFileHead).c_str(),
               job::kCommandNames[static_cast<std::size_t>(kind)]);
  return path;
}

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
                         commands->beep().c_str());
}

const char* testPage(pappl_printer_t* printer, char* buffer, std::size_t size) {
  const ReadyCommands* commands = commandsOf(printer);
  if (commands == nullptr) return nullptr;
  std::snprintf(buffer, size, "%s", commands->selfTest().c_str());
  return buffer;
}

}  // namespace

ReadyCommands::ReadyCommands(const std::string& folder)
    : beep_(writeFile(folder + "/beep.command", job::CommandKind::kBeep)),
      selfTest_(writeFile(folder + "/self-test.command", job::CommandKind::kPrintSelfTestPage)) {}

void setCommandCallbacks(pappl_pr_driver_data_t& data) {
  data.identify_cb = identify;
  data.identify_supported =
      PAPPL_IDENTIFY_ACTIONS_SOUND | PAPPL_IDENTIFY_ACTIONS_FLASH | PAPPL_IDENTIFY_ACTIONS_DISPLAY;
  data.identify_default = PAPPL_IDENTIFY_ACTIONS_SOUND;
  data.testpage_cb = testPage;
}

}  // namespace wren::app
