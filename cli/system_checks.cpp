// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "cli/system_checks.h"

#include <sys/stat.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <filesystem>

#include "cli/child_process.h"
#include "cli/console.h"
#include "filter/printer_description.h"
#include "job/option_table.h"

namespace wren::cli {

namespace fs = std::filesystem;

namespace {

struct Program {
  const char* name;
  const char* package;
};
// What turns documents into raster pages.
constexpr std::array<Program, 2> kPrograms = {{{"cupsfilter", "cups"}, {"gs", "ghostscript"}}};

struct Font {
  const char* family;
  const char* without;
  const char* package;
};
// The fonts that CUPS's filter for text asks for (docs/PRINTING.md, "Text files").
constexpr std::array<Font, 2> kFonts = {{
    {"DejaVu Sans Mono", "text files may print with boxes", "fonts-dejavu-core"},
    {"AR PL UMing CN", "Japanese and Chinese text files print as boxes", "fonts-arphic-uming"},
}};

// --reinstall also restores missing files of an installed package.
std::string reinstall() {
  return "sudo apt install --reinstall ./printer-driver-wren_*.deb   # the package of Wren";
}

std::string machine() {
  utsname name = {};
  return uname(&name) == 0 ? name.machine : "unknown";
}

// CUPS refuses a filter that is not owned by root or that others can write to.
bool checkOwnerAndMode(const std::string& path, Diagnosis& diagnosis) {
  struct stat status = {};
  if (stat(path.c_str(), &status) != 0) return false;
  const unsigned mode = status.st_mode & 07777U;
  if (status.st_uid == 0 && (mode & 022U) == 0 && (mode & 0555U) == 0555U) {
    diagnosis.good(path + " belongs to root and only root may change it");
    return true;
  }
  char octal[16];
  std::snprintf(octal, sizeof octal, "%o", mode);
  const std::string word = shellWord(path);
  diagnosis.bad(path + " has owner " + std::to_string(status.st_uid) + " and mode " + octal +
                    "; CUPS refuses it",
                "sudo chown root: " + word + " && sudo chmod 755 " + word);
  return false;
}

// What the filter reads must all be there: the rest of a file that was cut off is not missed by
// CUPS.
bool hasAllOptions(const filter::PrinterDescription& printer) {
  bool all = printer.find(job::kHalftoneTypeOption) != nullptr &&
             printer.find(job::kBrightnessOption.keyword) != nullptr &&
             printer.find(job::kDebugImagesOption) != nullptr &&
             printer.find(job::kPageSizeOption) != nullptr;
  for (const auto& option : job::kIndexedOptions) {
    all = all && printer.find(option.keyword) != nullptr;
  }
  return all;
}

bool passesCupstestppd(const std::string& ppd) {
  if (findProgram("cupstestppd").empty()) return true;
  return runChild({"cupstestppd", "-q", "-I", "filters", ppd}, -1, -1) == 0;
}

void checkPpd(const std::string& ppd, Diagnosis& diagnosis) {
  const auto printer = filter::readPrinterDescription(ppd);
  if (access(ppd.c_str(), R_OK) != 0) {
    diagnosis.bad("the PPD " + ppd + " is missing", reinstall());
  } else if (!printer.has_value() || !hasAllOptions(*printer) || !passesCupstestppd(ppd)) {
    diagnosis.bad("the PPD " + ppd + " is damaged (cupstestppd -I filters " + ppd + ")",
                  reinstall());
  } else {
    diagnosis.good(ppd + " is sound");
  }
}

bool isDebugImage(const fs::path& path) {
  const std::string name = path.filename().string();
  return path.extension() == ".bmp" &&
         (name.starts_with("origin_") || name.starts_with("dithered_"));
}

// As stored: a file with holes counts what it takes.
std::uint64_t kilobytesOfImages(const std::string& folder) {
  std::uint64_t kilobytes = 0;
  std::error_code ignored;
  for (const auto& entry : fs::directory_iterator(folder, ignored)) {
    struct stat status = {};
    if (!isDebugImage(entry.path()) || lstat(entry.path().c_str(), &status) != 0) continue;
    kilobytes += static_cast<std::uint64_t>(status.st_blocks) / 2;
  }
  return kilobytes;
}

/// @param name how users read of it.
/// @param isInOurs whether nobody else can change its folder.
void checkFilter(const std::string& filter, const std::string& name, bool isInOurs,
                 Diagnosis& diagnosis) {
  if (access(filter.c_str(), F_OK) != 0) {
    diagnosis.bad(name + " is not installed as " + filter, reinstall());
    return;
  }
  const bool isOurs = checkOwnerAndMode(filter, diagnosis);
  // A file that others can write to is not executed, least of all as root.
  if (!isOurs || !isInOurs) return;
  const int status = runChild({filter}, -1, -1);
  if (status == 1) {
    diagnosis.good(name + " runs on this machine (" + machine() + ")");
  } else {
    diagnosis.bad(name + " does not run on this machine (" + machine() + ", status " +
                      std::to_string(status) + ")",
                  reinstall());
  }
}

}  // namespace

void checkPrograms(Diagnosis& diagnosis) {
  for (const Program& program : kPrograms) {
    if (!findProgram(program.name).empty()) continue;
    diagnosis.bad(std::string("the program ") + program.name + " is missing",
                  std::string("sudo apt install ") + program.package);
  }
}

void checkFonts(Diagnosis& diagnosis) {
  constexpr int kSeconds = 20;
  const ChildOutput families = captureOutput({"fc-list", ":", "family"}, kSeconds);
  if (families.status != 0) return;
  for (const Font& font : kFonts) {
    if (families.text.find(font.family) != std::string::npos) continue;
    diagnosis.note(std::string(font.without) + " without the font " + font.family +
                   ": sudo apt install " + font.package);
  }
}

void checkFilters(const Installation& installation, Diagnosis& diagnosis) {
  const std::string folder = fs::path(installation.filter()).parent_path();
  const bool isInOurs = access(folder.c_str(), F_OK) == 0 && checkOwnerAndMode(folder, diagnosis);
  checkFilter(installation.filter(), "the filter", isInOurs, diagnosis);
  checkFilter(installation.commandFilter(), "the filter for commands", isInOurs, diagnosis);
}

void checkPpds(const Installation& installation, Diagnosis& diagnosis) {
  for (const int paper : kPapers) checkPpd(installation.ppd(paper), diagnosis);
}

// Only debug images need this folder: a page prints without them.
void checkImageFolder(const Installation& installation, Diagnosis& diagnosis) {
  constexpr std::uint64_t kMostKilobytes = 200000;
  const std::string spool = installation.spoolFolder();
  const std::string folder = installation.imageFolder();
  if (access(spool.c_str(), F_OK) == 0 && access(spool.c_str(), X_OK) != 0) {
    diagnosis.note(spool + " may not be looked into; for the debug images call: sudo wren doctor");
    return;
  }
  const std::string word = shellWord(folder);
  if (!fs::is_directory(folder)) {
    diagnosis.bad("there is no " + folder + ", so no debug images are written",
                  "sudo install -d -o root -g lp -m 1770 " + word);
    return;
  }
  const std::uint64_t kilobytes = kilobytesOfImages(folder);
  const std::string text =
      folder + " holds " + std::to_string(kilobytes / 1000) + " MB of debug images";
  if (kilobytes <= kMostKilobytes) {
    diagnosis.good(text);
    return;
  }
  diagnosis.bad(text,
                "sudo find " + word +
                    " -maxdepth 1 \\( -name 'origin_*.bmp' -o -name 'dithered_*.bmp' \\) -delete");
}

}  // namespace wren::cli
