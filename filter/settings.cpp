// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "filter/settings.h"

#include <cups/cups.h>
#include <cups/ppd.h>
#include <sys/stat.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

#include "common/log.h"
#include "common/ppd_access.h"
#include "filter/page_size_name.h"
#include "job/option_table.h"

namespace {

using Ppd = std::unique_ptr<ppd_file_t, wren::ClosePpd>;

// Not the texts of the CUPS library: these are translated, and it needs memory to load them,
// which may be what is missing.
const char* ppdFault(ppd_status_t status) {
  switch (status) {
    case PPD_FILE_OPEN_ERROR:
      return "the file cannot be opened";
    case PPD_ALLOC_ERROR:
      return "out of memory";
    case PPD_MISSING_PPDADOBE4:
      return "it does not begin like a PPD file";
    default:
      return "it breaks the rules of PPD files";
  }
}

// The CUPS library does not check its allocations while it reads a PPD. It gets a file only if
// there is enough memory for it; else the new-handler of `main` ends the process.
void ensureMemoryFor(const char* path, const char* options) {
  constexpr std::size_t kAnyPpd = 1 << 20;
  constexpr std::size_t kMemoryPerByte = 16;
  struct stat status = {};
  const bool known = stat(path, &status) == 0 && S_ISREG(status.st_mode);
  const std::size_t text = (known ? static_cast<std::size_t>(status.st_size) : 0) +
                           (options == nullptr ? 0 : std::strlen(options));
  // Volatile, because a compiler may drop an allocation that nobody uses.
  void* volatile room = ::operator new(kAnyPpd + kMemoryPerByte * text);
  ::operator delete(room);
}

// Null, after one line that says why, if the file cannot be used.
Ppd openPpd(const char* path, const char* options) {
  if (path == nullptr) {
    wrenLogCommon(3, "Unable to open the PPD file: the environment variable PPD is not set");
    return nullptr;
  }
  ensureMemoryFor(path, options);
  Ppd ppd(ppdOpenFile(path));
  if (ppd == nullptr) {
    int line = 0;
    const ppd_status_t status = ppdLastError(&line);
    wrenLogCommon(3, "Unable to open the PPD file %s: %s (line %d)", path, ppdFault(status), line);
  }
  return ppd;
}

void markJobOptions(ppd_file_t* ppd, const char* text) {
  cups_option_t* list = nullptr;
  const int count = cupsParseOptions(text, 0, &list);
  if (count == 0 || list == nullptr) return;
  cupsMarkOptions(ppd, count, list);
  cupsFreeOptions(count, list);
}

bool wantsDebugImages(ppd_file_t* ppd) {
  const char* choice = wrenPpdGetChoiceAsStrDefault(ppd, wren::job::kDebugImagesOption, "");
  return std::strcmp(choice, wren::job::kDebugImagesOff) != 0;
}

Settings readSettings(ppd_file_t* ppd) {
  using namespace wren::job;
  Settings settings;
  settings.maxMediaWidth = wrenPpdGetAttrAsFloatDefault(ppd, kMaxMediaWidthAttribute, nullptr, 0.0);
  settings.modelNumber = ppd->model_number;
  for (const NumericOption& option : kIndexedOptions) {
    settings.*option.field = getOptionChoiceIndex(option.keyword, ppd);
  }
  getPageWidthPageHeight(ppd, &settings);
  settings.halftoneType =
      wrenHalftoneTypeFromStr(wrenPpdGetChoiceAsStrDefault(ppd, kHalftoneTypeOption, ""));
  settings.*kBrightnessOption.field =
      wrenPpdGetChoiceAsIntDefault(ppd, kBrightnessOption.keyword, 0);
  settings.debugImages = wantsDebugImages(ppd);
  return settings;
}

}  // namespace

bool initializeSettings(const char* options, Settings* settings) {
  return initializeSettingsFrom(std::getenv("PPD"), options, settings);
}

bool initializeSettingsFrom(const char* path, const char* options, Settings* settings) {
  const Ppd ppd = openPpd(path, options);
  if (ppd == nullptr) return false;
  ppdMarkDefaults(ppd.get());
  markJobOptions(ppd.get(), options);
  *settings = readSettings(ppd.get());
  return true;
}

int getOptionChoiceIndex(const char* keyword, ppd_file_s* ppd) {
  const ppd_choice_t* choice = wrenPpdGetChoice(ppd, keyword);
  if (choice == nullptr) return wren::job::kAbsentOption;
  const int index = std::atoi(choice->choice);  // NOLINT(cert-err34-c): not a number is 0
  wrenLogCommon(0, "getOptionChoiceIndex: %s = %d\n", keyword, index);
  return index;
}

void getPageWidthPageHeight(ppd_file_s* ppd, Settings* settings) {
  const char* name = wrenPpdGetChoiceAsStrDefault(ppd, wren::job::kPageSizeOption, "");
  const auto numbers = wren::filter::parsePageSizeName(name);
  settings->pageWidth = numbers.width;
  settings->pageHeight = numbers.height;
}
