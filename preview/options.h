// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The command line of wren-preview.

#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "preview/paper_picture.h"

// NOLINTNEXTLINE(readability-identifier-naming): the library's
namespace CLI {
class App;
}

namespace wren::preview {

struct Options {
  std::string input = "-";  ///< a file, or "-" for standard input
  std::string output;       ///< picture to write; empty: named after the input
  bool list = false;        ///< print every command
  bool json = false;        ///< report as a JSON document
  bool split = false;       ///< one picture per page or cut piece
  PictureStyle style;
  unsigned maxLengthMm = 80000;  ///< length of the paper

  bool listen = false;                  ///< `--listen` was given
  std::string address;                  ///< its "[HOST:]PORT"
  std::string directory = ".";          ///< folder for received jobs
  std::uint64_t maxBytes = 64'000'000;  ///< limit per job
  unsigned maxSeconds = 300;            ///< limit per job
  std::string controlAddress;           ///< of the control port; empty: none
  std::vector<std::string> faults;      ///< commands that the printer gets at its start

  std::string tellAddress;  ///< control port of a listening wren-preview; empty: none
  std::string tellCommand;  ///< what to send to it
};

/// What `parseOptions` parses with; the completions of `wren preview` are written from it too. The
/// values go to `options`, which has to outlive the tree.
std::shared_ptr<CLI::App> makeOptionTree(Options& options);

/// Either options, or the exit status of a program that ends at once.
struct ParsedOptions {
  std::optional<Options> options;
  int exitStatus = 0;  ///< 0 after `--help` or `--version`, 2 after a usage error
};

/// Parses the arguments. Help goes to standard output, a usage error to standard error.
ParsedOptions parseOptions(int argc, const char* const* argv);

}  // namespace wren::preview
