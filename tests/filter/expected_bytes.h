// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The expected bytes and messages for the printer of `fullPpd` with every option at 0, for pages
// that are all ink or all paper.
#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "tests/support/printer_bytes.h"

namespace wren_test {

inline std::string jobStart() {
  return std::string(64, '\0') + fromHex("1B40 1F1B1F4265657006 1B5500");
}

inline std::string jobEnd() {
  return fromHex("1F1B1F4265657006 1B76");
}

inline std::string pageEnd() {
  return fromHex("1B4A10");
}

/// What follows the last band of a cancelled job.
inline std::string cancelledEnd() {
  return pageEnd() + jobEnd();
}

/// The bands of a page that is all dots or has none.
inline std::string flatBands(unsigned width, unsigned height, bool dots = true,
                             unsigned char mode = 1) {
  std::string bytes = fromHex("1B3C");
  for (unsigned done = 0; done < height; done += 8) {
    const unsigned rows = std::min(height - done, 8U);
    const auto column = static_cast<char>(dots ? 0xFF00U >> rows & 0xFFU : 0);
    bytes += fromHex("1B2A");
    bytes += static_cast<char>(mode);
    bytes += static_cast<char>(width & 0xFFU);
    bytes += static_cast<char>(width >> 8U);
    bytes += std::string(width, column) + fromHex("1B4A") + static_cast<char>(2 * rows);
  }
  return bytes;
}

/// A page that is all dots, with its end.
inline std::string solidPage(unsigned width, unsigned height) {
  return flatBands(width, height) + pageEnd();
}

/// The lines logged while the settings of `fullPpd` are read.
inline std::vector<std::string> settingsLines() {
  std::vector<std::string> lines;
  for (const char* keyword :
       {"PageType", "BidiPrinting", "PageCutType", "DocCutType", "CashDrawerSetting",
        "CashDrawerPulseWidth", "Buzzer1Setting", "Buzzer1OnTime", "Buzzer1Repeat",
        "Buzzer2Setting", "Buzzer2OnTime", "Buzzer2Repeat", "FeedCutAfterJobEnd"}) {
    lines.push_back(std::string("DEBUG:getOptionChoiceIndex: ") + keyword + " = 0");
    lines.emplace_back();
  }
  return lines;
}

/// The lines from the start of a job to its first page.
inline std::vector<std::string> startLines() {
  std::vector<std::string> lines = settingsLines();
  lines.emplace_back("fopen() failed.");
  lines.emplace_back("DEBUG:outFile cups.out : ADDRESS");
  return lines;
}

/// The lines of a page without blank edges.
inline std::vector<std::string> pageLines(unsigned number, unsigned width, unsigned height) {
  const std::string w = std::to_string(width);
  const std::string h = std::to_string(height);
  return {"DEBUG:Try print page: " + std::to_string(number) + " 1",
          "DEBUG:printImage: p(ADDRESS), width(" + w + "), height(" + h + "), w(" + w +
              "), topBlanks(0), bottomBlanks(" + h + "), h_fixed(" + h + ")"};
}

inline std::vector<std::string> operator+(std::vector<std::string> lines,
                                          const std::vector<std::string>& more) {
  lines.insert(lines.end(), more.begin(), more.end());
  return lines;
}

}  // namespace wren_test
