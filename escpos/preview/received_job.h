// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// A job that arrives piece by piece: kept as a .prn file, read as it comes, and
// at its end drawn as a .png beside it.

#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <span>
#include <string>

#include "escpos/preview/options.h"
#include "escpos/reader.h"

namespace preview {

/// The next job number for which no .prn is in the folder is found by asking for it, so that jobs
/// of an earlier run, or of another program in the same folder, are never written over.
class ReceivedJob {
 public:
  /// Creates the file, from `number` upwards; `number` becomes the one after it.
  ReceivedJob(const Options& options, unsigned& number);

  /// What went wrong with the file so far; empty if nothing.
  const std::string& error() const { return error_; }

  /// Takes the next bytes.
  void take(std::span<const std::uint8_t> bytes);

  std::uint64_t bytesTaken() const { return bytesTaken_; }

  /// "job-0001.prn: 12345 bytes, 80.1 mm so far".
  std::string progress() const;

  /// Ends the job: closes the .prn, writes the picture, reports problems on standard error.
  /// Returns the line about the job: file, summary, problems if any, pictures. `ending` is what
  /// cut the job short, or empty.
  std::string finish(const std::string& ending);

 private:
  struct Closer {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };

  void create(unsigned& number);
  void closeFile();

  const Options& options_;
  std::string path_;
  std::unique_ptr<std::FILE, Closer> file_;
  std::string error_;
  escpos::Reader reader_;
  std::uint64_t bytesTaken_ = 0;
};

}  // namespace preview
