// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The attributes of a job and the defaults of its printer, as texts from anyone: refused in words
// that name the attribute, or settings within the ranges that the printer lists.

#include <algorithm>
#include <map>
#include <string>

#include "app/job_settings.h"
#include "app/vendor_option.h"
#include "fuzz/input.h"

namespace {

using wren::app::JobRequest;
using wren::app::VendorOption;
using Texts = std::map<std::string, std::string, std::less<>>;

// Each entry is the number of an attribute and a text; 255 ends the list. A text that begins with a
// 1 byte stands for one of the attribute's own values.
Texts textsFrom(fuzz::Input& input) {
  const auto options = wren::app::vendorOptions();
  Texts texts;
  while (input.left() > 0) {
    const std::uint8_t number = input.byte();
    if (number == 255) break;
    const VendorOption& option = options[number % options.size()];
    std::string text = input.text();
    if (text.size() > 1 && text[0] == '\x01') {
      const auto range = static_cast<std::uint32_t>(option.highest - option.lowest + 1);
      const auto step = static_cast<std::uint8_t>(text[1]) % range;
      text = vendorValueText(option, option.lowest + static_cast<std::int32_t>(step));
    }
    texts[option.attribute] = text;
  }
  return texts;
}

JobRequest::Lookup lookUpIn(const Texts& texts) {
  return [&texts](const char* attribute) -> std::optional<std::string> {
    const auto found = texts.find(attribute);
    return found == texts.end() ? std::nullopt : std::optional(found->second);
  };
}

void checkText(const VendorOption& option, const std::string& text) {
  std::int32_t value = 0;
  if (!parseVendorValue(option, text, value)) return;
  fuzz::check(value >= option.lowest && value <= option.highest, "a value is within its range");
  std::int32_t again = 0;
  fuzz::check(parseVendorValue(option, vendorValueText(option, value), again) && again == value,
              "the text of a value names that value");
}

bool isNamedIn(const Texts& texts, const std::string& message) {
  return std::any_of(texts.begin(), texts.end(), [&](const auto& entry) {
    return message.find(entry.first) != std::string::npos;
  });
}

void checkSettings(const wren::app::JobSettings& settings, const JobRequest& request) {
  for (const VendorOption& option : wren::app::vendorOptions()) {
    if (option.field == nullptr) continue;
    const std::int32_t value = settings.core.*option.field;
    fuzz::check(value >= option.lowest && value <= option.highest, "a setting is within its range");
  }
  fuzz::check(settings.contrast >= -100 && settings.contrast <= 100,
              "contrast is within its range");
  fuzz::check(!settings.core.debugImages, "a job writes no debug images");
  const auto drawerFrom = request.ofPrinter(wren::app::kDrawerClientsAttribute);
  if (!request.clientIsLocal && drawerFrom != "anyone") {
    fuzz::check(settings.core.cashDrawerSetting == 0, "a client far away opens no drawer");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  JobRequest request;
  const std::uint8_t flags = input.byte();
  request.clientIsLocal = (flags & 1) != 0;
  request.highQuality = (flags & 2) != 0;
  if ((flags & 4) != 0) request.cutAtEnd = (flags & 8) != 0;
  request.darkness = static_cast<std::int32_t>(input.word());
  request.content = input.text();
  const Texts ofJob = textsFrom(input);
  const Texts ofPrinter = textsFrom(input);
  request.ofJob = lookUpIn(ofJob);
  request.ofPrinter = lookUpIn(ofPrinter);
  for (const VendorOption& option : wren::app::vendorOptions()) {
    if (const auto text = request.ofJob(option.attribute)) checkText(option, *text);
  }
  try {
    checkSettings(makeJobSettings(request), request);
  } catch (const wren::app::BadAttribute& bad) {
    // A bad default of the printer never costs a job.
    fuzz::check(isNamedIn(ofJob, bad.what()), "a refusal names an attribute of the job");
  }
  return 0;
}
