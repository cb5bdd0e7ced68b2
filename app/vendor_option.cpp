// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/vendor_option.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <iterator>

namespace wren::app {
namespace {

// By the method that prints, in the order of DitherType.
constexpr const char* kHalftones[] = {
    "threshold", "ordered",        "burkes", "stucki", "jarvis-judice-ninke",
    "sierra",    "stevenson-arce", "bayer",  "stencil"};
constexpr const char* kBlankEdges[] = {"trim", "keep"};
constexpr const char* kDirections[] = {"both", "one"};
constexpr const char* kCuts[] = {"none", "full", "partial"};
constexpr const char* kMoments[] = {"off", "before", "after"};
constexpr const char* kDrawerClients[] = {"local", "anyone"};
// Of pin 3 of the drawer's connector while the drawer is open.
constexpr const char* kDrawerLevels[] = {"unknown", "high", "low"};
// In characters per inch; the order of kTextPitches.
constexpr const char* kTextPitchNames[] = {"cpi-10", "cpi-14"};

constexpr std::int32_t kHighestContrast = 100;
constexpr std::int32_t kLongestGapMm = 200;
constexpr std::int32_t kMostKeptPapers = 50;

struct SharedOption {
  const char* keyword;
  const char* attribute;
  std::span<const char* const> choices;
};

constexpr std::array<SharedOption, 13> kShared = {{
    {"PageType", "page-type", kBlankEdges},
    {"BidiPrinting", kDirectionAttribute, kDirections},
    {"PageCutType", "page-cut-type", kCuts},
    {"DocCutType", kCutAttribute, kCuts},
    {"FeedCutAfterJobEnd", "feed-cut-after-job-end", {}},
    {"CashDrawerSetting", kDrawerAttribute, kMoments},
    {"CashDrawerPulseWidth", "cash-drawer-pulse-width", {}},
    {"Buzzer1Setting", "buzzer1-setting", kMoments},
    {"Buzzer1OnTime", "buzzer1-on-time", {}},
    {"Buzzer1Repeat", "buzzer1-repeat", {}},
    {"Buzzer2Setting", "buzzer2-setting", kMoments},
    {"Buzzer2OnTime", "buzzer2-on-time", {}},
    {"Buzzer2Repeat", "buzzer2-repeat", {}},
}};
static_assert(kShared.size() == job::kIndexedOptions.size(), "each option has an attribute");

constexpr const job::NumericOption& rowOf(std::string_view keyword) {
  for (const job::NumericOption& row : job::kIndexedOptions) {
    if (row.keyword == keyword) return row;
  }
  return job::kBrightnessOption;
}

constexpr VendorOption fromTable(const SharedOption& shared) {
  const job::NumericOption& row = rowOf(shared.keyword);
  return {shared.attribute, shared.choices, row.lowest, row.highest, row.initial, row.field};
}

constexpr std::size_t kOwnOptions = 7;

constexpr auto makeOptions() {
  std::array<VendorOption, kOwnOptions + kShared.size()> options{{
      {kHalftoneAttribute, kHalftones, 0, std::size(kHalftones) - 1, 0, nullptr},
      {kContrastAttribute, {}, -kHighestContrast, kHighestContrast, 0, nullptr},
      {kLongestGapAttribute, {}, 0, kLongestGapMm, 0, nullptr},
      {kTextPitchAttribute, kTextPitchNames, 0, 1, 1, nullptr},
      {kDrawerClientsAttribute, kDrawerClients, 0, 1, 0, nullptr, true},
      {kDrawerLevelAttribute, kDrawerLevels, 0, 2, 0, nullptr, true},
      {kKeptPapersAttribute, {}, 0, kMostKeptPapers, 0, nullptr, true},
  }};
  for (std::size_t i = 0; i < kShared.size(); ++i) options[kOwnOptions + i] = fromTable(kShared[i]);
  return options;
}

constexpr auto kOptions = makeOptions();

}  // namespace

std::span<const VendorOption> vendorOptions() {
  return kOptions;
}

const VendorOption* findVendorOption(std::string_view attribute) {
  const auto found =
      std::find_if(kOptions.begin(), kOptions.end(),
                   [&](const VendorOption& option) { return attribute == option.attribute; });
  return found == kOptions.end() ? nullptr : &*found;
}

bool parseVendorValue(const VendorOption& option, std::string_view text, std::int32_t& value) {
  if (option.hasNames()) {
    const auto found = std::find(option.choices.begin(), option.choices.end(), text);
    if (found == option.choices.end()) return false;
    value = option.lowest + static_cast<std::int32_t>(found - option.choices.begin());
    return true;
  }
  std::int32_t number = 0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || stop != end) return false;
  if (number < option.lowest || number > option.highest) return false;
  value = number;
  return true;
}

std::string vendorValueText(const VendorOption& option, std::int32_t value) {
  if (!option.hasNames()) return std::to_string(value);
  return option.choices[static_cast<std::size_t>(value - option.lowest)];
}

std::string acceptedValues(const VendorOption& option) {
  if (!option.hasNames()) {
    return std::to_string(option.lowest) + " to " + std::to_string(option.highest);
  }
  std::string list;
  for (const char* choice : option.choices)
    list += (list.empty() ? "" : ", ") + std::string(choice);
  return list;
}

}  // namespace wren::app
