// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The command line of wren-preview.

#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "escpos/preview/picture.h"

namespace preview {

struct Options {
  std::string input = "-";  ///< a file, or "-" for standard input
  std::string output;       ///< picture to write; empty: named after the input
  bool list = false;        ///< print every command
  bool split = false;       ///< one picture for each page or cut piece
  PictureStyle style;
  unsigned maxLengthMm = 80000;  ///< paper limit

  bool listen = false;
  std::string address;                  ///< "[HOST:]PORT" of --listen
  std::string directory = ".";          ///< where jobs that arrive are kept
  std::uint64_t maxBytes = 64'000'000;  ///< of one job
  unsigned maxSeconds = 300;            ///< for one job
};

/// What came of reading the command line: options to go on with, or a status to end with.
struct ParsedOptions {
  std::optional<Options> options;
  int exitStatus = 0;  ///< 0 after --help or --version, 2 after a usage error
};

/// Reads the arguments; help goes to standard output, a usage error to standard error.
ParsedOptions parseOptions(int argc, const char* const* argv);

}  // namespace preview
