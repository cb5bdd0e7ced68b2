// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// What the attributes of a job and the defaults of its printer make of a job: the settings of
// the core and of the pages before it. Knows no IPP library: the caller looks values up.

#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>

#include "job/settings.h"

namespace wren::app {

/// What a job asks for. Everything that is absent comes from the printer.
struct JobRequest {
  /// The value of a vendor attribute as text, by its name; nothing if it is not set.
  using Lookup = std::function<std::optional<std::string>(const char* attribute)>;

  Lookup ofJob;
  Lookup ofPrinter;
  std::string content;           ///< print-content-optimize, if the job names one
  std::optional<bool> cutAtEnd;  ///< finishings, if the job names any: trim or none
  std::int32_t darkness = 0;     ///< print-darkness, -100 to 100
  /// printer-darkness-configured, 0 to 100: what PAPPL's page sets as "Print Darkness".
  std::int32_t configuredDarkness = 50;
  bool highQuality = false;   ///< print-quality is high: prints in one direction
  bool clientIsLocal = true;  ///< else the printer may keep the drawer closed
};

/// Units of print-darkness in one of brightness.
inline constexpr std::int32_t kDarknessPerBrightness = 4;
/// Units of printer-darkness-configured in one of brightness, which is 0 in the middle.
inline constexpr std::int32_t kConfiguredPerBrightness = 2;
inline constexpr std::int32_t kMiddleDarkness = 50;

struct JobSettings {
  Settings core;
  std::int32_t contrast = 0;       ///< -100 to 100
  std::uint32_t longestGapMm = 0;  ///< longest blank stretch inside a page; 0: any
  bool mayOpenDrawer = true;       ///< whether the client may
  std::uint32_t textPitch = 14;    ///< characters per inch of plain text
};

/// A job with an attribute value that its printer does not offer. `what()` names both.
class BadAttribute : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The vendor attributes of the job beat its standard attributes, and these the defaults of the
/// printer. Throws BadAttribute.
JobSettings makeJobSettings(const JobRequest& request);

}  // namespace wren::app
