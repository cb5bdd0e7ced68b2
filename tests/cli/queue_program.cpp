// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "tests/cli/queue_program.h"

#include <filesystem>

namespace wren::cli {

namespace fs = std::filesystem;

WrenProgramQueues::WrenProgramQueues() : scheduler_(pathOf("cups.sock")) {
  environment_ = {"CUPS_SERVER=" + pathOf("cups.sock")};
  const std::string filters = "root" WREN_CUPS_SERVERBIN "/filter";
  for (const std::string& folder :
       {filters, std::string("root" WREN_PPD_INSTALL_DIR), std::string("root/var/spool/cups/tmp"),
        std::string("root/etc/cups")}) {
    fs::create_directories(pathOf(folder));
  }
  for (const char* filter : {"/rastertowren", "/commandtowren"}) {
    fs::permissions(folder_.write(filters + filter, "#!/bin/sh\nexit 1\n"), fs::perms(0755));
  }
  fs::permissions(pathOf(filters), fs::perms(0755));
  for (const int paper : {58, 80, 112}) {
    fs::copy(WREN_PPD_DIR "/wren" + std::to_string(paper) + ".ppd", installedPpd(paper));
  }
}

std::string WrenProgramQueues::installedPpd(int paper) const {
  return root() + WREN_PPD_INSTALL_DIR "/wren" + std::to_string(paper) + ".ppd";
}

std::string WrenProgramQueues::ppdText(int paper) {
  return wren_test::readFile(WREN_PPD_DIR "/wren" + std::to_string(paper) + ".ppd");
}

void WrenProgramQueues::addQueue(const std::string& name, const std::string& uri, int paper) {
  scheduler_.add(SchedulerStandIn::Queue{
      name,
      uri,
      ppdText(paper),
      {{"position", "top"}, {"pdfAutoRotate", "no"}, {"orientation-requested", "3"}}});
}

std::vector<std::string> WrenProgramQueues::here(std::vector<std::string> command) const {
  command.insert(command.end(), {"--root", root()});
  return command;
}

std::string withLine(const std::string& text, const std::string& begin, const std::string& line) {
  const auto at = text.find("\n" + begin);
  EXPECT_NE(at, std::string::npos) << begin;
  return text.substr(0, at + 1) + line + text.substr(text.find('\n', at + 1));
}

}  // namespace wren::cli
