// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A printer made of software: carries out commands one by one and keeps the
// paper that a printer would have put out. Whatever it is told to do, it stays
// within its limits and says what went wrong, with the place in the stream.

#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "escpos/command.h"
#include "escpos/paper.h"

namespace escpos {

/// How much paper there is. What would go past one of these is refused with a Problem.
struct PaperLimits {
  /// Feed units; the default is a roll of 80 m at 203 dots per inch.
  std::uint64_t lengthUnits = 1'278'740;
  /// Dots across; what a line has beyond them falls off the paper's edge.
  std::uint32_t widthDots = 4096;
  /// Column bytes kept, with the cost of keeping them.
  std::uint64_t storedBytes = std::uint64_t{128} << 20;
  /// Marks kept: pages, cuts, drawer pulses, beeps.
  std::uint64_t marks = 100'000;
};

/// Something wrong with the stream.
struct Problem {
  std::uint64_t offset = 0;  ///< of the first byte concerned
  std::string text;          ///< without the offset and without a newline
};

/// What a stream asked for, up to where printing stopped.
struct Totals {
  std::uint64_t commands = 0;
  std::uint64_t pages = 0;
  std::uint64_t cuts = 0;
  std::uint64_t drawerPulses = 0;
  std::uint64_t beeps = 0;     ///< sum of the repeat counts
  std::uint64_t problems = 0;  ///< all of them, the ones not kept included
};

class VirtualPrinter {
 public:
  explicit VirtualPrinter(PaperLimits limits = {});

  /// Carries out one command. Does nothing once `stopped`.
  void execute(const Command& command);

  /// To be called at the end of the stream: reports columns that no feed has printed.
  void finish();

  /// The paper has run out, by length or by what can be kept of it; nothing more is printed.
  bool stopped() const { return stopped_; }

  const Paper& paper() const { return paper_; }
  const Totals& totals() const { return totals_; }
  /// The first kKeptProblems of them, in the order of the stream.
  const std::vector<Problem>& problems() const { return problems_; }

  static constexpr std::size_t kKeptProblems = 100;

 private:
  void bitImage(const Command& command);
  void feed(const Command& command);
  void mark(const Command& command, MarkKind kind, unsigned first = 0, unsigned second = 0);
  void dropLine(const std::string& why);
  void printLine();
  void refuse(std::uint64_t offset, const std::string& text);
  void stop(std::uint64_t offset, const std::string& text);

  PaperLimits limits_;
  Paper paper_;
  Totals totals_;
  std::vector<Problem> problems_;
  std::vector<Stripe> line_;         // bit images that wait for their feed
  std::uint64_t lineOffset_ = 0;     // of the first of them
  std::uint32_t lineWidthDots_ = 0;  // where the next one begins
  bool lineTooWide_ = false;         // already reported for this line
  std::uint64_t positionUnits_ = 0;
  std::uint64_t storedBytes_ = 0;
  bool stopped_ = false;
};

}  // namespace escpos
