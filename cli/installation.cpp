// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "cli/installation.h"

#include <unistd.h>

#include <filesystem>

#include "cli/child_process.h"
#include "cli/failure.h"
#include "common/own_program.h"

namespace wren::cli {

namespace fs = std::filesystem;

namespace {

// Empty where the system does not tell.
fs::path ownFolder() {
  return fs::path(ownProgram()).parent_path();
}

// A path beside the folder of this program, if it exists: in a build tree, cli/ has neighbours.
std::string neighbour(const std::string& path) {
  const fs::path own = ownFolder();
  std::error_code ignored;
  const fs::path file = own.parent_path() / path;
  return own.filename() == "cli" && fs::exists(file, ignored) ? file.string() : "";
}

std::string ppdName(int paper) {
  return "wren" + std::to_string(paper) + ".ppd";
}

}  // namespace

std::string Installation::filter() const {
  return root_ + WREN_CUPS_SERVERBIN "/filter/rastertowren";
}

std::string Installation::commandFilter() const {
  return root_ + WREN_CUPS_SERVERBIN "/filter/commandtowren";
}

std::string Installation::ppdFolder() const {
  return root_ + WREN_PPD_INSTALL_DIR;
}

std::string Installation::ppd(int paper) const {
  return ppdFolder() + "/" + ppdName(paper);
}

std::string Installation::backendFolder() const {
  return root_ + WREN_CUPS_SERVERBIN "/backend";
}

std::string Installation::manifest() const {
  return root_ + WREN_MANIFEST;
}

std::string ppdForPrinting(int paper) {
  std::string ppd = neighbour("ppd/" + ppdName(paper));
  if (ppd.empty()) ppd = Installation().ppd(paper);
  if (access(ppd.c_str(), R_OK) != 0) {
    throw Failure(kSetup, "the PPD " + ppd + " is missing; install the package again");
  }
  return ppd;
}

std::string previewProgram() {
  std::string program = neighbour("preview/wren-preview");
  if (program.empty()) program = findProgram((ownFolder() / "wren-preview").string());
  return program.empty() ? findProgram("wren-preview") : program;
}

std::string packageVersion() {
  return WREN_VERSION;
}

}  // namespace wren::cli
