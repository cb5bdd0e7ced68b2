// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Page sizes are named by their dimensions: X72D5MMY200MM is 72.5 wide and 200 high. D stands
// for the decimal point and M for the letters of the unit.

#pragma once

namespace wren::filter {

struct PageSizeNumbers {
  float width = 0.0F;
  float height = 0.0F;
};

/// The numbers in the name of a page size, in the unit of the name; 0 and 0 if the name does
/// not follow the pattern or a number has more than 19 characters.
/// @param name must not be null.
PageSizeNumbers parsePageSizeName(const char* name);

}  // namespace wren::filter
