// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers

#include "app/job_settings.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "app/vendor_option.h"
#include "common/halftone_type.h"

namespace wren::app {
namespace {

// The halftone of a print-content-optimize value, in the order of the method that prints:
// `None` is the threshold, `FloydSteinberg` the ordered pattern, `Burkes` Stucki's weights.
struct ContentHalftone {
  std::string_view content;
  DitherType halftone;
};
constexpr std::array<ContentHalftone, 4> kContentHalftones = {{
    {"text", None},
    {"graphic", FloydSteinberg},
    {"text-and-graphic", FloydSteinberg},
    {"photo", Burkes},
}};

constexpr std::int32_t kPartialCut = 2;
constexpr std::uint32_t kTextPitches[] = {10, 14};

std::optional<std::int32_t> valueOf(const VendorOption& option, const JobRequest::Lookup& lookup) {
  const std::optional<std::string> text = lookup ? lookup(option.attribute) : std::nullopt;
  if (!text) return std::nullopt;
  std::int32_t value = 0;
  if (!parseVendorValue(option, *text, value)) {
    throw BadAttribute(std::string(option.attribute) + " cannot be \"" + *text + "\" (" +
                       acceptedValues(option) + ")");
  }
  return value;
}

// A default that an older version saved and that is no longer offered counts as none.
std::int32_t printerValue(const VendorOption& option, const JobRequest& request) {
  try {
    return valueOf(option, request.ofPrinter).value_or(option.initial);
  } catch (const BadAttribute&) {
    return option.initial;
  }
}

std::int32_t effectiveValue(const char* attribute, const JobRequest& request) {
  const VendorOption& option = *findVendorOption(attribute);
  const auto ofJob = valueOf(option, request.ofJob);
  return ofJob ? *ofJob : printerValue(option, request);
}

DitherType halftoneOf(const JobRequest& request) {
  const VendorOption& option = *findVendorOption(kHalftoneAttribute);
  if (const auto named = valueOf(option, request.ofJob)) return static_cast<DitherType>(*named);
  const auto* const found =
      std::find_if(kContentHalftones.begin(), kContentHalftones.end(),
                   [&](const ContentHalftone& row) { return row.content == request.content; });
  if (found != kContentHalftones.end()) return found->halftone;
  return static_cast<DitherType>(printerValue(option, request));
}

std::int32_t documentCutOf(const JobRequest& request) {
  const VendorOption& option = *findVendorOption(kCutAttribute);
  if (const auto named = valueOf(option, request.ofJob)) return *named;
  const std::int32_t cut = printerValue(option, request);
  if (!request.cutAtEnd) return cut;
  if (!*request.cutAtEnd) return 0;
  return cut == 0 ? kPartialCut : cut;
}

std::int32_t directionOf(const JobRequest& request) {
  const VendorOption& option = *findVendorOption(kDirectionAttribute);
  if (const auto named = valueOf(option, request.ofJob)) return *named;
  return request.highQuality ? 1 : printerValue(option, request);
}

std::int32_t brightnessOf(const JobRequest& request) {
  const std::int32_t brightness =
      request.darkness / kDarknessPerBrightness +
      (request.configuredDarkness - kMiddleDarkness) / kConfiguredPerBrightness;
  return std::clamp(brightness, job::kBrightnessOption.lowest, job::kBrightnessOption.highest);
}

bool mayOpenDrawer(const JobRequest& request) {
  constexpr std::int32_t kLocal = 0;
  return request.clientIsLocal ||
         printerValue(*findVendorOption(kDrawerClientsAttribute), request) != kLocal;
}

// A job that asks for the drawer itself is refused; one that would open it by the printer's
// default prints and leaves it closed.
void refuseWhatJobsMustNotName(const JobRequest& request) {
  for (const VendorOption& option : vendorOptions()) {
    if (option.ofPrinterAlone && valueOf(option, request.ofJob)) {
      throw BadAttribute(std::string(option.attribute) + " is a setting of the printer");
    }
  }
  const auto drawer = valueOf(*findVendorOption(kDrawerAttribute), request.ofJob);
  if (drawer.value_or(0) != 0 && !mayOpenDrawer(request)) {
    throw BadAttribute(std::string(kDrawerAttribute) +
                       ": only clients on the printer's own machine may open the drawer");
  }
}

}  // namespace

JobSettings makeJobSettings(const JobRequest& request) {
  refuseWhatJobsMustNotName(request);
  JobSettings settings;
  for (const VendorOption& option : vendorOptions()) {
    if (option.field != nullptr) {
      settings.core.*option.field = effectiveValue(option.attribute, request);
    }
  }
  settings.core.docCutType = documentCutOf(request);
  settings.core.bidiPrinting = directionOf(request);
  settings.core.halftoneType = halftoneOf(request);
  settings.core.brightness = brightnessOf(request);
  settings.core.debugImages = false;
  settings.mayOpenDrawer = mayOpenDrawer(request);
  if (!settings.mayOpenDrawer) settings.core.cashDrawerSetting = 0;
  settings.contrast = effectiveValue(kContrastAttribute, request);
  settings.longestGapMm = static_cast<std::uint32_t>(effectiveValue(kLongestGapAttribute, request));
  settings.textPitch = kTextPitches[effectiveValue(kTextPitchAttribute, request)];
  return settings;
}

}  // namespace wren::app
