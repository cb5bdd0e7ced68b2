// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
#include "filter/settings.h"

#include <cups/cups.h>
#include <cups/ppd.h>

#include <cstdlib>
#include <memory>

#include "common/log.h"
#include "common/ppd_access.h"
#include "filter/option_table.h"
#include "filter/page_size_name.h"

namespace {

struct ClosePpd {
  void operator()(ppd_file_t* ppd) const { ppdClose(ppd); }
};
using Ppd = std::unique_ptr<ppd_file_t, ClosePpd>;

// Null, after one line that says why, when the file cannot be used.
Ppd openPpd() {
  const char* path = std::getenv("PPD");
  if (path == nullptr) {
    wrenLogCommon(3, "Unable to open the PPD file: the environment variable PPD is not set");
    return nullptr;
  }
  Ppd ppd(ppdOpenFile(path));
  if (ppd == nullptr) {
    int line = 0;
    const ppd_status_t status = ppdLastError(&line);
    wrenLogCommon(3, "Unable to open the PPD file %s: %s (line %d)", path, ppdErrorString(status),
                  line);
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
  const Ppd ppd = openPpd();
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
