// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A virtual printer: executes commands one by one and records the paper that a
// printer would produce. It stays within its limits for any input and reports
// every problem with its offset in the stream.

#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "escpos/command.h"
#include "escpos/paper.h"

namespace wren::escpos {

/// Limits of the recorded paper. An exceeded limit is reported as a `Problem`. A too wide line is
/// clipped; the other limits stop the printer.
struct PaperLimits {
  /// Feed units; the default is a roll of 80 m at 203 dpi.
  std::uint64_t lengthUnits = 1'278'740;
  /// Width of a line in dots.
  std::uint32_t widthDots = 4096;
  /// Memory for stripes: column bytes and overhead.
  std::uint64_t storedBytes = std::uint64_t{128} << 20;
  /// Number of marks.
  std::uint64_t marks = 100'000;
};

/// A fault in the stream.
struct Problem {
  std::uint64_t offset = 0;  ///< of the first byte concerned
  std::string text;          ///< without the offset and without a newline
};

/// Counters, up to where printing stopped.
struct Totals {
  std::uint64_t commands = 0;
  std::uint64_t pages = 0;
  std::uint64_t cuts = 0;
  std::uint64_t drawerPulses = 0;
  std::uint64_t beeps = 0;     ///< sum of the repeat counts
  std::uint64_t problems = 0;  ///< including those beyond `kKeptProblems`
};

class VirtualPrinter {
 public:
  static constexpr std::size_t kKeptProblems = 100;
  /// Bit images that may start at one position of the paper. More of them, printed over each other
  /// without a feed, are merged into one stripe, so that the work to draw a row stays bounded.
  static constexpr std::size_t kMaxStripesAtOnePlace = 64;

  explicit VirtualPrinter(PaperLimits limits = {});

  /// Executes one command. Does nothing once `stopped`.
  void execute(const Command& command);

  /// Ends the stream: reports columns that no feed has printed.
  void finish();

  /// True once a limit has stopped the printer.
  bool stopped() const { return stopped_; }

  const Paper& paper() const { return paper_; }
  /// Memory of the paper, about.
  std::uint64_t paperBytes() const { return storedBytes_ + paper_.marks.size() * sizeof(Mark); }
  const Totals& totals() const { return totals_; }
  /// The first `kKeptProblems` problems, in stream order.
  const std::vector<Problem>& problems() const { return problems_; }

 private:
  void addBitImage(const Command& command);
  void feed(const Command& command);
  void addMark(const Command& command, MarkKind kind, unsigned first = 0, unsigned second = 0);
  void discardLine(const std::string& cause);
  void printLine();
  void mergeOverprints();
  void clearLine();
  void report(std::uint64_t offset, const std::string& text);
  void stop(std::uint64_t offset, const std::string& text);

  PaperLimits limits_;
  Paper paper_;
  Totals totals_;
  std::vector<Problem> problems_;
  std::vector<Stripe> line_;         // line buffer: bit images that the next feed prints
  std::uint64_t lineOffset_ = 0;     // of its first bit image in the stream
  std::uint32_t lineWidthDots_ = 0;  // left edge of the next bit image
  bool lineTooWide_ = false;         // reported once per line
  std::size_t firstOfPlace_ = 0;     // first stripe on the paper at the place of the last one
  std::uint64_t positionUnits_ = 0;
  std::uint64_t storedBytes_ = 0;
  bool stopped_ = false;
};

}  // namespace wren::escpos
