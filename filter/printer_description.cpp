// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "filter/printer_description.h"

#include <cups/ppd.h>
#include <strings.h>

#include <algorithm>
#include <memory>

#include "common/ppd_access.h"

namespace wren::filter {
namespace {

PrinterOption describeOption(const ppd_option_t& option) {
  PrinterOption described = {option.keyword, option.text, option.defchoice, {}};
  for (int i = 0; i < option.num_choices; ++i) {
    described.choices.push_back({option.choices[i].choice, option.choices[i].text});
  }
  return described;
}

CustomSizeLimits describeLimits(const ppd_file_t& ppd) {
  if (ppd.variable_sizes == 0) return {};
  return {ppd.custom_min[0], ppd.custom_min[1], ppd.custom_max[0], ppd.custom_max[1]};
}

template <typename Named>
const Named* findNamed(const std::vector<Named>& all, std::string Named::*name,
                       std::string_view wanted) {
  const auto found = std::find_if(all.begin(), all.end(),
                                  [&](const Named& one) { return isSameName(one.*name, wanted); });
  return found == all.end() ? nullptr : &*found;
}

}  // namespace

bool isSameName(std::string_view a, std::string_view b) {
  return a.size() == b.size() && strncasecmp(a.data(), b.data(), a.size()) == 0;
}

const PrinterChoice* PrinterOption::find(std::string_view wanted) const {
  return findNamed(choices, &PrinterChoice::name, wanted);
}

const PrinterOption* PrinterDescription::find(std::string_view keyword) const {
  return findNamed(options, &PrinterOption::keyword, keyword);
}

std::optional<PrinterDescription> readPrinterDescription(const std::string& path) {
  const std::unique_ptr<ppd_file_t, ClosePpd> ppd(ppdOpenFile(path.c_str()));
  if (ppd == nullptr) return std::nullopt;
  PrinterDescription description;
  description.name = ppd->nickname != nullptr ? ppd->nickname : "";
  description.modelNumber = ppd->model_number;
  description.customSize = describeLimits(*ppd);
  for (ppd_option_t* option = ppdFirstOption(ppd.get()); option != nullptr;
       option = ppdNextOption(ppd.get())) {
    description.options.push_back(describeOption(*option));
  }
  return description;
}

}  // namespace wren::filter
