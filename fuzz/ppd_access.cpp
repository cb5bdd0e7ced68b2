// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The PPD helpers on any text that CUPS accepts as a PPD, with any job options
// marked. The results are compared with the records of CUPS.

#include "common/ppd_access.h"

#include <cups/cups.h>
#include <strings.h>

#include "fuzz/input.h"
#include "fuzz/memory_file.h"

namespace {

using fuzz::check;

constexpr const char* kKeywords[] = {"PageSize",     "PageType",   "HalftoneType", "Brightness",
                                     "BidiPrinting", "DocCutType", "NoSuchOption"};
constexpr const char* kAttributes[] = {"MaxMediaWidth", "ModelName", "cupsFilter2", "NoSuchName"};
constexpr int kIntDefault = -77;

ppd_choice_t* expectedChoice(ppd_file_t* ppd, const char* keyword) {
  ppd_choice_t* marked = ppdFindMarkedChoice(ppd, keyword);
  if (marked != nullptr) return marked;
  ppd_option_t* option = ppdFindOption(ppd, keyword);
  return option == nullptr ? nullptr : ppdFindChoice(option, option->defchoice);
}

signed char expectedTruth(const char* name) {
  if (strcasecmp(name, "true") == 0 || strcasecmp(name, "yes") == 0) return 1;
  if (strcasecmp(name, "false") == 0 || strcasecmp(name, "no") == 0) return 0;
  return static_cast<signed char>(std::atoi(name) & 255);
}

void checkChoices(ppd_file_t* ppd, const char* keyword) {
  const ppd_choice_t* choice = wrenPpdGetChoice(ppd, keyword);
  check(choice == expectedChoice(ppd, keyword), "the marked choice, else the default one");
  const char* text = wrenPpdGetChoiceAsStrDefault(ppd, keyword, "none");
  const int number = wrenPpdGetChoiceAsIntDefault(ppd, keyword, kIntDefault);
  const signed char truth = wrenPpdGetChoiceAsBoolDefault(ppd, keyword, 7);
  if (choice == nullptr) {
    check(std::string(text) == "none" && number == kIntDefault && truth == 7, "defaults");
    return;
  }
  check(text == choice->choice, "the name of the choice");
  check(number == std::atoi(choice->choice), "the number in the name of the choice");
  check(truth == expectedTruth(choice->choice), "the truth in the name of the choice");
}

void checkAttribute(ppd_file_t* ppd, const char* name) {
  const ppd_attr_t* attribute = ppdFindAttr(ppd, name, nullptr);
  const bool has = attribute != nullptr && attribute->value != nullptr;
  const char* text = wrenPpdGetAttrAsStrDefault(ppd, name, nullptr, nullptr);
  const double number = wrenPpdGetAttrAsFloatDefault(ppd, name, nullptr, -1.5);
  check(text == (has ? attribute->value : nullptr), "the text of the attribute");
  const double expected = has ? std::atof(attribute->value) : -1.5;
  check(number == expected || (number != number && expected != expected), "its number");
}

void checkAll(ppd_file_t* ppd) {
  for (const char* keyword : kKeywords) checkChoices(ppd, keyword);
  for (const char* name : kAttributes) checkAttribute(ppd, name);
}

void markOptions(ppd_file_t* ppd, const std::string& text) {
  cups_option_t* list = nullptr;
  const int count = cupsParseOptions(text.c_str(), 0, &list);
  if (count > 0) cupsMarkOptions(ppd, count, list);
  cupsFreeOptions(count, list);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static fuzz::MemoryFile file;
  fuzz::Input input(data, size);
  const std::string options = input.text();
  const std::vector<std::uint8_t> text = input.rest();
  file.fill(text.data(), text.size());
  ppd_file_t* ppd = ppdOpenFd(dup(file.descriptor()));
  checkAll(ppd);
  if (ppd == nullptr) return 0;
  ppdMarkDefaults(ppd);
  checkAll(ppd);
  markOptions(ppd, options);
  checkAll(ppd);
  ppdClose(ppd);
  return 0;
}
