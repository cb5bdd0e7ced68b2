// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/web/printer_defaults.h"

#include <charconv>

#include "app/job_attributes.h"
#include "app/paper.h"

namespace wren::app::web {
namespace {

std::optional<std::int32_t> numberIn(const std::string& text, std::int32_t lowest,
                                     std::int32_t highest) {
  std::int32_t number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || stop != end || number < lowest || number > highest) {
    return std::nullopt;
  }
  return number;
}

pappl_pr_driver_data_t dataOf(pappl_printer_t* printer) {
  pappl_pr_driver_data_t data = {};
  papplPrinterGetDriverData(printer, &data);
  return data;
}

}  // namespace

std::optional<Tone> parseTone(const std::string& brightness, const std::string& contrast) {
  const VendorOption& option = *findVendorOption(kContrastAttribute);
  const auto light =
      numberIn(brightness, job::kBrightnessOption.lowest, job::kBrightnessOption.highest);
  const auto steep = numberIn(contrast, option.lowest, option.highest);
  if (!light || !steep) return std::nullopt;
  return Tone{*light, *steep};
}

std::int32_t defaultOf(pappl_printer_t* printer, const VendorOption& option) {
  std::int32_t value = option.initial;
  const auto text = printerDefault(printer, option.attribute);
  return text && parseVendorValue(option, *text, value) ? value : option.initial;
}

Tone defaultTone(pappl_printer_t* printer) {
  const pappl_pr_driver_data_t data = dataOf(printer);
  JobRequest request;
  request.darkness = data.darkness_default;
  request.configuredDarkness = data.darkness_configured;
  return {makeJobSettings(request).core.brightness,
          defaultOf(printer, *findVendorOption(kContrastAttribute))};
}

bool setDefaults(pappl_printer_t* printer, const VendorValues& values,
                 std::optional<std::int32_t> brightness) {
  pappl_pr_driver_data_t data = dataOf(printer);
  if (brightness) {
    data.darkness_default = 0;
    data.darkness_configured = kMiddleDarkness + *brightness * kConfiguredPerBrightness;
  }
  cups_option_t* options = nullptr;
  int count = 0;
  for (const auto& [attribute, value] : values) {
    const std::string text = vendorValueText(*findVendorOption(attribute), value);
    count = cupsAddOption(attribute.c_str(), text.c_str(), count, &options);
  }
  const bool isSet = papplPrinterSetDriverDefaults(printer, &data, count, options);
  cupsFreeOptions(count, options);
  return isSet;
}

JobSettings settingsFor(pappl_printer_t* printer, const Tone& tone, bool clientIsLocal) {
  JobRequest request;
  request.ofJob = [&tone](const char* attribute) -> std::optional<std::string> {
    if (std::string_view(attribute) != kContrastAttribute) return std::nullopt;
    return std::to_string(tone.contrast);
  };
  request.ofPrinter = [printer](const char* attribute) {
    return printerDefault(printer, attribute);
  };
  request.darkness = tone.brightness * kDarknessPerBrightness;
  request.highQuality = dataOf(printer).quality_default == IPP_QUALITY_HIGH;
  request.clientIsLocal = clientIsLocal;
  return makeJobSettings(request);
}

PageTarget targetOf(pappl_printer_t* printer) {
  PageTarget target;
  const char* const driver = papplPrinterGetDriverName(printer);
  if (const Paper* paper = findPaper(driver == nullptr ? "" : driver)) {
    target.headWidthPx = paper->headWidthPx;
    target.paperWidthPx = paperWidthPx(*paper);
  }
  return target;
}

}  // namespace wren::app::web
