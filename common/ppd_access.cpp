// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "common/ppd_access.h"

#include <strings.h>

#include <cstdlib>

ppd_choice_t* wrenPpdGetChoice(ppd_file_t* ppd, const char* keyword) {
  if (ppd_choice_t* marked = ppdFindMarkedChoice(ppd, keyword)) return marked;
  ppd_option_t* option = ppdFindOption(ppd, keyword);
  return option == nullptr ? nullptr : ppdFindChoice(option, option->defchoice);
}

const char* wrenPpdGetChoiceAsStrDefault(ppd_file_t* ppd, const char* keyword,
                                         const char* defaultValue) {
  const ppd_choice_t* choice = wrenPpdGetChoice(ppd, keyword);
  return choice == nullptr ? defaultValue : choice->choice;
}

// atoi and atof define the result: a text without a number counts as 0.
// NOLINTBEGIN(cert-err34-c)
int wrenPpdGetChoiceAsIntDefault(ppd_file_t* ppd, const char* keyword, int defaultValue) {
  const char* name = wrenPpdGetChoiceAsStrDefault(ppd, keyword, nullptr);
  return name == nullptr ? defaultValue : std::atoi(name);
}

signed char wrenPpdGetChoiceAsBoolDefault(ppd_file_t* ppd, const char* keyword,
                                          signed char defaultValue) {
  const char* name = wrenPpdGetChoiceAsStrDefault(ppd, keyword, nullptr);
  if (name == nullptr) return defaultValue;
  if (strcasecmp(name, "true") == 0 || strcasecmp(name, "yes") == 0) return 1;
  if (strcasecmp(name, "false") == 0 || strcasecmp(name, "no") == 0) return 0;
  return static_cast<signed char>(std::atoi(name));
}

double wrenPpdGetAttrAsFloatDefault(ppd_file_t* ppd, const char* name, const char* spec,
                                    double defaultValue) {
  const char* value = wrenPpdGetAttrAsStrDefault(ppd, name, spec, nullptr);
  return value == nullptr ? defaultValue : std::atof(value);
}
// NOLINTEND(cert-err34-c)

const char* wrenPpdGetAttrAsStrDefault(ppd_file_t* ppd, const char* name, const char* spec,
                                       const char* defaultValue) {
  const ppd_attr_t* attribute = ppdFindAttr(ppd, name, spec);
  return attribute == nullptr || attribute->value == nullptr ? defaultValue : attribute->value;
}

namespace wren {

void ClosePpd::operator()(ppd_file_t* ppd) const {
  ppdClose(ppd);
}

}  // namespace wren
