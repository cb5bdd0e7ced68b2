// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The defaults of a printer, as PAPPL keeps them, for pages that show and change them.

#pragma once

#include <pappl/pappl.h>

#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "app/job_settings.h"
#include "app/page_target.h"
#include "app/vendor_option.h"

namespace wren::app::web {

/// What differs between the documents on the page of halftones.
struct Tone {
  std::int32_t brightness = 0;  ///< as in job::kBrightnessOption
  std::int32_t contrast = 0;    ///< -100 to 100
};

/// The tone from texts; nothing if one is no number or out of range.
std::optional<Tone> parseTone(const std::string& brightness, const std::string& contrast);

/// The default of a vendor option; its first value if PAPPL has none.
std::int32_t defaultOf(pappl_printer_t* printer, const VendorOption& option);

Tone defaultTone(pappl_printer_t* printer);

/// Values of vendor options by their attributes.
using VendorValues = std::map<std::string, std::int32_t>;

/// Changes these and nothing else. The values have to be in range.
/// @param brightness becomes PAPPL's "Print Darkness"; nothing: stays as it is.
/// @return false if PAPPL refuses them.
bool setDefaults(pappl_printer_t* printer, const VendorValues& values,
                 std::optional<std::int32_t> brightness = std::nullopt);

/// The settings of a job that names nothing but a tone.
/// @param clientIsLocal whether it may open the drawer wherever drawer-from says.
JobSettings settingsFor(pappl_printer_t* printer, const Tone& tone, bool clientIsLocal);

/// The head and the paper of the printer.
PageTarget targetOf(pappl_printer_t* printer);

}  // namespace wren::app::web
