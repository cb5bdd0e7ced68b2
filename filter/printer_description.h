// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// What a PPD file offers, as plain values: its options with their choices, and the limits of
// custom sizes. The filter itself does not use it; the program `wren` checks job options
// and queues with it.

#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace wren::filter {

struct PrinterChoice {
  std::string name;
  std::string text;  ///< as a print dialog shows it
};

struct PrinterOption {
  std::string keyword;
  std::string text;
  std::string defaultChoice;
  std::vector<PrinterChoice> choices;

  /// The choice with this name, compared without case as CUPS does; null if there is none.
  const PrinterChoice* find(std::string_view name) const;
};

/// The limits of a custom page size in points; all 0 if there are no custom sizes.
struct CustomSizeLimits {
  float minWidthPt = 0.0F;
  float minLengthPt = 0.0F;
  float maxWidthPt = 0.0F;
  float maxLengthPt = 0.0F;
};

struct PrinterDescription {
  std::string name;     ///< "Wren 80 mm receipt printer"
  int modelNumber = 0;  ///< width of the paper in mm
  std::vector<PrinterOption> options;
  CustomSizeLimits customSize;

  /// The option with this keyword, compared without case; null if there is none.
  const PrinterOption* find(std::string_view keyword) const;
};

/// Reads a PPD file.
/// @return nothing if it cannot be opened or breaks the rules of PPD files.
std::optional<PrinterDescription> readPrinterDescription(const std::string& path);

/// Whether two names are equal without regard to the case of ASCII letters.
bool isSameName(std::string_view a, std::string_view b);

}  // namespace wren::filter
