// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// The JSON document of `wren-preview --json`. It is written while the stream is
// read, one command a line, so that a long stream needs no memory. Its keys are
// documented in docs/PREVIEW.md.

#pragma once

#include <cstdio>
#include <string>

#include "escpos/reader.h"
#include "preview/job_picture.h"
#include "preview/options.h"

namespace wren::preview {

/// The number in "schema". It changes when a key changes its meaning or goes away.
inline constexpr int kJsonSchema = 1;

class JsonReport {
 public:
  /// Begins the document. Both must outlive the report.
  JsonReport(std::FILE* output, const Options& options);

  /// Adds a command to "commands".
  void addCommand(const escpos::Command& command);

  /// Ends the document with what the whole stream printed.
  void finish(const escpos::Reader& reader, const WrittenPictures& written);

 private:
  std::FILE* output_;
  const Options& options_;
  bool hasCommands_ = false;
};

}  // namespace wren::preview
