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
#include "filter/option_table.h"
#include "filter/page_size_name.h"

namespace {

struct ClosePpd {
  void operator()(ppd_file_t* ppd) const { ppdClose(ppd); }
};
using Ppd = std::unique_ptr<ppd_file_t, ClosePpd>;

// In words of our own: the CUPS library's are translated, and it needs memory to find
// them, which may be just what is missing.
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

// The CUPS library does not look whether its own allocations for a PPD succeed. It is
// given a file only when there is room for it: too little ends the process in the way
// that main has laid down for that.
void assureMemoryFor(const char* path, const char* options) {
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

// Null, after one line that says why, when the file cannot be used.
Ppd openPpd(const char* options) {
  const char* path = std::getenv("PPD");
  if (path == nullptr) {
    wrenLogCommon(3, "Unable to open the PPD file: the environment variable PPD is not set");
    return nullptr;
  }
  assureMemoryFor(path, options);
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

Settings readSettings(ppd_file_t* ppd) {
  Settings settings;
  settings.maxMediaWidth = wrenPpdGetAttrAsFloatDefault(ppd, kMaxMediaWidthAttribute, nullptr, 0.0);
  settings.modelNumber = ppd->model_number;
  for (const OptionRow& row : kIndexedOptions) {
    settings.*row.field = getOptionChoiceIndex(row.keyword, ppd);
  }
  getPageWidthPageHeight(ppd, &settings);
  settings.halftoneType =
      wrenHalftoneTypeFromStr(wrenPpdGetChoiceAsStrDefault(ppd, kHalftoneTypeOption, ""));
  settings.*kBrightnessOption.field =
      wrenPpdGetChoiceAsIntDefault(ppd, kBrightnessOption.keyword, kBrightnessOption.whenAbsent);
  return settings;
}

}  // namespace

bool initializeSettings(const char* options, Settings* settings) {
  const Ppd ppd = openPpd(options);
  if (ppd == nullptr) return false;
  ppdMarkDefaults(ppd.get());
  markJobOptions(ppd.get(), options);
  *settings = readSettings(ppd.get());
  return true;
}

int getOptionChoiceIndex(const char* keyword, ppd_file_s* ppd) {
  const ppd_choice_t* choice = wrenPpdGetChoice(ppd, keyword);
  if (choice == nullptr) return -1;
  const int index = std::atoi(choice->choice);  // NOLINT(cert-err34-c): no number is 0
  wrenLogCommon(0, "getOptionChoiceIndex: %s = %d\n", keyword, index);
  return index;
}

void getPageWidthPageHeight(ppd_file_s* ppd, Settings* settings) {
  const char* name = wrenPpdGetChoiceAsStrDefault(ppd, kPageSizeOption, "");
  const PageSizeNumbers numbers = parsePageSizeName(name);
  settings->pageWidth = numbers.width;
  settings->pageHeight = numbers.height;
}
