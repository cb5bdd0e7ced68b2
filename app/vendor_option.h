// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The vendor attributes of a printer and of a job: names, choices and defaults. Those that the
// PPDs offer too come from job/option_table.h.

#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "job/option_table.h"

namespace wren::app {

/// An attribute with named choices ("keyword" in IPP) or with a range of integers.
struct VendorOption {
  const char* attribute;
  std::span<const char* const> choices;  ///< by value, from `lowest` on; empty for integers
  std::int32_t lowest;
  std::int32_t highest;
  std::int32_t initial;
  std::int32_t Settings::*field;  ///< null if it is no setting of the core
  bool ofPrinterAlone = false;    ///< a job must not name it

  bool hasNames() const { return !choices.empty(); }
};

inline constexpr const char* kHalftoneAttribute = "halftone-type";
inline constexpr const char* kContrastAttribute = "contrast";
inline constexpr const char* kLongestGapAttribute = "longest-gap";
inline constexpr const char* kTextPitchAttribute = "text-pitch";
inline constexpr const char* kDrawerClientsAttribute = "drawer-from";
inline constexpr const char* kDrawerLevelAttribute = "drawer-level";
inline constexpr const char* kDrawerAttribute = "cash-drawer-setting";
inline constexpr const char* kCutAttribute = "doc-cut-type";
inline constexpr const char* kKeptPapersAttribute = "kept-papers";
inline constexpr const char* kDirectionAttribute = "bidi-printing";

/// All of them, in the order in which a printer lists them.
std::span<const VendorOption> vendorOptions();

/// The option with this attribute name; null if there is none.
const VendorOption* findVendorOption(std::string_view attribute);

/// The value that a text names: a choice by its name, an integer in decimal.
/// @return false if the text is neither a choice nor an integer of the range.
bool parseVendorValue(const VendorOption& option, std::string_view text, std::int32_t& value);

/// The text that names a value of the range.
std::string vendorValueText(const VendorOption& option, std::int32_t value);

/// The texts that would be accepted, for a message: "none, full, partial" or "0 to 8".
std::string acceptedValues(const VendorOption& option);

}  // namespace wren::app
