// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The three papers, each with the print head that it comes with: the drivers of the
// application, and the PPDs of a CUPS queue.

#pragma once

#include <span>
#include <string_view>

namespace wren::app {

struct Paper {
  const char* driver;  ///< name of the PAPPL driver
  const char* model;   ///< for people
  const char* deviceId;
  int widthMm;
  unsigned headWidthPx;
  int narrowestMm;                     ///< of a custom size
  std::span<const char* const> sizes;  ///< self-describing media names, without the roll
  const char* initialSize;
  const char* rollMin;  ///< smallest custom size
  const char* rollMax;  ///< largest
};

std::span<const Paper> papers();

/// @return null if there is no such driver.
const Paper* findPaper(std::string_view driver);

/// Width of the paper in dots, rounded up.
unsigned paperWidthPx(const Paper& paper);

}  // namespace wren::app
