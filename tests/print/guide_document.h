// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// What the tests of docs/PRINTING.md share: documents made for a purpose, and
// what can be seen on paper.

#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "escpos/paper.h"
#include "tests/print/print_chain.h"

namespace print_chain {

/// The rows and columns of a page that are not blank, last ones included. All 0 for a blank page.
struct Ink {
  std::uint32_t top = 0;
  std::uint32_t bottom = 0;
  std::uint32_t left = 0;
  std::uint32_t right = 0;

  std::uint32_t width() const { return right - left + 1; }
  std::uint32_t height() const { return bottom - top + 1; }
};

Ink inkOf(const reference::Page& page);

/// Millimetres of so many feed units at 203 dpi.
double millimetres(std::uint64_t units);

class Guide : public PrintChain {
 protected:
  /// A PDF page in points, drawn by lines of PostScript.
  std::string pdf(unsigned width, unsigned length, const std::string& drawing);

  /// A PDF page with a frame 20 points from its edges.
  std::string framedPdf(unsigned width, unsigned length);

  /// Both example receipts in one PDF.
  std::string twoPages();

  std::string textFile(const std::string& text);

  /// The paper that a document gives; fails the test when the bytes cannot be read back.
  wren::escpos::Paper paperOf(const Printed& printed);

  /// Prints and gives the paper.
  wren::escpos::Paper paperOf(const std::string& document, const Options& jobOptions,
                              int copies = 1);

  /// How much of the page is dots, from 0 to 1, the feeds at its end left out.
  double shareOfDots(const Printed& printed);
  double shareOfDots(const std::string& document, const Options& jobOptions);

 private:
  int documents_ = 0;
};

}  // namespace print_chain
